// A JSON value (RFC 8259) as a tree that keeps the order of members and the source text of every
// number, key and string.
//
// Plain values; safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tallowbrook {

struct JSONMember;

struct JSONNode {
    struct Object {
        std::vector<JSONMember> members;  // in source order; a parsed one has no key twice
        bool operator==(const Object&) const;
    };
    struct Array {
        std::vector<JSONNode> elements;
        bool operator==(const Array&) const;
    };
    struct String {
        std::string value;  // decoded, in UTF-8
        // What the source has between the quotes, escapes as written; absent where a program made
        // the string.
        std::optional<std::string> rawText;
        bool operator==(const String&) const = default;
    };
    struct Number {
        std::string text;  // as written: 1.50, -0, 1E+3
        bool operator==(const Number&) const = default;
    };
    struct Bool {
        bool value = false;
        bool operator==(const Bool&) const = default;
    };
    struct Null {
        bool operator==(const Null&) const = default;
    };
    std::variant<Object, Array, String, Number, Bool, Null> value;

    // Every payload counts, raw texts too.
    bool operator==(const JSONNode&) const = default;

    static JSONNode object(std::vector<JSONMember> members);
    static JSONNode array(std::vector<JSONNode> elements);
    static JSONNode string(std::string value);  // without raw text
    static JSONNode number(std::string text);   // `text` must be a JSON number
    static JSONNode bool_(bool value);
    static JSONNode null();

    // Null pointers where the node is of another kind.
    const std::vector<JSONMember>* objectMembers() const;
    std::vector<JSONMember>* objectMembers();
    const std::vector<JSONNode>* arrayElements() const;
    std::vector<JSONNode>* arrayElements();
    const std::string* stringValue() const;
};

struct JSONMember {
    std::string key;                    // decoded, in UTF-8
    std::optional<std::string> rawKey;  // like a string's raw text
    JSONNode value;
    bool operator==(const JSONMember&) const = default;
};

// The value of the first member with this key, compared code point by code point; else null.
const JSONNode* value(const std::vector<JSONMember>& members, std::string_view key);
JSONNode* value(std::vector<JSONMember>& members, std::string_view key);

}  // namespace tallowbrook
