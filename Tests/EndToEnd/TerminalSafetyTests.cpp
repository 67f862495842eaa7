// Whatever the spool holds, no terminal takes orders from it.
#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <set>

#include "Domain/EventCoding.h"
#include "Support/FileContents.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

struct Danger {
    const char* name;
    std::string bytes;
};

const std::vector<Danger> dangers{
    {"NUL", std::string(1, '\0')},
    {"escape", "\x1B"},
    {"control sequence introducer in one character", "\xC2\x9B"},
    {"bell", "\x07"},
    {"backspace", "\b"},
    {"carriage return", "\r"},
    {"delete", "\x7F"},
    {"right-to-left override", "\xE2\x80\xAE"},
    {"right-to-left isolate", "\xE2\x81\xA7"},
    {"line separator", "\xE2\x80\xA8"},
};

std::string textWith(const std::string& danger) {
    return danger + "[31mred" + danger + "]0;title" + danger;
}

// What a program of the user might write into the spool behind the helper's back.
std::vector<AgentEvent> eventsWith(const std::string& danger) {
    const std::string text = textWith(danger);
    AgentEvent directory = currentEvent("S1");
    directory.cwd = "/tmp/" + text;

    AgentEvent tool = currentEvent("S2");
    tool.category = EventCategory::attentionRequested;
    tool.attention = AttentionKind::permission;
    tool.detail.toolName = text;
    tool.eventType = text;

    AgentEvent error = currentEvent("S3");
    error.category = EventCategory::turnFailed;
    error.detail.errorType = text;

    AgentEvent session = currentEvent(text);
    session.tty = text;
    session.turnID = text;

    AgentEvent end = currentEvent("S4");
    end.category = EventCategory::sessionEnded;
    end.detail.endReason = text;
    return {directory, tool, error, session, end};
}

void expectNone(const ProgramResult& result, const std::string& bytes, const char* name) {
    EXPECT_EQ(result.output.find(bytes), std::string::npos) << name << " on standard output";
    EXPECT_EQ(result.errors.find(bytes), std::string::npos) << name << " on standard error";
}

TEST(TerminalSafety, noDangerousCharacterOfAnEventIsPrintedInNotificationsOrTables) {
    for (const auto& [name, bytes] : dangers) {
        const TestHome home;
        for (const AgentEvent& event : eventsWith(bytes)) home.spool(event);
        const ProgramResult watched = home.host({"watch", "--once"});
        EXPECT_EQ(watched.status, 0) << name;
        EXPECT_NE(watched.output.find("[31mred"), std::string::npos) << name;
        expectNone(watched, bytes, name);
        const ProgramResult listed = home.host({"sessions", "--all"});
        EXPECT_NE(listed.output.find("[31mred"), std::string::npos) << name;
        expectNone(listed, bytes, name);
        EXPECT_EQ(home.rows("events"), 5) << name;
    }
}

TEST(TerminalSafety, noDangerousCharacterOfAnEventIsPrintedAsJSON) {
    for (const auto& [name, bytes] : dangers) {
        const TestHome home;
        for (const AgentEvent& event : eventsWith(bytes)) home.spool(event);
        EXPECT_EQ(home.host({"watch", "--once"}).status, 0) << name;
        const ProgramResult listed = home.host({"sessions", "--json"});
        expectNone(listed, bytes, name);
        // Programs still get every character.
        std::set<std::string> projects;
        const auto parsed = boost::json::parse(listed.output);
        for (const auto& session : parsed.as_array())
            projects.emplace(session.at("project").as_string());
        EXPECT_TRUE(projects.contains(textWith(bytes))) << name;
    }
}

TEST(TerminalSafety, noDangerousCharacterOfASegmentsNameIsPrinted) {
    for (const auto& [name, bytes] : dangers) {
        if (bytes[0] == '\0') continue;  // no file name holds it
        const TestHome home;
        create_directories(home.paths.spoolDirectory() / ("ingest-1-1-" + bytes + "[31m.jsonl"));
        const ProgramResult result = home.host({"watch", "--once"});
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_NE(result.errors.find("could not be read"), std::string::npos) << name;
        expectNone(result, bytes, name);
    }
}

TEST(TerminalSafety, theHelpersLogIsPlainTextWhateverTheArguments) {
    const TestHome home;
    EXPECT_EQ(home.hook({"\x1B[31mclaude-code\n"}), quiet);
    EXPECT_EQ(home.hook({"codex-notify", "\x1B[31m{"}), quiet);
    EXPECT_EQ(contentsOf(home.paths.helperLogFile()).find('\x1B'), std::string::npos);
    EXPECT_EQ(home.logged().size(), 2U);
}

}  // namespace
}  // namespace tallowbrook
