#include "Setup/JSONSpans.h"

#include <algorithm>
#include <utility>

namespace tallowbrook::host {
namespace {

class Scanner {
 public:
    explicit Scanner(std::string_view text) : text_{text} {}

    JSONSpan scanDocument() {
        skipWhitespace();
        return scanValue();
    }

 private:
    bool isAt(char c) const { return position_ < text_.size() && text_[position_] == c; }

    void skipWhitespace() { skipTo(text_.find_first_not_of(" \t\r\n", position_)); }

    void skipTo(std::size_t position) { position_ = std::min(position, text_.size()); }

    JSONSpan scanValue() {
        JSONSpan span;
        span.begin = position_;
        if (isAt('{') || isAt('['))
            span.items = scanItems(isAt('{'));
        else if (isAt('"'))
            skipString();
        else
            skipTo(text_.find_first_of(",]} \t\r\n", position_));
        span.end = position_;
        return span;
    }

    std::vector<JSONSpanItem> scanItems(bool isObject) {
        std::vector<JSONSpanItem> items;
        const char close = isObject ? '}' : ']';
        ++position_;
        skipWhitespace();
        while (position_ < text_.size() && !isAt(close)) {
            items.push_back(scanItem(isObject));
            skipWhitespace();
            if (isAt(',')) ++position_;
            skipWhitespace();
        }
        ++position_;
        return items;
    }

    JSONSpanItem scanItem(bool isObject) {
        JSONSpanItem item;
        item.begin = position_;
        if (isObject) skipString();
        item.keyEnd = position_;
        if (isObject) {
            skipWhitespace();
            ++position_;
            skipWhitespace();
        }
        item.value = scanValue();
        return item;
    }

    void skipString() {
        ++position_;
        while (position_ < text_.size() && !isAt('"')) position_ += isAt('\\') ? 2 : 1;
        ++position_;
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

}  // namespace

JSONSpan spansOf(std::string_view text) { return Scanner{text}.scanDocument(); }

std::string_view indentationAt(std::string_view text, std::size_t position) {
    const auto lineStart = text.substr(0, position).rfind('\n') + 1;  // 0 where there is none
    const auto line = text.substr(lineStart, position - lineStart);
    return line.substr(0, line.find_first_not_of(" \t"));
}

bool hasLineFeed(std::string_view text) { return text.find('\n') != std::string_view::npos; }

}  // namespace tallowbrook::host
