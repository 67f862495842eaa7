#include "Setup/JSONLayout.h"

#include <optional>
#include <utility>

#include "Integrations/OrderedJSON.h"

namespace tallowbrook::host {
namespace {

class LayoutFinder {
 public:
    explicit LayoutFinder(std::string_view text) : text_{text} {}

    void look(const JSONSpan& span) {
        if (span.items.empty()) return;
        const auto& first = span.items.front();
        const bool isObject = text_[span.begin] == '{';
        if (isObject) note(colon_, between(first.keyEnd, first.value.begin));
        if (hasLineFeed(between(span.begin, span.end)))
            lookAtLines(span);
        else
            lookAtOneLine(span, isObject);
        for (const auto& item : span.items) look(item.value);
    }

    JSONLayout layout() const {
        JSONLayout found;
        if (const auto lineFeed = text_.find('\n'); lineFeed != std::string_view::npos)
            found.lineEnd = lineFeed > 0 && text_[lineFeed - 1] == '\r' ? "\r\n" : "\n";
        found.indentation = indentation_.value_or(found.indentation);
        if (colon_ && !hasLineFeed(*colon_)) found.colon = *colon_;
        found.comma = comma_.value_or(found.colon.ends_with(':') ? "," : ", ");
        found.objectPadding = objectPadding_.value_or("");
        found.arrayPadding = arrayPadding_.value_or("");
        return found;
    }

 private:
    std::string_view between(std::size_t begin, std::size_t end) const {
        return text_.substr(begin, end - begin);
    }

    static void note(std::optional<std::string>& place, std::string_view found) {
        if (!place) place = found;
    }

    void lookAtLines(const JSONSpan& span) {
        const auto leading = between(span.begin + 1, span.items.front().begin);
        if (!hasLineFeed(leading)) return;
        const auto outer = indentationAt(text_, span.begin);
        const auto inner = leading.substr(leading.rfind('\n') + 1);
        if (inner.size() > outer.size() && inner.starts_with(outer))
            note(indentation_, inner.substr(outer.size()));
    }

    void lookAtOneLine(const JSONSpan& span, bool isObject) {
        const auto& items = span.items;
        note(isObject ? objectPadding_ : arrayPadding_,
             between(span.begin + 1, items.front().begin));
        if (items.size() > 1) note(comma_, between(items[0].value.end, items[1].begin));
    }

    std::string_view text_;
    std::optional<std::string> indentation_;
    std::optional<std::string> colon_;
    std::optional<std::string> comma_;
    std::optional<std::string> objectPadding_;
    std::optional<std::string> arrayPadding_;
};

class Writer {
 public:
    Writer(const JSONLayout& layout, bool isOnLines) : layout_{layout}, isOnLines_{isOnLines} {}

    std::string text;

    void write(const JSONNode& node, const std::string& indentation) {
        if (const auto* members = node.objectMembers())
            writeItems('{', *members, '}', layout_.objectPadding, indentation,
                       [&](const JSONMember& member, const std::string& inner) {
                           text += '"' + member.rawKey.value_or(OrderedJSON::escape(member.key)) +
                                   '"' + layout_.colon;
                           write(member.value, inner);
                       });
        else if (const auto* elements = node.arrayElements())
            writeItems(
                '[', *elements, ']', layout_.arrayPadding, indentation,
                [&](const JSONNode& element, const std::string& inner) { write(element, inner); });
        else
            text += OrderedJSON::serialize(node, "");
    }

 private:
    void writeItems(char open, const auto& items, char close, const std::string& padding,
                    const std::string& indentation, auto writeItem) {
        text += open;
        const auto inner = indentation + layout_.indentation;
        bool isFirst = true;
        for (const auto& item : items) {
            if (isOnLines_)
                text += (isFirst ? "" : ",") + layout_.lineEnd + inner;
            else
                text += isFirst ? padding : layout_.comma;
            isFirst = false;
            writeItem(item, inner);
        }
        if (!isFirst) text += isOnLines_ ? layout_.lineEnd + indentation : padding;
        text += close;
    }

    const JSONLayout& layout_;
    bool isOnLines_;
};

}  // namespace

JSONLayout layoutOf(std::string_view text, const JSONSpan& root) {
    LayoutFinder finder{text};
    finder.look(root);
    return finder.layout();
}

std::string onOneLine(const JSONNode& node, const JSONLayout& layout) {
    Writer writer{layout, false};
    writer.write(node, "");
    return std::move(writer.text);
}

std::string onLines(const JSONNode& node, const JSONLayout& layout, std::string_view indentation) {
    Writer writer{layout, true};
    writer.write(node, std::string{indentation});
    return std::move(writer.text);
}

}  // namespace tallowbrook::host
