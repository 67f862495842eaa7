#include "Watch/StateFile.h"

#include <SQLiteCpp/Exception.h>
#include <unistd.h>

#include <algorithm>
#include <exception>

#include "Domain/AgentProfile.h"
#include "Domain/EventCoding.h"
#include "Output/PrintableText.h"
#include "Preferences/HostSettings.h"
#include "Store/SessionStore.h"
#include "System/ReplacementFile.h"
#include "Watch/Presence.h"

namespace tallowbrook::host {
namespace {

constexpr int schema = 1;

std::string_view reasonOf(const SessionSnapshot& session) {
    const auto asks = AgentProfile::of(session.key.provider).asking(session.statusDetail.toolName);
    if (asks == Asking::question) return "question";
    if (asks == Asking::plan) return "plan";
    return session.attention == AttentionKind::input ? "input" : "permission";
}

std::expected<void, FileError> write(const std::filesystem::path& location, std::string_view text) {
    const auto unfinished = location.string() + ".unfinished";
    // Of a host that was killed while it wrote.
    unlink(unfinished.c_str());
    auto file = ReplacementFile::create(unfinished);
    if (!file) return std::unexpected(file.error());
    if (auto written = file->write(text); !written) return written;
    return file->replace(location);
}

}  // namespace

StateFile::StateFile(TallowbrookPaths paths, ShellOf shellOf)
    : paths_{std::move(paths)}, findShell_{std::move(shellOf)} {}

std::filesystem::path StateFile::location(const TallowbrookPaths& paths) {
    return paths.home / "state.json";
}

void StateFile::update(Database& database, Instant now) noexcept {
    try {
        const auto text = contents(database, now);
        const auto file = location(paths_);
        if (text == written_ && access(file.c_str(), F_OK) == 0) return;
        auto encoder = EventCoding::makeEncoder();
        encoder.encode("hostPid", getpid());
        encoder.encode("updatedAt", now);
        // Both are objects: the one goes on where the other ends.
        auto whole = encoder.text();
        whole.back() = ',';
        whole += text.substr(1) + "\n";
        written_ = write(file, whole) ? text : std::string{};
    } catch (const std::exception&) {
        written_.clear();
    }
}

bool StateFile::mayHaveNews() const {
    if (shells_.empty()) return false;
    std::error_code error;
    const auto windowsAsOf = std::filesystem::last_write_time(paths_.editorsDirectory(), error);
    return !error && std::ranges::any_of(shells_, [&](const auto& known) {
        return known.second.windowsAsOf != windowsAsOf;
    });
}

void StateFile::remove() { unlink(location(paths_).c_str()); }

std::string StateFile::contents(Database& database, Instant now) {
    SessionStore store{database};
    const auto ago = [now](Seconds span) {
        return now - std::chrono::duration_cast<Instant::duration>(span);
    };
    auto sessions = sessionsShownWaiting(database, ago(listedFor));
    std::erase_if(sessions, [](const auto& session) { return session.key.isSetupCheck(); });
    std::ranges::sort(sessions, {}, [](const auto& session) {
        return std::pair{session.statusSince, session.id()};
    });
    std::string waiting;
    std::map<std::string, Shell> shells;
    for (const auto& session : sessions) {
        auto encoder = EventCoding::makeEncoder();
        encoder.encode("agent", displayName(session.key.provider));
        encoder.encode("cwd", session.cwd);
        encoder.encode("id", session.id());
        encoder.encode("project", session.projectLabel());
        encoder.encode("reason", reasonOf(session));
        encoder.encode("since", session.statusSince);
        if (const auto shell = shellOf(session)) encoder.encode("shellPid", *shell);
        waiting += (waiting.empty() ? "" : ",") + encoder.text();
        if (auto known = shells_.extract(session.id())) shells.insert(std::move(known));
    }
    shells_ = std::move(shells);
    auto encoder = EventCoding::makeEncoder();
    encoder.encode("schema", schema);
    encoder.encodeRaw("waiting", "[" + waiting + "]");
    const auto working = store.sessionsAtWork(ago(staleAfter));
    const std::int64_t workingCount = std::ranges::count_if(
        working, [](const auto& session) { return !session.key.isSetupCheck(); });
    encoder.encode("working", workingCount);
    return PrintableText::printableJSON(encoder.text());
}

std::optional<pid_t> StateFile::shellOf(const SessionSnapshot& session) {
    // To look through the processes takes milliseconds, and passes are many: what was found holds
    // until the session waits anew or an editor's windows change.
    std::error_code error;
    const auto windowsAsOf = std::filesystem::last_write_time(paths_.editorsDirectory(), error);
    auto& known = shells_[session.id()];
    if (error) return std::nullopt;
    if (known.waitingSince != session.statusSince || known.windowsAsOf != windowsAsOf)
        known = {session.statusSince, windowsAsOf, findShell_(session)};
    return known.pid;
}

}  // namespace tallowbrook::host
