#include "Watch/ClaudeNotes.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "Domain/StreamingJSON.h"
#include "System/DirectoryListing.h"
#include "System/FileContents.h"
#include "Text/Digits.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host::ClaudeNotes {
namespace {

// A record takes some hundred bytes; a folder holds one for each running agent.
constexpr std::size_t maxRecordBytes = 65536;
constexpr std::size_t maxRecords = 1000;
constexpr std::size_t maxNesting = 32;

Instant fromMilliseconds(std::int64_t milliseconds) {
    // Far beyond these years the conversion to microseconds would overflow.
    constexpr std::int64_t year9999 = 253'402'300'799'999;
    return Instant{std::chrono::milliseconds{std::clamp<std::int64_t>(milliseconds, 0, year9999)}};
}

// Keeps the few members that are read, and lets all others pass by.
class RecordHandler : public StreamingJSONHandler {
 public:
    Record record;
    bool isObject = false;

    bool on_object_begin(ErrorCode&) {
        if (level_ == 0) isObject = true;
        ++level_;
        return true;
    }
    bool on_object_end(std::size_t, ErrorCode&) { return leave(); }
    bool on_array_begin(ErrorCode&) {
        ++level_;
        return true;
    }
    bool on_array_end(std::size_t, ErrorCode&) { return leave(); }

    bool on_key_part(std::string_view part, std::size_t, ErrorCode&) {
        if (level_ == 1) key_.add(part);
        return true;
    }
    bool on_key(std::string_view lastPart, std::size_t, ErrorCode&) {
        if (level_ != 1) return true;
        const auto key = key_.finish(lastPart);
        text_ = nullptr;
        number_ = Number::none;
        if (key == "sessionId") text_ = &record.sessionID;
        if (key == "status") text_ = &record.status;
        if (key == "waitingFor") text_ = &record.waitingFor;
        if (key == "procStart") text_ = &record.start;
        if (key == "pid") number_ = Number::pid;
        if (key == "startedAt") number_ = Number::startedAt;
        if (key == "statusUpdatedAt") number_ = Number::statusSince;
        return true;
    }

    bool on_string_part(std::string_view part, std::size_t, ErrorCode&) {
        if (level_ == 1 && text_ != nullptr) parts_.add(part);
        return true;
    }
    bool on_string(std::string_view lastPart, std::size_t, ErrorCode&) {
        if (level_ == 1 && text_ != nullptr) *text_ = parts_.finish(lastPart);
        return true;
    }
    bool on_int64(std::int64_t value, std::string_view, ErrorCode&) {
        if (level_ == 1) take(value);
        return true;
    }

 private:
    enum class Number { none, pid, startedAt, statusSince };

    bool leave() {
        --level_;
        return true;
    }
    void take(std::int64_t value) {
        if (text_ == &record.start) record.start = std::to_string(value);
        if (number_ == Number::pid && std::in_range<std::int32_t>(value))
            record.pid = static_cast<std::int32_t>(value);
        if (number_ == Number::startedAt) record.startedAt = fromMilliseconds(value);
        if (number_ == Number::statusSince) record.statusSince = fromMilliseconds(value);
    }

    std::size_t level_ = 0;
    std::string* text_ = nullptr;  // where the value that comes next is kept
    Number number_ = Number::none;
    PartedText key_;
    PartedText parts_;
};

struct StatusRule {
    std::string_view status;
    AgentState state;
};
constexpr std::array statusRules{
    StatusRule{"busy", AgentState::working},
    StatusRule{"waiting", AgentState::waiting},
    StatusRule{"idle", AgentState::idle},
    // Idle, with a command in the background.
    StatusRule{"shell", AgentState::idle},
};

std::optional<NotedState> stateOf(const Record& record) {
    const auto rule = std::ranges::find(statusRules, record.status, &StatusRule::status);
    if (rule == statusRules.end() || !record.statusSince) return std::nullopt;
    // A menu that the user has opened says nothing about the turn behind it.
    if (record.waitingFor == "dialog open") return std::nullopt;
    return NotedState{.state = rule->state,
                      .evidence = AgentEvidence::record,
                      .since = *record.statusSince,
                      // It is noted in milliseconds.
                      .precision = std::chrono::milliseconds{1},
                      .isPresent = true};
}

bool isRecord(const std::filesystem::path& file) {
    return file.extension() == ".json" && parseNumber<std::int32_t>(file.stem().string());
}

SessionNotes notesOf(const Record& record) {
    const auto start = processStart(*record.pid);
    const bool lives = start && isStartOf({record.start, record.startedAt}, *start);
    SessionNotes notes{.process = std::nullopt,
                       .processLives = lives,
                       .state = lives ? stateOf(record) : std::nullopt,
                       .lock = SessionLock::unknown};
    // What an agent that was killed has left says which process it was, in no form to compare.
    notes.process = {*record.pid, lives ? *start : 0};
    return notes;
}

NotesOfSessions read(const std::filesystem::path& directory,
                     const std::vector<std::string>& sessionIDs) {
    NotesOfSessions found;
    auto files = listDirectory(directory);
    std::erase_if(files, [](const auto& file) { return !isRecord(file); });
    if (files.size() > maxRecords) files.resize(maxRecords);
    for (const auto& file : files) {
        const auto text = FileContents::read(file, maxRecordBytes);
        const auto record = text ? parse(*text) : std::nullopt;
        if (!record || !record->pid ||
            std::ranges::find(sessionIDs, record->sessionID) == sessionIDs.end())
            continue;
        const auto notes = notesOf(*record);
        // A session that was begun again has the record of its killed process, too.
        auto& kept = found.try_emplace(record->sessionID, notes).first->second;
        if (notes.processLives) kept = notes;
    }
    return found;
}

}  // namespace

std::optional<Record> parse(std::string_view text) {
    boost::json::parse_options options;
    options.max_depth = maxNesting;
    options.allow_invalid_utf8 = true;
    boost::json::basic_parser<RecordHandler> parser{options};
    if (!parseWhole(parser, text) || !parser.handler().isObject) return std::nullopt;
    return std::move(parser.handler().record);
}

AgentNotes in(const std::filesystem::path& configDirectory) {
    const auto directory = configDirectory / "sessions";
    return {
        .provider = Provider::claudeCode,
        .ownsTerminal = true,
        .read = [directory](const auto& sessionIDs) { return read(directory, sessionIDs); },
        .places = {{directory, ""}},
    };
}

}  // namespace tallowbrook::host::ClaudeNotes
