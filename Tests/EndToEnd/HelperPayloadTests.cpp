// What the helper makes of payloads that are no good, or only half good.
#include <gtest/gtest.h>

#include "Support/RepeatedText.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using Messages = std::vector<std::string>;

// A good payload with one more member.
std::string withMember(const std::string& member) {
    return R"({"session_id":"S1","cwd":"/Users/x/proj","hook_event_name":"Stop",)" + member + "}";
}

TEST(HelperPayload, thatIsNoObjectIsLoggedByItsCodeAlone) {
    struct Row {
        const char* why;
        std::string payload;
        std::string code;
    };
    const std::string whole = claudePayload("Stop");
    for (const auto& [why, payload, code] : {
             Row{"nothing", "", "empty-payload"},
             Row{"white space only", "\n", "invalid-json"},
             Row{"cut in the middle", whole.substr(0, whole.size() / 2), "invalid-json"},
             Row{"its last byte missing", whole.substr(0, whole.size() - 1), "invalid-json"},
             Row{"a lone brace", "{", "invalid-json"},
             Row{"plain words", "rm -rf secret", "invalid-json"},
             Row{"two objects", whole + whole, "invalid-json"},
             Row{"single quotes", "{'a':1}", "invalid-json"},
             Row{"a trailing comma", R"({"a":1,})", "invalid-json"},
             Row{"a NUL byte behind it", whole + std::string(1, '\0'), "invalid-json"},
             Row{"only NUL bytes", std::string(64, '\0'), "invalid-json"},
             Row{"invalid UTF-8 outside of strings", "\xFF\xFE{\"a\":1}", "invalid-json"},
             Row{"100000 open brackets", std::string(100'000, '['), "invalid-json"},
             Row{"100000 open objects", repeated(R"({"a":)", 100'000), "invalid-json"},
             Row{"100000 levels, all closed",
                 withMember(R"("a":)" + std::string(100'000, '[') + std::string(100'000, ']')),
                 "invalid-json"},
             Row{"an array", "[" + whole + "]", "not-an-object"},
             Row{"a number", "42", "not-an-object"},
             Row{"a string", R"("Stop")", "not-an-object"},
             Row{"null", "null", "not-an-object"},
             Row{"true", "true\n", "not-an-object"},
         }) {
        for (const std::string source : {"claude-code", "codex"}) {
            const TestHome home;
            EXPECT_EQ(home.hook({source}, payload), quiet) << why;
            EXPECT_EQ(home.logged(),
                      Messages{"helper: " + source + " normalization failed: " + code})
                << why;
            EXPECT_FALSE(exists(home.paths.spoolDirectory())) << why;
        }
    }
}

TEST(HelperPayload, ofANotifyProgramIsLoggedInTheSameWay) {
    struct Row {
        std::string payload;
        std::string code;
    };
    for (const auto& [payload, code] : {
             Row{"{", "invalid-json"},
             Row{"[]", "not-an-object"},
             Row{std::string(100'000, '['), "invalid-json"},
         }) {
        const TestHome home;
        EXPECT_EQ(home.hook({"codex-notify", payload}), quiet);
        EXPECT_EQ(home.logged(), Messages{"helper: codex-notify normalization failed: " + code});
    }
}

TEST(HelperPayload, keepsItsEventWhateverNobodyReads) {
    struct Row {
        const char* why;
        std::string payload;
    };
    for (const auto& [why, payload] : {
             Row{"a byte-order mark before it", "\xEF\xBB\xBF" + withMember(R"("a":1)")},
             Row{"white space around it", " \r\n\t" + withMember(R"("a":1)") + " \n\n"},
             Row{"a lone high surrogate", withMember(R"("prompt":"cut \ud83d")")},
             Row{"a lone low surrogate", withMember(R"("prompt":"\ude00 cut")")},
             Row{"invalid UTF-8 in a string",
                 withMember("\"prompt\":\"\xFF\xC0\x80\xED\xA0\x80\"")},
             Row{"a number beyond any double", withMember(R"("n":1e999)")},
             Row{"an exponent beyond any integer", withMember(R"("n":1e99999999999)")},
             Row{"a number of many digits", withMember("\"n\":" + std::string(5000, '7'))},
             Row{"a key twice", withMember(R"("a":1,"a":2)")},
             Row{"hundreds of levels",
                 withMember(R"("a":)" + std::string(900, '[') + std::string(900, ']'))},
             Row{"a NUL character", withMember(R"("prompt":"\u0000")")},
         }) {
        const TestHome home;
        EXPECT_EQ(home.hook({"claude-code"}, payload), quiet) << why;
        EXPECT_EQ(home.logged(), Messages{}) << why;
        const auto events = home.spooled();
        ASSERT_EQ(events.size(), 1U) << why;
        EXPECT_EQ(events[0].eventType, "Stop") << why;
        EXPECT_EQ(events[0].sessionID, "S1") << why;
        EXPECT_EQ(events[0].cwd, "/Users/x/proj") << why;
    }
}

TEST(HelperPayload, losesOnlyTheFieldThatIsBad) {
    struct Row {
        const char* why;
        std::string cwd;
    };
    for (const auto& [why, cwd] : {
             Row{"a lone surrogate", R"("/tmp/\ud83d")"},
             Row{"invalid UTF-8", "\"/tmp/\xFF\""},
             Row{"a control character", R"("/tmp/\n")"},
             Row{"relative", R"("tmp")"},
             Row{"a number", "1"},
             Row{"null", "null"},
             Row{"too long", "\"/" + std::string(1024, 'x') + "\""},
         }) {
        const TestHome home;
        const std::string payload =
            R"({"session_id":"S1","hook_event_name":"Stop","cwd":)" + cwd + "}";
        EXPECT_EQ(home.hook({"claude-code"}, payload), quiet) << why;
        EXPECT_EQ(home.logged(), Messages{}) << why;
        const auto events = home.spooled();
        ASSERT_EQ(events.size(), 1U) << why;
        EXPECT_EQ(events[0].cwd, std::nullopt) << why;
        EXPECT_EQ(events[0].sessionID, "S1") << why;
    }
}

TEST(HelperPayload, ofAnObjectWithoutAnyKnownKeyIsStillAnEvent) {
    const TestHome home;
    EXPECT_EQ(home.hook({"codex"}, "{}"), quiet);
    const auto events = home.spooled();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].eventType, "Unknown");
    EXPECT_EQ(events[0].category, EventCategory::unrecognized);
    EXPECT_EQ(events[0].sessionID, std::nullopt);
}

TEST(HelperPayload, failuresAddUpInTheLog) {
    const TestHome home;
    EXPECT_EQ(home.hook({"codex"}, "{"), quiet);
    EXPECT_EQ(home.hook({"claude-code"}, "1"), quiet);
    EXPECT_EQ(home.hook({}), quiet);
    home.claude("Stop");
    EXPECT_EQ(home.logged(),
              (Messages{"helper: codex normalization failed: invalid-json",
                        "helper: claude-code normalization failed: not-an-object",
                        "helper: unknown or missing source argument; event ignored"}));
    EXPECT_EQ(home.spooled().size(), 1U);
}

}  // namespace
}  // namespace tallowbrook
