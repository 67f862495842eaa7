#include <gtest/gtest.h>

#include "ArbitraryJSON.h"
#include "Integrations/OrderedJSON.h"

#include <rapidcheck/gtest.h>

namespace tallowbrook {
namespace {

RC_GTEST_PROP(OrderedJSONProperty, everyTreeIsTheSameWhenItWasWrittenAndRead, ()) {
    const auto tree = drawTree(4);
    const auto text =
        OrderedJSON::serialize(tree, drawOneOf(std::vector<std::string>{"", "  ", "\t"}));
    RC_LOG() << text;
    RC_ASSERT((OrderedJSON::parse(text).value() == asRead(tree)));
}

RC_GTEST_PROP(OrderedJSONProperty, everyTextIsTheSameWhenItWasEscapedAndRead,
              (const std::vector<char>& bytes)) {
    // Any bytes: those that are no UTF-8 are replaced when they are read, so take ASCII.
    std::string text;
    for (const char byte : bytes) text += static_cast<char>(byte & 0x7F);
    const auto read = OrderedJSON::parse("\"" + OrderedJSON::escape(text) + "\"");
    RC_ASSERT(*read.value().stringValue() == text);
}

// Texts that are cut off, or in which a byte is another, are JSON or are not; but they are read
// without harm, and what is read is written and read the same.
RC_GTEST_PROP(OrderedJSONProperty, aDamagedTextIsRefusedOrReadTheSameAgain, ()) {
    std::string text = OrderedJSON::serialize(drawTree(2), "");
    text[drawBelow(text.size())] = static_cast<char>(*rc::gen::arbitrary<unsigned char>());
    text.resize(1 + drawBelow(text.size()));
    RC_LOG() << text;
    const auto read = OrderedJSON::parse(text);
    if (read) RC_ASSERT((OrderedJSON::parse(OrderedJSON::serialize(*read, " ")).value() == *read));
}

}  // namespace
}  // namespace tallowbrook
