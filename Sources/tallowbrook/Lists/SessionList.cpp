#include "Lists/SessionList.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <tuple>

#include "Domain/AgentProfile.h"
#include "Domain/EventCoding.h"
#include "Lists/SessionWords.h"
#include "Lists/UnfinishedEnd.h"
#include "Output/PrintableText.h"
#include "Output/TimeText.h"
#include "Preferences/HostSettings.h"
#include "SessionState/SessionSnapshotCoding.h"
#include "Text/Digits.h"

namespace tallowbrook::host {
namespace {

// How much of an id is shown at least.
constexpr std::size_t leastIDLength = 8;

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
    if (endedWithoutFinishing(session.snapshot)) return "ended unfinished";
    // One may go on after a completed turn, but not after the end of the session.
    const bool isGone = session.presence && session.presence->state == AgentState::gone;
    const bool hasEnded = session.snapshot.sessionEnded || isGone;
    if (session.status == SessionStatus::completed && hasEnded) return "ended";
    if (session.presence && session.presence->state == AgentState::idle) return "idle";
    const auto label = std::ranges::find(statusLabels, session.status, &StatusLabel::status);
    return std::string{label->text};
}

std::optional<Instant> nextStatusChange(const ListedSession& session) {
    if (session.status != SessionStatus::working) return std::nullopt;
    // One step later, since it is stale after that time and not with it.
    return session.snapshot.lastSeenAt + std::chrono::floor<Instant::duration>(staleAfter) +
           Instant::duration{1};
}

namespace {

// The names of sessions that are listed together. A stored mark may be older than what it marks, so
// the project and its directory are taken from the session itself.
SessionNames namesOf(std::vector<const SessionSnapshot*> sessions,
                     const std::vector<SessionMark>& stored) {
    std::map<std::string_view, const SessionMark*> marks;
    for (const auto& mark : stored) marks.emplace(mark.session, &mark);
    std::vector<SessionMark> listed;
    listed.reserve(sessions.size());
    // The id comes last, so that two lists in a row never differ in their names.
    std::ranges::sort(sessions, {}, [](const SessionSnapshot* session) {
        return std::tie(session->firstSeenAt, session->key.sessionID);
    });
    for (const auto* session : sessions) {
        auto& mark = listed.emplace_back();
        mark.session = session->id();
        if (const auto found = marks.find(mark.session); found != marks.end())
            mark = *found->second;
        mark.project = session->projectLabel();
        mark.directory = session->cwd.value_or("");
    }
    // The numbers that were given come first, and leave the others what is free.
    SessionNames names;
    for (const bool hasNumber : {true, false})
        for (const auto& mark : listed)
            if ((mark.number > 0) == hasNumber) names.add(mark);
    return names;
}

std::optional<AgentPresence> presenceOf(const SessionSnapshot& session,
                                        const AgentPresences& presences) {
    const auto found = presences.find(session.id());
    if (found == presences.end() || !found->second.holdsFor(session)) return std::nullopt;
    return found->second;
}

SessionStatus displayStatus(const SessionSnapshot& session,
                            const std::optional<AgentPresence>& presence, Instant now) {
    // An agent that says itself that it works is not silent.
    if (presence && presence->state == AgentState::working) return SessionStatus::working;
    return shownAs(session, presence).displayStatus(now, staleAfter);
}

RecordEncoder agentRecord(const AgentPresence& presence) {
    auto encoder = EventCoding::makeEncoder();
    encoder.encode("state", presence.state);
    encoder.encode("since", presence.since);
    encoder.encode("evidence", presence.evidence);
    return encoder;
}

// All that the word can mean, by the surest way in which it means anything.
std::vector<const ListedSession*> meantBy(std::string_view word,
                                          const std::vector<ListedSession>& sessions,
                                          Projects projects) {
    // A number wins over an id that begins with it: it is what the user has before their eyes.
    const auto number = parseNumber<std::size_t>(word);
    if (number && *number >= 1 && *number <= sessions.size()) return {&sessions[*number - 1]};
    if (word.empty()) return {};

    std::vector<const ListedSession*> byID;
    std::vector<const ListedSession*> byName;
    std::vector<const ListedSession*> byProject;
    for (const auto& session : sessions) {
        const auto& id = session.snapshot.key.sessionID;
        // A whole id is meant as such, though another one may begin with it.
        if (id == word || session.snapshot.id() == word) return {&session};
        if (id.starts_with(word)) byID.push_back(&session);
        if (session.snapshot.projectLabel() == word)
            byProject.push_back(&session);
        else if (session.name == word)
            byName.push_back(&session);
    }
    if (!byID.empty()) return byID;
    if (!byName.empty()) return byName;
    if (projects == Projects::areNotTaken) return {};
    // There is nothing to do with one that has ended, as long as there is another.
    auto left = byProject;
    std::erase_if(left, [](const auto* session) { return statusText(*session) == "ended"; });
    return left.empty() ? byProject : left;
}

}  // namespace

std::string ListedSession::explanation(Instant now) const {
    const auto formatTime = [now](Instant time) { return TimeText::shortTime(time, now); };
    auto byEvents = explanationText(snapshot, now, formatTime);
    if (!presence) return byEvents;
    const auto known = presenceText(snapshot.key.provider, *presence, formatTime);
    // What the events say is true as well, and says more.
    const auto shown = shownAs(snapshot, presence);
    if (shown.status == snapshot.status && shown.sessionEnded == snapshot.sessionEnded &&
        snapshot.displayStatus(now, staleAfter) == status)
        return byEvents + " " + known;
    return known + " The last event that counted is " + snapshot.lastEventType + " of " +
           formatTime(snapshot.lastAppliedAt) + ".";
}

SessionList SessionList::make(std::vector<SessionSnapshot> snapshots, ListScope scope, Instant now,
                              const std::vector<SessionMark>& marks,
                              const AgentPresences& presences) {
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
        const auto presence = presenceOf(snapshot, presences);
        const auto status = displayStatus(snapshot, presence, now);
        auto label = snapshot.projectLabel();
        list.sessions.push_back({std::move(snapshot), status, std::move(label), presence});
    }
    std::vector<const SessionSnapshot*> recent;
    for (const auto& session : list.sessions)
        if (!isOlder(session.snapshot)) recent.push_back(&session.snapshot);
    const auto names = namesOf(std::move(recent), marks);
    for (auto& session : list.sessions)
        if (!isOlder(session.snapshot)) session.name = names.nameOf(session.snapshot.id());
    // The id comes last, so that two lists in a row never differ in their order.
    std::ranges::sort(list.sessions, {}, [&](const ListedSession& session) {
        return std::tuple{isOlder(session.snapshot), sortRank(session.status),
                          -session.snapshot.lastSeenAt.time_since_epoch(), session.snapshot.id()};
    });
    return list;
}

