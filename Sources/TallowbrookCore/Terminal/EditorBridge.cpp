#include "Terminal/EditorBridge.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <set>
#include <string>
#include <string_view>
#include <system_error>

#include "Domain/UUID.h"
#include "EventBridge/TallowbrookPaths.h"
#include "System/DirectoryListing.h"
#include "System/FileContents.h"
#include "System/ReplacementFile.h"

namespace tallowbrook {

namespace {

constexpr std::string_view recordPrefix = "window-";
constexpr std::string_view extension = ".json";
// A record names folders and process ids: far less than this.
constexpr std::size_t maxRecordBytes = 1'048'576;
constexpr std::string_view unfinishedSuffix = ".unfinished";

bool isWindowRecord(const std::filesystem::path& file) {
    return file.filename().string().starts_with(recordPrefix) && file.extension() == extension;
}

// Absent when it cannot be told.
std::optional<Instant> modificationTime(const std::filesystem::path& file) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(file, error);
    if (error) return std::nullopt;
    return std::chrono::floor<Instant::duration>(
        std::filesystem::file_time_type::clock::to_sys(time));
}

// A host that was killed between the two steps of a request leaves an unfinished one behind.
bool isRequest(std::filesystem::path file) {
    if (file.extension() == unfinishedSuffix) file.replace_extension();
    return file.extension() == extension;
}

bool isExpired(const std::filesystem::path& request, Instant now) {
    const auto modified = modificationTime(request);
    return !modified || Seconds{now - *modified} > EditorBridge::requestLifetime;
}

// Under its name the file is there whole or not at all.
std::expected<void, FileError> writeAtomically(const std::filesystem::path& path,
                                               std::string_view text) {
    auto file = ReplacementFile::create(path.string().append(unfinishedSuffix));
    if (!file) return std::unexpected(file.error());
    if (auto written = file->write(text); !written) return written;
    return file->replace(path);
}

}  // namespace

bool EditorBridge::processIsRunning(pid_t pid) {
    // Zero and negative numbers would ask about whole groups of processes.
    if (pid < 2) return false;
    // Signal 0 is only permission asked: a refusal means that the process is there.
    return kill(pid, 0) == 0 || errno == EPERM;
}

std::vector<EditorWindow> EditorBridge::windows(const std::filesystem::path& directory,
                                                const std::function<bool(pid_t)>& isRunning) {
    std::vector<EditorWindow> found;
    for (const auto& file : listDirectory(directory)) {
        if (!isWindowRecord(file)) continue;
        const auto text = FileContents::read(file, maxRecordBytes);
        // The extension may have removed the file since the listing.
        if (!text) continue;
        auto window = EditorWindowCoding::decode(*text);
        if (window && isRunning(window->hostPid)) found.push_back(std::move(*window));
    }
    return found;
}

std::optional<EditorBridge::Owner> EditorBridge::owner(const std::vector<pid_t>& processes,
                                                       const std::vector<EditorWindow>& windows) {
    const std::set<pid_t> wanted{processes.begin(), processes.end()};
    for (const EditorWindow& window : windows)
        for (const pid_t shell : window.shellPids)
            if (wanted.contains(shell)) return Owner{window, shell};
    return std::nullopt;
}

std::expected<std::filesystem::path, FileError> EditorBridge::requestTerminal(
    pid_t shellPid, const std::filesystem::path& directory, Instant now) {
    if (auto made = TallowbrookPaths::ensureDirectory(directory); !made)
        return std::unexpected(made.error());
    // Here, since an extension that is not running removes none.
    removeExpiredRequests(directory, now);
    const auto id = randomUUID();
    if (!id) return std::unexpected(id.error());
    const std::string text = "{\"shellPid\":" + std::to_string(shellPid) + "}";
    auto request = directory / UUIDText::text(*id).append(extension);
    if (auto written = writeAtomically(request, text); !written)
        return std::unexpected(written.error());
    return request;
}

void EditorBridge::removeExpiredRequests(const std::filesystem::path& directory, Instant now) {
    for (const auto& file : listDirectory(directory))
        if (isRequest(file) && isExpired(file, now)) unlink(file.c_str());
}

}  // namespace tallowbrook
