#include "Commands/EndWords.h"

#include <gtest/gtest.h>

#include "Support/SampleEvents.h"

namespace tallowbrook::host {
namespace {

using std::chrono::hours;
using std::chrono::minutes;

using Word = std::optional<std::string>;

const Instant midnight = std::chrono::floor<std::chrono::days>(sampleTime);
const Instant now = midnight + hours{13} + minutes{30} + std::chrono::seconds{20};

std::optional<Instant> end(const Word& first, const Word& second = std::nullopt) {
    const auto read = endOf(first, second, now, Calendar::fixed(minutes{0}));
    EXPECT_TRUE(read) << first.value_or("nothing");
    return read.value_or(std::nullopt);
}

TEST(EndWords, areASpanOrATimeOfDay) {
    EXPECT_EQ(end(std::nullopt), std::nullopt);
    EXPECT_EQ(end("30m"), now + minutes{30});
    EXPECT_EQ(end("1h30m"), now + minutes{90});
    EXPECT_EQ(end("2d"), now + hours{48});
    EXPECT_EQ(end("for", "2h"), now + hours{2});
    EXPECT_EQ(end("until", "14:00"), midnight + hours{14});
    EXPECT_EQ(end("until", "09:15"), midnight + hours{33} + minutes{15}) << "tomorrow";
    EXPECT_EQ(end("until", "13:30"), midnight + hours{37} + minutes{30}) << "just gone";
}

TEST(EndWords, areNothingElse) {
    const std::vector<std::pair<Word, Word>> wrong{{"30", {}},        {"m", {}},
                                                   {"30s", {}},       {"-5m", {}},
                                                   {"0m", {}},        {"366d", {}},
                                                   {"", {}},          {"until", {}},
                                                   {"for", {}},       {"30m", "14:00"},
                                                   {"until", "9:15"}, {"until", "24:00"},
                                                   {"for", "14:00"},  {"99999999999m", {}},
                                                   {"9999999d", {}},  {"until", "30m"}};
    for (const auto& [first, second] : wrong)
        EXPECT_FALSE(endOf(first, second, now, Calendar::fixed(minutes{0})))
            << *first << " " << second.value_or("");
    EXPECT_EQ(endOf("soon", {}, now, Calendar::fixed(minutes{0})).error().text(),
              "\"soon\" is no time: say such as 30m, 2h, 1h30m, 1d, or until 14:00.");
}

}  // namespace
}  // namespace tallowbrook::host
