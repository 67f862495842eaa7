#include "EventIngestion/PayloadFields.h"

#include <gtest/gtest.h>

#include <string>

#include "PayloadFieldCases.h"

namespace tallowbrook {
namespace {

std::string validText(const PayloadFieldCase& field, const char* name) {
    return (field.isPath() ? "/" : "") + std::string{name};
}

TEST(PayloadFields, ofAKeyThatComesTwiceTheLastOneCounts) {
    for (const auto& field : allPayloadFields()) {
        const std::string first = validText(field, "first");
        const std::string last = validText(field, "last");
        const std::string start = field.member(jsonString(first)) + ",";
        EXPECT_EQ(field.read(field.payloadOf(start + field.member(jsonString(last)))), last)
            << field.title();
        for (const char* value : {"1", "null", "{}", R"(["c"])", R"("")", R"("\ud83d")"})
            EXPECT_EQ(field.read(field.payloadOf(start + field.member(value))), std::nullopt)
                << field.title() << " " << value;
        EXPECT_EQ(
            field.read(field.payloadOf(field.member("1") + "," + field.member(jsonString(last)))),
            last)
            << field.title();
        const std::string tooLong = jsonString(validText(field, "a") + std::string(5000, 'a'));
        EXPECT_EQ(field.read(field.payloadOf(start + field.member(tooLong))), std::nullopt)
            << field.title();
    }
}

TEST(PayloadFields, keysAreReadWithTheirEscapes) {
    EXPECT_EQ(eventOf(R"({"session\u005fid":"s"})").sessionID, "s");
    EXPECT_EQ(eventOf(R"({"\u0073ession\u005Fi\u0064":"s"})").sessionID, "s");
    EXPECT_EQ(eventOf(R"({"session_id":"first","session\u005fid":"last"})").sessionID, "last");
    EXPECT_EQ(eventOf(R"({"thread\u002did":"s"})", PayloadSource::codexNotify).sessionID, "s");
}

TEST(PayloadFields, keysAreComparedByTheirExactText) {
    for (const char* key : {"Session_id", "session_id ", " session_id", "session-id", "sessionID",
                            "session_id\\u0000", "session_i", "session_id_", "", "\uFEFFsession_id",
                            "session\uFF3Fid", "session_id\\ud83d", "session_id\xFF"})
        EXPECT_EQ(eventOf("{\"" + std::string{key} + "\":\"s\"}"), unknownEvent()) << key;
}

TEST(PayloadFields, onlyMembersOfTheTopLevelAreRead) {
    for (const char* payload : {
             R"({"a":{"session_id":"s","cwd":"/c","hook_event_name":"Stop"}})",
             R"({"a":[{"session_id":"s"},"session_id","s"]})",
             R"({"session_id":{"session_id":"s"}})",
             R"({"session_id":["s"]})",
             R"({"session_id":[["s"],"s"]})",
             R"({"session_id":{},"a":"s"})",
             R"({"a":"session_id","b":"s"})",
         })
        EXPECT_EQ(eventOf(payload), unknownEvent()) << payload;
    EXPECT_EQ(
        eventOf(R"({"a":{"session_id":"inner"},"session_id":"s","b":{"session_id":1}})").sessionID,
        "s");
}

TEST(PayloadFields, aFieldWithInvalidUTF8IsRefusedAndTheEventKept) {
    for (const char* bytes : {"\x80", "\xE6\x97", "\xC0\xAF", "\xED\xA0\xBD", "\xFF"})
        for (const auto& field : allPayloadFields()) {
            const std::string text = jsonString(validText(field, "a") + bytes);
            const AgentEvent event = eventOf(field.payload(text), field.source);
            EXPECT_EQ(field.field(event), std::nullopt) << field.title();
            if (!field.eventName.empty()) {
                EXPECT_EQ(event.eventType, field.eventName);
            }
        }
}

TEST(PayloadFields, invalidUTF8InWhatIsNotReadCostsNothing) {
    for (const char* bytes : {"\x80", "\xC3", "\xF0\x9F\x98", "\xED\xA0\xBD", "caf\xE9!"}) {
        const std::string text = bytes;
        for (const std::string& member : {
                 "\"prompt\":\"" + text + "\"",
                 "\"" + text + "\":1",
                 "\"a\":{\"" + text + "\":[\"" + text + "\"]}",
                 "\"a\":\"" + std::string(5000, 'x') + text + std::string(5000, 'x') + "\"",
                 // Broken text must not hide the quote that ends it.
                 "\"a\":\"" + text + "\",\"b\":\"\\\"" + text + "\\\\\"",
             }) {
            EXPECT_EQ(eventOf("{" + member + ",\"session_id\":\"s\",\"cwd\":\"/c\"}").sessionID,
                      "s")
                << member;
            EXPECT_EQ(eventOf("{\"session_id\":\"s\"," + member + "}").sessionID, "s") << member;
        }
    }
}

TEST(PayloadFields, numbersOfAnySizeCostNothing) {
    for (const std::string number :
         {"1e999", "-1E+999", "0e999", "18446744073709551616", "1e2147483648", "-1e-2147483649",
          "1.25e99999999999", "0e00000000000000000000000001"})
        for (const std::string& value :
             {number, "[" + number + "," + number + "]", "{\"b\":" + number + "}"}) {
            const std::string member = "\"a\":" + value;
            EXPECT_EQ(eventOf("{" + member + ",\"session_id\":\"s\"}").sessionID, "s") << member;
            EXPECT_EQ(eventOf("{\"session_id\":\"s\"," + member + "}").sessionID, "s") << member;
        }
}

TEST(PayloadFields, numbersWithVeryManyDigitsCostNothing) {
    const std::string digits(500'000, '7');
    for (const std::string& number :
         {digits, "-" + digits, "0." + digits, digits + "." + digits, digits + "e5", "1e" + digits,
          "1e-" + digits, "1e" + std::string(500'000, '0') + "1"})
        EXPECT_EQ(eventOf("{\"a\":" + number + ",\"session_id\":\"s\"}").sessionID, "s");
}

std::string nested(std::size_t levels, const char* open, const char* close) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i) text += open;
    text += "1";
    for (std::size_t i = 0; i < levels; ++i) text += close;
    return text;
}

TEST(PayloadFields, aThousandAndTwentyFourLevelsAreRead) {
    // The payload itself is the first level.
    for (const auto& [open, close] : {std::pair{"[", "]"}, std::pair{"{\"a\":", "}"}}) {
        const auto payload = [&](std::size_t levels) {
            return "{\"x\":" + nested(levels, open, close) + ",\"session_id\":\"s\"}";
        };
        EXPECT_EQ(eventOf(payload(1023)).sessionID, "s");
        EXPECT_EQ(outcomeOf(payload(1024)), "invalid-json");
    }
    EXPECT_EQ(outcomeOf(nested(1024, "[", "]")), "not-an-object");
    EXPECT_EQ(outcomeOf(nested(1025, "[", "]")), "invalid-json");
}

TEST(PayloadFields, levelsThatWereLeftDoNotCount) {
    std::string payload = "{";
    for (int i = 0; i < 20; ++i)
        payload += "\"a" + std::to_string(i) + "\":" + nested(1000, "[", "]") + ",";
    EXPECT_EQ(eventOf(payload + "\"session_id\":\"s\"}").sessionID, "s");
}

TEST(PayloadFields, noDepthEndsTheProgram) {
    for (const char* open : {"[", "{\"a\":", "[{\"a\":", "[[],"}) {
        std::string text;
        while (text.size() < 1'000'000) text += open;
        EXPECT_EQ(outcomeOf(text), "invalid-json") << open;
        // Texts that are read a second time must not get further.
        EXPECT_EQ(outcomeOf("[\"\\ud83d\",1e99999999999," + text), "invalid-json") << open;
    }
    EXPECT_EQ(outcomeOf(std::string(100'000, '[')), "invalid-json");
    EXPECT_EQ(outcomeOf(std::string(100'000, ']')), "invalid-json");
}

}  // namespace
}  // namespace tallowbrook
