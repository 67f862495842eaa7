// Payloads by the thousand, sound and broken, against a plain reading of the grammar.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Normalizing.h"

namespace tallowbrook {
namespace {

// Says whether a text is JSON by RFC 8259, but that a string may hold any byte from 0x20 on, and
// any four hexadecimal digits behind "\u". Knows no limits.
class Grammar {
 public:
    explicit Grammar(std::string_view text) : rest_{text} {}

    bool isJSON() {
        skipBlanks();
        const bool valid = value();
        skipBlanks();
        return valid && rest_.empty();
    }

 private:
    bool take(char c) {
        if (!rest_.starts_with(c)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool takeAnyOf(std::string_view characters) {
        if (rest_.empty() || characters.find(rest_.front()) == std::string_view::npos) return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool takeWord(std::string_view word) {
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    void skipBlanks() {
        while (takeAnyOf(" \t\r\n")) continue;
    }

    bool value() {
        if (rest_.starts_with('{')) return list('{', '}', [this] { return member(); });
        if (rest_.starts_with('[')) return list('[', ']', [this] { return value(); });
        if (rest_.starts_with('"')) return string();
        return takeWord("true") || takeWord("false") || takeWord("null") || number();
    }

    template <typename Element>
    bool list(char open, char close, Element element) {
        take(open);
        skipBlanks();
        if (take(close)) return true;
        do {
            skipBlanks();
            if (!element()) return false;
            skipBlanks();
        } while (take(','));
        return take(close);
    }

    bool member() {
        if (!string()) return false;
        skipBlanks();
        if (!take(':')) return false;
        skipBlanks();
        return value();
    }

    bool string() {
        if (!take('"')) return false;
        while (!rest_.empty()) {
            if (take('"')) return true;
            if (static_cast<unsigned char>(rest_.front()) < 0x20) return false;
            if (!take('\\'))
                rest_.remove_prefix(1);
            else if (!escape())
                return false;
        }
        return false;
    }

    bool escape() {
        if (takeAnyOf("\"\\/bfnrt")) return true;
        if (!take('u')) return false;
        for (int i = 0; i < 4; ++i)
            if (!takeAnyOf("0123456789abcdefABCDEF")) return false;
        return true;
    }

    bool digits() {
        if (!takeAnyOf("0123456789")) return false;
        while (takeAnyOf("0123456789")) continue;
        return true;
    }

    bool number() {
        take('-');
        if (!take('0') && !digits()) return false;
        if (take('.') && !digits()) return false;
        if (!takeAnyOf("eE")) return true;
        takeAnyOf("+-");
        return digits();
    }

    std::string_view rest_;
};

// Sound texts with everything that a reading can stumble over.
const std::vector<std::string> soundTexts{
    R"({"session_id":"a\\\"\n\/\u0041","b":[1,-2.5e+10,{}],"c":{"d":[],"e":null}})",
    "{ \"cut\" : \"\\ud83d\\uDE00 \\ud83d \xC3\xA9 \xFF\" ,\r\n\t\"\\ud83d\\ud83d\":true}",
    R"([1e99999999999,-0.5E-99999999999,0e0000000000001,123456789012345678901234567890])",
    R"({"1e99999999999":"1e99999999999","x":-12.50e2147483648,"y":[false,0,-0]})",
    R"({})",
    R"("\ude00")",
    R"( -1E-2147483649 )",
};

// One of the sound texts, mostly with up to three places broken.
std::string nextText(std::mt19937_64& engine) {
    static const std::vector<std::string> pieces{"\"",
                                                 "\\",
                                                 "u",
                                                 "0",
                                                 "9",
                                                 "e",
                                                 "-",
                                                 "+",
                                                 ".",
                                                 ",",
                                                 ":",
                                                 "{",
                                                 "]",
                                                 " ",
                                                 "\x01",
                                                 "\\ud83d",
                                                 "1e99999999999"};
    const auto below = [&](std::size_t limit) { return engine() % limit; };
    std::string text = soundTexts[below(soundTexts.size())];
    for (auto breaks = below(4); breaks > 0; --breaks) {
        const std::size_t position = below(text.size() + 1);
        // Inserts, erases or replaces.
        text.replace(position, below(3), below(3) == 0 ? "" : pieces[below(pieces.size())]);
    }
    return text;
}

std::string expectedOutcome(std::string_view text) {
    if (text.empty()) return "empty-payload";
    if (!Grammar{text}.isJSON()) return "invalid-json";
    return text[text.find_first_not_of(" \t\r\n")] == '{' ? "event" : "not-an-object";
}

TEST(PayloadGrammar, onlyATextThatIsNoJSONIsInvalid) {
    const std::uint64_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RecordProperty("seed", std::to_string(seed));
    std::mt19937_64 engine{seed};
    std::size_t events = 0;
    std::size_t refusals = 0;
    for (int i = 0; i < 50'000; ++i) {
        const std::string text = nextText(engine);
        const std::string expected = expectedOutcome(text);
        ASSERT_EQ(outcomeOf(text), expected) << text;
        events += expected == "event" ? 1 : 0;
        refusals += expected == "invalid-json" ? 1 : 0;
    }
    EXPECT_GT(events, 5000U) << "too few sound texts to prove anything";
    EXPECT_GT(refusals, 5000U) << "too few broken texts to prove anything";
}

}  // namespace
}  // namespace tallowbrook
