#include "Watch/CodexNotes.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "Watch/ForeignDatabase.h"
#include "Watch/ProcessStart.h"
#include "Watch/SessionLock.h"

namespace tallowbrook::host::CodexNotes {
namespace {

constexpr const char* historyFile = "thread_history_1.sqlite";

struct StatusRule {
    std::string_view status;
    AgentState state;
};
constexpr std::array statusRules{
    StatusRule{"inProgress", AgentState::working},
    StatusRule{"completed", AgentState::finished},
    StatusRule{"interrupted", AgentState::interrupted},
    StatusRule{"failed", AgentState::failed},
};

std::optional<NotedState> stateOf(const std::string& status, std::int64_t seconds) {
    const auto rule = std::ranges::find(statusRules, status, &StatusRule::status);
    constexpr std::int64_t year9999 = 253'402'300'799;
    if (rule == statusRules.end() || seconds <= 0 || seconds > year9999) return std::nullopt;
    return NotedState{.state = rule->state,
                      .evidence = AgentEvidence::turns,
                      .since = Instant{std::chrono::seconds{seconds}},
                      .precision = std::chrono::seconds{1},
                      .isPresent = false};
}

// Of each session the last turn alone.
void readTurns(const std::filesystem::path& file, NotesOfSessions& notes) {
    ForeignDatabase::read(file, [&](SQLite::Database& database) {
        SQLite::Statement query{database,
                                "SELECT status, coalesce(completed_at, started_at)"
                                " FROM thread_turns WHERE thread_id = ?"
                                " ORDER BY started_at DESC, rowid DESC LIMIT 1"};
        for (auto& [session, known] : notes) {
            query.bind(1, session);
            if (query.executeStep())
                known.state =
                    stateOf(query.getColumn(0).getString(), query.getColumn(1).getInt64());
            query.reset();
        }
    });
}

// An id becomes a part of a path.
bool isPlain(const std::string& sessionID) {
    return !sessionID.empty() && sessionID.find('/') == std::string::npos;
}

NotesOfSessions read(const std::filesystem::path& home,
                     const std::vector<std::string>& sessionIDs) {
    NotesOfSessions found;
    for (const auto& session : sessionIDs) {
        if (!isPlain(session)) continue;
        auto& notes = found[session];
        const auto look = lookAtLock(home / "thread-writer-locks" / (session + ".lock"));
        notes.lock = look.lock;
        if (!look.holder) continue;
        if (const auto start = processStart(*look.holder)) {
            notes.process = {*look.holder, *start};
            notes.processLives = true;
        }
    }
    if (!found.empty()) readTurns(home / historyFile, found);
    return found;
}

}  // namespace

AgentNotes in(const std::filesystem::path& home) {
    return {
        .provider = Provider::codexCLI,
        // Hooks run in a background server, on the terminal of whoever started that.
        .ownsTerminal = false,
        .read = [home](const auto& sessionIDs) { return read(home, sessionIDs); },
        // What is written goes to the log first. The log's shared memory changes with every reader.
        .places = {{home, std::string{historyFile} + "-wal"}, {home / "thread-writer-locks", ""}},
    };
}

}  // namespace tallowbrook::host::CodexNotes
