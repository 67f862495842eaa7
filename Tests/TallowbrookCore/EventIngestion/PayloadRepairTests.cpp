#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PayloadFieldCases.h"

namespace tallowbrook {
namespace {

TEST(PayloadRepair, leavesANumberInsideAStringAlone) {
    const AgentEvent event =
        eventOf(R"({"a":1e99999999999,"session_id":"1e99999999999","b":-1e99999999999})");
    EXPECT_EQ(event.sessionID, "1e99999999999");
}

const std::vector<std::string> loneSurrogates{
    R"(\ud83d)",   R"(\uD83D)",     R"(\ude00)",       R"(\ud83d\ud83d)",       R"(\ude00\ud83d)",
    R"(\ud83d x)", R"(\ud83d\n)",   R"(\ud83d\u0041)", R"(\ud83d\\)",           R"(\ud83d\")",
    R"(\\\ud83d)", R"(cut \ud83d)", R"(\ud83d\/)",     R"(\ud83d\ud83d\ude00)",
};

TEST(PayloadRepair, loneSurrogatesInWhatIsNotReadCostNothing) {
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
