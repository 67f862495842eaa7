#include "EventIngestion/PayloadNormalizer.h"

#include <gtest/gtest.h>

#include <string>

#include "Normalizing.h"

namespace tallowbrook {
namespace {

TEST(PayloadSource, isFoundByItsExactText) {
    const auto notify = fromRawValue<PayloadSource>("codex-notify");
    ASSERT_TRUE(notify);
    EXPECT_EQ(provider(*notify), Provider::codexCLI);
    EXPECT_EQ(channel(*notify), EventChannel::notify);
    for (const char* text : {"", "Claude-Code", "claude", "claude-code ", "codex_notify"})
        EXPECT_FALSE(fromRawValue<PayloadSource>(text)) << text;
}

TEST(NormalizationError, hasACodeForTheLog) {
    EXPECT_EQ(NormalizationError::payloadTooLarge(1048577).diagnosticCode(),
              "payload-too-large(1048577)");
    EXPECT_EQ(NormalizationError::emptyPayload().diagnosticCode(), "empty-payload");
    EXPECT_EQ(NormalizationError::invalidJSON().diagnosticCode(), "invalid-json");
    EXPECT_EQ(NormalizationError::notAnObject().diagnosticCode(), "not-an-object");
}

TEST(PayloadNormalizer, makesAnUnknownEventOfAnObjectWithoutUse) {
    for (const PayloadSource source : allCases<PayloadSource>())
        for (const char* payload : {"{}", " \t\r\n{ } \n", R"({"other":1})", R"({"":""})"})
            EXPECT_EQ(normalize(payload, source), unknownEvent(source)) << payload;
}

TEST(PayloadNormalizer, handsOnWhatTheCallerGives) {
    for (const EventOrigin origin : allCases<EventOrigin>()) {
        const UUID id = sampleID("00000000-0000-4000-8000-000000000001");
        const auto event =
            PayloadNormalizer::normalize("{}", PayloadSource::codexHook, origin, distantPast, id);
        ASSERT_TRUE(event);
        EXPECT_EQ(event->origin, origin);
        EXPECT_EQ(event->id, id);
        EXPECT_EQ(event->observedAt, distantPast);
        EXPECT_EQ(event->schema, 1);
        EXPECT_FALSE(event->tty) << "for the caller to fill";
    }
}

TEST(PayloadNormalizer, refusesAPayloadBeyondItsLimit) {
    constexpr std::size_t limit = 1048576;
    EXPECT_EQ(PayloadNormalizer::maxPayloadBytes, limit);
    const std::string longText =
        R"({"session_id":"s","text":")" + std::string(limit - 28, 'x') + R"("})";
    ASSERT_EQ(longText.size(), limit);
    EXPECT_EQ(eventOf(longText).sessionID, "s");
    EXPECT_EQ(outcomeOf(longText + " "), "payload-too-large(1048577)");

    const std::string blanks = "{}" + std::string(limit - 2, ' ');
    EXPECT_EQ(outcomeOf(blanks), "event");
    EXPECT_EQ(outcomeOf(blanks + " "), "payload-too-large(1048577)");
    const std::string marked = "\xEF\xBB\xBF" + blanks.substr(0, limit - 3);
    EXPECT_EQ(outcomeOf(marked), "event");
    EXPECT_EQ(outcomeOf(marked + " "), "payload-too-large(1048577)") << "the mark counts";
}

TEST(PayloadNormalizer, tellsATextThatIsNoObject) {
    for (const char* payload : {"[]", R"([{"session_id":"s"}])", "1", "true", "null", R"("{}")",
                                "1e99999999999", R"("\ud83d")", "\xEF\xBB\xBF[]"})
        EXPECT_EQ(outcomeOf(payload), "not-an-object") << payload;
}

TEST(PayloadNormalizer, tellsATextThatIsNoJSON) {
    EXPECT_EQ(outcomeOf(""), "empty-payload");
    for (const char* payload : {"{", " ", "NaN", "{}{}", "{},", "{\"a\":1,}", "{a:1}", "{'a':1}",
                                "{\"a\":1}/**/", "{\"a\":01}", "{\"a\":1e+}", "{\"a\":\"}",
                                "{\"a\":\"\\x\"}", "{\"a\":\"\n\"}", "\xFF{}", "\f{}"})
        EXPECT_EQ(outcomeOf(payload), "invalid-json") << payload;
    EXPECT_EQ(outcomeOf({"{}\0", 3}), "invalid-json") << "zero byte";
    EXPECT_EQ(outcomeOf({"\xFF\xFE{\0}\0", 6}), "invalid-json") << "UTF-16 with its mark";
}

TEST(PayloadNormalizer, skipsOneByteOrderMark) {
    EXPECT_EQ(eventOf("\xEF\xBB\xBF{\"session_id\":\"s\"}").sessionID, "s");
    EXPECT_EQ(outcomeOf("\xEF\xBB\xBF"), "invalid-json");
    EXPECT_EQ(outcomeOf("\xEF\xBB\xBF\xEF\xBB\xBF{}"), "invalid-json");
    EXPECT_EQ(outcomeOf(" \xEF\xBB\xBF{}"), "invalid-json");
    // The mark stands inside: it is text like any other.
    EXPECT_EQ(eventOf("{\"cwd\":\"/\xEF\xBB\xBF\"}").cwd, "/\uFEFF");
}

}  // namespace
}  // namespace tallowbrook
