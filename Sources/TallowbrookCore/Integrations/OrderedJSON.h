// JSON (RFC 8259) that can be changed in one place without touching the others.
//
// The agents' configuration files belong to their users: what was read is kept as it was written,
// and a tree is written out in one fixed layout. The parser is strict: no comments, no trailing
// commas, no key twice in one object, no byte-order mark.
//
// Pure functions of their input; safe from any thread.
#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Integrations/JSONNode.h"

namespace tallowbrook {

struct JSONParseError {
    int line = 1;    // from 1; lines end with a line feed
    int column = 1;  // from 1, in bytes
    std::string message;
    bool operator==(const JSONParseError&) const = default;

    // "line 3, column 7: Unexpected character"
    std::string description() const;
};

namespace OrderedJSON {

// Takes time and memory linear in the text. Arrays and objects may be nested 256 deep. Bytes in a
// string that are no UTF-8 become U+FFFD, in its raw text too.
[[nodiscard]] std::expected<JSONNode, JSONParseError> parse(std::string_view text);

// One element or member a line, `indent` once for each level; no line feed at the end. Recurses as
// deep as the tree is nested.
std::string serialize(const JSONNode& node, std::string_view indent);

// What stands between the quotes of a JSON string with this value.
std::string escape(std::string_view text);

}  // namespace OrderedJSON
}  // namespace tallowbrook
