#include "TestHome.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Domain/EventCoding.h"
#include "Support/BuildPaths.h"
#include "Support/FileContents.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

std::vector<std::string> linesOf(const std::filesystem::path& file) {
    std::vector<std::string> lines;
    std::istringstream stream{contentsOf(file)};
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<std::string> onHome(std::vector<std::string> arguments,
                                const std::filesystem::path& home) {
    arguments.insert(arguments.end(), {"--home", home.string()});
    return arguments;
}

constexpr std::size_t timeLength = 8;

// "14:05:09  "
bool beginsWithTime(const std::string& line) {
    std::string pattern = line.substr(0, timeLength + 2);
    for (char& letter : pattern)
        if (letter >= '0' && letter <= '9') letter = '0';
    return pattern == "00:00:00  ";
}

}  // namespace

TestHome::TestHome()
    : environment{{"HOME", directory.path / "user"},
                  {"XDG_DATA_HOME", std::nullopt},
                  {"XDG_RUNTIME_DIR", directory.path / "runtime"},
                  {"CLAUDE_CONFIG_DIR", std::nullopt},
                  {"CODEX_HOME", std::nullopt},
                  // Tests must not show anything on the desktop of who runs them.
                  {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                  {"TZ", std::nullopt}} {
    for (const char* name : {"user", "runtime"})
        std::filesystem::create_directory(directory.path / name);
}

ProgramCall TestHome::plainHookCall(std::vector<std::string> arguments, std::string input) const {
    return {.program = BuildPaths::helper,
            .arguments = std::move(arguments),
            .input = std::move(input),
            .environment = environment,
            .directory = directory.path};
}

ProgramCall TestHome::plainHostCall(std::vector<std::string> arguments) const {
    return {.program = BuildPaths::host,
            .arguments = std::move(arguments),
            .environment = environment,
            .directory = directory.path};
}

ProgramCall TestHome::hookCall(std::vector<std::string> arguments, std::string input) const {
    return plainHookCall(onHome(std::move(arguments), paths.home), std::move(input));
}

ProgramCall TestHome::hostCall(std::vector<std::string> arguments) const {
    return plainHostCall(onHome(std::move(arguments), paths.home));
}

void TestHome::claude(const std::string& eventName, const std::string& session) const {
    EXPECT_EQ(hook({"claude-code"}, claudePayload(eventName, session)), quiet);
}

void TestHome::spool(const std::string& lines) const {
    std::filesystem::create_directories(paths.spoolDirectory());
    std::ofstream stream{paths.activeSpoolFile(), std::ios::binary | std::ios::app};
    stream << lines;
    stream.close();
    if (!stream) ADD_FAILURE() << "cannot write the spool";
}

void TestHome::spool(const AgentEvent& event) const { spool(EventCoding::encodeLine(event)); }

std::vector<AgentEvent> TestHome::spooled(const TallowbrookPaths& paths) {
    std::vector<AgentEvent> events;
    for (const auto& line : linesOf(paths.activeSpoolFile())) {
        const auto event = EventCoding::decodeLine(line);
        if (!event) {
            ADD_FAILURE() << event.error().description << " in " << line;
            continue;
        }
        EXPECT_EQ(EventCoding::encodeLine(*event), line + "\n");
        events.push_back(*event);
    }
    return events;
}

std::vector<std::string> TestHome::logged(const TallowbrookPaths& paths) {
    std::vector<std::string> messages;
    for (const auto& line : linesOf(paths.helperLogFile())) {
        const std::size_t blank = line.find(' ');
        EXPECT_TRUE(EventDate::parse(line.substr(0, blank))) << line;
        messages.push_back(line.substr(blank + 1));
    }
    return messages;
}

int TestHome::rows(const std::string& table) const {
    constexpr int busyTimeoutMilliseconds = 5000;
    SQLite::Database database{paths.databaseFile().string(), SQLite::OPEN_READONLY,
                              busyTimeoutMilliseconds};
    return database.execAndGet("SELECT count(*) FROM " + table).getInt();
}

std::string claudePayload(const std::string& eventName, const std::string& session) {
    return R"({"session_id":")" + session + R"(","cwd":"/Users/x/proj","hook_event_name":")" +
           eventName + R"(","tool_name":"Bash"})";
}

std::string claudePayloadOf(std::size_t size) {
    const std::string start = R"({"session_id":"S1","hook_event_name":"Stop","prompt":")";
    const std::string end = R"("})";
    return start + std::string(size - start.size() - end.size(), 'x') + end;
}

AgentEvent currentEvent(const std::string& session) {
    AgentEvent event = minimalEvent();
    event.id = randomUUID().value();
    event.sessionID = session;
    event.cwd = "/Users/x/proj";
    event.observedAt = currentInstant();
    return event;
}

std::string withoutTimes(const std::string& output) {
    std::string result;
    std::istringstream stream{output};
    for (std::string line; std::getline(stream, line);)
        result += (beginsWithTime(line) ? "TIME" + line.substr(timeLength) : line) + "\n";
    return result;
}

}  // namespace tallowbrook
