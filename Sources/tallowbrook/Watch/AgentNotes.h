// What agents note about their own sessions, one row an agent: where it is, and how to read it.
//
// The agents promise none of it, so nothing depends on it: what is missing, torn or of another form
// says nothing. No file that holds a word of the user's is read, and of those that lie beside such
// words only the members and columns that are named here.
//
// Stateless; safe from any thread while none changes the environment, which says where an agent's
// directory is.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "SessionState/AgentPresence.h"

namespace tallowbrook::host {

// That an agent is in a state, by its own words.
struct NotedState {
    AgentState state = AgentState::unknown;
    AgentEvidence evidence = AgentEvidence::none;
    Instant since{};
    Instant::duration precision{};  // `since` may be earlier than what happened by up to this
    // Whether it is true as of now. What is not says only what was true at `since`.
    bool isPresent = false;
    bool operator==(const NotedState&) const = default;
};

enum class SessionLock { unknown, held, isFree, missing };

struct SessionNotes {
    // The agent's process, by its own notes or as the holder of the session's lock.
    std::optional<ProcessIdentity> process;
    bool processLives = false;
    std::optional<NotedState> state;
    SessionLock lock = SessionLock::unknown;
    bool operator==(const SessionNotes&) const = default;
};

// By session ids. A session of which nothing is noted is left out.
using NotesOfSessions = std::map<std::string, SessionNotes>;

// Files that change when an agent notes something: those of a directory whose names begin so.
struct NotePlace {
    std::filesystem::path directory;
    std::string prefix;
    bool operator==(const NotePlace&) const = default;
    auto operator<=>(const NotePlace&) const = default;
};

struct AgentNotes {
    Provider provider = Provider::claudeCode;
    // Whether the process on the terminal that a session's events name is the session's own.
    bool ownsTerminal = false;
    // Of these sessions. Never waits, never fails.
    std::function<NotesOfSessions(const std::vector<std::string>& sessionIDs)> read;
    std::vector<NotePlace> places;

    // Of every agent of which notes are known, with its directory where the environment has it.
    static std::vector<AgentNotes> live();
};

}  // namespace tallowbrook::host
