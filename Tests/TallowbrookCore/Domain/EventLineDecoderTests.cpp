#include <gtest/gtest.h>

#include <string>

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

TEST(EventLineDecoder, failsOnAValueOfAnotherType) {
    for (const char* value : {"1", "1.5", "18446744073709551615", "true", "{}", "[]", R"(["x"])"}) {
        for (const char* key :
             {"id", "provider", "channel", "origin", "eventType", "category", "observedAt",
              "adapterVersion", "attention", "sessionID", "turnID", "cwd", "tty"})
            EXPECT_FALSE(decodes(line.with(key, value))) << key << " " << value;
        for (const char* key :
             {"notificationType", "toolName", "sessionSource", "endReason", "errorType"}) {
            const std::string detail = "{\"" + std::string{key} + "\":" + value + "}";
            EXPECT_FALSE(decodes(line.with("detail", detail))) << detail;
        }
    }
    for (const char* value : {"1", "true", "[]", R"("")", "[{}]"})
        EXPECT_FALSE(decodes(line.with("detail", value))) << value;
}

TEST(EventLineDecoder, readsKeysInAnyOrder) {
    const auto lastFirst = line.without("adapterVersion").without("category");
    EXPECT_EQ(EventCoding::decodeLine(lastFirst.adding("category", R"("turnCompleted")")
                                          .adding("adapterVersion", R"("0.1.0")")
                                          .text()),
              minimalEvent());
}

TEST(EventLineDecoder, takesOnlySignedIntegersAsSchema) {
    for (const char* value : {"1", "-1", "9223372036854775807", "-9223372036854775808"})
        EXPECT_TRUE(decodes(line.with("schema", value))) << value;
    for (const char* value :
         {"9223372036854775808", "-9223372036854775809", "1.0", "1e0", "01", R"("1")", "true"})
        EXPECT_FALSE(decodes(line.with("schema", value))) << value;
    EXPECT_FALSE(decodes(line.without("schema").with("detail", R"({"schema":1})")));
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

TEST(EventLineDecoder, readsADateWithoutFractionAndSaysWhenOneIsWrong) {
    const auto whole =
        EventCoding::decodeLine(line.with("observedAt", R"("2026-11-15T03:30:55Z")").text());
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->observedAt, std::chrono::floor<std::chrono::seconds>(sampleTime));
    for (const char* date : {"2026-11-15 03:30:55", "2026-11-15T03:30:55.12Z"})
        EXPECT_EQ(failureOf(line.with("observedAt", '"' + std::string{date} + '"')),
                  "Invalid ISO 8601 date")
            << date;
    EXPECT_NE(failureOf(line.with("category", R"("later")")), "Invalid ISO 8601 date");
}

TEST(EventLineDecoder, readsIdentifiersInEitherCase) {
    const auto event = EventCoding::decodeLine(
        line.with("id", R"("0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d")").text());
    EXPECT_EQ(event, minimalEvent());
    EXPECT_FALSE(decodes(line.with("id", R"("0A1B2C3D4E5F4A6B8C7D9E0F1A2B3C4D")")));
}

TEST(EventLineDecoder, passesOverUnknownKeysWhateverTheyHold) {
    for (const char* value : {
             "null",
             "true",
             "1",
             "18446744073709551616",
             R"("text")",
             R"([1,[2,{"a":[]}],"b"])",
             // The names of fields mean nothing deeper down.
             R"({"schema":"x","cwd":1,"detail":[],"observedAt":"never","category":null})",
             R"([{"id":1},{"id":2}])",
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
