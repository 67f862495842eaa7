#include "Setup/JSONAlignment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

using testing::ElementsAre;

std::vector<std::optional<std::size_t>> sources(std::string_view newText,
                                                std::string_view oldText) {
    const auto newNode = OrderedJSON::parse(newText).value();
    const auto oldNode = OrderedJSON::parse(oldText).value();
    return sourcesOf(itemsOf(newNode), itemsOf(oldNode));
}

TEST(JSONAlignment, pairsMembersByTheirKeys) {
    EXPECT_THAT(sources(R"({"b":1,"c":[],"d":2})", R"({"a":1,"b":2,"c":3})"),
                ElementsAre(1, 2, std::nullopt));
    EXPECT_THAT(sources(R"({"b":1,"a":1})", R"({"a":1,"b":1})"), ElementsAre(1, std::nullopt));
}

TEST(JSONAlignment, pairsElementsWithTheirEquals) {
    EXPECT_THAT(sources("[2,4]", "[1,2,3]"), ElementsAre(1, std::nullopt));
    EXPECT_THAT(sources("[1.0]", "[1]"), ElementsAre(std::nullopt));
}

TEST(JSONAlignment, knowsAnElementThatHasLostSomeOfItsOwn) {
    EXPECT_THAT(sources(R"([{"m":1,"h":[2]}])", R"([{"m":2,"h":[1,2]},{"m":1,"h":[1,2]}])"),
                ElementsAre(1));
    // What holds nothing may come from anywhere, and more than before from nowhere.
    EXPECT_THAT(sources("[[],[1,2]]", "[[1]]"), ElementsAre(std::nullopt, std::nullopt));
    EXPECT_THAT(sources("[[2,1]]", "[[1,2]]"), ElementsAre(std::nullopt));
}

}  // namespace
}  // namespace tallowbrook::host
