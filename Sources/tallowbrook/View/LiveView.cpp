#include "View/LiveView.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "View/Frame.h"

namespace tallowbrook::host {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// No more than ten pictures a second: eyes take no more, and slow lines neither.
constexpr milliseconds betweenPictures{100};
// The bytes of one key come together, but for the Esc key, behind which nothing comes.
constexpr milliseconds escapeDelay{25};
// No signal says that the shell has given the terminal back to a program that ran on meanwhile.
constexpr milliseconds betweenLooksForShell{1000};
constexpr std::size_t mostTold = 20;

}  // namespace

LiveView::LiveView(OpenTerminal terminal, TerminalText text, Read read, ViewActions actions)
    : terminal_{std::move(terminal)},
      text_{std::move(text)},
      decoder_{text_.keys},
      read_{std::move(read)},
      actions_{std::move(actions)} {}

void LiveView::attachTo(PollLoop& loop, const TerminalSignals& signals) {
    loop_ = &loop;
    refresh();
    takeScreen();
    attachments_.push_back(loop.attach({
        .interest = [this] { return interest(); },
        .proceed = [this](short ready) { proceed(ready); },
    }));
    attachments_.push_back(loop.attach(signals.source({
        .resized = [this] { isDirty_ = true; },
        .stopRequested = [this] { stop(); },
        .continued = [this] { goOn(); },
    })));
}

void LiveView::refresh() {
    auto content = read_();
    keepSelection(state_, content_, content);
    content_ = std::move(content);
    isDirty_ = true;
}

void LiveView::tell(std::string line, bool rings) {
    told_.push_back(std::move(line));
    if (told_.size() > mostTold) told_.pop_front();
    isDirty_ = true;
    hasUnseen_ = true;
    if (rings && terminal_.isEntered() && !terminal_.isBehind()) write(text_.ring);
}

void LiveView::report(std::string sentence) {
    state_.message = std::move(sentence);
    isDirty_ = true;
}

Offered LiveView::offered() const {
    auto offered = allActions();
    if (!actions_.mute) offered.erase(Action::mute);
    return offered;
}

PollInterest LiveView::interest() const {
    if (!terminal_.isEntered()) return {-1, 0, steady_clock::now() + betweenLooksForShell};
    const short behind = terminal_.isBehind() ? POLLOUT : short{0};
    std::optional<MonotonicTime> deadline = escapeDeadline_;
    const auto passBy = [&deadline](MonotonicTime time) {
        deadline = deadline ? std::min(*deadline, time) : time;
    };
    // What cannot be written yet is not drawn: the terminal's own readiness wakes.
    if (isDirty_ && behind == 0) passBy(nextDraw_);
    if (painted_.nextChange)
        passBy(steady_clock::now() + (*painted_.nextChange - currentInstant()));
    return {terminal_.descriptor(), static_cast<short>(POLLIN | behind), deadline};
}

void LiveView::proceed(short ready) {
    if (!terminal_.isEntered()) {
        goOn();
        return;
    }
    if ((ready & POLLOUT) != 0 && !terminal_.writeOn()) loop_->requestEnd();
    if ((ready & ~POLLOUT) != 0) {
        const auto typed = terminal_.read();
        if (!typed) {
            loop_->requestEnd();
            return;
        }
        takeKeys(decoder_.take(*typed));
        escapeDeadline_.reset();
        if (decoder_.isPending()) escapeDeadline_ = steady_clock::now() + escapeDelay;
    }
    if (escapeDeadline_ && *escapeDeadline_ <= steady_clock::now()) {
        escapeDeadline_.reset();
        takeKeys(decoder_.takeRest());
    }
    if (painted_.nextChange && *painted_.nextChange <= currentInstant()) {
        painted_.nextChange.reset();
        refresh();
    }
    drawIfDue();
    noteIfShown();
}

void LiveView::noteIfShown() {
    if (!hasUnseen_ || isDirty_ || terminal_.isBehind() || !terminal_.isEntered()) return;
    hasUnseen_ = false;
    whenShown();
}

void LiveView::takeKeys(const std::vector<Key>& keys) {
    for (const Key key : keys) take(key);
}

void LiveView::take(Key key) {
    if (key == Keys::pasteBegins || key == Keys::pasteEnds) {
        isPasting_ = key == Keys::pasteBegins;
        return;
    }
    // A text that was pasted into the wrong window must not act.
    if (isPasting_ && (!state_.isTypingFilter || key == Keys::enter)) return;
    isDirty_ = true;
    carryOut(press(key, state_, content_, offered(), painted_.pageHeight));
}

const ListedSession* LiveView::selectedSession() const {
    const auto rows = ViewRows::of(content_, state_);
    const auto index = rows.selectedIndex(state_);
    return index ? &rows.at(*index) : nullptr;
}

void LiveView::carryOut(Request request) {
    const auto* session = selectedSession();
    switch (request) {
        case Request::nothing:
            return;
        case Request::focus:
            if (session != nullptr) actions_.focus(*session);
            return;
        case Request::explain:
            if (session == nullptr) return;
            state_.overlay = {ViewState::Overlay::Kind::explanation, actions_.explain(*session)};
            state_.overlayTop = 0;
            return;
        case Request::mute:
            if (session != nullptr) actions_.mute(*session);
            refresh();
            return;
        case Request::pause:
            actions_.setPaused(!content_.host.isPaused);
            refresh();
            return;
        case Request::redraw:
            hasScreen_ = false;
            return;
        case Request::quit:
            loop_->requestEnd();
            return;
    }
}

void LiveView::takeScreen() {
    hasScreen_ = false;
    isDirty_ = true;
    if (!terminal_.enter(text_.enter, text_.leave)) loop_->requestEnd();
}

void LiveView::stop() {
    terminal_.leave();
    TerminalSignals::stopHere();
}

// After Ctrl-Z and its end, also where the shell has stopped the process by itself: the modes and
// the screen may be any.
void LiveView::goOn() {
    // In the background the host goes on without its screen.
    if (!terminal_.isForeground()) {
        terminal_.abandon();
        return;
    }
    terminal_.leave();
    takeScreen();
    refresh();
}

void LiveView::drawIfDue() {
    if (!isDirty_ || terminal_.isBehind() || !terminal_.isEntered()) return;
    const auto now = steady_clock::now();
    if (now < nextDraw_) return;
    isDirty_ = false;
    auto painted = paint(content_, state_, offered(), told_, terminal_.size(), currentInstant());
    const auto text = frame(hasScreen_ ? &painted_.picture : nullptr, painted.picture, text_);
    painted_ = std::move(painted);
    state_.top = painted_.top;
    state_.overlayTop = painted_.overlayTop;
    if (text.empty()) return;
    hasScreen_ = true;
    nextDraw_ = now + betweenPictures;
    write(text);
}

void LiveView::write(const std::string& text) {
    if (!terminal_.write(text)) loop_->requestEnd();
}

}  // namespace tallowbrook::host
