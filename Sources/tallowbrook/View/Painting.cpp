#include "View/Painting.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>

#include "Output/PrintableText.h"
#include "Output/TimeText.h"
#include "View/SessionRow.h"
#include "View/SessionText.h"

namespace tallowbrook::host {
namespace {

using PrintableText::printable;

constexpr Style bold{.bold = true};
constexpr Style dim{.dim = true};
constexpr Style alarm{.colour = Colour::red, .bold = true};

// In a window of so many rows there is room for more than the list.
constexpr std::size_t rowsForTold = 14;
constexpr std::size_t rowsForBlanks = 16;

PictureLine plainLine(const std::string& text, std::size_t columns, Style style = {}) {
    return {{0, PrintableText::shortened(text, columns), style}};
}

void addWrapped(std::vector<PictureLine>& lines, const std::string& text, std::size_t columns,
                std::size_t mostLines, Style style) {
    auto wrapped = PrintableText::wrappedLines(printable(text), columns);
    if (wrapped.size() > mostLines) {
        wrapped.resize(mostLines);
        wrapped.back() = PrintableText::shortened(wrapped.back() + " …", columns);
    }
    for (const auto& line : wrapped) lines.push_back({{0, line, style}});
}

std::string counted(std::size_t count, std::string_view words) {
    return fmt::format("{} {}", count, words);
}

class Painter {
 public:
    Painter(const ViewContent& content, const ViewState& state, const Offered& offered,
            const std::deque<std::string>& told, ScreenSize size, Instant now)
        : content_{content},
          state_{state},
          offered_{offered},
          told_{told},
          size_{size},
          now_{now},
          rows_{ViewRows::of(content, state)} {}

    PaintedView paint() {
        view_.picture.size = size_;
        view_.top = state_.top;
        view_.overlayTop = state_.overlayTop;
        passBy(content_.host.nextChange);

        auto head = headLines();
        auto foot = footLines();
        // The list comes first where there is little room.
        const auto leastBody = std::max<std::size_t>(size_.rows / 2, 1);
        const auto isTooFull = [&] { return head.size() + foot.size() + leastBody > size_.rows; };
        while (isTooFull() && head.size() > 1) head.pop_back();
        while (isTooFull() && foot.size() > 1) foot.erase(foot.begin());
        if (head.size() + foot.size() + 1 > size_.rows) head.clear();
        if (foot.size() + 1 > size_.rows) foot.clear();
        view_.pageHeight = std::max<std::size_t>(size_.rows - head.size() - foot.size(), 1);

        auto body = state_.overlay ? overlayLines() : listLines();
        body.resize(view_.pageHeight);
        auto& lines = view_.picture.lines;
        for (auto* part : {&head, &body, &foot})
            lines.insert(lines.end(), part->begin(), part->end());
        lines.resize(size_.rows);
        if (state_.isTypingFilter && !foot.empty()) placeCursor();
        return std::move(view_);
    }

 private:
    void passBy(std::optional<Instant> time) {
        if (!time) return;
        const auto minute = std::chrono::ceil<std::chrono::minutes>(*time);
        if (!view_.nextChange || minute < *view_.nextChange) view_.nextChange = minute;
    }

    std::size_t countOf(SessionStatus status) const {
        return static_cast<std::size_t>(
            std::ranges::count(content_.list.sessions, status, &ListedSession::status));
    }

    // The longest of these that fits, or the last, shortened.
    std::string fitting(std::initializer_list<std::string> texts, std::size_t columns) const {
        for (const auto& text : texts)
            if (PrintableText::width(text) <= columns) return text;
        return PrintableText::shortened(*(texts.end() - 1), columns);
    }

    PictureLine titleLine() const {
        const auto waiting = countOf(SessionStatus::needsAttention);
        const auto working = countOf(SessionStatus::working);
        const auto failed = countOf(SessionStatus::failed);
        const std::string brief = waiting == 0 ? "none waits" : counted(waiting, "waiting");
        std::string full = waiting == 0   ? "No session waits for you"
                           : waiting == 1 ? "1 session waits for you"
                                          : counted(waiting, "sessions wait for you");
        std::string counts = brief;
        for (auto* text : {&full, &counts}) {
            if (failed > 0) *text += ", " + counted(failed, "failed");
            if (working > 0) *text += ", " + counted(working, "working");
        }
        const auto left = fitting({full, counts, brief}, size_.columns);
        const Style style = waiting > 0 ? styleOf(SessionStatus::needsAttention) : bold;
        PictureLine line{{0, left, style}};

        const auto since = "watching since " + TimeText::shortTime(content_.host.since, now_);
        const auto right = content_.host.leads && !content_.host.channels.empty()
                               ? since + ", tells " + channelText()
                               : since;
        const auto used = PrintableText::width(left) + 3;
        const auto room = size_.columns > used ? size_.columns - used : 0;
        const auto shown = fitting({right, since, ""}, room);
        if (!shown.empty())
            line.push_back({size_.columns - PrintableText::width(shown), shown, dim});
        return line;
    }

