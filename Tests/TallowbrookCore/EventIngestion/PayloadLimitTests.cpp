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

TEST(PayloadLimits, aFieldThatIsNoStringIsDropped) {
    for (const auto& field : allPayloadFields())
        for (const char* value : {"1", "1e999", "true", "null", "{}", R"(["a"])", R"("")"})
            EXPECT_EQ(field.read(field.payload(value)), std::nullopt)
                << field.title() << " " << value;
}

TEST(PayloadLimits, aTokenWithAnyOtherCharacterIsDropped) {
    for (const auto& field : allPayloadFields()) {
        if (field.isPath()) continue;
        for (const char* text : {"a b", "a/b", "a\\\"b", "a\\n", "\\u0000", "caf\u00E9"})
            EXPECT_EQ(field.read(field.payload(jsonString(text))), std::nullopt)
                << field.title() << " " << text;
        EXPECT_EQ(field.read(field.payload(R"("aZ09-.:_")")), "aZ09-.:_") << field.title();
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
