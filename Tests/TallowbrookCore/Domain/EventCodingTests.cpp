#include "Domain/EventCoding.h"

#include <gtest/gtest.h>

#include <limits>
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

TEST(EventCoding, doesNotEscapeSlashesOrCharactersBeyondASCII) {
    AgentEvent event = minimalEvent();
    event.cwd = "/Users/x/\u65E5\u672C/\U0001F600\u2028";
    EXPECT_NE(EventCoding::encodeLine(event).find("\"cwd\":\"/Users/x/\u65E5\u672C/"
                                                  "\U0001F600\u2028\","),
              std::string::npos);
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

TEST(EventCoding, carriesLongTexts) {
    for (const std::size_t length : {1024U, 4096U, 100'000U}) {
        AgentEvent event = fullEvent();
        event.sessionID = std::string(length, 'a');
        event.cwd = "/" + std::string(length, '\\');
        event.tty = std::string(length, '\x01') + "end";
        event.detail.toolName = std::string(length, '"') + "\U0001F600";
        EXPECT_EQ(EventCoding::decodeLine(EventCoding::encodeLine(event)), event) << length;
    }
}

TEST(EventCoding, decodesWhatItEncodedButForTheTimeBelowAMillisecond) {
    for (AgentEvent event : {fullEvent(), minimalEvent()})
        for (const Instant time : {distantPast, Instant{}, sampleTime}) {
            event.schema = std::numeric_limits<std::int64_t>::min();
            event.observedAt = time + std::chrono::microseconds{999};
            const auto decoded = EventCoding::decodeLine(EventCoding::encodeLine(event));
            event.observedAt = time;
            EXPECT_EQ(decoded, event);
        }
}

}  // namespace
}  // namespace tallowbrook