    std::string channelText() const {
        std::string text;
        for (const auto& channel : content_.host.channels)
            text += (text.empty() ? "" : ", ") + channel;
        return printable(text);
    }

    // The title, what is to be known of the host, and the filter.
    std::vector<PictureLine> headLines() const {
        const auto& host = content_.host;
        std::vector<PictureLine> lines{titleLine()};
        const std::size_t most = size_.rows >= rowsForBlanks ? 3 : 2;
        if (!host.trouble.empty()) addWrapped(lines, host.trouble, size_.columns, most, alarm);
        const auto say = [&](const char* sentence) {
            addWrapped(lines, sentence, size_.columns, most, bold);
        };
        if (!host.leads) say("Another host tells; this view looks on.");
        if (host.isOff) say("Notifications are switched off: you are told nothing.");
        if (host.isPaused) say("Paused: you are told nothing until p goes on.");
        if (!host.quietUntil.empty() && !host.isPaused && !host.isOff)
            addWrapped(lines, "Quiet hours: you are told nothing until " + host.quietUntil + ".",
                       size_.columns, most, bold);
        if (!state_.filter.empty() && !state_.isTypingFilter)
            lines.push_back(
                plainLine("Only \"" + state_.filter + "\" (Esc shows all)", size_.columns, bold));
        if (size_.rows >= rowsForBlanks) lines.emplace_back();
        return lines;
    }

    std::vector<PictureLine> footLines() const {
        std::vector<PictureLine> lines;
        if (!state_.overlay && !told_.empty() && size_.rows >= rowsForTold) addTold(lines);
        constexpr std::size_t mostMessageLines = 3;
        if (state_.isTypingFilter)
            lines.push_back(plainLine(filterPrompt(), size_.columns, bold));
        else if (state_.asksToQuit)
            addWrapped(lines, "Quit, and be told nothing more? q: yes, any other key: no.",
                       size_.columns, mostMessageLines, bold);
        else if (!state_.message.empty())
            addWrapped(lines, state_.message, size_.columns, mostMessageLines, bold);
        // One column less: a terminal may scroll when its very last one is written.
        const auto room = size_.columns > 1 ? size_.columns - 1 : 1;
        const auto hint = state_.overlay ? fitting({"Up Down scroll  Esc back", "Esc back"}, room)
                          : state_.isTypingFilter
                              ? fitting({"Enter keep  Esc show all", "Esc all"}, room)
                              : hintLine(offered_, room);
        lines.push_back(plainLine(hint, room, dim));
        return lines;
    }

    std::string filterPrompt() const { return "Only with: " + state_.filter; }

    void placeCursor() {
        view_.picture.cursorRow = size_.rows - std::min<std::size_t>(size_.rows, 2);
        view_.picture.cursor = std::min(filterPrompt().size(), size_.columns - 1);
    }

    void addTold(std::vector<PictureLine>& lines) const {
        constexpr std::size_t few = 3;
        constexpr std::size_t many = 5;
        const auto most = std::min(told_.size(), size_.rows >= 2 * rowsForTold ? many : few);
        std::string rule = "Told ";
        for (auto column = rule.size(); column < size_.columns; ++column)
            rule += Symbols::rule.text;
        lines.push_back(plainLine(rule, size_.columns, dim));
        for (std::size_t i = told_.size() - most; i < told_.size(); ++i)
            lines.push_back(plainLine(printable(told_[i]), size_.columns));
        if (size_.rows >= rowsForBlanks) lines.emplace_back();
    }

    std::vector<PictureLine> overlayLines() {
        std::vector<PictureLine> lines;
        const bool listsKeys = state_.overlay->kind == ViewState::Overlay::Kind::keys;
        if (listsKeys)
            addKeys(lines);
        else
            addText(lines, state_.overlay->text);
        view_.overlayTop =
            std::min(state_.overlayTop, lines.size() - std::min(lines.size(), view_.pageHeight));
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(view_.overlayTop));
        markHidden(lines, view_.overlayTop, lines.size());
        return lines;
    }

