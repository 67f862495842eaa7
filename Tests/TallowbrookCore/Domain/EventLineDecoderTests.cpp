#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Domain/EventCoding.h"
#include "EventLineText.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

const EventLineText line;

bool decodes(const EventLineText& text) { return EventCoding::decodeLine(text.text()).has_value(); }

std::string failureOf(const EventLineText& text) {
    const auto event = EventCoding::decodeLine(text.text());
    return event ? "no failure" : event.error().description;
}

TEST(EventLineDecoder, readsALineWithOnlyTheRequiredKeys) {
    EXPECT_EQ(EventCoding::decodeLine(line.text()), minimalEvent());
}

TEST(EventLineDecoder, failsWithoutAnyRequiredKey) {
    for (const char* key : {"schema", "id", "provider", "channel", "origin", "eventType",
                            "category", "observedAt", "detail", "adapterVersion"}) {
        EXPECT_FALSE(decodes(line.without(key))) << key;
        EXPECT_FALSE(decodes(line.with(key, "null"))) << key;
    }
}

TEST(EventLineDecoder, takesAnOptionalKeyThatIsMissingOrNullAsAbsent) {
    auto nulls = line;
    for (const char* key : {"attention", "sessionID", "turnID", "cwd", "tty"})
        nulls = nulls.with(key, "null");
    nulls = nulls.with("detail", R"({"notificationType":null,"toolName":null,)"
                                 R"("sessionSource":null,"endReason":null,"errorType":null})");
    EXPECT_EQ(EventCoding::decodeLine(nulls.text()), minimalEvent());
}

TEST(EventLineDecoder, readsEachOptionalKeyIntoItsField) {
    AgentEvent expected = minimalEvent();
    expected.attention = AttentionKind::input;
    expected.sessionID = "s";
    expected.turnID = "t";
    expected.cwd = "/c";
    expected.tty = "ttys001";
    expected.detail.notificationType = "n";
    expected.detail.toolName = "o";
    expected.detail.sessionSource = "u";
    expected.detail.endReason = "r";
    expected.detail.errorType = "e";
    const auto full = line.with("attention", R"("input")")
                          .with("sessionID", R"("s")")
                          .with("turnID", R"("t")")
                          .with("cwd", R"("/c")")
                          .with("tty", R"("ttys001")")
                          .with("detail", R"({"notificationType":"n","toolName":"o",)"
                                          R"("sessionSource":"u","endReason":"r",)"
                                          R"("errorType":"e"})");
    EXPECT_EQ(EventCoding::decodeLine(full.text()), expected);
}

TEST(EventLineDecoder, failsOnAValueOfAnotherType) {
    for (const char* key :
         {"id", "provider", "channel", "origin", "eventType", "category", "observedAt",
          "adapterVersion", "attention", "sessionID", "turnID", "cwd", "tty"})
        for (const char* value :
             {"1", "-1", "1.5", "18446744073709551615", "true", "false", "{}", "[]", R"(["x"])"})
            EXPECT_FALSE(decodes(line.with(key, value))) << key << " " << value;
}

TEST(EventLineDecoder, failsOnADetailOfAnotherType) {
    for (const char* value : {"1", "true", "[]", R"("")", R"("toolName")", "[{}]"})
        EXPECT_FALSE(decodes(line.with("detail", value))) << value;
    for (const char* key :
         {"notificationType", "toolName", "sessionSource", "endReason", "errorType"})
        for (const char* value : {"1", "1.5", "true", "{}", "[]", R"(["x"])"}) {
            const std::string detail = "{\"" + std::string{key} + "\":" + value + "}";
            EXPECT_FALSE(decodes(line.with("detail", detail))) << detail;
        }
}

