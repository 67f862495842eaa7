// Trees of any shape for properties. What draws may be called only inside of one.
#pragma once

#include <exception>

#include <rapidcheck.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook {

// A piece of a text, and one way to write it between the quotes of a JSON string.
struct JSONTextPiece {
    std::string decoded;
    std::string written;
};

inline const std::vector<JSONTextPiece>& jsonTextPieces() {
    static const std::vector<JSONTextPiece> pieces{
        {"a", "a"},
        {"A", "\\u0041"},
        {" ", " "},
        {"/", "/"},
        {"/", "\\/"},
        {"\"", "\\\""},
        {"\\", "\\\\"},
        {"\n", "\\n"},
        {"\n", "\\u000a"},
        {"\x1F", "\\u001F"},
        {std::string(1, '\0'), "\\u0000"},
        {"\x7F", "\x7F"},
        {"é", "é"},
        {"é", "\\u00e9"},
        {"e\u0301", "e\u0301"},
        {"😀", "😀"},
        {"😀", "\\uD83D\\ude00"},
        {"\uFFFF", "\uFFFF"},
    };
    return pieces;
}

inline std::size_t drawBelow(std::size_t limit) { return *rc::gen::inRange<std::size_t>(0, limit); }

template <typename Value>
const Value& drawOneOf(const std::vector<Value>& values) {
    return values[drawBelow(values.size())];
}

inline bool drawBool() { return drawBelow(2) == 1; }

inline JSONNode::String drawString() {
    std::string decoded;
    std::string written;
    for (auto count = drawBelow(4); count > 0; --count) {
        const auto& piece = drawOneOf(jsonTextPieces());
        decoded += piece.decoded;
        written += piece.written;
    }
    // Half of them as a program would make them.
    return {decoded, drawBool() ? std::optional{written} : std::nullopt};
}

inline JSONNode drawNode(int depth);

// A member of a key that none of the others has.
inline void drawMemberInto(std::vector<JSONMember>& members, int depth) {
    auto [key, rawKey] = drawString();
    if (std::ranges::find(members, key, &JSONMember::key) != members.end()) return;
    members.push_back({std::move(key), std::move(rawKey), drawNode(depth)});
}

inline JSONNode drawNode(int depth) {
    static const std::vector<std::string> numbers{
        "0", "-0", "1.50", "1E+3", "1e-9", "-1.0", "1e9999", "123456789012345678901"};
    switch (drawBelow(depth > 0 ? 6 : 4)) {
        case 0:
            return JSONNode::null();
        case 1:
            return JSONNode::bool_(drawBool());
        case 2:
            return JSONNode::number(drawOneOf(numbers));
        case 3:
            return {drawString()};
        case 4: {
            std::vector<JSONNode> elements;
            for (auto count = drawBelow(4); count > 0; --count)
                elements.push_back(drawNode(depth - 1));
            return JSONNode::array(std::move(elements));
        }
        default: {
            std::vector<JSONMember> members;
            for (auto count = drawBelow(4); count > 0; --count) drawMemberInto(members, depth - 1);
            return JSONNode::object(std::move(members));
        }
    }
}

// Never a mere text or number.
inline JSONNode drawTree(int depth) {
    std::vector<JSONMember> members;
    for (int i = 0; i < 3; ++i) drawMemberInto(members, depth);
    return JSONNode::object(std::move(members));
}

// The tree as it is read: every text has the raw text that it was written with.
inline JSONNode asRead(JSONNode node) {
    const auto written = [](const std::string& value, std::optional<std::string>& rawText) {
        if (!rawText) rawText = OrderedJSON::escape(value);
    };
    if (auto* string = std::get_if<JSONNode::String>(&node.value))
        written(string->value, string->rawText);
    if (auto* elements = node.arrayElements())
        for (auto& element : *elements) element = asRead(std::move(element));
    if (auto* members = node.objectMembers())
        for (auto& [key, rawKey, value] : *members) {
            written(key, rawKey);
            value = asRead(std::move(value));
        }
    return node;
}

}  // namespace tallowbrook
