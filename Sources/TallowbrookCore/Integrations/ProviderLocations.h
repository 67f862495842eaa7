// Where each agent keeps its files.
//
// Constant data; safe from any thread.
#pragma once

#include <span>
#include <string_view>

#include "Domain/AgentEvent.h"

namespace tallowbrook {

struct ProviderLocations {
    std::string_view executableName;
    // Below the home directory:
    std::string_view configDirectory;
    std::string_view hookConfigFile;
    std::span<const std::string_view> homeExecutables;  // beside those that all agents have
    // How the folders of its editor extension begin, and the executables in such a folder.
    std::string_view extensionPrefix;
    std::span<const std::string_view> extensionExecutables;
    std::span<const std::string_view> absoluteExecutables;

    static const ProviderLocations& of(Provider provider);

    // The executables in an extension folder that only this system's edition of the extension has.
    // One implementation per system.
    static std::span<const std::string_view> systemExtensionExecutables(Provider provider);
};

}  // namespace tallowbrook
