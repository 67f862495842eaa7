#include <gtest/gtest.h>

#include <string>

#include "Setup/LayoutPreservingEdit.h"

namespace tallowbrook::host {
namespace {

// Files on one line, where what is taken out stands beside so much else that comparing each with
// each, or looking for the begin of the line each time, takes minutes instead of a second.
constexpr int count = 100'000;

std::string listOf(const std::string& element) {
    std::string list;
    for (int i = 0; i < count; ++i) list += (i > 0 ? ", " : "") + element;
    return "[" + list + "]";
}

TEST(LargeLayout, ofCountlessListsIsLookedAtOnce) {
    EXPECT_EQ(inLayoutOf(listOf("[1,  2, 3]"), listOf("[1, 3]")), listOf("[1, 3]"));
}

TEST(LargeLayout, ofALongListThatGoesIsNotComparedWithEachOfAnother) {
    const auto kept = listOf("\"kept\"");
    EXPECT_EQ(inLayoutOf("[" + listOf("\"gone\"") + ",\t" + kept + "]", "[" + kept + "]"),
              "[" + kept + "]");
}

}  // namespace
}  // namespace tallowbrook::host
