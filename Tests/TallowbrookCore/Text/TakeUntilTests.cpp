#include "Text/TakeUntil.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace tallowbrook {
namespace {

TEST(TakeUntil, cutsATextIntoItsPieces) {
    using Pieces = std::vector<std::string_view>;
    struct Row {
        std::string_view text;
        Pieces pieces;
    };
    for (const auto& [text, pieces] : {
             Row{"", {}},
             Row{"a", {"a"}},
             Row{"a:bc", {"a", "bc"}},
             Row{"a:", {"a"}},
             Row{":a", {"", "a"}},
             Row{"a::b", {"a", "", "b"}},
             Row{"::", {"", ""}},
         }) {
        Pieces taken;
        for (auto rest = text; !rest.empty();) taken.push_back(takeUntil(rest, ':'));
        EXPECT_EQ(taken, pieces) << text;
    }
}

}  // namespace
}  // namespace tallowbrook
