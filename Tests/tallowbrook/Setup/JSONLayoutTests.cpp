#include "Setup/JSONLayout.h"

#include <gtest/gtest.h>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

JSONLayout layoutOfText(std::string_view text) { return layoutOf(text, spansOf(text)); }

JSONNode sample() { return OrderedJSON::parse(R"({"a":[1.50,{}],"\u0062":null})").value(); }

TEST(JSONLayout, isFoundInTheText) {
    EXPECT_EQ(layoutOfText("{}"), JSONLayout{});
    EXPECT_EQ(layoutOfText("{\n\t\"a\": [1]\n}\n"), JSONLayout{.indentation = "\t"});
    EXPECT_EQ(layoutOfText("{\r\n    \"a\" : [ 1 , 2 ]\r\n}"), (JSONLayout{.lineEnd = "\r\n",
                                                                           .indentation = "    ",
                                                                           .colon = " : ",
                                                                           .comma = " , ",
                                                                           .arrayPadding = " "}));
    EXPECT_EQ(layoutOfText("{\"a\":1}\n"), (JSONLayout{.colon = ":", .comma = ","}));
    EXPECT_EQ(layoutOfText("{\n \"a\":\n {\n  \"b\": { \"c\": 1 }\n }\n}"),
              (JSONLayout{.indentation = " ", .objectPadding = " "}));
}

TEST(JSONLayout, isThatOfANewValueOnOneLine) {
    EXPECT_EQ(onOneLine(sample(), {}), R"({"a": [1.50, {}], "\u0062": null})");
    EXPECT_EQ(onOneLine(sample(), {.colon = ":", .comma = ",", .objectPadding = " "}),
              R"({ "a":[1.50,{}],"\u0062":null })");
}

TEST(JSONLayout, isThatOfANewValueOnLines) {
    EXPECT_EQ(onLines(sample(), {.lineEnd = "\r\n", .indentation = "\t"}, " "),
              "{\r\n \t\"a\": [\r\n \t\t1.50,\r\n \t\t{}\r\n \t],\r\n \t\"\\u0062\": null\r\n }");
}

}  // namespace
}  // namespace tallowbrook::host