    void addKeys(std::vector<PictureLine>& lines) const {
        constexpr std::size_t nameColumns = 10;
        for (const auto& [names, meaning] : listOfKeys(offered_)) {
            const auto wrapped = PrintableText::wrappedLines(
                PrintableText::padded(names, nameColumns) + " " + meaning, size_.columns, 2);
            for (std::size_t i = 0; i < wrapped.size(); ++i) lines.push_back({{0, wrapped[i], {}}});
            if (!wrapped.empty()) boldFront(lines[lines.size() - wrapped.size()], nameColumns);
        }
    }

    // The name of the key stands out from what it does.
    static void boldFront(PictureLine& line, std::size_t columns) {
        const std::string text = line.front().text;
        line.front() = {0, text.substr(0, std::min(columns, text.size())), bold};
        if (text.size() > columns) line.push_back({columns, text.substr(columns), {}});
    }

    void addText(std::vector<PictureLine>& lines, const std::string& text) const {
        std::string_view rest = text;
        while (!rest.empty()) {
            const auto end = std::min(rest.find('\n'), rest.size());
            constexpr std::size_t indent = 2;
            for (const auto& line :
                 PrintableText::wrappedLines(printable(rest.substr(0, end)), size_.columns, indent))
                lines.push_back({{0, line, lines.empty() ? bold : Style{}}});
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    // Replaces the first and the last line on the screen by how many lie beyond them.
    void markHidden(std::vector<PictureLine>& lines, std::size_t above, std::size_t left) const {
        constexpr std::size_t leastHeight = 5;
        const auto height = view_.pageHeight;
        if (height < leastHeight) return;
        const auto mark = [&](Symbol symbol, std::size_t count) {
            return plainLine(fmt::format(" {} {} more", symbol.text, count), size_.columns, dim);
        };
        if (above > 0 && !lines.empty()) lines.front() = mark(Symbols::above, above + 1);
        if (left > height) lines[height - 1] = mark(Symbols::below, left - height + 1);
    }

    std::string foldText() const {
        std::string text;
        const auto add = [&](std::size_t count, const char* word) {
            if (count > 0) text += (text.empty() ? "" : ", ") + counted(count, word);
        };
        add(rows_.ended, "ended");
        add(rows_.dismissed, "hidden");
        add(content_.list.olderCount, "older than a day");
        if (text.empty() || rows_.ended + rows_.dismissed == 0) return text;
        return text + (state_.showsFolded ? " (z folds)" : " (z shows)");
    }

    std::vector<PictureLine> listLines() {
        std::vector<PictureLine> lines;
        const auto selected = rows_.selectedIndex(state_);
        std::size_t selectedLine = 0;
        const RowLayout layout{size_.columns};
        const auto add = [&](const ListedSession& session) {
            const bool isSelected = selected && &rows_.at(*selected) == &session;
            if (isSelected) selectedLine = lines.size();
            lines.push_back(layout.line(session, isSelected, now_));
            passBy(TimeText::nextChange(statusSince(session), now_));
            passBy(nextStatusChange(session));
        };
        for (const auto* session : rows_.shown) add(*session);
        if (lines.empty()) lines.push_back(plainLine(emptyText(), size_.columns, dim));
        if (const auto fold = foldText(); !fold.empty())
            lines.push_back(plainLine("  " + fold, size_.columns, dim));
        for (const auto* session : rows_.unfolded) add(*session);
        scrollTo(selectedLine, lines.size());
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(view_.top));
        markHidden(lines, view_.top, lines.size());
        return lines;
    }

    std::string emptyText() const {
        if (!state_.filter.empty()) return "No session has these letters.";
        if (rows_.ended + rows_.dismissed > 0) return "No session is open.";
        return "No sessions yet. What your agents do appears here.";
    }

    // So far that the line is seen, with one more before and behind it, which may be a mark.
    void scrollTo(std::size_t line, std::size_t count) {
        const auto height = view_.pageHeight;
        const std::size_t margin = height > 2 ? 1 : 0;
        const auto most = count - std::min(count, height);
        if (line < view_.top + margin) view_.top = line - std::min(line, margin);
        if (line + margin >= view_.top + height) view_.top = line + margin + 1 - height;
        view_.top = std::min(view_.top, most);
    }

    const ViewContent& content_;
    const ViewState& state_;
    const Offered& offered_;
    const std::deque<std::string>& told_;
    ScreenSize size_;
    Instant now_;
    ViewRows rows_;
    PaintedView view_;
};

}  // namespace

PaintedView paint(const ViewContent& content, const ViewState& state, const Offered& offered,
                  const std::deque<std::string>& told, ScreenSize size, Instant now) {
    size.columns = std::max<std::size_t>(size.columns, 1);
    size.rows = std::max<std::size_t>(size.rows, 1);
    return Painter{content, state, offered, told, size, now}.paint();
}

}  // namespace tallowbrook::host
