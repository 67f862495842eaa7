// Finds out which agents are installed, where, in which version, and where their hook
// configuration files belong.
//
// All it learns of the machine comes through its operations, so that its decisions can be tested
// without one. A value is used by one thread at a time, unless its operations may run at once, as
// those of `live` may. Nothing here fails: what cannot be learned is absent.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Integrations/ProviderDetection.h"

namespace tallowbrook {

struct ProviderDetector {
    std::string homeDirectory;            // without a slash at its end
    std::vector<std::string> searchPath;  // the directories of PATH
    // Whether the user may run the file: one of the right name that cannot run is no agent.
    std::function<bool(const std::string& path)> fileExists;
    std::function<bool(const std::string& path)> isDirectory;
    // The names of the entries, in any order; empty on any error.
    std::function<std::vector<std::string>(const std::string& path)> contentsOfDirectory;
    // The version that an executable reports, as `sanitizeVersion` gives it.
    std::function<std::optional<std::string>(const std::string& executablePath)> versionProbe;

    // This machine, with the home directory and PATH as they are now. With `probeVersions` the
    // executable that was found is run with "--version" for at most 3 seconds and one more; one
    // that fails has no version. Without, no program is ever run.
    static ProviderDetector live(bool probeVersions);

    // Looks at files, and calls `versionProbe` at most once.
    ProviderDetection detect(Provider provider) const;

    // The paths that `detect` tries, in its order, each once. Looks into the extension folders of
    // editors. The system's own places come last.
    std::vector<std::string> candidateExecutables(Provider provider) const;

    // The first line that is not empty, less what is not printable ASCII and the blanks at both
    // ends, cut at 80 characters. Absent when nothing is left. `output` is UTF-8.
    static std::optional<std::string> sanitizeVersion(std::string_view output);
};

}  // namespace tallowbrook
