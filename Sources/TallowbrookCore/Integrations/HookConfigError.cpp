#include "Integrations/HookConfigError.h"

#include <utility>

namespace tallowbrook {

HookConfigError HookConfigError::malformedJSON(JSONParseError error) {
    return {MalformedJSON{std::move(error)}};
}

HookConfigError HookConfigError::unexpectedStructure(std::string path, std::string expectedKind) {
    return {UnexpectedStructure{std::move(path), std::move(expectedKind)}};
}

std::string HookConfigError::description() const {
    struct Text {
        std::string operator()(const MalformedJSON& malformed) const {
            return "The file is not valid JSON (" + malformed.error.description() +
                   "). It was not modified.";
        }
        std::string operator()(const UnexpectedStructure& place) const {
            return "Unexpected structure at " + place.path + " (expected " + place.expectedKind +
                   "). The merge is ambiguous, so the file was not modified.";
        }
        std::string operator()(const RootNotObject&) const {
            return "The file's top-level value is not a JSON object. It was not modified.";
        }
    };
    return std::visit(Text{}, reason);
}

}  // namespace tallowbrook
