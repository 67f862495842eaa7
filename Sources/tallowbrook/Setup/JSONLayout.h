// How a JSON text (RFC 8259) is laid out, and new values written in that way.
//
// Pure functions; safe from any thread.
#pragma once

#include <string>
#include <string_view>

#include "Integrations/JSONNode.h"
#include "Setup/JSONSpans.h"

namespace tallowbrook::host {

// What a text does not show is as in the defaults.
struct JSONLayout {
    std::string lineEnd = "\n";
    std::string indentation = "  ";  // of one level
    std::string colon = ": ";        // between a key and its value
    std::string comma = ", ";        // between items on one line
    // between the braces of an object on one line and what it holds
    std::string objectPadding{};
    std::string arrayPadding{};
    bool operator==(const JSONLayout&) const = default;
};

// The first of each kind in the text decides. `root` is what `spansOf` gives for the text.
JSONLayout layoutOf(std::string_view text, const JSONSpan& root);

// The value on one line.
std::string onOneLine(const JSONNode& node, const JSONLayout& layout);

// One element or member a line; `indentation` begins the line on which the value begins.
std::string onLines(const JSONNode& node, const JSONLayout& layout, std::string_view indentation);

}  // namespace tallowbrook::host
