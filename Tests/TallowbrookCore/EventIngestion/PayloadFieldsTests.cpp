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
        EXPECT_EQ(field.read(field.payloadOf(start + "\"x\":{}," + field.member(jsonString(last)))),
                  last)
            << field.title();
        for (const char* value : {"1", "1e999", "true", "null", "{}", R"({"a":"b"})", "[]",
                                  R"(["c"])", R"("")", R"("not\nclean")", R"("\ud83d")"})
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

TEST(PayloadFields, ofTwoNamesOfTheEventTheLastOneCounts) {
    const AgentEvent event =
        eventOf(R"({"hook_event_name":"Stop","hook_event_name":"SessionEnd","reason":"other"})");
    EXPECT_EQ(event.eventType, "SessionEnd");
    EXPECT_EQ(event.category, EventCategory::sessionEnded);
    EXPECT_EQ(event.detail.endReason, "other");
    EXPECT_EQ(eventOf(R"({"hook_event_name":"Stop","hook_event_name":1})"), unknownEvent());
}

TEST(PayloadFields, keysAreReadWithTheirEscapes) {
    EXPECT_EQ(eventOf(R"({"session\u005fid":"s"})").sessionID, "s");
    EXPECT_EQ(eventOf(R"({"\u0073ession\u005Fi\u0064":"s"})").sessionID, "s");
    EXPECT_EQ(eventOf(R"({"session_id":"first","session\u005fid":"last"})").sessionID, "last");
    EXPECT_EQ(eventOf(R"({"session\u005fid":"first","session_id":"last"})").sessionID, "last");
    EXPECT_EQ(eventOf(R"({"session_id":"first","session\u005fid":1})").sessionID, std::nullopt);
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
    for (const char* bytes :
         {"\x80", "\xC3", "\xE6\x97", "\xF0\x9F\x98", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\xBD",
          "\xF4\x90\x80\x80", "\xFF", "\xFE\xFE", "\xE9 "})
        for (const auto& field : allPayloadFields()) {
            const std::string text = jsonString(validText(field, "a") + bytes);
            const AgentEvent event = eventOf(field.payload(text), field.source);
            EXPECT_EQ(field.field(event), std::nullopt) << field.title();
            if (!field.eventName.empty()) {
                EXPECT_EQ(event.eventType, field.eventName);
            }
        }
}

TEST(PayloadFields, invalidUTF8InWhatNobodyReadsCostsNothing) {
    for (const char* bytes : {"\x80", "\xC3", "\xE6\x97", "\xF0\x9F\x98", "\xC0\xAF",
                              "\xED\xA0\xBD", "\xF4\x90\x80\x80", "\xFF", "caf\xE9!"}) {
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

TEST(PayloadFields, invalidUTF8OutsideAStringIsNoJSON) {
    EXPECT_EQ(outcomeOf("{\"a\":1\x80}"), "invalid-json");
    EXPECT_EQ(outcomeOf("{}\xFF"), "invalid-json");
}

TEST(PayloadFields, numbersOfAnySizeCostNothing) {
    for (const char* number : {
             "1e999",
             "-1e999",
             "1E+999",
             "1e-999",
             "-0",
             "-0.0",
             "0e0",
             "0E-0",
             "1.5e308",
             "9223372036854775808",
             "-9223372036854775809",
             "18446744073709551616",
             "123456789012345678901234567890",
             "0.000000000000000000000000000000000001",
             "1e2147483647",
             "1e2147483648",
             "1e-2147483648",
             "1e-2147483649",
             "1e99999999999",
             "-1e99999999999",
             "1E+99999999999",
             "1e-99999999999",
             "0e99999999999",
             "1.25e99999999999",
             "10.0E-99999999999",
             "1e00000000000000000000000001",
             "1e0000000000000000000000000",
         })
        for (const std::string& member : {
                 "\"a\":" + std::string{number},
                 "\"a\":[" + std::string{number} + "," + number + "]",
                 "\"a\":{\"b\":" + std::string{number} + "}",
                 "\"a\": " + std::string{number} + " ",
                 "\"a\":\n" + std::string{number} + "\t",
             }) {
            EXPECT_EQ(eventOf("{" + member + ",\"session_id\":\"s\"}").sessionID, "s") << member;
            EXPECT_EQ(eventOf("{\"session_id\":\"s\"," + member + "}").sessionID, "s") << member;
        }
}

TEST(PayloadFields, exponentsNearTheEdgeOfThirtyTwoBitsCostNothing) {
    const std::string digits(400, '7');
    for (const char* exponent : {"2147483647", "-2147483647", "2147483646", "-2147483648",
                                 "2147483300", "-2147483300", "4294967295", "4294967296"})
        for (const std::string& mantissa :
             {"0." + digits, digits, digits + "." + digits, "0." + std::string(400, '0') + "1"}) {
            const std::string number = mantissa + "e" + exponent;
            EXPECT_EQ(eventOf("{\"a\":" + number + ",\"session_id\":\"s\"}").sessionID, "s")
                << number;
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
        EXPECT_EQ(eventOf(payload(300)).sessionID, "s");
        EXPECT_EQ(eventOf(payload(1000)).sessionID, "s");
        EXPECT_EQ(eventOf(payload(1023)).sessionID, "s");
        EXPECT_EQ(outcomeOf(payload(1024)), "invalid-json");
        EXPECT_EQ(outcomeOf(payload(100'000)), "invalid-json");
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

TEST(PayloadFields, longTextsWithEscapesAreReadWhole) {
    for (const std::size_t length : {100U, 4000U, 5000U, 200'000U}) {
        std::string text;
        while (text.size() < length) text += "line \\\"x\\\" \\u00e9\\ud83d\\ude00\\n";
        EXPECT_EQ(eventOf("{\"prompt\":\"" + text + "\",\"session_id\":\"s\",\"" + text +
                          "\":1,\"cwd\":\"/c\"}")
                      .cwd,
                  "/c");
    }
}

}  // namespace
}  // namespace tallowbrook
