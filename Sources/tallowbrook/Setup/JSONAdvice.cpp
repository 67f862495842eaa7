// The text is scanned leniently, and what is to be taken out is blanked in a copy. The strict
// parser then judges: only what moves its error further was the cause of it.
#include "Setup/JSONAdvice.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <vector>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

struct RepeatedKey {
    std::string key;
    int firstLine;
    int secondLine;
};

struct Findings {
    std::vector<int> comments;  // their lines, rising, each once
    std::vector<int> commas;
    bool isAtLineEnd = true;              // of the last comma
    std::optional<RepeatedKey> repeated;  // the first
    std::string blanked;                  // the text with blanks for comments and commas
};

class Scanner {
 public:
    explicit Scanner(std::string_view text) : text_{text} { findings_.blanked = text; }

    Findings scan() {
        while (position_ < text_.size()) step();
        return std::move(findings_);
    }

 private:
    struct Open {
        bool isObject;
        std::map<std::string, int> keys{};  // with their lines
    };

    void step() {
        const char c = text_[position_];
        if (text_.substr(position_).starts_with("//") || c == '#')
            blankComment(text_.find('\n', position_));
        else if (text_.substr(position_).starts_with("/*"))
            blankComment(endOf(text_.find("*/", position_ + 2)));
        else if (c == '"')
            scanString();
        else
            scanMark(c);
    }

    static std::size_t endOf(std::size_t found) {
        return found == std::string_view::npos ? found : found + 2;
    }

    void blankComment(std::size_t end) {
        note(findings_.comments, line_);
        end = std::min(end, text_.size());
        for (; position_ < end; ++position_) blankHere();
    }

    void blankHere() {
        if (text_[position_] == '\n')
            ++line_;
        else
            findings_.blanked[position_] = ' ';
    }

    static void note(std::vector<int>& lines, int line) {
        if (lines.empty() || lines.back() != line) lines.push_back(line);
    }

    void scanString() {
        const auto begin = position_;
        // A string that no quote ends before its line does is no string of JSON.
        for (++position_; position_ < text_.size() && text_[position_] != '"'; ++position_) {
            if (text_[position_] == '\n') return;
            if (text_[position_] == '\\' && position_ + 1 < text_.size()) ++position_;
        }
        position_ = std::min(position_ + 1, text_.size());
        const bool isKey =
            !open_.empty() && open_.back().isObject && (last_ == '{' || last_ == ',');
        if (isKey) noteKey(text_.substr(begin, position_ - begin));
        last_ = '"';
    }

    void noteKey(std::string_view quoted) {
        const auto parsed = OrderedJSON::parse(quoted);
        const auto* key = parsed ? parsed->stringValue() : nullptr;
        if (!key) return;
        const auto [known, isNew] = open_.back().keys.emplace(*key, line_);
        if (!isNew && !findings_.repeated) findings_.repeated = {*key, known->second, line_};
    }

    void scanMark(char c) {
        if (c == '\n') ++line_;
        if (c == '{' || c == '[') open_.push_back({c == '{'});
        if (c == '}' || c == ']') close();
        if (c == ',') comma_ = {position_, line_};
        if (!std::string_view{" \t\r\n"}.contains(c)) last_ = c;
        ++position_;
    }

    void close() {
        if (last_ == ',') {
            const auto [position, line] = comma_;
            note(findings_.commas, line);
            findings_.blanked[position] = ' ';
            findings_.isAtLineEnd = line != line_;
        }
        if (!open_.empty()) open_.pop_back();
    }

    std::string_view text_;
    std::size_t position_ = 0;
    int line_ = 1;
    char last_ = '\0';  // the last character that is neither white space nor in a comment
    std::pair<std::size_t, int> comma_{};  // the last one
    std::vector<Open> open_;
    Findings findings_;
};

std::string list(const std::vector<int>& lines) {
    constexpr std::size_t most = 5;
    const auto shown = std::min(lines.size(), most);
    const auto more = lines.size() - shown;
    std::string text;
    for (std::size_t i = 0; i < shown; ++i) {
        const bool isLast = i + 1 == shown && more == 0;
        text += (i == 0 ? "" : isLast ? " and " : ", ") + std::to_string(lines[i]);
    }
    return more == 0 ? text : fmt::format("{} and {} more", text, more);
}

std::string onComments(const std::vector<int>& lines) {
    if (lines.size() == 1)
        return fmt::format("Line {} holds a comment, which JSON does not have: take it out.",
                           lines.front());
    return fmt::format("Lines {} hold comments, which JSON does not have: take them out.",
                       list(lines));
}

std::string onCommas(const std::vector<int>& lines, bool isAtLineEnd) {
    if (lines.size() == 1)
        return fmt::format("{} line {} has nothing behind it: take it out.",
                           isAtLineEnd ? "The comma at the end of" : "A comma on", lines.front());
    return fmt::format("The commas on lines {} have nothing behind them: take them out.",
                       list(lines));
}

std::string onKey(const RepeatedKey& repeated) {
    if (repeated.firstLine == repeated.secondLine)
        return fmt::format("\"{}\" stands twice on line {}: keep one of the two.", repeated.key,
                           repeated.firstLine);
    return fmt::format("\"{}\" stands on line {} and again on line {}: keep one of the two.",
                       repeated.key, repeated.firstLine, repeated.secondLine);
}

}  // namespace

std::optional<std::string> adviceOn(std::string_view text) {
    const auto original = OrderedJSON::parse(text);
    if (original) return std::nullopt;
    const auto findings = Scanner{text}.scan();
    const auto rest = OrderedJSON::parse(findings.blanked);
    const auto place = [](const JSONParseError& error) {
        return std::tie(error.line, error.column);
    };

    std::string advice;
    if (rest || place(rest.error()) > place(original.error())) {
        if (!findings.comments.empty()) advice += onComments(findings.comments);
        if (!findings.commas.empty())
            advice += (advice.empty() ? "" : " ") + onCommas(findings.commas, findings.isAtLineEnd);
    }
    if (!rest && findings.repeated && rest.error().message.starts_with("Duplicate key"))
        advice += (advice.empty() ? "" : " ") + onKey(*findings.repeated);
    return advice.empty() ? std::nullopt : std::optional{advice};
}

}  // namespace tallowbrook::host
