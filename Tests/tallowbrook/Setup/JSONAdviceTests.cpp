#include "Setup/JSONAdvice.h"

#include <gtest/gtest.h>

#include "Integrations/OrderedJSON.h"
#include "Support/RepeatedText.h"

namespace tallowbrook::host {
namespace {

struct Row {
    std::string text;
    std::string advice;
};

void expectAdvice(std::initializer_list<Row> rows) {
    for (const auto& [text, advice] : rows) {
        EXPECT_FALSE(OrderedJSON::parse(text)) << text;
        EXPECT_EQ(adviceOn(text), advice) << text;
    }
}

TEST(JSONAdvice, callsACommentSoAndSaysWhereItIs) {
    expectAdvice({
        {"{\n  // mine\n}\n", "Line 2 holds a comment, which JSON does not have: take it out."},
        {"/* mine\n */ {}", "Line 1 holds a comment, which JSON does not have: take it out."},
        {"{}\n# mine", "Line 2 holds a comment, which JSON does not have: take it out."},
        {"{\"a\": 1, // one\n \"b\": /* two */ 2 /* too */}",
         "Lines 1 and 2 hold comments, which JSON does not have: take them out."},
    });
}

TEST(JSONAdvice, callsAnEndingCommaSoAndSaysWhereItIs) {
    expectAdvice({
        {"{\n\"a\": 1,\n}", "The comma at the end of line 2 has nothing behind it: take it out."},
        {"{\"a\": [1, 2,]}", "A comma on line 1 has nothing behind it: take it out."},
        {"{\"a\": [\n1,\n],\n}",
         "The commas on lines 2 and 3 have nothing behind them: take them out."},
    });
}

TEST(JSONAdvice, namesAllThatIsToBeTakenOutAtOnce) {
    expectAdvice({
        {"{\n// mine\n\"a\": [1, // x\n],\n}",
         "Lines 2 and 3 hold comments, which JSON does not have: take them out. The commas on "
         "lines "
         "3 and 4 have nothing behind them: take them out."},
        {repeated("//\n", 7) + "{}",
         "Lines 1, 2, 3, 4, 5 and 2 more hold comments, which JSON does not have: take them out."},
    });
}

TEST(JSONAdvice, namesBothPlacesOfAKeyThatIsThereTwice) {
    expectAdvice({
        {"{\n\"a\": 1,\n\"b\": {\"a\": 2},\n\"\\u0061\": 3}",
         "\"a\" stands on line 2 and again on line 4: keep one of the two."},
        {"{\"a\": 1, \"a\": 1}", "\"a\" stands twice on line 1: keep one of the two."},
        {"{\n// mine\n\"a\": 1,\n\"a\": 2}",
         "Line 2 holds a comment, which JSON does not have: take it out. \"a\" stands on line 3 "
         "and "
         "again on line 4: keep one of the two."},
    });
}

TEST(JSONAdvice, takesWhatStandsInAStringForText) {
    for (const std::string text : {"{\"a\": \"// no comment, \\\" /* neither */\", \"b\": x}",
                                   "{\"a\": \"#,}\"", "{\"url\": \"http://example.org\" \"b\": 1}"})
        EXPECT_EQ(adviceOn(text), std::nullopt) << text;
}

TEST(JSONAdvice, saysNothingWhereSomethingElseIsWrongFirst) {
    for (const std::string text : {"", "{", "{\"a\" 1, // mine\n}", "{'a': 1,}", "{]", "[1,,2]"})
        EXPECT_EQ(adviceOn(text), std::nullopt) << text;
}

TEST(JSONAdvice, hasNoneForWhatIsValid) { EXPECT_EQ(adviceOn("{\"a\": [1, 2]}"), std::nullopt); }

TEST(JSONAdvice, ofEveryBeginningOfATextWithAllFaultsEnds) {
    const std::string text =
        "{ // c\n \"a\\\"\": [1, /* d */ 2,], # e\n \"b\": {\"b\": \"\\u0062\",}, }";
    for (std::size_t length = 0; length <= text.size(); ++length)
        adviceOn(std::string_view{text}.substr(0, length));
    EXPECT_TRUE(adviceOn(text));
}

}  // namespace
}  // namespace tallowbrook::host
