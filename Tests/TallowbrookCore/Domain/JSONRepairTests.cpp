#include "Domain/JSONRepair.h"

#include <gtest/gtest.h>

#include <string>

namespace tallowbrook {
namespace {

std::optional<std::string> repair(std::string_view text) { return JSONRepair::forPayload(text); }

TEST(JSONRepair, leavesATextAloneThatNeedsNothing) {
    for (const char* text : {"", "{}", R"({"a":"\ud83d\ude00 \u0041 \\ud83d \n"})",
                             R"({"a":[1,-2.5e10,0,1e99999999,1e-99999999]})", "\"", "\"\\", "\"\\u",
                             "\"\\u12", "-", "1e", "\xFF\"\xFF"})
        EXPECT_EQ(repair(text), std::nullopt) << text;
}

TEST(JSONRepair, replacesLoneSurrogatesOfTheSameLength) {
    struct Row {
        const char* why;
        const char* text;
        const char* repaired;
    };
    for (const auto& [why, text, repaired] : {
             Row{"high", R"("a\ud83db")", R"("a\u0000b")"},
             Row{"low", R"("a\ude00b")", R"("a\u0000b")"},
             Row{"first and last high", R"("\ud800x\udbff")", R"("\u0000x\u0000")"},
             Row{"two high", R"("\ud83d\ud83d")", R"("\u0000\u0000")"},
             Row{"high before a pair", R"("\ud83d\ud83d\ude00")", R"("\u0000\ud83d\ude00")"},
             Row{"wrong way round", R"("\ude00\ud83d")", R"("\u0000\u0000")"},
             Row{"high before another escape", R"("\ud83d\n")", R"("\u0000\n")"},
             Row{"escaped backslash before it", R"("\\\ud83d")", R"("\\\u0000")"},
             Row{"escaped backslash in place of it", R"("\\ud83d\ud83d")", R"("\\ud83d\u0000")"},
             Row{"escaped quote before it", R"("\"\ud83d")", R"("\"\u0000")"},
             Row{"in several strings", R"(["\ud83d","\ud83d\ude00","\ude00"])",
                 R"(["\u0000","\ud83d\ude00","\u0000"])"},
         })
        EXPECT_EQ(repair(text), repaired) << why;
}

TEST(JSONRepair, replacesNumbersWithVastExponentsByZeroOfTheSameLength) {
    for (const std::string number :
         {"1e99999999999", "-1.25E+99999999999", "0e-99999999999", "12.50E0000000001"})
        for (const auto& [before, after] :
             {std::pair{"", ""}, std::pair{"[", ",2]"}, std::pair{"{\"a\":", "}"},
              std::pair{"[\"1e99999999999\",", " ]"}}) {
            const std::string zero = "0.0" + std::string(number.size() - 3, ' ');
            EXPECT_EQ(repair(before + number + after), before + zero + after);
        }
}

TEST(JSONRepair, ofAnEventLineLooksAtNumbersAlone) {
    using JSONRepair::forEventLine;
    for (const char* text : {R"({"a":"\ud83d 0e309","b":[1,-0.5,1e309,1e99999999999]})", "00e309",
                             "\"0e309", "1e", "-", ""})
        EXPECT_EQ(forEventLine(text), std::nullopt) << text;
    EXPECT_EQ(forEventLine(R"(["\ud83d",0e309,1e-5 ])"), R"(["\ud83d",0.0  ,0.0  ])");
}

}  // namespace
}  // namespace tallowbrook
