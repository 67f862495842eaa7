#include "Lists/SessionList.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <tuple>

#include "Domain/AgentProfile.h"
#include "Domain/EventCoding.h"
#include "Output/PrintableText.h"
#include "Output/TimeText.h"
#include "Preferences/HostSettings.h"
#include "SessionState/SessionSnapshotCoding.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

struct StatusLabel {
    SessionStatus status;
    std::string_view text;
};

// Without `needsAttention`, whose words depend on what the session asks for.
constexpr std::array statusLabels{
    StatusLabel{SessionStatus::working, "working"},
    StatusLabel{SessionStatus::completed, "completed"},
    StatusLabel{SessionStatus::failed, "failed"},
    StatusLabel{SessionStatus::interrupted, "interrupted"},
    StatusLabel{SessionStatus::stale, "stale"},
    StatusLabel{SessionStatus::unknown, "unknown"},
};

std::string waitingText(const SessionSnapshot& session) {
    const auto asks = AgentProfile::of(session.key.provider).asking(session.statusDetail.toolName);
    if (asks == Asking::question) return "has a question";
    if (asks == Asking::plan) return "has a plan";
    return session.attention == AttentionKind::input ? "needs input" : "needs permission";
}

}  // namespace

std::string statusText(const ListedSession& session) {
    if (session.status == SessionStatus::needsAttention) return waitingText(session.snapshot);
    // One may go on after a completed turn, but not after the end of the session.
    if (session.status == SessionStatus::completed && session.snapshot.sessionEnded) return "ended";
    const auto label = std::ranges::find(statusLabels, session.status, &StatusLabel::status);
    return std::string{label->text};
}

std::optional<Instant> nextStatusChange(const ListedSession& session) {
    if (session.status != SessionStatus::working) return std::nullopt;
    // One step later, since it is stale after that time and not with it.
    return session.snapshot.lastSeenAt + std::chrono::floor<Instant::duration>(staleAfter) +
           Instant::duration{1};
}

SessionList SessionList::make(std::vector<SessionSnapshot> snapshots, ListScope scope,
                              Instant now) {
    const auto isOlder = [now](const SessionSnapshot& snapshot) {
        return now - snapshot.lastSeenAt > listedFor;
    };
    SessionList list;
    for (auto& snapshot : snapshots) {
        // Not counted either: the user never started them.
        if (snapshot.key.isSetupCheck()) continue;
        if (scope == ListScope::recent && isOlder(snapshot)) {
            ++list.olderCount;
            continue;
        }
        const auto status = snapshot.displayStatus(now, staleAfter);
        list.sessions.push_back({std::move(snapshot), status});
    }
    // The id comes last, so that two lists in a row never differ in their order.
    std::ranges::sort(list.sessions, {}, [&](const ListedSession& session) {
        return std::tuple{isOlder(session.snapshot), sortRank(session.status),
                          -session.snapshot.lastSeenAt.time_since_epoch(), session.snapshot.id()};
    });
    return list;
}

std::size_t SessionList::shortIDLength() const {
    constexpr std::size_t leastLength = 8;
    std::vector<std::string_view> ids;
    ids.reserve(sessions.size());
    for (const auto& session : sessions) ids.push_back(session.snapshot.key.sessionID);
    std::ranges::sort(ids);
    std::size_t length = leastLength;
    for (std::size_t i = 1; i < ids.size(); ++i) {
        const auto differing = std::ranges::mismatch(ids[i - 1], ids[i]);
        // Two agents may have a session of the same id; more of it would tell nothing.
        if (differing.in2 == ids[i].end()) continue;
        const auto shared = static_cast<std::size_t>(differing.in2 - ids[i].begin());
        length = std::max(length, shared + 1);
    }
    return length;
}

std::expected<ListedSession, Sentence> SessionList::find(std::string_view word) const {
    const auto number = parseNumber<std::size_t>(word);
    // A number wins over an id that begins with it: it is what the user has before their eyes.
    if (number && *number >= 1 && *number <= sessions.size()) return sessions[*number - 1];

    std::vector<const ListedSession*> found;
    for (const auto& session : sessions) {
        const auto& id = session.snapshot.key.sessionID;
        // A whole id is meant as such, though another one may begin with it.
        if (id == word) return session;
        if (!word.empty() && id.starts_with(word)) found.push_back(&session);
    }
    if (found.size() == 1) return *found.front();
    return std::unexpected(Sentence{
        found.empty()
            ? fmt::format("There is no session \"{}\". \"tallowbrook sessions\" lists them.", word)
            : fmt::format("{} sessions begin with \"{}\". Give more of the id.", found.size(),
                          word)});
}

std::string SessionList::table(Instant now) const {
    std::string text;
    if (sessions.empty()) text = "No sessions to show.\n";
    const auto idLength = shortIDLength();
    const auto addRow = [&](std::string_view number, std::string_view status,
                            std::string_view agent, std::string_view project,
                            std::string_view session, std::string_view heard) {
        text +=
            fmt::format("{:>3}  {}  {}  {}  {}  {}\n", number, PrintableText::padded(status, 16),
                        PrintableText::padded(agent, 11),
                        PrintableText::padded(PrintableText::printable(project), 24),
                        PrintableText::padded(PrintableText::printable(session.substr(0, idLength)),
                                              idLength + 1),
                        heard);
    };
    if (!sessions.empty()) addRow("#", "STATUS", "AGENT", "PROJECT", "SESSION", "LAST HEARD OF");
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        const auto& session = sessions[i];
        addRow(std::to_string(i + 1), statusText(session),
               displayName(session.snapshot.key.provider), session.snapshot.projectLabel(),
               session.snapshot.key.sessionID, TimeText::ago(session.snapshot.lastSeenAt, now));
    }
    if (olderCount > 0)
        text += fmt::format("{} older {} not shown (sessions --all shows all).\n", olderCount,
                            olderCount == 1 ? "session is" : "sessions are");
    return text;
}

void encodeSession(RecordEncoder& encoder, const ListedSession& session, Instant now) {
    const auto formatTime = [now](Instant time) { return TimeText::shortTime(time, now); };
    const auto& [snapshot, status] = session;
    encoder.encode("id", snapshot.id());
    encoder.encode("status", status);
    encoder.encode("project", snapshot.projectLabel());
    encoder.encode("explanation", snapshot.explanation(now, staleAfter, formatTime));
    encoder.encodeRaw("snapshot", SessionSnapshotCoding::encode(snapshot));
}

std::string SessionList::json(Instant now) const {
    std::string text{"["};
    for (const auto& session : sessions) {
        RecordEncoder encoder = EventCoding::makeEncoder();
        encodeSession(encoder, session, now);
        // A session a line, for tools that work by lines.
        text += (text.size() > 1 ? ",\n " : "\n ") + encoder.text();
    }
    return PrintableText::printableJSON(text + (sessions.empty() ? "]\n" : "\n]\n"));
}

}  // namespace tallowbrook::host
