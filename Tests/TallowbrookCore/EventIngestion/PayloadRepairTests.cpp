#include "Domain/JSONRepair.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PayloadFieldCases.h"

namespace tallowbrook {
namespace {

std::optional<std::string> repair(std::string_view text) { return JSONRepair::forPayload(text); }

TEST(PayloadRepair, leavesATextAloneThatNeedsNothing) {
    for (const char* text : {"", "{}", R"({"a":"\ud83d\ude00 \u0041 \\ud83d \n"})",
                             R"({"a":[1,-2.5e10,0,1e99999999,1e-99999999]})", "\"", "\"\\", "\"\\u",
                             "\"\\u12", "-", "1e", "\xFF\"\xFF"})
        EXPECT_EQ(repair(text), std::nullopt) << text;
}

TEST(PayloadRepair, replacesLoneSurrogatesOfTheSameLength) {
    struct Row {
        const char* why;
        const char* text;
        const char* repaired;
    };
    for (const auto& [why, text, repaired] : {
             Row{"high", R"("a\ud83db")", R"("a\u0000b")"},
             Row{"low", R"("a\ude00b")", R"("a\u0000b")"},
             Row{"upper case", R"("\uD83D")", R"("\u0000")"},
             Row{"mixed case", R"("\uDc0A\uDbfF")", R"("\u0000\u0000")"},
             Row{"first and last high", R"("\ud800x\udbff")", R"("\u0000x\u0000")"},
             Row{"first and last low", R"("\udc00x\udfff")", R"("\u0000x\u0000")"},
             Row{"two high", R"("\ud83d\ud83d")", R"("\u0000\u0000")"},
             Row{"high before a pair", R"("\ud83d\ud83d\ude00")", R"("\u0000\ud83d\ude00")"},
             Row{"low behind a pair", R"("\ud83d\ude00\ude00")", R"("\ud83d\ude00\u0000")"},
             Row{"wrong way round", R"("\ude00\ud83d")", R"("\u0000\u0000")"},
             Row{"high before another escape", R"("\ud83d\n")", R"("\u0000\n")"},
             Row{"high before a character", R"("\ud83d\u0041")", R"("\u0000\u0041")"},
             Row{"escaped backslash before it", R"("\\\ud83d")", R"("\\\u0000")"},
             Row{"escaped backslash in place of it", R"("\\ud83d\ud83d")", R"("\\ud83d\u0000")"},
             Row{"escaped quote before it", R"("\"\ud83d")", R"("\"\u0000")"},
             Row{"in a key", R"({"\ud83d":1})", R"({"\u0000":1})"},
             Row{"in several strings", R"(["\ud83d","\ud83d\ude00","\ude00"])",
                 R"(["\u0000","\ud83d\ude00","\u0000"])"},
         })
        EXPECT_EQ(repair(text), repaired) << why;
}

TEST(PayloadRepair, replacesNumbersWithVastExponentsByZeroOfTheSameLength) {
    for (const std::string number :
         {"1e99999999999", "-1.25E+99999999999", "0e-99999999999", "12.50E0000000001"})
        for (const auto& [before, after] :
             {std::pair{"", ""}, std::pair{"[", ",2]"}, std::pair{"{\"a\":", "}"},
              std::pair{"[\"1e99999999999\",", " ]"}}) {
            const std::string zero = "0.0" + std::string(number.size() - 3, ' ');
            EXPECT_EQ(repair(before + number + after), before + zero + after);
        }
}

TEST(PayloadRepair, leavesANumberInsideAStringAlone) {
    EXPECT_EQ(repair(R"("1e99999999999")"), std::nullopt);
    EXPECT_EQ(repair(R"("\"1e99999999999")"), std::nullopt);
    const AgentEvent event =
        eventOf(R"({"a":1e99999999999,"session_id":"1e99999999999","b":-1e99999999999})");
    EXPECT_EQ(event.sessionID, "1e99999999999");
}

const std::vector<std::string> loneSurrogates{
    R"(\ud83d)",   R"(\uD83D)",     R"(\ude00)",       R"(\ud83d\ud83d)",       R"(\ude00\ud83d)",
    R"(\ud83d x)", R"(\ud83d\n)",   R"(\ud83d\u0041)", R"(\ud83d\\)",           R"(\ud83d\")",
    R"(\\\ud83d)", R"(cut \ud83d)", R"(\ud83d\/)",     R"(\ud83d\ud83d\ude00)",
};

TEST(PayloadRepair, loneSurrogatesInWhatNobodyReadsCostNothing) {
    for (const std::string& escape : loneSurrogates)
        for (const std::string& member : {
                 "\"prompt\":\"" + escape + "\"",
                 "\"" + escape + "\":1",
                 "\"a\":[{\"" + escape + "\":\"" + escape + "\"}]",
                 "\"a\":\"" + std::string(5000, 'x') + escape + "\"",
             }) {
            EXPECT_EQ(eventOf("{" + member + ",\"session_id\":\"s\"}").sessionID, "s") << member;
            EXPECT_EQ(eventOf("{\"session_id\":\"s\"," + member + "}").sessionID, "s") << member;
        }
}

TEST(PayloadRepair, aFieldWithALoneSurrogateIsRefusedAndTheEventKept) {
    for (const std::string& escape : loneSurrogates)
        for (const auto& field : allPayloadFields()) {
            const std::string text = '"' + std::string{field.isPath() ? "/" : ""} + escape + '"';
            const AgentEvent event = eventOf(field.payload(text), field.source);
            EXPECT_EQ(field.field(event), std::nullopt) << field.title() << " " << escape;
            if (!field.eventName.empty()) {
                EXPECT_EQ(event.eventType, field.eventName) << escape;
            }
        }
}

TEST(PayloadRepair, whatIsReadBesideALoneSurrogateStaysAsItIs) {
    const AgentEvent event =
        eventOf(R"({"prompt":"cut \ud83d","session_id":"s","cwd":"/\ud83d\ude00\\ud83d \"x\" é/",)"
                R"("n":[1e99999999999,-0.5],"hook_event_name":"Stop"})");
    EXPECT_EQ(event.sessionID, "s");
    EXPECT_EQ(event.cwd, "/\U0001F600\\ud83d \"x\" \u00E9");
    EXPECT_EQ(event.category, EventCategory::turnCompleted);
}

TEST(PayloadRepair, anEscapedBackslashBeforeUIsNoEscape) {
    EXPECT_EQ(eventOf(R"({"cwd":"/\\ud83d"})").cwd, "/\\ud83d");
    EXPECT_EQ(eventOf(R"({"cwd":"/\\\\ude00"})").cwd, "/\\\\ude00");
    EXPECT_EQ(eventOf(R"({"cwd":"/\\\ud83d"})").cwd, std::nullopt);
}

TEST(PayloadRepair, invalidEscapesStayInvalid) {
    for (const char* string : {R"("\ud83)", R"("\ud83")", R"("\ud83g")", R"("\u")", R"("\U0041")",
                               R"("\ud83d\x")", R"("\ud83d\ud83")", R"("\ud83d)", R"("\ud83d\)",
                               R"("\ud83d\")", "\"\\ud83d\n\"", R"("\u d83d")", R"("\ud83d"x)"})
        EXPECT_EQ(outcomeOf("{\"session_id\":\"s\",\"a\":" + std::string{string} + "}"),
                  "invalid-json")
            << string;
}

TEST(PayloadRepair, invalidNumbersStayInvalid) {
    for (const char* number : {
             "01e99999999999",        "-01e99999999999",    "00e99999999999",
             "-e99999999999",         "e99999999999",       "+1e99999999999",
             "1.e99999999999",        ".5e99999999999",     "-.5e99999999999",
             "1e+-99999999999",       "1e++99999999999",    "1ee99999999999",
             "1e99999999999e",        "1e99999999999.5",    "1e99999999999-",
             "1e99999999999e1",       "1.5.5e99999999999",  "--1e99999999999",
             "1-1e99999999999",       "1e99999999999 2",    "1e99999999999x",
             "1e99999999999true",     "true1e99999999999",  "tru1e99999999999",
             "1e99999999999\"a\"",    "\"a\"1e99999999999", "1e99999999999[]",
             "1 e99999999999",        "1e 99999999999",     "1e99999 999999",
             "1e99999999999\xC2\xA0", "0x1e99999999999",    "1_0e99999999999",
         })
        for (const char* rest : {"", ",\"b\":\"\\ud83d\"", ",\"b\":1e99999999999"})
            EXPECT_EQ(outcomeOf("{\"session_id\":\"s\",\"a\":" + std::string{number} + rest + "}"),
                      "invalid-json")
                << number << rest;
}

TEST(PayloadRepair, otherErrorsStayErrors) {
    for (const char* payload :
         {R"({"a":"\ud83d")", R"({"a":"\ud83d",})", R"({"a":"\ud83d"}x)", R"({"a":"\ud83d" "b":1})",
          R"({"a":1e99999999999)", R"({1e99999999999:"a"})", R"({"a":1e99999999999,})",
          R"([1e99999999999 1])", R"({"a" 1e99999999999})"})
        EXPECT_EQ(outcomeOf(payload), "invalid-json") << payload;
}

TEST(PayloadRepair, aMegabyteOfLoneSurrogatesIsRead) {
    std::string payload = R"({"session_id":"s","a":")";
    while (payload.size() < 1'048'000) payload += R"(\ud83d)";
    EXPECT_EQ(eventOf(payload + "\"}").sessionID, "s");

    payload = R"({"session_id":"s","a":[)";
    while (payload.size() < 1'048'000) payload += "1e99999999999,";
    EXPECT_EQ(eventOf(payload + "0]}").sessionID, "s");
}

}  // namespace
}  // namespace tallowbrook
