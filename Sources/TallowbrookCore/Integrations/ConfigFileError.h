// Why a change to a configuration file was not planned or not applied. The file is as it was.
#pragma once

#include <filesystem>
#include <string>
#include <variant>

#include "Integrations/HookConfigError.h"

namespace tallowbrook {

struct ConfigFileError {
    struct Unreadable {
        std::string path;
        std::string reason;
        bool operator==(const Unreadable&) const = default;
    };
    struct NotUTF8 {
        std::string path;
        bool operator==(const NotUTF8&) const = default;
    };
    struct ChangedSincePlan {
        std::string path;
        bool operator==(const ChangedSincePlan&) const = default;
    };
    struct WriteFailed {
        std::string path;
        std::string reason;
        bool operator==(const WriteFailed&) const = default;
    };
    std::variant<Unreadable, NotUTF8, ChangedSincePlan, WriteFailed> reason;
    bool operator==(const ConfigFileError&) const = default;

    static ConfigFileError unreadable(const std::filesystem::path& path, std::string reason);
    static ConfigFileError notUTF8(const std::filesystem::path& path);
    static ConfigFileError changedSincePlan(const std::filesystem::path& path);
    static ConfigFileError writeFailed(const std::filesystem::path& path, std::string reason);

    // A sentence for the user.
    std::string description() const;
};

// What keeps a plan from being made: the file, or what is in it.
struct ConfigPlanError {
    std::variant<ConfigFileError, HookConfigError> reason;
    bool operator==(const ConfigPlanError&) const = default;

    std::string description() const;
};

}  // namespace tallowbrook
