// The live view of `tallowbrook watch`: keeps a terminal showing what its owner gives it, and does
// what the keys ask for.
//
// Used by one thread. Waits for nothing: a terminal that takes nothing gets the newest picture once
// it takes something again.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "Loop/PollLoop.h"
#include "View/KeyDecoder.h"
#include "View/OpenTerminal.h"
#include "View/Painting.h"
#include "View/TerminalSignals.h"
#include "View/TerminalText.h"
#include "View/ViewContent.h"
#include "View/ViewState.h"

namespace tallowbrook::host {

class LiveView {
 public:
    // The content as of now.
    using Read = std::function<ViewContent()>;

    LiveView(OpenTerminal terminal, TerminalText text, Read read, ViewActions actions);
    LiveView(const LiveView&) = delete;
    LiveView& operator=(const LiveView&) = delete;

    // Enters the terminal, and draws from here on. A terminal that is gone, and the key to quit,
    // request the loop's end. The loop and the signals must outlive the view.
    void attachTo(PollLoop& loop, const TerminalSignals& signals);

    // The content may have changed: it is read anew.
    void refresh();

    // A line of what the user is told, with a bell where it rings.
    void tell(std::string line, bool rings);

    // Is told whenever the terminal has taken the picture with all that was told until then.
    std::function<void()> whenShown = [] {};

    // An answer to the user's last key.
    void report(std::string sentence);

 private:
    Offered offered() const;
    PollInterest interest() const;
    void proceed(short ready);
    void takeKeys(const std::vector<Key>& keys);
    void take(Key key);
    const ListedSession* selectedSession() const;
    void carryOut(Request request);
    void takeScreen();
    void stop();
    void goOn();
    void drawIfDue();
    void noteIfShown();
    void write(const std::string& text);

    OpenTerminal terminal_;
    TerminalText text_;
    KeyDecoder decoder_;
    Read read_;
    ViewActions actions_;
    PollLoop* loop_ = nullptr;
    std::vector<PollLoop::Attachment> attachments_;

    ViewContent content_;
    ViewState state_;
    std::deque<std::string> told_;
    PaintedView painted_;
    bool hasScreen_ = false;  // `painted_` is what the terminal shows
    bool isDirty_ = true;     // something may look otherwise
    bool hasUnseen_ = false;  // something was told that the terminal does not show yet
    bool isPasting_ = false;
    MonotonicTime nextDraw_{};  // not before then
    std::optional<MonotonicTime> escapeDeadline_;
};

}  // namespace tallowbrook::host
