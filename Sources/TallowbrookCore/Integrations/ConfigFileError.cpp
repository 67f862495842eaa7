#include "Integrations/ConfigFileError.h"

#include <utility>

namespace tallowbrook {

using std::filesystem::path;

ConfigFileError ConfigFileError::unreadable(const path& file, std::string reason) {
    return {Unreadable{file.string(), std::move(reason)}};
}

ConfigFileError ConfigFileError::notUTF8(const path& file) { return {NotUTF8{file.string()}}; }

ConfigFileError ConfigFileError::changedSincePlan(const path& file) {
    return {ChangedSincePlan{file.string()}};
}

ConfigFileError ConfigFileError::writeFailed(const path& file, std::string reason) {
    return {WriteFailed{file.string(), std::move(reason)}};
}

std::string ConfigFileError::description() const {
    struct Text {
        std::string operator()(const Unreadable& error) const {
            return "Could not read " + error.path + ": " + error.reason;
        }
        std::string operator()(const NotUTF8& error) const {
            return error.path + " is not UTF-8 text. It was not modified.";
        }
        std::string operator()(const ChangedSincePlan& error) const {
            return error.path +
                   " changed after the preview was made. Nothing was written; review the new "
                   "preview.";
        }
        std::string operator()(const WriteFailed& error) const {
            return "Could not write " + error.path + ": " + error.reason;
        }
    };
    return std::visit(Text{}, reason);
}

std::string ConfigPlanError::description() const {
    return std::visit([](const auto& error) { return error.description(); }, reason);
}

}  // namespace tallowbrook
