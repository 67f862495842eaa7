// Where each value of a JSON text (RFC 8259) stands, so that one can be changed in its place.
//
// A pure function; safe from any thread.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace tallowbrook::host {

struct JSONSpanItem;

// Positions are bytes of the text, from 0.
struct JSONSpan {
    std::size_t begin = 0;            // of the value's first byte
    std::size_t end = 0;              // behind its last byte
    std::vector<JSONSpanItem> items;  // of an object or array, in source order
};

// A member of an object or an element of an array.
struct JSONSpanItem {
    std::size_t begin = 0;   // of the key's opening quote, or of the element
    std::size_t keyEnd = 0;  // behind the key's closing quote; of an element, its begin
    JSONSpan value;
};

// The text must be valid JSON, as `OrderedJSON::parse` accepts it. Recurses as deep as the text is
// nested; takes linear time.
JSONSpan spansOf(std::string_view text);

// The blanks and tabs that begin the line on which this position stands.
std::string_view indentationAt(std::string_view text, std::size_t position);

bool hasLineFeed(std::string_view text);

}  // namespace tallowbrook::host
