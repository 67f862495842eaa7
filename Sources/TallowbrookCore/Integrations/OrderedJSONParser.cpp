// The parser is a recursive descent over the bytes of the text: one operation for each element of
// the grammar, each entered with the position on the element's first byte and left with it behind
// the last. One byte of look-ahead always tells which element follows, so the position never moves
// back and every byte is looked at a fixed number of times. The nesting limit bounds the recursion.
// The first violation is thrown as the error and caught in `parse`: there is no recovery. Texts
// come straight from the source: a string without escapes is its own raw text, and only one with
// escapes is decoded into a buffer.
#include <algorithm>
#include <cstdint>
#include <utility>

#include "Integrations/JSONEscapes.h"
#include "Integrations/JSONKeySet.h"
#include "Integrations/OrderedJSON.h"
#include "Text/Digits.h"
#include "Text/Hex.h"
#include "Text/UTF16.h"
#include "Text/UTF8.h"

namespace tallowbrook {
namespace {

using Members = std::vector<JSONMember>;

constexpr std::uint32_t noSurrogate = 0;

bool isPlain(char c) { return c != '"' && c != '\\' && !isControlCharacter(c); }

class Parser {
 public:
    explicit Parser(std::string_view text) : text_{text}, isValidUTF8_{UTF8::isValid(text)} {}

    JSONNode parseDocument() {
        if (text_.starts_with("\xEF\xBB\xBF")) throw error("Byte-order mark is not valid JSON", 0);
        skipWhitespace();
        JSONNode root = parseValue(0);
        skipWhitespace();
        if (!isAtEnd()) throw error("Unexpected content after the top-level value", position_);
        return root;
    }

 private:
    struct Text {
        std::string decoded;
        std::string raw;
    };

    static constexpr int maxDepth = 256;

    bool isAtEnd() const { return position_ == text_.size(); }
    bool isAt(char c) const { return !isAtEnd() && text_[position_] == c; }

    bool consume(char c) {
        if (!isAt(c)) return false;
        ++position_;
        return true;
    }

    void skipWhitespace() {
        while (isAt(' ') || isAt('\t') || isAt('\n') || isAt('\r')) ++position_;
    }

    JSONNode parseValue(int depth) {
        // Before the input is looked at: the limit guards the stack, whatever follows.
        if (depth >= maxDepth) throw error("Nesting too deep", position_);
        if (isAtEnd()) throw error("Unexpected end of input", position_);
        switch (text_[position_]) {
            case '"': {
                Text text = parseString();
                return {JSONNode::String{std::move(text.decoded), std::move(text.raw)}};
            }
            case '{':
                return parseObject(depth);
            case '[':
                return parseArray(depth);
            case 't':
                expectLiteral("true");
                return JSONNode::bool_(true);
            case 'f':
                expectLiteral("false");
                return JSONNode::bool_(false);
            case 'n':
                expectLiteral("null");
                return JSONNode::null();
            default:
                break;
        }
        if (text_[position_] == '-' || isDigit(text_[position_])) return parseNumber();
        throw error("Unexpected character", position_);
    }

    JSONNode parseObject(int depth) {
        ++position_;
        Members members;
        JSONKeySet keys{members};
        skipWhitespace();
        if (consume('}')) return JSONNode::object({});
        do {
            skipWhitespace();
            if (!isAt('"')) throw error("Expected a string key", position_);
            Text key = parseString();
            if (keys.contains(key.decoded))
                // A merge could only guess which of the two the agent obeys.
                throw error("Duplicate key \"" + key.decoded + "\"", position_);
            skipWhitespace();
            if (!consume(':')) throw error("Expected ':'", position_);
            skipWhitespace();
            JSONNode value = parseValue(depth + 1);
            members.push_back({std::move(key.decoded), std::move(key.raw), std::move(value)});
            skipWhitespace();
        } while (consume(','));
        if (!consume('}')) throw error("Expected ',' or '}'", position_);
        return JSONNode::object(std::move(members));
    }

    JSONNode parseArray(int depth) {
        ++position_;
        std::vector<JSONNode> elements;
        skipWhitespace();
        if (consume(']')) return JSONNode::array({});
        do {
            skipWhitespace();
            elements.push_back(parseValue(depth + 1));
            skipWhitespace();
        } while (consume(','));
        if (!consume(']')) throw error("Expected ',' or ']'", position_);
        return JSONNode::array(std::move(elements));
    }

    void expectLiteral(std::string_view literal) {
        if (!text_.substr(position_).starts_with(literal))
            throw error("Invalid literal", position_);
        position_ += literal.size();
    }

    JSONNode parseNumber() {
        const auto start = position_;
        consume('-');
        // What follows a leading zero is for the caller to refuse, as "01" in an array.
        if (!consume('0')) parseDigits();
        if (consume('.')) parseDigits();
        if (consume('e') || consume('E')) {
            if (!consume('+')) consume('-');
            parseDigits();
        }
        return JSONNode::number(std::string{text_.substr(start, position_ - start)});
    }

