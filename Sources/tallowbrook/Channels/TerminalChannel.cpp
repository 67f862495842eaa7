#include "Channels/TerminalChannel.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <deque>
#include <memory>
#include <optional>
#include <utility>

#include "Channels/ProgramRuns.h"
#include "Channels/TerminalNotes.h"
#include "Channels/TerminalQuery.h"
#include "Channels/TmuxWindow.h"
#include "System/SearchPath.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

using Kind = ChannelEvent::Kind;

std::string variable(const char* name) {
    const char* value = getenv(name);
    return value == nullptr ? "" : value;
}

bool isSpoken(TerminalProtocol protocol) {
    return protocol != TerminalProtocol::bell && protocol != TerminalProtocol::bellAndTitle;
}

// What the terminal takes by what the environment calls it.
TerminalProtocol protocolByName() {
    const auto term = TerminalNotes::protocolOf(variable("TERM"));
    // Variables are inherited by a multiplexer from the terminal that it was started on.
    if (isSpoken(term) || term == TerminalProtocol::bell || !variable("STY").empty()) return term;
    if (!variable("KITTY_WINDOW_ID").empty()) return TerminalProtocol::osc99;
    for (const char* name : {"LC_TERMINAL", "TERM_PROGRAM"})
        if (const auto protocol = TerminalNotes::protocolOf(variable(name)); isSpoken(protocol))
            return protocol;
    return term;
}

// A multiplexer at the other end of ssh hands the answer to nobody, or to the wrong one.
bool answersQueries() {
    const auto term = variable("TERM");
    return TerminalNotes::protocolOf(term) != TerminalProtocol::bell &&
           !term.starts_with("screen") && !term.starts_with("tmux") && variable("STY").empty();
}

