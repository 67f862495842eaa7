#include "Domain/JSONRepair.h"

#include <algorithm>
#include <cstdint>

#include "Text/Digits.h"
#include "Text/Hex.h"
#include "Text/UTF16.h"

namespace tallowbrook {
namespace {

constexpr std::size_t escapeLength = 6;          // \uD83D
constexpr std::size_t harmlessExponentSize = 8;  // digits that fit into 32 bits for sure

// The code unit of the \u escape at `position`; absent when there is none.
std::optional<std::uint32_t> codeUnit(std::string_view text, std::size_t position) {
    if (text.size() < position + escapeLength || !text.substr(position).starts_with("\\u"))
        return std::nullopt;
    std::uint32_t unit = 0;
    for (const char c : text.substr(position + 2, 4)) {
        const auto digit = Hex::value(c);
        if (!digit) return std::nullopt;
        unit = unit << 4U | *digit;
    }
    return unit;
}

// A number with an exponent, in the parts of its grammar.
struct Number {
    std::string_view integer;
    std::string_view fraction;
    std::string_view exponent;  // digits alone
    bool hasNegativeExponent = false;
};

// Absent for a number without an exponent, and for a token that is none: those are the parser's.
std::optional<Number> numberWithExponent(std::string_view token) {
    const auto take = [&](std::string_view either) {
        if (token.empty() || !either.contains(token.front())) return false;
        token.remove_prefix(1);
        return true;
    };
    Number number;
    take("-");
    number.integer = takeDigits(token);
    if (number.integer.empty() || (number.integer.size() > 1 && number.integer.front() == '0'))
        return std::nullopt;
    if (take(".")) {
        number.fraction = takeDigits(token);
        if (number.fraction.empty()) return std::nullopt;
    }
    if (!take("eE")) return std::nullopt;
    number.hasNegativeExponent = token.starts_with('-');
    take("+-");
    number.exponent = takeDigits(token);
    if (number.exponent.empty() || !token.empty()) return std::nullopt;
    return number;
}

bool hasVastExponent(const Number& number) { return number.exponent.size() > harmlessExponentSize; }

std::int64_t exponentOf(const Number& number) {
    // More than any text has digits, so that a longer exponent decides alone.
    constexpr std::int64_t endless = std::int64_t{1} << 60U;
    const auto size = parseNumber<std::int64_t>(number.exponent).value_or(endless);
    return number.hasNegativeExponent ? -std::min(size, endless) : std::min(size, endless);
}

// Whether rounding to a double would give infinity. The JSON library cannot tell: its doubles come
// out of a power of ten that is infinite or zero by itself.
bool isBeyondDouble(const Number& number) {
    // The lowest such number, and the place of its first digit.
    constexpr std::string_view lowestDigits = "17976931348623158079";
    constexpr std::int64_t lowestPlace = 308;

    std::string digits{number.integer};
    digits += number.fraction;
    const auto zeros = digits.find_first_not_of('0');
    if (zeros == std::string::npos) return false;
    const auto place = static_cast<std::int64_t>(number.integer.size()) - 1 -
                       static_cast<std::int64_t>(zeros) + exponentOf(number);
    if (place != lowestPlace) return place > lowestPlace;
    return std::string_view{digits}.substr(zeros) >= lowestDigits;
}

// Walks over the text once, telling strings from what stands between them.
class Repairer {
 public:
    using NumberTest = bool (*)(const Number&);

    Repairer(std::string_view text, bool repairsStrings, NumberTest isReplaced)
        : text_{text}, repairsStrings_{repairsStrings}, isReplaced_{isReplaced} {}

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

    void stepOverEscape(std::uint32_t unit) {
        const auto next = codeUnit(text_, position_ + escapeLength);
        if (UTF16::isHighSurrogate(unit) && next && UTF16::isLowSurrogate(*next)) {
            position_ += 2 * escapeLength;
            return;
        }
        if (repairsStrings_ && (UTF16::isHighSurrogate(unit) || UTF16::isLowSurrogate(unit)))
            replace(escapeLength, "\\u0000");
        position_ += escapeLength;
    }

    void stepBetweenStrings() {
        const char c = text_[position_];
        if (c == '"') inString_ = true;
        if (!isDigit(c) && c != '-') {
            ++position_;
            return;
        }
        // All that could belong to a number, so that what is none keeps its ending and stays none.
        const std::size_t end =
            std::min(text_.find_first_not_of("0123456789+-.eE", position_), text_.size());
        const std::size_t length = end - position_;
        const auto number = numberWithExponent(std::string_view{text_}.substr(position_, length));
        if (number && isReplaced_(*number)) {
            // Blanks in place of the rest keep every other byte where it is. A number with an
            // exponent has at least three.
            std::string zero(length, ' ');
            zero.replace(0, 3, "0.0");
            replace(length, zero);
        }
        position_ = end;
    }

    void replace(std::size_t length, std::string_view replacement) {
        text_.replace(position_, length, replacement);
        changed_ = true;
    }

    std::string text_;
    bool repairsStrings_;
    NumberTest isReplaced_;
    std::size_t position_ = 0;
    bool inString_ = false;
    bool changed_ = false;
};

}  // namespace

std::optional<std::string> JSONRepair::forPayload(std::string_view text) {
    return Repairer{text, true, hasVastExponent}.run();
}

std::optional<std::string> JSONRepair::forEventLine(std::string_view text) {
    return Repairer{text, false, [](const Number& number) { return !isBeyondDouble(number); }}
        .run();
}

}  // namespace tallowbrook
