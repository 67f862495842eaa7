#include "Domain/EventCoding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

TEST(EventCoding, writesAFullEventAsTheseBytes) {
    EXPECT_EQ(EventCoding::encodeLine(fullEvent()),
              R"({"adapterVersion":"0.1.0","attention":"permission",)"
              R"("category":"attentionRequested","channel":"notify","cwd":"/Users/x/proj",)"
              R"("detail":{"endReason":"other","errorType":"server_error",)"
              R"("notificationType":"permission_prompt","sessionSource":"startup",)"
              R"("toolName":"Bash"},"eventType":"PermissionRequest",)"
              R"("id":"0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D",)"
              R"("observedAt":"2026-11-15T03:30:55.123Z","origin":"demo",)"
              R"("provider":"codexCLI","schema":1,"sessionID":"session-1","tty":"ttys003",)"
              R"("turnID":"turn:1"})"
              "\n");
}

TEST(EventCoding, writesAMinimalEventAsTheseBytes) {
    EXPECT_EQ(EventCoding::encodeLine(minimalEvent()),
              R"({"adapterVersion":"0.1.0","category":"turnCompleted","channel":"hook",)"
              R"("detail":{},"eventType":"Stop","id":"0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D",)"
              R"("observedAt":"2026-11-15T03:30:55.123Z","origin":"live",)"
              R"("provider":"claudeCode","schema":1})"
              "\n");
}

TEST(EventCoding, writesEachDetailAlone) {
    AgentEvent event = minimalEvent();
    event.detail.toolName = "mcp__probe__ask";
    EXPECT_NE(EventCoding::encodeLine(event).find(R"("detail":{"toolName":"mcp__probe__ask"},)"),
              std::string::npos);
}

TEST(EventCoding, doesNotEscapeSlashesOrCharactersBeyondASCII) {
    AgentEvent event = minimalEvent();
    event.cwd = "/Users/x/\u65E5\u672C/\U0001F600\u2028";
    EXPECT_NE(EventCoding::encodeLine(event).find("\"cwd\":\"/Users/x/\u65E5\u672C/"
                                                  "\U0001F600\u2028\","),
              std::string::npos);
}