    // One digit at least.
    void parseDigits() {
        if (isAtEnd() || !isDigit(text_[position_])) throw error("Invalid number", position_);
        while (!isAtEnd() && isDigit(text_[position_])) ++position_;
    }

    Text parseString() {
        const auto start = ++position_;
        skipPlainBytes();
        if (isAt('"')) {
            Text text;
            text.raw = repaired(text_.substr(start, position_++ - start));
            text.decoded = text.raw;
            return text;
        }
        return parseStringWithEscapes(start);
    }

    // The position is on the first byte behind `start` that stands for something else.
    Text parseStringWithEscapes(std::size_t start) {
        std::string decoded{text_.substr(start, position_ - start)};
        std::uint32_t pendingHigh = noSurrogate;
        while (!isAtEnd()) {
            const char byte = text_[position_];
            if (isControlCharacter(byte))
                throw error("Unescaped control character in string", position_);
            if (byte == '\\') {
                parseEscape(decoded, pendingHigh);
                continue;
            }
            if (pendingHigh != noSurrogate) throw error("Unpaired surrogate", position_);
            if (byte == '"') {
                const auto raw = text_.substr(start, position_++ - start);
                return {repaired(decoded), repaired(raw)};
            }
            const auto run = position_;
            skipPlainBytes();
            decoded += text_.substr(run, position_ - run);
        }
        throw error("Unterminated string", position_);
    }

    void skipPlainBytes() {
        while (!isAtEnd() && isPlain(text_[position_])) ++position_;
    }

    void parseEscape(std::string& decoded, std::uint32_t& pendingHigh) {
        const auto backslash = position_++;
        if (isAtEnd()) throw error("Unterminated escape", position_);
        if (consume('u')) {
            const std::uint32_t unit = parseHex4();
            // A low unit belongs behind a high one, and nothing else does.
            if (UTF16::isLowSurrogate(unit) != UTF16::isHighSurrogate(pendingHigh))
                throw error("Unpaired surrogate", backslash);
            if (UTF16::isHighSurrogate(unit)) {
                pendingHigh = unit;
            } else if (pendingHigh != noSurrogate) {
                appendScalar(UTF16::codePoint({pendingHigh, unit}), decoded);
                pendingHigh = noSurrogate;
            } else {
                appendScalar(unit, decoded);
            }
            return;
        }
        const auto letter = escapeLetters.find(text_[position_]);
        if (letter == std::string_view::npos) throw error("Invalid escape", position_);
        if (pendingHigh != noSurrogate) throw error("Unpaired surrogate", backslash);
        decoded += escapeMeanings[letter];
        ++position_;
    }

    std::uint32_t parseHex4() {
        constexpr std::size_t digits = 4;
        if (text_.size() - position_ < digits) throw error("Truncated \\u escape", position_);
        std::uint32_t unit = 0;
        for (std::size_t i = 0; i < digits; ++i, ++position_) {
            const auto digit = Hex::value(text_[position_]);
            if (!digit) throw error("Invalid \\u escape", position_);
            unit = unit << 4 | *digit;
        }
        return unit;
    }

    void appendScalar(std::uint32_t scalar, std::string& bytes) const {
        const auto append = [&](std::uint32_t byte) { bytes += static_cast<char>(byte); };
        const auto appendContinuation = [&](int shift) { append(0x80 | (scalar >> shift & 0x3F)); };
        if (scalar > 0x10FFFF || UTF16::isHighSurrogate(scalar) || UTF16::isLowSurrogate(scalar))
            throw error("Invalid code point", position_);
        if (scalar < 0x80) {
            append(scalar);
        } else if (scalar < 0x800) {
            append(0xC0 | scalar >> 6);
            appendContinuation(0);
        } else if (scalar < 0x10000) {
            append(0xE0 | scalar >> 12);
            appendContinuation(6);
            appendContinuation(0);
        } else {
            append(0xF0 | scalar >> 18);
            appendContinuation(12);
            appendContinuation(6);
            appendContinuation(0);
        }
    }

    std::string repaired(std::string_view bytes) const {
        return isValidUTF8_ ? std::string{bytes} : UTF8::replacingInvalid(bytes);
    }

    JSONParseError error(std::string message, std::size_t position) const {
        // Counted only here: an error is met once, a byte a million times.
        const auto before = text_.substr(0, position);
        const auto lineFeeds = std::ranges::count(before, '\n');
        const auto lineStart = before.rfind('\n') + 1;  // 0 where there is none
        return {static_cast<int>(lineFeeds) + 1, static_cast<int>(position - lineStart) + 1,
                std::move(message)};
    }

    std::string_view text_;
    bool isValidUTF8_;  // nearly always; then no string needs a look of its own
    std::size_t position_ = 0;
};

}  // namespace

std::string JSONParseError::description() const {
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + message;
}

std::expected<JSONNode, JSONParseError> OrderedJSON::parse(std::string_view text) {
    try {
        return Parser{text}.parseDocument();
    } catch (JSONParseError& error) {
        return std::unexpected(std::move(error));
    }
}

}  // namespace tallowbrook
