// The trees of both texts are walked together. What is equal is copied from the original text, with
// all that stands between; separators are only made up beside something new. Whether the result
// has the wanted tree is checked in the end, so the walk may choose any pairing of the two.
#include "Setup/LayoutPreservingEdit.h"

#include <utility>

#include "Integrations/LineDiff.h"
#include "Integrations/OrderedJSON.h"
#include "Setup/JSONAlignment.h"
#include "Setup/JSONLayout.h"
#include "Setup/JSONSpans.h"

namespace tallowbrook::host {
namespace {

constexpr std::size_t diffContext = 2;  // as `ConfigFileWriter::plan` shows it
// More is not put on one line, even where the values beside it are on one.
constexpr std::size_t longestOnOneLine = 240;

// The last line end in the text and what follows it: without the empty lines that may stand before.
std::string_view fromLastLineEnd(std::string_view text) {
    const auto lineFeed = text.rfind('\n');
    if (lineFeed == std::string_view::npos) return text;
    const bool hasCarriageReturn = lineFeed > 0 && text[lineFeed - 1] == '\r';
    return text.substr(hasCarriageReturn ? lineFeed - 1 : lineFeed);
}

// What stands around the items of one object or array.
struct Surroundings {
    std::string leading;
    std::string separator;
    std::string trailing;
};

class Editor {
 public:
    explicit Editor(std::string_view original)
        : original_{original}, root_{spansOf(original)}, layout_{layoutOf(original, root_)} {}

    std::string edited(const JSONNode& oldRoot, const JSONNode& newRoot) {
        text_ = original_.substr(0, root_.begin);
        edit(root_, oldRoot, newRoot, false);
        text_ += original_.substr(root_.end);
        return std::move(text_);
    }

 private:
    std::string_view between(std::size_t begin, std::size_t end) const {
        return original_.substr(begin, end - begin);
    }

    bool isOnLines(const JSONSpan& span) const {
        return hasLineFeed(between(span.begin, span.end));
    }

    void edit(const JSONSpan& span, const JSONNode& oldNode, const JSONNode& newNode,
              bool isInsideOneLine) {
        const bool isContainer = newNode.objectMembers() || newNode.arrayElements();
        if (newNode == oldNode)
            text_ += between(span.begin, span.end);
        else if (isContainer && newNode.value.index() == oldNode.value.index())
            editItems(span, itemsOf(oldNode), itemsOf(newNode), isInsideOneLine);
        else
            text_ += isInsideOneLine
                         ? onOneLine(newNode, layout_)
                         : onLines(newNode, layout_, indentationAt(original_, span.begin));
    }

    void editItems(const JSONSpan& span, const JSONItems& oldItems, const JSONItems& newItems,
                   bool isInsideOneLine) {
        const char open = original_[span.begin];
        const char close = original_[span.end - 1];
        text_ += open;
        if (!newItems.empty()) {
            const auto around = oldItems.empty() ? surroundingsOfNothing(span, isInsideOneLine)
                                                 : surroundingsOfItems(span);
            text_ += around.leading;
            writeItems(span, oldItems, newItems, around);
            text_ += around.trailing;
        }
        text_ += close;
    }

    void writeItems(const JSONSpan& span, const JSONItems& oldItems, const JSONItems& newItems,
                    const Surroundings& around) {
        const auto sources = sourcesOf(newItems, oldItems);
        const bool isOneLine = !isOnLines(span);
        for (std::size_t i = 0; i < newItems.size(); ++i) {
            const auto source = sources[i];
            if (i > 0 && source && sources[i - 1])
                text_ += between(span.items[*source - 1].value.end, span.items[*source].begin);
            else if (i > 0)
                text_ += around.separator;
            if (!source) {
                writeNew(newItems[i], span, around);
                continue;
            }
            const auto& old = span.items[*source];
            text_ += between(old.begin, old.value.begin);
            edit(old.value, *oldItems[*source].value, *newItems[i].value, isOneLine);
        }
    }