TEST(EventLineDecoder, takesOnlySignedIntegersAsSchema) {
    struct Row {
        const char* value;
        bool decodes;
    };
    for (const auto& [value, expected] : {
             Row{"1", true},
             Row{"0", true},
             Row{"2", true},
             Row{"-1", true},
             Row{"9223372036854775807", true},
             Row{"-9223372036854775808", true},
             Row{"9223372036854775808", false},
             Row{"-9223372036854775809", false},
             Row{"18446744073709551616", false},
             Row{"1.0", false},
             Row{"1.5", false},
             Row{"1e0", false},
             Row{"01", false},
             Row{"+1", false},
             Row{"0x1", false},
             Row{R"("1")", false},
             Row{"true", false},
             Row{"{}", false},
             Row{"[1]", false},
         })
        EXPECT_EQ(decodes(line.with("schema", value)), expected) << value;
}

TEST(EventLineDecoder, doesNotCompareTheSchemaWithItsOwn) {
    const auto event = EventCoding::decodeLine(line.with("schema", "7").text());
    ASSERT_TRUE(event);
    EXPECT_EQ(event->schema, 7);
}

template <typename Enum>
void expectOnlyKnownValues(const char* key) {
    for (const Enum value : allCases<Enum>())
        EXPECT_TRUE(decodes(line.with(key, '"' + std::string{rawValue(value)} + '"')))
            << key << " " << rawValue(value);
    for (std::string unknown : {"", "later", "Hook", " hook", "0"})
        EXPECT_FALSE(decodes(line.with(key, '"' + unknown + '"'))) << key << " " << unknown;
    const std::string first{rawValue(allCases<Enum>()[0])};
    EXPECT_FALSE(decodes(line.with(key, '"' + first + " \""))) << key;
    EXPECT_FALSE(decodes(line.with(key, '"' + first + "\\u0000\""))) << key;
}

TEST(EventLineDecoder, failsOnValuesThatNoEnumHas) {
    expectOnlyKnownValues<Provider>("provider");
    expectOnlyKnownValues<EventChannel>("channel");
    expectOnlyKnownValues<EventOrigin>("origin");
    expectOnlyKnownValues<EventCategory>("category");
    expectOnlyKnownValues<AttentionKind>("attention");
}

TEST(EventLineDecoder, takesAnyTextAsEventTypeAndVersion) {
    const auto event = EventCoding::decodeLine(
        line.with("eventType", R"("")").with("adapterVersion", R"("any \"text\"\n")").text());
    ASSERT_TRUE(event);
    EXPECT_EQ(event->eventType, "");
    EXPECT_EQ(event->adapterVersion, "any \"text\"\n");
}

TEST(EventLineDecoder, readsDatesWithAndWithoutFraction) {
    const auto whole =
        EventCoding::decodeLine(line.with("observedAt", R"("2026-11-15T03:30:55Z")").text());
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->observedAt, std::chrono::floor<std::chrono::seconds>(sampleTime));
}

TEST(EventLineDecoder, saysWhenADateIsWrong) {
    for (const char* date : {"2026-11-15 03:30:55", "2026-11-15T03:30:55+00:00",
                             "2026-11-15T03:30:55.12Z", "2026-02-29T00:00:00Z", ""})
        EXPECT_EQ(failureOf(line.with("observedAt", '"' + std::string{date} + '"')),
                  "Invalid ISO 8601 date")
            << date;
    EXPECT_NE(failureOf(line.with("category", R"("later")")), "Invalid ISO 8601 date");
}

TEST(EventLineDecoder, neverQuotesTheLineInItsFailure) {
    for (const char* key : {"observedAt", "category", "id", "detail"})
        EXPECT_EQ(failureOf(line.with(key, R"("secret text")")).find("secret"), std::string::npos)
            << key;
}

TEST(EventLineDecoder, readsIdentifiersInEitherCase) {
    const auto event = EventCoding::decodeLine(
        line.with("id", R"("0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d")").text());
    EXPECT_EQ(event, minimalEvent());
    for (const char* id :
         {"", "0A1B2C3D4E5F4A6B8C7D9E0F1A2B3C4D", "{0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D}",
          "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4G"})
        EXPECT_FALSE(decodes(line.with("id", '"' + std::string{id} + '"'))) << id;
}

