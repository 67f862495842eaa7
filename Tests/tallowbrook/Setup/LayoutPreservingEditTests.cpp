#include "Setup/LayoutPreservingEdit.h"

#include <gtest/gtest.h>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

struct Edit {
    std::string_view name;
    std::string before;
    std::string proposed;
    std::string after;
};

// Each adds behind what is there, and so can be taken back without a trace.
const std::vector<Edit> additions{
    {"tabs", "{\n\t\"a\": 1\n}\n", R"({"a":1,"b":{"c":[2]}})",
     "{\n\t\"a\": 1,\n\t\"b\": {\n\t\t\"c\": [\n\t\t\t2\n\t\t]\n\t}\n}\n"},
    {"four blanks", "{\n    \"a\": {\n        \"b\": 1\n    }\n}\n", R"({"a":{"b":1,"c":[2]}})",
     "{\n    \"a\": {\n        \"b\": 1,\n        \"c\": [\n            2\n        ]\n    }\n}\n"},
    {"CRLF", "{\r\n  \"a\": 1\r\n}\r\n", R"({"a":1,"b":[2]})",
     "{\r\n  \"a\": 1,\r\n  \"b\": [\r\n    2\r\n  ]\r\n}\r\n"},
    {"no line end at the end", "{\n  \"a\": 1\n}", R"({"a":1,"b":2})",
     "{\n  \"a\": 1,\n  \"b\": 2\n}"},
    {"an empty file's object", "{}\n", R"({"a":{"b":1}})", "{\n  \"a\": {\n    \"b\": 1\n  }\n}\n"},
    {"empty containers", "{\n\t\"a\": {},\n\t\"b\": []\n}", R"({"a":{"c":1},"b":[2,3]})",
     "{\n\t\"a\": {\n\t\t\"c\": 1\n\t},\n\t\"b\": [\n\t\t2,\n\t\t3\n\t]\n}"},
    {"one line", "{\"a\": {}}\n", R"({"a":{"b":[1,2]},"c":{"d":3}})",
     "{\"a\": {\"b\": [1, 2]}, \"c\": {\"d\": 3}}\n"},
    {"one line without blanks", R"({"a":[]})", R"({"a":[1,2],"c":{"d":3}})",
     R"({"a":[1,2],"c":{"d":3}})"},
    {"padded braces", "{ \"a\": {} }", R"({"a":{"b":1}})", "{ \"a\": { \"b\": 1 } }"},
    {"inline arrays", "{\n  \"a\": [{ \"b\": [1, 2] }]\n}\n", R"({"a":[{"b":[1,2]},{"b":[3]}]})",
     "{\n  \"a\": [{ \"b\": [1, 2] }, { \"b\": [3] }]\n}\n"},
    {"a value on each line", "[\n  {\"b\": 1},\n  {\"b\": 2}\n]", R"([{"b":1},{"b":2},{"b":3}])",
     "[\n  {\"b\": 1},\n  {\"b\": 2},\n  {\"b\": 3}\n]"},
    {"brackets together", "{\n  \"a\": [{\n    \"b\": 1\n  }]\n}\n", R"({"a":[{"b":1},{"b":2}]})",
     "{\n  \"a\": [{\n    \"b\": 1\n  }, {\n    \"b\": 2\n  }]\n}\n"},
    {"empty lines between", "{\n\n  \"a\": 1,\n\n  \"b\": 2\n\n}", R"({"a":1,"b":2,"c":3})",
     "{\n\n  \"a\": 1,\n\n  \"b\": 2,\n  \"c\": 3\n\n}"},
    {"commas first", "{ \"a\": 1\n, \"b\": 2\n}", R"({"a":1,"b":2,"c":3})",
     "{ \"a\": 1\n, \"b\": 2\n, \"c\": 3\n}"},
    {"blanks before colons", "{\n \"a\" : 1\n}", R"({"a":1,"b":2})",
     "{\n \"a\" : 1,\n \"b\" : 2\n}"},
    {"text as written", "\n {\"\\u0061\": 1.50, \"b\":\"\\/\"}",
     R"({"\u0061":1.50,"b":"\/","c":1e5})", "\n {\"\\u0061\": 1.50, \"b\":\"\\/\", \"c\": 1e5}"},
};