class TerminalTeller {
 public:
    explicit TerminalTeller(TerminalSeat seat)
        : seat_{std::move(seat)}, tmuxPane_{variable("TMUX_PANE")}, protocol_{protocolByName()} {
        // A description of its own, so that not to wait is no matter of other programs there.
        if (!seat_.devicePath.empty())
            terminal_ = FileDescriptor{
                open(seat_.devicePath.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
    }

    ~TerminalTeller() {
        query_.reset();
        if (!titledSession_.empty() && left_.empty()) writeNow(TerminalNotes::putTitleBack);
    }
    TerminalTeller(const TerminalTeller&) = delete;
    TerminalTeller& operator=(const TerminalTeller&) = delete;

    ChannelState state() const {
        if (!terminal_.isOpen())
            return {.isUsable = false, .reason = "the host runs on no terminal"};
        if (!seat_.isInForeground(terminal_.number()))
            return {.isUsable = false, .reason = "the host runs in its terminal's background"};
        std::string reason = "by ";
        reason += TerminalNotes::describe(protocol_);
        if (inTmux())
            reason = "by what tmux lets through to its terminal";
        else if (!isKnown_ && seat_.mayBeAsked && answersQueries())
            reason = "by what the terminal answers when it is asked";
        return {.reason = std::move(reason),
                .replaces =
                    protocol_ != TerminalProtocol::osc777 && protocol_ != TerminalProtocol::osc9,
                .withdraws = true};
    }

    void begin(const Delivery& delivery) {
        jobs_.push_back({delivery, delivery.content.sessionStorageID});
        goOn();
    }

    void withdraw(const std::string& sessionStorageID) {
        // Of what an earlier host has told nothing is known.
        if (!hasTold_) return;
        jobs_.push_back({std::nullopt, sessionStorageID});
        goOn();
    }

    std::vector<ChannelEvent> takeEvents() { return std::exchange(events_, {}); }

    PollInterest interest() const {
        if (query_) return query_->interest();
        if (runs_.isAnyRunning()) return runs_.interest();
        if (!left_.empty()) return {terminal_.number(), POLLOUT, std::nullopt};
        return {};
    }

    void proceed() {
        if (query_) {
            const auto answer = query_->proceed();
            if (!answer) return;
            query_.reset();
            if (answer->hasOSC99) protocol_ = TerminalProtocol::osc99;
            isKnown_ = true;
            tellFirst();
        } else if (runs_.isAnyRunning()) {
            runs_.proceed();
            const auto ended = runs_.takeEnded();
            if (ended.empty()) return;
            takeAnswerOfTmux(ended.front());
            tellFirst();
        } else {
            writeOn();
        }
        goOn();
    }

 private:
    struct Job {
        std::optional<Delivery> delivery;  // absent: to be withdrawn
        std::string session;
    };

    bool inTmux() const { return !variable("TMUX").empty() && !tmuxPane_.empty(); }

    bool isBusy() const { return query_ || runs_.isAnyRunning() || !left_.empty(); }

    void goOn() {
        while (!jobs_.empty() && !isBusy()) {
            if (!terminal_.isOpen() || !seat_.isInForeground(terminal_.number()))
                settle(Kind::failed);
            else if (!ask())
                tellFirst();
        }
    }

    // False when nothing is to be asked, or nobody can be.
    bool ask() {
        if (inTmux()) return askTmux();
        if (isKnown_ || !seat_.mayBeAsked || !answersQueries()) return false;
        if (auto begun = TerminalQuery::begin(terminal_.number()))
            query_.emplace(std::move(*begun));
        isKnown_ = !query_;
        return query_.has_value();
    }

    bool askTmux() {
        protocol_ = TerminalProtocol::bellAndTitle;
        isThroughTmux_ = false;
        const auto program = SearchPath::find("tmux");
        return program && runs_.start(0, TmuxWindow::question(*program, tmuxPane_));
    }

    void takeAnswerOfTmux(const ProgramEnd& end) {
        const auto window = TmuxWindow::of(end);
        if (!window || !window->letsThrough) return;
        for (const auto& name : window->terminals) {
            const auto protocol = TerminalNotes::protocolOf(name);
            if (!isSpoken(protocol)) continue;
            protocol_ = protocol;
            isThroughTmux_ = true;
            return;
        }
    }

    void tellFirst() {
        const auto& job = jobs_.front();
        left_ = job.delivery ? textOf(job.delivery->content) : textOfWithdrawal(job.session);
        if (isThroughTmux_ && !left_.empty()) left_ = TerminalNotes::throughTmux(left_);
        writeOn();
    }

    std::string textOf(const NotificationContent& content) {
        hasTold_ = true;
        auto text = TerminalNotes::told(protocol_, content);
        if (protocol_ != TerminalProtocol::bellAndTitle) return text;
        if (titledSession_.empty()) text.insert(0, TerminalNotes::keepTitle);
        titledSession_ = content.sessionStorageID.empty() ? "host" : content.sessionStorageID;
        return text;
    }

    std::string textOfWithdrawal(const std::string& session) {
        if (protocol_ != TerminalProtocol::bellAndTitle || titledSession_ != session)
            return TerminalNotes::withdrawn(protocol_, session);
        titledSession_.clear();
        return std::string{TerminalNotes::putTitleBack};
    }

    void writeOn() {
        while (!left_.empty()) {
            const ssize_t count = writeNow(left_);
            if (count < 0 && errno == EINTR) continue;
            if (count < 0 && errno == EAGAIN) return;
            if (count < 0) {
                left_.clear();
                settle(Kind::failed);
                return;
            }
            left_.erase(0, static_cast<std::size_t>(count));
        }
        settle(Kind::handedOver);
    }

    ssize_t writeNow(std::string_view text) const {
        return write(terminal_.number(), text.data(), text.size());
    }

    void settle(Kind kind) {
        if (const auto& delivery = jobs_.front().delivery)
            events_.push_back({kind, delivery->number});
        jobs_.pop_front();
    }

    TerminalSeat seat_;
    std::string tmuxPane_;
    FileDescriptor terminal_;
    TerminalProtocol protocol_;
    bool isKnown_ = false;  // the terminal has answered, or will not
    bool isThroughTmux_ = false;
    bool hasTold_ = false;
    std::string titledSession_;  // whose notification is the title; empty: the title is the user's

    std::deque<Job> jobs_;
    std::optional<TerminalQuery> query_;
    ProgramRuns runs_;
    std::string left_;  // of the first job's text
    std::vector<ChannelEvent> events_;
};

}  // namespace

TerminalSeat TerminalSeat::ofThisProcess(bool mayBeAsked) {
    std::array<char, PATH_MAX> name{};
    TerminalSeat seat{
        .devicePath = {},
        .isInForeground = [](int descriptor) { return tcgetpgrp(descriptor) == getpgrp(); },
        .mayBeAsked = mayBeAsked};
    // By its own name: on macOS /dev/tty cannot be waited on.
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO, STDIN_FILENO}) {
        if (ttyname_r(stream, name.data(), name.size()) != 0) continue;
        seat.devicePath = name.data();
        break;
    }
    return seat;
}

Channel makeTerminalChannel(TerminalSeat seat) {
    const auto teller = std::make_shared<TerminalTeller>(std::move(seat));
    return {
        .name = std::string{terminalChannelName},
        .isRung = true,
        .state = [teller] { return teller->state(); },
        .begin = [teller](const Delivery& delivery) { teller->begin(delivery); },
        .withdraw = [teller](const std::string& session) { teller->withdraw(session); },
        .takeEvents = [teller] { return teller->takeEvents(); },
        .source = PollSource{.interest = [teller] { return teller->interest(); },
                             .proceed = [teller](short) { teller->proceed(); }},
    };
}

}  // namespace tallowbrook::host
