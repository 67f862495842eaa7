#include "View/Keys.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "Output/PrintableText.h"

namespace tallowbrook::host {
namespace {

struct KeyName {
    Key key;
    std::string_view name;
};

constexpr std::array keyNames{
    KeyName{Keys::tab, "Tab"},     KeyName{Keys::enter, "Enter"},   KeyName{Keys::redraw, "Ctrl-L"},
    KeyName{Keys::escape, "Esc"},  KeyName{Keys::up, "Up"},         KeyName{Keys::down, "Down"},
    KeyName{Keys::pageUp, "PgUp"}, KeyName{Keys::pageDown, "PgDn"}, KeyName{Keys::home, "Home"},
    KeyName{Keys::end, "End"},     KeyName{U' ', "Space"},
};

std::string nameOf(Key key) {
    const auto* named = std::ranges::find(keyNames, key, &KeyName::key);
    if (named != keyNames.end()) return std::string{named->name};
    return {static_cast<char>(key)};  // the table holds no other than ASCII
}

struct KeyRow {
    Action action;
    std::array<Key, 2> keys;  // the second is 0 where there is but one
    std::string_view meaning;
    std::string_view hint = {};
    int hintRank = 0;  // the smallest stay longest in a narrow window
};

// In the order in which they are listed. No letter changes more than the screen but `p` and `m`,
// which say so and are taken back by the same key, and `q`, which asks where it matters.
constexpr std::array rows{
    KeyRow{Action::moveUp, {Keys::up, U'k'}, "one session up"},
    KeyRow{Action::moveDown, {Keys::down, U'j'}, "one session down"},
    KeyRow{Action::pageUp, {Keys::pageUp}, "one page up"},
    KeyRow{Action::pageDown, {Keys::pageDown}, "one page down"},
    KeyRow{Action::toFirst, {Keys::home, U'g'}, "to the first session"},
    KeyRow{Action::toLast, {Keys::end, U'G'}, "to the last session"},
    KeyRow{Action::focus, {Keys::enter}, "bring the session's window to the front", "focus", 2},
    KeyRow{Action::nextWaiting, {U'n', Keys::tab}, "to the next session that waits", "next", 3},
    KeyRow{
        Action::explain, {U'e', U' '}, "why it has its status, and its last events", "explain", 4},
    KeyRow{Action::mute, {U'm'}, "tell no more of this session, or again", "mute", 8},
    KeyRow{Action::pause, {U'p'}, "tell nothing for now, or go on telling", "pause", 5},
    KeyRow{Action::dismiss,
           {U'd'},
           "hide it until its status changes, or show it again",
           "dismiss",
           9},
    KeyRow{Action::filter, {U'/'}, "show only what has these letters", "filter", 6},
    KeyRow{Action::fold, {U'z'}, "show what has ended or is hidden, or fold it", "fold", 7},
    KeyRow{Action::back, {Keys::escape}, "close what is open, show all again"},
    KeyRow{Action::redraw, {Keys::redraw}, "draw the screen anew"},
    KeyRow{Action::help, {U'?'}, "this list", "keys", 0},
    KeyRow{Action::quit, {U'q'}, "quit", "quit", 1},
};

std::string hintOf(const KeyRow& row) {
    return nameOf(row.keys.front()) + " " + std::string{row.hint};
}

}  // namespace

std::optional<Action> actionOf(Key key) {
    const auto* found = std::ranges::find_if(rows, [key](const KeyRow& row) {
        return key != 0 && std::ranges::find(row.keys, key) != row.keys.end();
    });
    if (found == rows.end()) return std::nullopt;
    return found->action;
}

Offered allActions() {
    Offered all;
    for (const auto& row : rows) all.insert(row.action);
    return all;
}

std::string hintLine(const Offered& offered, std::size_t columns) {
    std::vector<const KeyRow*> hinted;
    for (const auto& row : rows)
        if (!row.hint.empty() && offered.contains(row.action)) hinted.push_back(&row);
    const auto text = [&] {
        std::string line;
        for (const auto* row : hinted) line += (line.empty() ? "" : "  ") + hintOf(*row);
        return line;
    };
    while (hinted.size() > 1 && PrintableText::width(text()) > columns)
        hinted.erase(std::ranges::max_element(hinted, {}, &KeyRow::hintRank));
    return text();
}

std::vector<std::pair<std::string, std::string>> listOfKeys(const Offered& offered) {
    std::vector<std::pair<std::string, std::string>> list;
    for (const auto& row : rows) {
        if (!offered.contains(row.action)) continue;
        std::string names = nameOf(row.keys[0]);
        if (row.keys[1] != 0) names += ", " + nameOf(row.keys[1]);
        list.emplace_back(std::move(names), row.meaning);
    }
    return list;
}

}  // namespace tallowbrook::host
