// What the user has chosen in the live view, and what follows from it: which sessions are shown, in
// which order, and what each action changes.
//
// Plain values and pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "View/Keys.h"
#include "View/ViewContent.h"

namespace tallowbrook::host {

struct ViewState {
    std::string selected;  // a storage id
    std::string filter;
    bool showsFolded = false;
    // Hidden sessions by their storage ids, with the time since when they had their status then.
    std::map<std::string, Instant> dismissed;

    std::string message;  // an answer to the last key, until the next
    bool isTypingFilter = false;
    bool asksToQuit = false;

    // A text over the whole screen.
    struct Overlay {
        enum class Kind { keys, explanation };
        Kind kind = Kind::keys;
        std::string text;
    };
    std::optional<Overlay> overlay;

    // The first line that is shown, of the list and of the overlay. Painting brings them into
    // bounds.
    std::size_t top = 0;
    std::size_t overlayTop = 0;
};

// The sessions on the screen from top to bottom. They refer to the content.
struct ViewRows {
    std::vector<const ListedSession*> shown;
    // Behind those, below a line that counts them; empty while they are folded.
    std::vector<const ListedSession*> unfolded;
    std::size_t ended = 0;  // folded or not
    std::size_t dismissed = 0;

    std::size_t count() const { return shown.size() + unfolded.size(); }
    const ListedSession& at(std::size_t index) const;
    // Of the selected session, else of the one that stands first; absent where there is none.
    std::optional<std::size_t> selectedIndex(const ViewState& state) const;

    // By rank, and within a rank by the time since when they have their status, so that a session
    // keeps its place for as long as it keeps its status.
    static ViewRows of(const ViewContent& content, const ViewState& state);
};

// What the view's owner has to do after a key.
enum class Request { nothing, focus, explain, mute, pause, redraw, quit };

// Changes the state as the key says, while so many lines of the list or the overlay are shown.
// Keys of actions that are not offered change nothing.
Request press(Key key, ViewState& state, const ViewContent& content, const Offered& offered,
              std::size_t pageHeight);

// After the content has changed: the selection stays with its session; where that is gone, it goes
// to the one in its place.
void keepSelection(ViewState& state, const ViewContent& before, const ViewContent& after);

}  // namespace tallowbrook::host