TEST(EventLineDecoder, passesOverUnknownKeysWhateverTheyHold) {
    for (const char* value : {
             "null",
             "true",
             "1",
             "-1.5e300",
             "18446744073709551615",
             "18446744073709551616",
             R"("text")",
             "[]",
             "{}",
             R"([1,[2,{"a":[]}],"b"])",
             // The names of fields mean nothing deeper down.
             R"({"schema":"x","cwd":1,"detail":[],"observedAt":"never","category":null})",
             R"({"toolName":"x","errorType":1})",
             R"([{"id":1},{"id":2}])",
             R"({"detail":{"toolName":1}})",
         })
        EXPECT_EQ(EventCoding::decodeLine(line.adding("later", value).text()), minimalEvent())
            << value;
    EXPECT_EQ(EventCoding::decodeLine(line.adding("", "1").text()), minimalEvent());
}

TEST(EventLineDecoder, passesOverUnknownKeysInTheDetail) {
    for (const char* value :
         {"null", "1", R"("text")", R"([{"toolName":1}])", R"({"toolName":1,"cwd":2})"}) {
        const std::string detail =
            R"({"later":)" + std::string{value} + R"(,"toolName":"Bash","cwd":1})";
        const auto event = EventCoding::decodeLine(line.with("detail", detail).text());
        ASSERT_TRUE(event) << detail;
        EXPECT_EQ(event->detail.toolName, "Bash");
        EXPECT_FALSE(event->cwd);
    }
}

TEST(EventLineDecoder, tellsDetailKeysFromEventKeys) {
    const auto event =
        EventCoding::decodeLine(line.adding("toolName", "1").adding("errorType", "{}").text());
    EXPECT_EQ(event, minimalEvent());
    const auto after = EventCoding::decodeLine(
        line.without("schema").with("detail", R"({"schema":1,"x":{"schema":1}})").text());
    EXPECT_FALSE(after) << "a key of the detail cannot stand in for one of the event";
}

TEST(EventLineDecoder, readsKeysInAnyOrder) {
    std::vector<std::string> members{
        R"("schema":1)",
        R"("id":"0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D")",
        R"("provider":"claudeCode")",
        R"("channel":"hook")",
        R"("origin":"live")",
        R"("eventType":"Stop")",
        R"("category":"turnCompleted")",
        R"("observedAt":"2026-11-15T03:30:55.123Z")",
        R"("detail":{})",
        R"("adapterVersion":"0.1.0")",
    };
    for (std::size_t i = 0; i < members.size(); ++i) {
        std::string text;
        for (const auto& member : members) text += (text.empty() ? "{" : " ,\t") + member;
        EXPECT_EQ(EventCoding::decodeLine(text + "}"), minimalEvent()) << text;
        std::ranges::rotate(members, members.begin() + 1);
    }
}

TEST(EventLineDecoder, readsEscapedKeysAndValues) {
    const auto event = EventCoding::decodeLine(
        line.adding(R"(\u0063w\u0064)", R"("\/a\u002Fb\ud83d\ude00")").text());
    ASSERT_TRUE(event);
    EXPECT_EQ(event->cwd, "/a/b\U0001F600");
}

TEST(EventLineDecoder, comparesKeysByTheirExactText) {
    for (const char* key : {"CWD", "Cwd", "cwd ", " cwd", "cwd\\u0000"}) {
        const auto event = EventCoding::decodeLine(line.adding(key, R"("/a")").text());
        ASSERT_TRUE(event) << key;
        EXPECT_FALSE(event->cwd) << key;
    }
    EXPECT_FALSE(decodes(line.without("schema").adding("Schema", "1")));
}

TEST(EventLineDecoder, takesWhiteSpaceAroundTheObject) {
    EXPECT_EQ(EventCoding::decodeLine(" \t" + line.text() + " \r\n"), minimalEvent());
}

}  // namespace
}  // namespace tallowbrook