    void writeNew(const JSONItem& item, const JSONSpan& span, const Surroundings& around) {
        if (const auto* member = item.member)
            text_ += '"' + member->rawKey.value_or(OrderedJSON::escape(member->key)) + '"' +
                     layout_.colon;
        auto line = onOneLine(*item.value, layout_);
        text_ += isForOneLine(line, span, around)
                     ? std::move(line)
                     : onLines(*item.value, layout_, indentationOfNew(span, around));
    }

    // A new value is on one line where the value before it is.
    bool isForOneLine(const std::string& line, const JSONSpan& span,
                      const Surroundings& around) const {
        const bool hasOwnLine = hasLineFeed(around.separator);
        if (span.items.empty()) return !hasOwnLine;
        const auto& neighbour = span.items.back().value;
        if (!hasOwnLine) return !isOnLines(neighbour);
        // A word or an empty list does not tell how what holds something is written.
        return !neighbour.items.empty() && !isOnLines(neighbour) && line.size() <= longestOnOneLine;
    }

    Surroundings surroundingsOfNothing(const JSONSpan& span, bool isInsideOneLine) const {
        const std::string outer{indentationAt(original_, span.begin)};
        const auto inner = outer + layout_.indentation;
        if (!isInsideOneLine)
            return {layout_.lineEnd + inner, "," + layout_.lineEnd + inner,
                    layout_.lineEnd + outer};
        const auto& padding =
            original_[span.begin] == '{' ? layout_.objectPadding : layout_.arrayPadding;
        return {padding, layout_.comma, padding};
    }

    Surroundings surroundingsOfItems(const JSONSpan& span) const {
        const auto& last = span.items.back();
        Surroundings around;
        around.leading = between(span.begin + 1, span.items.front().begin);
        around.separator = separatorOf(span);
        around.trailing = between(last.value.end, span.end - 1);
        return around;
    }

    // Of the line on which a new item begins.
    std::string indentationOfNew(const JSONSpan& span, const Surroundings& around) const {
        if (span.items.empty())
            return std::string{indentationAt(original_, span.begin)} + layout_.indentation;
        const auto& last = span.items.back();
        const auto position = hasLineFeed(around.separator) ? last.begin : last.value.end;
        return std::string{indentationAt(original_, position)};
    }

    std::string separatorOf(const JSONSpan& span) const {
        const auto& items = span.items;
        if (items.size() == 1) {
            const auto leading = between(span.begin + 1, items.front().begin);
            if (!hasLineFeed(leading)) return layout_.comma;
            return "," + std::string{fromLastLineEnd(leading)};
        }
        const auto separator = between(items[items.size() - 2].value.end, items.back().begin);
        const auto behindComma = separator.find(',') + 1;
        return std::string{separator.substr(0, behindComma)} +
               std::string{fromLastLineEnd(separator.substr(behindComma))};
    }

    std::string_view original_;
    JSONSpan root_;
    JSONLayout layout_;
    std::string text_;
};

}  // namespace

std::string inLayoutOf(std::string_view original, std::string_view proposed) {
    const auto oldRoot = OrderedJSON::parse(original);
    const auto newRoot = OrderedJSON::parse(proposed);
    if (!oldRoot || !newRoot) return std::string{proposed};
    auto text = Editor{original}.edited(*oldRoot, *newRoot);
    return OrderedJSON::parse(text) == newRoot ? text : std::string{proposed};
}

ConfigChangePlan proposing(ConfigChangePlan plan, std::string text) {
    plan.proposedText = std::move(text);
    const auto label = plan.fileURL.string();
    plan.diff = LineDiff::unified(plan.originalText, plan.proposedText, label, label, diffContext)
                    .value_or("");
    return plan;
}

ConfigChangePlan keepLayout(ConfigChangePlan plan) {
    if (plan.isNoOp() || !plan.originalText || !plan.proposedText) return plan;
    auto text = inLayoutOf(*plan.originalText, *plan.proposedText);
    return proposing(std::move(plan), std::move(text));
}

}  // namespace tallowbrook::host
