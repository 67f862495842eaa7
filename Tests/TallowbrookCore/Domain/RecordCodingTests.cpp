#include "Domain/RecordCoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Domain/AgentEvent.h"
#include "Domain/EventCoding.h"

namespace tallowbrook {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

RecordDecoder decoderOf(std::string_view text) {
    auto decoder = EventCoding::makeDecoder(text);
    EXPECT_TRUE(decoder) << text;
    return decoder ? std::move(*decoder) : RecordDecoder{};
}

std::string failureOf(const RecordDecoder& decoder) {
    return decoder.failure() ? decoder.failure()->description : "";
}

TEST(RecordEncoder, writesMembersInAscendingOrder) {
    RecordEncoder encoder = EventCoding::makeEncoder();
    EXPECT_EQ(encoder.text(), "{}");
    encoder.encode("b", 1);
    encoder.encode("aa", 2);
    encoder.encode("a", 3);
    encoder.encode("B", 4);
    EXPECT_EQ(encoder.text(), R"({"B":4,"a":3,"aa":2,"b":1})");
}

TEST(RecordEncoder, writesEachKindOfValue) {
    RecordEncoder nested;
    nested.encode("inner", "/");
    RecordEncoder encoder;
    encoder.encode("boolean", true);
    encoder.encode("date", Instant{std::chrono::microseconds{1500}});
    encoder.encode("enumeration", EventCategory::turnFailed);
    encoder.encode("integer", std::numeric_limits<std::int64_t>::min());
    encoder.encode("record", nested);
    encoder.encode("text", std::string_view{"a\"\\/\n\x01\u00E9", 8});
    encoder.encode("absent", std::optional<std::string>{});
    encoder.encode("present", std::optional<bool>{false});
    encoder.encode("whole", 300.0);
    encoder.encodeRaw("raw", "[1]");
    EXPECT_EQ(encoder.text(),
              R"({"boolean":true,"date":"1970-01-01T00:00:00.001Z","enumeration":"turnFailed",)"
              R"("integer":-9223372036854775808,"present":false,"raw":[1],"record":{"inner":"/"},)"
              "\"text\":\"a\\\"\\\\/\\n\\u0001\u00E9\",\"whole\":300}");
}

TEST(RecordEncoder, writesLists) {
    RecordEncoder encoder;
    encoder.encode("none", std::vector<std::string>{});
    encoder.encode("numbers", std::vector<std::int32_t>{-2147483647 - 1, 0, 2147483647});
    encoder.encode("texts", std::vector<std::string>{"", "a/b", "\"\n"});
    EXPECT_EQ(encoder.text(), R"({"none":[],"numbers":[-2147483648,0,2147483647],)"
                              R"("texts":["","a/b","\"\n"]})");
}