TEST(LayoutPreservingEdit, addsInTheLayoutOfTheFile) {
    for (const auto& edit : additions)
        EXPECT_EQ(inLayoutOf(edit.before, edit.proposed), edit.after) << edit.name;
}

TEST(LayoutPreservingEdit, takesOutWhatItHasAddedWithoutATrace) {
    for (const auto& edit : additions)
        EXPECT_EQ(inLayoutOf(edit.after, edit.before), edit.before) << edit.name;
}

// Of containers with several items the first, one in the middle, the last and all.
const std::vector<Edit> removals{
    {"the first", "{\n\t\"a\": 1,\n\t\"b\": [2,3]\n}", R"({"b":[2,3]})", "{\n\t\"b\": [2,3]\n}"},
    {"the middle", "[1, 2,\n 3]", "[1,3]", "[1,\n 3]"},
    {"the last", "[1 , 2 , 3 ]", "[1,2]", "[1 , 2 ]"},
    {"all", "{\"a\": [ 1,\n 2 ] }", R"({"a":[]})", "{\"a\": [] }"},
    {"within an element", "[ {\"h\":[1, 2]},{\"h\":[3]}, {\"h\":[4,  5]} ]",
     R"([{"h":[1]},{"h":[4,5]}])", "[ {\"h\":[1]}, {\"h\":[4,  5]} ]"},
    {"all for another", "[\n\t[ 1 ]\n]", "[[2,3]]", "[\n\t[ 2, 3 ]\n]"},
    {"a value of another kind", "{ \"a\": 1,\n\t\"b\": [] }", R"({"a":1,"b":{"c":1}})",
     "{ \"a\": 1,\n\t\"b\": {\n\t  \"c\": 1\n\t} }"},
    {"the order", "{\"a\": 1,  \"b\": 2}", R"({"b":2,"a":1})", "{\"b\": 2,  \"a\": 1}"},
};

TEST(LayoutPreservingEdit, takesOutOrReplacesAndLeavesTheRestAsItIs) {
    for (const auto& edit : removals)
        EXPECT_EQ(inLayoutOf(edit.before, edit.proposed), edit.after) << edit.name;
}

TEST(LayoutPreservingEdit, givesTheProposedTextWhereThereIsNoLayout) {
    for (const std::string before : {"", " \n", "{", "{\"a\": 1, \"a\": 2}", "// {}"})
        EXPECT_EQ(inLayoutOf(before, "{ \"a\": 1 }\n"), "{ \"a\": 1 }\n") << before;
    EXPECT_EQ(inLayoutOf("{}", "{,}"), "{,}");
}

TEST(LayoutPreservingEdit, putsALongValueOnLinesEvenBesideOneOnOneLine) {
    const std::string many(300, 'x');
    EXPECT_EQ(inLayoutOf("{\n \"a\": [1]\n}", "{\"a\":[1],\"b\":[\"" + many + "\"]}"),
              "{\n \"a\": [1],\n \"b\": [\n  \"" + many + "\"\n ]\n}");
}

TEST(LayoutPreservingEdit, bringsTheDifferenceOfAPlanIntoLine) {
    const auto plan =
        keepLayout({"/f", "{\n\t\"a\": 1\n}\n", "{\n  \"a\": 1,\n  \"b\": 2\n}\n", "another"});
    EXPECT_EQ(plan.proposedText, "{\n\t\"a\": 1,\n\t\"b\": 2\n}\n");
    EXPECT_EQ(plan.diff,
              "--- /f\n+++ /f\n@@ -1,3 +1,4 @@\n {\n-\t\"a\": 1\n+\t\"a\": 1,\n+\t\"b\": 2\n }\n");
}

TEST(LayoutPreservingEdit, leavesAPlanThatCreatesAFileOrChangesNothing) {
    for (const auto& plan : {ConfigChangePlan{"/f", std::nullopt, "{ }\n", "new"},
                             ConfigChangePlan{"/f", "{ }\n", "{ }\n", ""},
                             ConfigChangePlan{"/f", "{ }\n", std::nullopt, "none"}})
        EXPECT_EQ(keepLayout(plan), plan);
}

}  // namespace
}  // namespace tallowbrook::host