TEST(EventCoding, writesTheSchemaNumberOfTheEvent) {
    for (const std::int64_t schema :
         {std::int64_t{-1}, std::int64_t{0}, std::int64_t{2},
          std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        AgentEvent event = minimalEvent();
        event.schema = schema;
        const std::string line = EventCoding::encodeLine(event);
        EXPECT_NE(line.find("\"schema\":" + std::to_string(schema) + "}"), std::string::npos);
        const auto decoded = EventCoding::decodeLine(line);
        ASSERT_TRUE(decoded) << line;
        EXPECT_EQ(decoded->schema, schema);
    }
}

void appendUTF8(std::string& text, unsigned codePoint) {
    const auto byte = [&](unsigned value) { text += static_cast<char>(value); };
    if (codePoint < 0x80) return byte(codePoint);
    if (codePoint < 0x800) {
        byte(0xC0 | codePoint >> 6);
    } else if (codePoint < 0x10000) {
        byte(0xE0 | codePoint >> 12);
        byte(0x80 | (codePoint >> 6 & 0x3F));
    } else {
        byte(0xF0 | codePoint >> 18);
        byte(0x80 | (codePoint >> 12 & 0x3F));
        byte(0x80 | (codePoint >> 6 & 0x3F));
    }
    byte(0x80 | (codePoint & 0x3F));
}

bool isSurrogate(unsigned codePoint) { return codePoint >= 0xD800 && codePoint <= 0xDFFF; }

TEST(EventCoding, carriesEveryCodePoint) {
    AgentEvent event = minimalEvent();
    for (unsigned codePoint = 0; codePoint < 0x110000; ++codePoint) {
        if (!isSurrogate(codePoint)) appendUTF8(event.eventType, codePoint);
        if ((codePoint & 0xFFF) != 0xFFF) continue;
        const std::string line = EventCoding::encodeLine(event);
        for (const char c : line.substr(0, line.size() - 1))
            ASSERT_GE(static_cast<unsigned char>(c), 0x20) << "up to " << codePoint;
        ASSERT_EQ(EventCoding::decodeLine(line), event) << "up to " << codePoint;
        event.eventType.clear();
    }
}

TEST(EventCoding, carriesEachASCIICharacterAlone) {
    for (int byte = 0; byte < 0x80; ++byte) {
        AgentEvent event = minimalEvent();
        event.cwd = std::string(1, static_cast<char>(byte));
        EXPECT_EQ(EventCoding::decodeLine(EventCoding::encodeLine(event)), event) << byte;
    }
}

TEST(EventCoding, carriesLongTexts) {
    for (const std::size_t length : {1023U, 1024U, 1025U, 4095U, 4096U, 4097U, 100'000U}) {
        AgentEvent event = fullEvent();
        event.sessionID = std::string(length, 'a');
        event.cwd = "/" + std::string(length, '\\');
        event.tty = std::string(length, '\x01') + "end";
        event.detail.toolName = std::string(length, '"') + "\U0001F600";
        EXPECT_EQ(EventCoding::decodeLine(EventCoding::encodeLine(event)), event) << length;
    }
}

// Events that differ in everything, from one seed.
class EventSource {
 public:
    explicit EventSource(std::uint64_t seed) : engine_{seed} {}

    AgentEvent next() {
        AgentEvent event;
        event.schema = static_cast<std::int64_t>(engine_());
        for (auto& byte : event.id) byte = static_cast<std::uint8_t>(engine_());
        event.provider = oneOf<Provider>();
        event.channel = oneOf<EventChannel>();
        event.origin = oneOf<EventOrigin>();
        event.eventType = text();
        event.category = oneOf<EventCategory>();
        if (isPresent()) event.attention = oneOf<AttentionKind>();
        event.sessionID = optionalText();
        event.turnID = optionalText();
        event.observedAt = time();
        event.cwd = optionalText();
        event.tty = optionalText();
        event.detail.notificationType = optionalText();
        event.detail.toolName = optionalText();
        event.detail.sessionSource = optionalText();
        event.detail.endReason = optionalText();
        event.detail.errorType = optionalText();
        event.adapterVersion = text();
        return event;
    }

 private:
    std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
    bool isPresent() { return below(2) == 0; }

    template <typename Enum>
    Enum oneOf() {
        const auto cases = allCases<Enum>();
        return cases[below(cases.size())];
    }

    // Half of the characters are ASCII, where quotes, slashes and control characters lie.
    std::string text() {
        std::string text;
        for (std::uint64_t length = below(40); length > 0; --length) {
            const auto codePoint =
                static_cast<unsigned>(below(2) == 0 ? below(0x80) : below(0x110000));
            appendUTF8(text, isSurrogate(codePoint) ? 0xFFFD : codePoint);
        }
        return text;
    }

    std::optional<std::string> optionalText() {
        return isPresent() ? std::optional{text()} : std::nullopt;
    }

    // From the year 1 to the year 9999, to the microsecond.
    Instant time() {
        constexpr std::uint64_t span = 315'537'897'600ULL * 1'000'000;
        return distantPast + std::chrono::microseconds{below(span)};
    }

    std::mt19937_64 engine_;
};

TEST(EventCoding, decodesWhatItEncodedButForTheTimeBelowAMillisecond) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RecordProperty("seed", std::to_string(seed));
    EventSource source{seed};
    for (int i = 0; i < 5000; ++i) {
        AgentEvent event = source.next();
        const std::string line = EventCoding::encodeLine(event);
        ASSERT_EQ(line.find('\n'), line.size() - 1) << line;
        const auto decoded = EventCoding::decodeLine(line.substr(0, line.size() - 1));
        ASSERT_TRUE(decoded) << decoded.error().description << " " << line;
        event.observedAt = std::chrono::floor<std::chrono::milliseconds>(event.observedAt);
        ASSERT_EQ(*decoded, event) << line;
        ASSERT_EQ(EventCoding::encodeLine(*decoded), line);
    }
}

}  // namespace
}  // namespace tallowbrook
