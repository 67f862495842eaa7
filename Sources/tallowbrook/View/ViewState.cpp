#include "View/ViewState.h"

#include <algorithm>
#include <tuple>

#include "View/SessionText.h"

namespace tallowbrook::host {
namespace {

bool isDismissed(const ListedSession& session, const ViewState& state) {
    const auto found = state.dismissed.find(session.snapshot.id());
    return found != state.dismissed.end() && found->second == session.snapshot.statusSince;
}

char lower(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; }

bool has(std::string_view text, std::string_view part) {
    const auto found = std::ranges::search(
        text, part, [](char one, char other) { return lower(one) == lower(other); });
    return part.empty() || !found.empty();
}

// What the user sees of a session, its id too.
bool passes(const ListedSession& session, const std::string& filter) {
    const auto& snapshot = session.snapshot;
    return has(snapshot.projectLabel(), filter) || has(agentText(session), filter) ||
           has(statusText(session), filter) || has(reasonText(session), filter) ||
           has(snapshot.key.sessionID, filter) || has(snapshot.cwd.value_or(""), filter);
}

void select(std::size_t index, ViewState& state, const ViewRows& rows) {
    if (rows.count() > 0) state.selected = rows.at(std::min(index, rows.count() - 1)).snapshot.id();
}

void selectNextWaiting(ViewState& state, const ViewRows& rows) {
    const auto from = rows.selectedIndex(state);
    for (std::size_t step = 1; from && step <= rows.count(); ++step) {
        const auto index = (*from + step) % rows.count();
        if (rows.at(index).status == SessionStatus::needsAttention)
            return select(index, state, rows);
    }
    state.message = "No session waits for you.";
}

void dismiss(ViewState& state, const ViewRows& rows) {
    const auto index = rows.selectedIndex(state);
    if (!index) return;
    const auto& session = rows.at(*index);
    const auto id = session.snapshot.id();
    if (isDismissed(session, state)) {
        state.dismissed.erase(id);
        return;
    }
    // The selection goes on to the next, not away with the hidden one.
    select(*index + 1 < rows.count() || *index == 0 ? *index + 1 : *index - 1, state, rows);
    state.dismissed[id] = session.snapshot.statusSince;
    state.message = "Hidden until its status changes; z shows what is hidden.";
}

void goBack(ViewState& state) {
    if (!state.filter.empty())
        state.filter.clear();
    else
        state.showsFolded = false;
}

std::size_t moved(std::size_t from, std::size_t by, bool down) {
    return down ? from + by : from - std::min(from, by);
}

// Where an action moves to; absent for one that does not move.
std::optional<std::size_t> destination(Action action, std::size_t from, std::size_t page) {
    switch (action) {
        case Action::moveUp:
        case Action::moveDown:
            return moved(from, 1, action == Action::moveDown);
        case Action::pageUp:
        case Action::pageDown:
            return moved(from, std::max<std::size_t>(page, 2) - 1, action == Action::pageDown);
        case Action::toFirst:
            return 0;
        case Action::toLast:
            return std::size_t{1} << 30U;  // brought into bounds
        default:
            return std::nullopt;
    }
}

bool typeFilter(Key key, ViewState& state) {
    constexpr std::size_t longest = 60;
    if (key == Keys::enter || key == Keys::escape) {
        state.isTypingFilter = false;
        if (key == Keys::escape) state.filter.clear();
    } else if (key == Keys::backspace) {
        if (!state.filter.empty()) state.filter.pop_back();
    } else if (key >= U' ' && key < Keys::backspace) {
        if (state.filter.size() < longest) state.filter += static_cast<char>(key);
    } else {
        return false;
    }
    return true;
}

// In an overlay keys scroll; all others close it, and do nothing else.
void pressInOverlay(std::optional<Action> action, ViewState& state, std::size_t pageHeight) {
    const auto line = action ? destination(*action, state.overlayTop, pageHeight) : std::nullopt;
    if (line)
        state.overlayTop = *line;
    else
        state.overlay.reset();
}

Request act(Action action, ViewState& state, const ViewContent& content, std::size_t pageHeight) {
    const auto rows = ViewRows::of(content, state);
    const auto index = rows.selectedIndex(state);
    // What is chosen for the user is from here on chosen by them: Enter means what they see.
    if (index) select(*index, state, rows);
    if (const auto line = destination(action, index.value_or(0), pageHeight)) {
        select(*line, state, rows);
        return Request::nothing;
    }
    switch (action) {
        case Action::focus:
            return index ? Request::focus : Request::nothing;
        case Action::explain:
            return index ? Request::explain : Request::nothing;
        case Action::mute:
            return index ? Request::mute : Request::nothing;
        case Action::nextWaiting:
            selectNextWaiting(state, rows);
            return Request::nothing;
        case Action::dismiss:
            dismiss(state, rows);
            return Request::nothing;
        case Action::filter:
            state.isTypingFilter = true;
            return Request::nothing;
        case Action::fold:
            state.showsFolded = !state.showsFolded;
            return Request::nothing;
        case Action::back:
            goBack(state);
            return Request::nothing;
        case Action::help:
            state.overlay = ViewState::Overlay{};
            state.overlayTop = 0;
            return Request::nothing;
        case Action::pause:
            return Request::pause;
        case Action::redraw:
            return Request::redraw;
        case Action::quit:
            // Where another host tells, nothing is lost.
            state.asksToQuit = content.host.leads;
            return content.host.leads ? Request::nothing : Request::quit;
        default:
            return Request::nothing;
    }
}

}  // namespace

const ListedSession& ViewRows::at(std::size_t index) const {
    return index < shown.size() ? *shown[index] : *unfolded[index - shown.size()];
}

std::optional<std::size_t> ViewRows::selectedIndex(const ViewState& state) const {
    for (std::size_t index = 0; index < count(); ++index)
        if (at(index).snapshot.id() == state.selected) return index;
    if (count() == 0) return std::nullopt;
    return 0;
}

ViewRows ViewRows::of(const ViewContent& content, const ViewState& state) {
    ViewRows rows;
    std::vector<const ListedSession*> folded;
    for (const auto& session : content.list.sessions) {
        if (!passes(session, state.filter)) continue;
        const bool hidden = isDismissed(session, state);
        const bool ended = !hidden && hasEnded(session);
        rows.dismissed += hidden ? 1 : 0;
        rows.ended += ended ? 1 : 0;
        (hidden || ended ? folded : rows.shown).push_back(&session);
    }
    const auto place = [](const ListedSession* session) {
        return std::tuple{sortRank(session->status),
                          -session->snapshot.statusSince.time_since_epoch(),
                          session->snapshot.id()};
    };
    std::ranges::sort(rows.shown, {}, place);
    std::ranges::sort(folded, {}, place);
    if (state.showsFolded) rows.unfolded = std::move(folded);
    return rows;
}

Request press(Key key, ViewState& state, const ViewContent& content, const Offered& offered,
              std::size_t pageHeight) {
    state.message.clear();
    if (state.isTypingFilter && typeFilter(key, state)) return Request::nothing;
    auto action = actionOf(key);
    if (action && !offered.contains(*action)) action.reset();
    if (state.asksToQuit) {
        state.asksToQuit = false;
        return action == Action::quit ? Request::quit : Request::nothing;
    }
    if (state.overlay) {
        pressInOverlay(action, state, pageHeight);
        return Request::nothing;
    }
    return action ? act(*action, state, content, pageHeight) : Request::nothing;
}

void keepSelection(ViewState& state, const ViewContent& before, const ViewContent& after) {
    const auto oldRows = ViewRows::of(before, state);
    const auto newRows = ViewRows::of(after, state);
    const auto old = oldRows.selectedIndex(state);
    if (!old || oldRows.at(*old).snapshot.id() != state.selected || newRows.count() == 0) return;
    const auto stays = newRows.selectedIndex(state);
    if (newRows.at(*stays).snapshot.id() != state.selected) select(*old, state, newRows);
}

}  // namespace tallowbrook::host
