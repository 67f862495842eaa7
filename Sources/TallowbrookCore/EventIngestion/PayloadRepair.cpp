#include "EventIngestion/PayloadRepair.h"

#include <algorithm>

namespace tallowbrook {
namespace {

constexpr std::size_t escapeLength = 6;          // \uD83D
constexpr std::size_t harmlessExponentSize = 8;  // digits that fit into 32 bits for sure

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The code unit of the \u escape at `position`; absent when there is none.
std::optional<unsigned> codeUnit(std::string_view text, std::size_t position) {
    if (text.size() < position + escapeLength || text[position] != '\\' ||
        text[position + 1] != 'u')
        return std::nullopt;
    unsigned unit = 0;
    for (const char c : text.substr(position + 2, 4)) {
        const char lower = static_cast<char>(c | 0x20);
        if (isDigit(c))
            unit = unit * 16 + static_cast<unsigned>(c - '0');
        else if (lower >= 'a' && lower <= 'f')
            unit = unit * 16 + static_cast<unsigned>(lower - 'a' + 10);
        else
            return std::nullopt;
    }
    return unit;
}

bool isHighSurrogate(unsigned unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(unsigned unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

std::size_t countDigits(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::find_if_not(text, isDigit) - text.begin());
}

// Whether `token` is a number by RFC 8259 with more exponent digits than are harmless.
bool hasVastExponent(std::string_view token) {
    if (token.starts_with('-')) token.remove_prefix(1);
    const std::size_t integerDigits = countDigits(token);
    if (integerDigits == 0 || (integerDigits > 1 && token.front() == '0')) return false;
    token.remove_prefix(integerDigits);
    if (token.starts_with('.')) {
        const std::size_t fractionDigits = countDigits(token.substr(1));
        if (fractionDigits == 0) return false;
        token.remove_prefix(1 + fractionDigits);
    }
    if (!token.starts_with('e') && !token.starts_with('E')) return false;
    token.remove_prefix(1);
    if (token.starts_with('+') || token.starts_with('-')) token.remove_prefix(1);
    return token.size() > harmlessExponentSize && countDigits(token) == token.size();
}

// Walks over the text once, telling strings from what stands between them.
class Repairer {
 public:
    explicit Repairer(std::string_view payload) : text_{payload} {}

    std::optional<std::string> run() {
        while (position_ < text_.size()) {
            if (inString_)
                stepInsideString();
            else
                stepBetweenStrings();
        }
        if (!changed_) return std::nullopt;
        return std::move(text_);
    }

 private:
    void stepInsideString() {
        if (text_[position_] == '"') inString_ = false;
        if (text_[position_] != '\\') {
            ++position_;
        } else if (const auto unit = codeUnit(text_, position_)) {
            stepOverEscape(*unit);
        } else {
            position_ += 2;
        }
    }

    void stepOverEscape(unsigned unit) {
        const auto next = codeUnit(text_, position_ + escapeLength);
        if (isHighSurrogate(unit) && next && isLowSurrogate(*next)) {
            position_ += 2 * escapeLength;
            return;
        }
        if (isHighSurrogate(unit) || isLowSurrogate(unit)) replace(escapeLength, "\\u0000");
        position_ += escapeLength;
    }

    void stepBetweenStrings() {
        const char c = text_[position_];
        if (c == '"') inString_ = true;
        if (!isDigit(c) && c != '-') {
            ++position_;
            return;
        }
        const std::size_t end =
            std::min(text_.find_first_not_of("0123456789+-.eE", position_), text_.size());
        const std::size_t length = end - position_;
        if (hasVastExponent(std::string_view{text_}.substr(position_, length))) {
            // Blanks in place of the rest keep every other byte where it is.
            std::string zero(length, ' ');
            zero.front() = '0';
            replace(length, zero);
        }
        position_ = end;
    }

    void replace(std::size_t length, std::string_view replacement) {
        text_.replace(position_, length, replacement);
        changed_ = true;
    }

    std::string text_;
    std::size_t position_ = 0;
    bool inString_ = false;
    bool changed_ = false;
};

}  // namespace

std::optional<std::string> PayloadRepair::repair(std::string_view payload) {
    return Repairer{payload}.run();
}

}  // namespace tallowbrook
