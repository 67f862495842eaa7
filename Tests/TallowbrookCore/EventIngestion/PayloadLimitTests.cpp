#include <gtest/gtest.h>

#include <string>

#include "PayloadFieldCases.h"

namespace tallowbrook {
namespace {

TEST(PayloadLimits, everyFieldIsKeptUpToItsLimitAndDroppedWholeBeyond) {
    for (const auto& field : allPayloadFields()) {
        std::string longest(field.limit, 'a');
        if (field.isPath()) longest.front() = '/';
        EXPECT_EQ(field.read(field.payload(jsonString(longest))), longest) << field.title();
        EXPECT_EQ(field.read(field.payload(jsonString(longest + 'a'))), std::nullopt)
            << field.title();
        EXPECT_EQ(field.read(field.payload(jsonString(longest + std::string(100'000, 'a')))),
                  std::nullopt)
            << field.title();
    }
}

TEST(PayloadLimits, lengthsAreThoseOfTheDecodedText) {
    for (const auto& field : allPayloadFields()) {
        const std::size_t rest = field.limit - 1;
        std::string escapes = field.isPath() ? "\\/" : "\\u0061";
        for (std::size_t i = 0; i < rest; ++i) escapes += "\\u0061";
        EXPECT_EQ(field.read(field.payload(jsonString(escapes))),
                  (field.isPath() ? "/" : "a") + std::string(rest, 'a'))
            << field.title();
        EXPECT_EQ(field.read(field.payload(jsonString(escapes + "\\u0061"))), std::nullopt)
            << field.title();
    }
}

TEST(PayloadLimits, aPathsLengthIsCountedInBytes) {
    const auto cwdOf = [](const std::string& path) {
        return eventOf("{\"cwd\":\"" + path + "\"}").cwd;
    };
    std::string path = "/ab";
    while (path.size() < 1024 - 3) path += "\u65E5";
    path += std::string(1024 - path.size(), 'c');
    EXPECT_EQ(cwdOf(path), path);
    EXPECT_EQ(cwdOf(path + "d"), std::nullopt);
    EXPECT_EQ(cwdOf(path.substr(0, 1022) + "\u65E5"), std::nullopt);
    EXPECT_EQ(cwdOf(path.substr(0, 1023) + "/"), path.substr(0, 1023));
    EXPECT_EQ(cwdOf(path + "/"), std::nullopt) << "counted with the slash";
}

TEST(PayloadLimits, aFieldThatIsNoStringIsDropped) {
    for (const auto& field : allPayloadFields())
        for (const char* value : {"1", "0", "-1", "1.5", "1e999", "12345678901234567890123", "true",
                                  "false", "null", "{}", "[]", R"(["a"])", R"({"a":"b"})", R"("")"})
            EXPECT_EQ(field.read(field.payload(value)), std::nullopt)
                << field.title() << " " << value;
}

TEST(PayloadLimits, aFieldThatIsMissingIsAbsent) {
    for (const auto& field : allPayloadFields())
        EXPECT_EQ(field.read(field.payloadOf("\"other\":\"a\"")), std::nullopt) << field.title();
}

TEST(PayloadLimits, aTokenWithAnyOtherCharacterIsDropped) {
    for (const auto& field : allPayloadFields()) {
        if (field.isPath()) continue;
        for (const char* text :
             {"a b", " a", "a ", "a/b", "/a", "a\\\\b", "a\\\"b", "a\\tb", "a\\n", "\\u0000", "a+b",
              "a@b", "(a)", "a,b", "caf\u00E9", "\U0001F600", "a\x7F"})
            EXPECT_EQ(field.read(field.payload(jsonString(text))), std::nullopt)
                << field.title() << " " << text;
        EXPECT_EQ(field.read(field.payload(R"("aZ09-.:_")")), "aZ09-.:_") << field.title();
    }
}

TEST(PayloadLimits, aPathMustBeAbsoluteAndPlain) {
    for (const auto& field : allPayloadFields()) {
        if (!field.isPath()) continue;
        EXPECT_EQ(field.read(field.payload(R"("/Users/x/proj/")")), "/Users/x/proj");
        EXPECT_EQ(field.read(field.payload(R"("\/a b\/\u65e5\ud83d\ude00\/\/")")),
                  "/a b/\u65E5\U0001F600");
        EXPECT_EQ(field.read(field.payload(R"("/")")), "/");
        for (const char* text :
             {"proj/src", "~", "/a\\tb", "/a\\nb", "/\\u0000", "/a\x7F", "/a\\u001f", "/a\\u007F"})
            EXPECT_EQ(field.read(field.payload(jsonString(text))), std::nullopt)
                << field.title() << " " << text;
    }
}

TEST(PayloadLimits, theLargestEventThatAPayloadMakesFitsIntoALine) {
    std::string payload = R"({"hook_event_name":"PermissionRequest","session_id":")" +
                          std::string(128, 's') + R"(","turn_id":")" + std::string(128, 't') +
                          R"(","tool_name":")" + std::string(128, 'o') + R"(","cwd":"/)";
    for (int i = 0; i < 1023; ++i) payload += "\\\\";
    const AgentEvent event = eventOf(payload + "\"}", PayloadSource::codexHook);
    ASSERT_TRUE(event.cwd && event.sessionID && event.turnID && event.detail.toolName);
    EXPECT_LT(EventCoding::encodeLine(event).size(), 16384U);
}

}  // namespace
}  // namespace tallowbrook
