#include "Integrations/ProviderDetector.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <compare>
#include <set>
#include <span>
#include <utility>

#include "Domain/AgentProfile.h"
#include "Integrations/ProcessRunner.h"
#include "System/DirectoryListing.h"
#include "System/SearchPath.h"
#include "System/UserHome.h"
#include "Text/Digits.h"

namespace tallowbrook {
namespace {

constexpr Seconds versionTimeout{3.0};
constexpr std::int64_t maxVersionOutputBytes = 65536;
constexpr std::size_t maxVersionLength = 80;

constexpr std::array<std::string_view, 4> editorFolders{".vscode", ".vscode-insiders", ".cursor",
                                                        ".windsurf"};

// Takes the digits at the front, and gives them without the zeros that do not count.
std::string_view takeNumber(std::string_view& text) {
    std::string_view digits = takeDigits(text);
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

// Compares runs of digits by their value and all else byte by byte, so that 2.0.9 < 2.0.10.
std::weak_ordering compareNumerically(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (isDigit(a[0]) && isDigit(b[0])) {
            const auto left = takeNumber(a);
            const auto right = takeNumber(b);
            if (left.size() != right.size()) return left.size() <=> right.size();
            if (left != right) return left <=> right;
            continue;
        }
        if (a[0] != b[0]) return a.substr(0, 1) <=> b.substr(0, 1);
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return a.size() <=> b.size();
}

struct HighestVersionFirst {
    bool operator()(std::string_view a, std::string_view b) const {
        return compareNumerically(a, b) > 0;
    }
};

// The bytes of the line end at the front of `text`; 0 where there is none.
std::size_t lineEndLength(std::string_view text) {
    if (std::string_view{"\n\v\f\r"}.contains(text[0])) return 1;
    if (text.starts_with("\u0085")) return 2;
    if (text.starts_with("\u2028") || text.starts_with("\u2029")) return 3;
    return 0;
}

// The first line that is not empty; empty where there is none.
std::string_view firstLine(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const std::size_t lineEnd = lineEndLength(text.substr(length));
        if (lineEnd == 0)
            ++length;
        else if (length > 0)
            break;
        else
            text.remove_prefix(lineEnd);
    }
    return text.substr(0, length);
}

bool isExistingDirectory(const std::string& path) {
    struct stat status{};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::vector<std::string> namesInDirectory(const std::string& path) {
    std::vector<std::string> names;
    for (const auto& entry : listDirectory(path)) names.push_back(entry.filename().string());
    return names;
}

std::optional<std::string> probedVersion(const std::string& executablePath) {
    const auto result =
        ProcessRunner::run(executablePath, {"--version"}, versionTimeout, maxVersionOutputBytes);
    // What a failing program prints is an error text, not a version.
    if (!result || result->status != 0) return std::nullopt;
    return ProviderDetector::sanitizeVersion(result->output);
}

// Paths are joined as plain text.
std::string liveHomeDirectory() {
    std::string home = userHomeDirectory().value_or("").string();
    while (home.ends_with('/')) home.pop_back();
    return home;
}

// The folders of the agent's extension in all editors, each editor's highest version first.
std::vector<std::string> extensionFolders(const ProviderDetector& detector,
                                          std::string_view prefix) {
    std::vector<std::string> folders;
    for (const auto editor : editorFolders) {
        const std::string extensions =
            detector.homeDirectory + "/" + std::string{editor} + "/extensions";
        // Equal versions stay in the order of the directory.
        std::multiset<std::string, HighestVersionFirst> names;
        for (auto& name : detector.contentsOfDirectory(extensions))
            if (name.starts_with(prefix)) names.insert(std::move(name));
        for (const auto& name : names) folders.emplace_back(extensions).append("/").append(name);
    }
    return folders;
}

// Candidates in the order they are added in, each once.
class CandidateList {
 public:
    void add(std::string directory, std::string_view path) {
        std::string candidate = std::move(directory.append(path));
        if (std::ranges::find(paths_, candidate) == paths_.end())
            paths_.push_back(std::move(candidate));
    }

    void addEach(const std::string& directory, std::span<const std::string_view> paths) {
        for (const auto path : paths) add(directory, path);
    }

    std::vector<std::string> take() { return std::move(paths_); }

 private:
    std::vector<std::string> paths_;
};

}  // namespace

ProviderDetector ProviderDetector::live(bool probeVersions) {
    ProviderDetector detector{
        .homeDirectory = liveHomeDirectory(),
        .searchPath = SearchPath::directories(),
        .fileExists = SearchPath::isExecutableFile,
        .isDirectory = isExistingDirectory,
        .contentsOfDirectory = namesInDirectory,
        .versionProbe = [](const std::string&) { return std::nullopt; },
    };
    if (probeVersions) detector.versionProbe = probedVersion;
    return detector;
}

std::vector<std::string> ProviderDetector::candidateExecutables(Provider provider) const {
    const auto& locations = AgentProfile::of(provider).locations;
    const std::string name = "/" + std::string{locations.executableName};
    CandidateList candidates;
    for (const auto& directory : searchPath) candidates.add(directory, name);
    candidates.add(homeDirectory + "/.local/bin", name);
    candidates.add("/opt/homebrew/bin", name);
    candidates.add("/usr/local/bin", name);
    candidates.addEach(homeDirectory, locations.homeExecutables);
    const auto extensions = extensionFolders(*this, locations.extensionPrefix);
    for (const auto& folder : extensions)
        candidates.addEach(folder, locations.extensionExecutables);
    candidates.addEach("", locations.absoluteExecutables);
    for (const auto& folder : extensions)
        candidates.addEach(folder, locations.systemExtensionExecutables());
    return candidates.take();
}

ProviderDetection ProviderDetector::detect(Provider provider) const {
    const auto& locations = AgentProfile::of(provider).locations;
    const std::string configDirectory = homeDirectory + std::string{locations.configDirectory};
    ProviderDetection detection;
    detection.provider = provider;
    detection.hookConfigPath = homeDirectory + std::string{locations.hookConfigFile};

    const auto candidates = candidateExecutables(provider);
    if (const auto found = std::ranges::find_if(candidates, fileExists);
        found != candidates.end()) {
        detection.state = ProviderDetection::State::installed;
        detection.executablePath = *found;
        detection.evidence.push_back("Executable: " + *found);
    }
    if (isDirectory(configDirectory)) {
        if (!detection.executablePath) detection.state = ProviderDetection::State::configOnly;
        detection.evidence.push_back("Config directory: " + configDirectory);
    }
    if (detection.executablePath) detection.version = versionProbe(*detection.executablePath);
    if (detection.version) detection.evidence.push_back("Version: " + *detection.version);
    return detection;
}

std::optional<std::string> ProviderDetector::sanitizeVersion(std::string_view output) {
    std::string version{firstLine(output)};
    // Some programs colour their output; the report is plain text.
    std::erase_if(version, [](char c) { return c < ' ' || c > '~'; });
    version.erase(0, std::min(version.find_first_not_of(' '), version.size()));
    version.erase(version.find_last_not_of(' ') + 1);
    if (version.empty()) return std::nullopt;
    version.resize(std::min(version.size(), maxVersionLength));
    return version;
}

}  // namespace tallowbrook
