#include "EventIngestion/PayloadNormalizer.h"

#include <gtest/gtest.h>

#include <string>

#include "Normalizing.h"

namespace tallowbrook {
namespace {

TEST(PayloadSource, hasOneRawTextProviderAndChannelEach) {
    struct Row {
        PayloadSource source;
        const char* rawValue;
        Provider provider;
        EventChannel channel;
    };
    using enum PayloadSource;
    const auto rows = {
        Row{claudeCodeHook, "claude-code", Provider::claudeCode, EventChannel::hook},
        Row{codexHook, "codex", Provider::codexCLI, EventChannel::hook},
        Row{codexNotify, "codex-notify", Provider::codexCLI, EventChannel::notify},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(rawValue(row.source), row.rawValue);
        EXPECT_EQ(fromRawValue<PayloadSource>(row.rawValue), row.source);
        EXPECT_EQ(provider(row.source), row.provider) << row.rawValue;
        EXPECT_EQ(channel(row.source), row.channel) << row.rawValue;
    }
    EXPECT_EQ(allCases<PayloadSource>().size(), rows.size());
}

TEST(PayloadSource, isNotMadeFromAnotherText) {
    for (const char* text : {"", "Claude-Code", "claude", "claude-code ", "claudeCodeHook",
                             "codex_notify", "codex-", "CODEX"})
        EXPECT_FALSE(fromRawValue<PayloadSource>(text)) << text;
}

TEST(NormalizationError, hasACodeForTheLog) {
    EXPECT_EQ(NormalizationError::payloadTooLarge(1048577).diagnosticCode(),
              "payload-too-large(1048577)");
    EXPECT_EQ(NormalizationError::emptyPayload().diagnosticCode(), "empty-payload");
    EXPECT_EQ(NormalizationError::invalidJSON().diagnosticCode(), "invalid-json");
    EXPECT_EQ(NormalizationError::notAnObject().diagnosticCode(), "not-an-object");
}

TEST(PayloadNormalizer, stampsEveryEventWithItsVersion) {
    EXPECT_EQ(PayloadNormalizer::adapterVersion, "0.1.0");
    EXPECT_EQ(eventOf("{}").adapterVersion, "0.1.0");
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

TEST(PayloadNormalizer, refusesAnEmptyPayload) { EXPECT_EQ(outcomeOf(""), "empty-payload"); }

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
    EXPECT_EQ(outcomeOf(std::string(limit, 'x')), "invalid-json");
    EXPECT_EQ(outcomeOf(std::string(limit + 1, 'x')), "payload-too-large(1048577)");
    EXPECT_EQ(outcomeOf(std::string(3'000'000, '[')), "payload-too-large(3000000)");
}

TEST(PayloadNormalizer, tellsATextThatIsNoObject) {
    for (const char* payload :
         {"[]", "[{}]", R"([{"session_id":"s"}])", R"(["session_id","s"])", "1", "-1.5e3", "0",
          "true", "false", "null", R"("text")", R"("")", R"("{}")", " 1 ", "1e999", R"("\ud83d")",
          "1e99999999999", "\"\xFF\"", "\xEF\xBB\xBF[]"})
        EXPECT_EQ(outcomeOf(payload), "not-an-object") << payload;
}

TEST(PayloadNormalizer, tellsATextThatIsNoJSON) {
    for (const char* payload : {
             "{",
             "}",
             "[",
             "\"",
             " ",
             "\n",
             "x",
             "nul",
             "Null",
             "NaN",
             "Infinity",
             "{}}",
             "{}{}",
             "{} x",
             "{},",
             "{\"a\"}",
             "{\"a\":}",
             "{\"a\":1,}",
             "{,\"a\":1}",
             "{\"a\":1 \"b\":2}",
             "{a:1}",
             "{'a':1}",
             "{1:1}",
             "{\"a\":1;}",
             "{\"a\" 1}",
             "{\"a\":1}/**/",
             "// \n{}",
             "{\"a\":[1,]}",
             "{\"a\":[1 2]}",
             "{\"a\":[1}",
             "{\"a\":01}",
             "{\"a\":-}",
             "{\"a\":+1}",
             "{\"a\":.5}",
             "{\"a\":1.}",
             "{\"a\":1e}",
             "{\"a\":1e+}",
             "{\"a\":0x10}",
             "{\"a\":1_000}",
             "{\"a\":\"}",
             "{\"a\":\"\\x\"}",
             "{\"a\":\"\\u12\"}",
             "{\"a\":\"\\u12g4\"}",
             "{\"a\":\"\\\"}",
             "{\"a\":\"\n\"}",
             "{\"a\":\"\t\"}",
             "{\"a\":\"\x01\"}",
             "{\"a\t\":1}",
             "\xFF{}",
             "{\"a\":\xC3\xA9}",
             "\f{}",
             "\v{}",
             "{}\u00A0",
         })
        EXPECT_EQ(outcomeOf(payload), "invalid-json") << payload;
    EXPECT_EQ(outcomeOf({"{}\0", 3}), "invalid-json") << "zero byte";
    EXPECT_EQ(outcomeOf({"\0{}", 3}), "invalid-json") << "zero byte";
    EXPECT_EQ(outcomeOf({"{\"a\":\"\0\"}", 9}), "invalid-json") << "zero byte in a string";
    EXPECT_EQ(outcomeOf({"{\0}\0", 4}), "invalid-json") << "UTF-16";
    EXPECT_EQ(outcomeOf({"\xFF\xFE{\0}\0", 6}), "invalid-json") << "UTF-16 with its mark";
}

TEST(PayloadNormalizer, skipsOneByteOrderMark) {
    EXPECT_EQ(eventOf("\xEF\xBB\xBF{\"session_id\":\"s\"}").sessionID, "s");
    EXPECT_EQ(outcomeOf("\xEF\xBB\xBF"), "invalid-json");
    EXPECT_EQ(outcomeOf("\xEF\xBB\xBF\xEF\xBB\xBF{}"), "invalid-json");
    EXPECT_EQ(outcomeOf("\xEF\xBB{}"), "invalid-json");
    EXPECT_EQ(outcomeOf(" \xEF\xBB\xBF{}"), "invalid-json");
    EXPECT_EQ(outcomeOf("{}\xEF\xBB\xBF"), "invalid-json");
    // The mark stands inside: it is text like any other.
    EXPECT_EQ(eventOf("{\"cwd\":\"/\xEF\xBB\xBF\"}").cwd, "/\uFEFF");
}

TEST(PayloadNormalizer, countsTheByteOrderMarkAsPayload) {
    const std::string blanks(1048576 - 5, ' ');
    EXPECT_EQ(outcomeOf("\xEF\xBB\xBF{}" + blanks), "event");
    EXPECT_EQ(outcomeOf("\xEF\xBB\xBF{}" + blanks + " "), "payload-too-large(1048577)");
}

TEST(PayloadNormalizer, keepsNothingBetweenPayloads) {
    eventOf(R"({"session_id":"s","hook_event_name":"Stop"})");
    EXPECT_EQ(eventOf("{}"), unknownEvent());
}

}  // namespace
}  // namespace tallowbrook