TEST(RecordDecoder, readsEachKindOfValue) {
    auto decoder = decoderOf(
        R"({"boolean":true,"date":"1970-01-01T00:00:00.001Z","enumeration":"turnFailed",)"
        R"("integer":-9223372036854775808,"least":-2147483648,"number":2.5,"record":{"inner":"/"},"text":"a\n"})");
    EXPECT_TRUE(decoder.boolean("boolean"));
    EXPECT_EQ(decoder.date("date"), Instant{std::chrono::milliseconds{1}});
    EXPECT_EQ(decoder.enumeration<EventCategory>("enumeration"), EventCategory::turnFailed);
    EXPECT_EQ(decoder.integer("integer"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(decoder.integer32("least"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(decoder.number("number"), 2.5);
    EXPECT_EQ(decoder.number("integer"), -9223372036854775808.0);
    EXPECT_EQ(decoder.record("record").text("inner"), "/");
    EXPECT_EQ(decoder.text("text"), "a\n");
    EXPECT_EQ(failureOf(decoder), "");
}

TEST(RecordDecoder, refusesATextThatIsNoObject) {
    for (const char* text : {"", "null", "1", R"("a")", "[]", "[{}]", "{", "{}x",
                             R"({"a":"\ud83d"})", "{\"a\":\"\xFF\"}", "\xEF\xBB\xBF{}"})
        EXPECT_FALSE(EventCoding::makeDecoder(text)) << text;
}

TEST(RecordDecoder, remembersAMemberThatIsMissingOrOfAnotherType) {
    const auto failureOfReading = [](const char* value, auto read) {
        auto decoder = decoderOf("{\"other\":1,\"a\":" + std::string{value} + "}");
        EXPECT_EQ((decoder.*read)("a"), decltype((decoder.*read)("a")){}) << value;
        return failureOf(decoder);
    };
    for (const char* value : {"1", "null", "{}"})
        EXPECT_EQ(failureOfReading(value, &RecordDecoder::text), "a is not a string");
    for (const char* value : {"1.0", R"("secret")", "true", "null", "9223372036854775808"})
        EXPECT_EQ(failureOfReading(value, &RecordDecoder::integer),
                  "a is not a signed 64-bit integer");
    for (const char* value : {"2147483648", "-2147483649", "1.0", R"("1")", "null"})
        EXPECT_EQ(failureOfReading(value, &RecordDecoder::integer32),
                  "a is not a signed 32-bit integer");
    for (const char* value : {R"("1")", "true", "null", "1e999"})
        EXPECT_EQ(failureOfReading(value, &RecordDecoder::number), "a is not a finite number");
    for (const char* value : {"0", R"("true")", "null"})
        EXPECT_EQ(failureOfReading(value, &RecordDecoder::boolean), "a is not a boolean");
    auto decoder = decoderOf(R"({"kind":"secret"})");
    decoder.enumeration<Provider>("kind");
    EXPECT_EQ(failureOf(decoder), "kind is none of the known values");
}

TEST(RecordDecoder, readsLists) {
    auto decoder = decoderOf(R"({"none":[],"numbers":[3,-1,3],"texts":["b","","a\n"]})");
    EXPECT_THAT(decoder.texts("texts"), ElementsAre("b", "", "a\n"));
    EXPECT_THAT(decoder.integers32("numbers"), ElementsAre(3, -1, 3));
    EXPECT_THAT(decoder.texts("none"), IsEmpty());
    EXPECT_THAT(decoder.integers32("none"), IsEmpty());
    EXPECT_EQ(failureOf(decoder), "");
}

TEST(RecordDecoder, refusesAListWithOneBadElementWhole) {
    for (const char* value : {R"(["a",1])", R"([null,"a"])", R"("a")", "null"}) {
        auto decoder = decoderOf("{\"list\":" + std::string{value} + "}");
        EXPECT_THAT(decoder.texts("list"), IsEmpty()) << value;
        EXPECT_EQ(failureOf(decoder), "list is not an array of strings") << value;
    }
    for (const char* value : {R"([1,"2"])", "[1,2147483648]", "1", "null"}) {
        auto decoder = decoderOf("{\"list\":" + std::string{value} + "}");
        EXPECT_THAT(decoder.integers32("list"), IsEmpty()) << value;
        EXPECT_EQ(failureOf(decoder), "list is not an array of signed 32-bit integers") << value;
    }
    auto decoder = decoderOf("{}");
    EXPECT_THAT(decoder.texts("list"), IsEmpty());
    EXPECT_EQ(failureOf(decoder), "list is missing");
}

TEST(RecordDecoder, saysWhenADateIsWrong) {
    for (const char* date : {"2026-11-15 03:30:55", "", "2026-11-15T03:30:55.123456Z"}) {
        auto decoder = decoderOf("{\"at\":\"" + std::string{date} + "\"}");
        EXPECT_EQ(decoder.date("at"), Instant{});
        EXPECT_EQ(failureOf(decoder), "Invalid ISO 8601 date") << date;
    }
    auto decoder = decoderOf(R"({"at":"2026-11-15T03:30:55Z"})");
    EXPECT_EQ(EventDate::text(decoder.date("at")), "2026-11-15T03:30:55.000Z");
    EXPECT_EQ(failureOf(decoder), "");
}

TEST(RecordDecoder, keepsTheFirstFailure) {
    auto decoder = decoderOf(R"({"a":1,"at":"never"})");
    decoder.text("first");
    decoder.text("a");
    decoder.date("at");
    EXPECT_EQ(failureOf(decoder), "first is missing");
}

TEST(RecordDecoder, takesMissingAndNullAsAbsent) {
    auto decoder = decoderOf(R"({"null":null,"text":"a"})");
    EXPECT_FALSE(decoder.has("missing"));
    EXPECT_FALSE(decoder.has("null"));
    EXPECT_TRUE(decoder.has("text"));
    EXPECT_EQ(decoder.optional("missing", &RecordDecoder::text), std::nullopt);
    EXPECT_EQ(decoder.optional("null", &RecordDecoder::text), std::nullopt);
    EXPECT_EQ(decoder.optional("text", &RecordDecoder::text), "a");
    EXPECT_EQ(failureOf(decoder), "");
    decoder.optional("text", &RecordDecoder::integer);
    EXPECT_NE(failureOf(decoder), "");
}

TEST(RecordDecoder, keepsTheFailureOfANestedRecordUntilItIsAdopted) {
    auto decoder = decoderOf(R"({"record":{"a":1}})");
    auto nested = decoder.record("record");
    nested.text("a");
    EXPECT_EQ(failureOf(decoder), "");
    decoder.adopt(nested);
    EXPECT_EQ(failureOf(decoder), failureOf(nested));
    EXPECT_NE(failureOf(decoder), "");
}

}  // namespace
}  // namespace tallowbrook