std::size_t SessionList::shortIDLength() const {
    std::vector<std::string_view> ids;
    ids.reserve(sessions.size());
    for (const auto& session : sessions) ids.push_back(session.snapshot.key.sessionID);
    std::ranges::sort(ids);
    std::size_t length = leastIDLength;
    for (std::size_t i = 1; i < ids.size(); ++i) {
        const auto differing = std::ranges::mismatch(ids[i - 1], ids[i]);
        // Two agents may have a session of the same id; more of it would tell nothing.
        if (differing.in2 == ids[i].end()) continue;
        const auto shared = static_cast<std::size_t>(differing.in2 - ids[i].begin());
        length = std::max(length, shared + 1);
    }
    return length;
}

std::expected<ListedSession, Sentence> SessionList::find(std::string_view word,
                                                         Projects projects) const {
    const auto found = meantBy(word, sessions, projects);
    if (found.size() == 1) return *found.front();
    if (found.empty())
        return std::unexpected(Sentence{
            fmt::format("There is no session \"{}\". \"tallowbrook sessions\" lists them.", word)});
    if (found.front()->snapshot.key.sessionID.starts_with(word))
        return std::unexpected(Sentence{fmt::format(
            "{} sessions begin with \"{}\". Give more of the id.", found.size(), word)});
    std::string text = fmt::format("{} sessions are of \"{}\"", found.size(), word);
    const char* separator = ": ";
    for (const auto* session : found) {
        const auto since = statusSince(*session);
        text += fmt::format("{}{} is {} ({} since {})", separator, session - sessions.data() + 1,
                            session->name, statusText(*session),
                            TimeText::shortTime(since, session->snapshot.lastSeenAt));
        separator = ", ";
    }
    return std::unexpected(
        Sentence{text}.followedBy("Give the number or the beginning of the id."));
}

bool SessionList::isAmbiguous(std::string_view word, Projects projects) const {
    return meantBy(word, sessions, projects).size() > 1;
}

std::string SessionList::table(Instant now) const {
    std::string text;
    if (sessions.empty()) text = "No sessions to show.\n";
    const auto idLength = shortIDLength();
    constexpr std::size_t screenColumns = 80;
    constexpr std::size_t projectColumns = 20;
    const auto addRow = [&](std::string_view number, std::string_view status,
                            std::string_view agent, std::string_view project,
                            std::string_view session, std::string_view lasting) {
        const auto row = PrintableText::padded(
            fmt::format("{:>3}  {}  {}  {}  {}  {}", number, PrintableText::padded(status, 16),
                        PrintableText::padded(agent, 11),
                        PrintableText::padded(PrintableText::printable(project), projectColumns),
                        PrintableText::padded(PrintableText::printable(session.substr(0, idLength)),
                                              idLength),
                        PrintableText::printable(lasting)),
            // Ids that begin alike for long are shown whole, wherever the line ends then.
            screenColumns + idLength - leastIDLength);
        text += row.substr(0, row.find_last_not_of(' ') + 1) + "\n";
    };
    if (!sessions.empty()) addRow("#", "STATUS", "AGENT", "PROJECT", "SESSION", "FOR");
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        const auto& session = sessions[i];
        const auto reason = reasonText(session);
        addRow(std::to_string(i + 1), statusText(session),
               displayName(session.snapshot.key.provider), session.name,
               session.snapshot.key.sessionID,
               TimeText::lasting(statusSince(session), now) + (reason.empty() ? "" : " " + reason));
    }
    if (olderCount > 0)
        text += fmt::format("{} older {} not shown (sessions --all shows all).\n", olderCount,
                            olderCount == 1 ? "session is" : "sessions are");
    return text;
}

void encodeSession(RecordEncoder& encoder, const ListedSession& session, Instant now) {
    const auto& snapshot = session.snapshot;
    encoder.encode("id", snapshot.id());
    encoder.encode("status", session.status);
    encoder.encode("project", snapshot.projectLabel());
    encoder.encode("name", session.name);
    encoder.encode("explanation", session.explanation(now));
    if (session.presence) encoder.encode("agent", agentRecord(*session.presence));
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
