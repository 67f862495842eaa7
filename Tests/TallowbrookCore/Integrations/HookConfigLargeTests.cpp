#include <gtest/gtest.h>

#include <string>

#include "HookConfigSamples.h"

namespace tallowbrook {
namespace {

// What is taken out stands before far more that stays, so that closing each gap by itself would
// move tens of billions of nodes: minutes, where one pass takes less than a second.
constexpr int removedCount = 100'000;
constexpr int keptGroups = 700'000;
constexpr int keptEvents = 300'000;

std::string manyGroups() {
    std::string groups;
    for (int i = 0; i < removedCount; ++i) groups += groupOf(staleHandler) + ",";
    for (int i = 0; i < keptGroups; ++i) groups += i > 0 ? ",{}" : "{}";
    return configOf(eventOf("Kept", groups));
}

std::string manyEvents() {
    std::string events;
    for (int i = 0; i < removedCount; ++i)
        events += eventOf("gone " + std::to_string(i), groupOf(staleHandler)) + ",";
    for (int i = 0; i < keptEvents; ++i)
        events += eventOf(std::to_string(i), "") + (i + 1 < keptEvents ? "," : "");
    return configOf(events);
}

std::size_t countOf(const std::string& part, const std::string& text) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST(HookRemoval, ofCountlessGroupsTakesOnePass) {
    const auto text = HookConfigMerger::uninstall(manyGroups(), sampleSpec()).value().value();
    EXPECT_EQ(countOf("tallowbrook-hook", text), 0U);
    EXPECT_EQ(countOf("{}", text), static_cast<std::size_t>(keptGroups));
}

TEST(HookRemoval, ofCountlessEventsTakesOnePass) {
    const auto text = HookConfigMerger::uninstall(manyEvents(), sampleSpec()).value().value();
    EXPECT_EQ(countOf("tallowbrook-hook", text), 0U);
    EXPECT_EQ(countOf("[]", text), static_cast<std::size_t>(keptEvents));
}

}  // namespace
}  // namespace tallowbrook
