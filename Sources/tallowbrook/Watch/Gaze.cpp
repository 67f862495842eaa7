#include "Watch/Gaze.h"

#include <algorithm>
#include <chrono>
#include <string_view>

#include "System/SearchPath.h"
#include "Terminal/TerminalDevice.h"
#include "Text/Digits.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds patience{500};
// Who has pressed no key for longer may have gone, and left the window as it was.
constexpr std::chrono::minutes stillThere{2};

bool contains(std::string_view list, std::string_view word) {
    while (!list.empty())
        if (takeUntil(list, ',') == word) return true;
    return false;
}

constexpr const char* clientFormat =
    "client #{client_flags} #{focus-events} #{client_termfeatures} "
    "#{client_activity} #{pane_tty} #{pane_current_path}";

}  // namespace

void Gaze::ask() {
    if (isAwaited()) return;
    seen_.clear();
    all_.clear();
    const auto tmux = SearchPath::find("tmux");
    if (!tmux) return;
    // Of a client the pane is the one that it shows as active. What may hold blanks comes last.
    const auto started = runs_.start(
        ++question_, {.path = *tmux,
                      .arguments = {"-u", "list-clients", "-F", clientFormat, ";", "list-panes",
                                    "-a", "-F", "pane #{pane_tty} #{pane_current_path}"},
                      .timeout = patience,
                      .keepsOutput = true});
    if (started) awaitedFor_ = steady_clock::now() + patience;
}

bool Gaze::isAwaited() const { return awaitedFor_ && steady_clock::now() < *awaitedFor_; }

bool Gaze::isOn(const SessionSnapshot& session) const {
    const auto device = session.tty ? TerminalDevice::parse(*session.tty) : std::nullopt;
    return std::ranges::any_of(seen_, [&](const Pane& pane) {
        if (device) return TerminalDevice::parse(pane.devicePath) == device;
        const auto others = std::ranges::count_if(all_, [&](const Pane& other) {
            return other.directory == pane.directory && other.devicePath != pane.devicePath;
        });
        return session.cwd == pane.directory && others == 0;
    });
}

PollSource Gaze::source() {
    return {.interest =
                [this] {
                    auto interest = runs_.interest();
                    if (awaitedFor_)
                        interest.deadline =
                            std::min(*awaitedFor_, interest.deadline.value_or(*awaitedFor_));
                    return interest;
                },
            .proceed =
                [this](short) {
                    runs_.proceed();
                    for (const auto& end : runs_.takeEnded())
                        if (end.number == question_ && isAwaited()) {
                            take(end, currentInstant());
                            awaitedFor_.reset();
                        }
                    if (!isAwaited()) awaitedFor_.reset();
                }};
}

void Gaze::take(const ProgramEnd& end, Instant now) {
    if (end.way != ProgramEnd::Way::exited || end.status != 0) return;
    std::string_view rest = end.output;
    while (!rest.empty()) takeLine(takeUntil(rest, '\n'), now);
}

void Gaze::takeLine(std::string_view line, Instant now) {
    const auto kind = takeUntil(line, ' ');
    if (kind == "pane") {
        const std::string devicePath{takeUntil(line, ' ')};
        all_.push_back({devicePath, std::string{line}});
        return;
    }
    const bool hasFocus = contains(takeUntil(line, ' '), "focused");
    // A client counts as focused for ever where it is told nothing of the focus.
    const bool isTold = takeUntil(line, ' ') == "1";
    const bool tells = contains(takeUntil(line, ' '), "focus");
    const auto activity = parseNumber<std::int64_t>(takeUntil(line, ' '));
    if (kind != "client" || !hasFocus || !isTold || !tells || !activity) return;
    if (now - Instant{std::chrono::seconds{*activity}} > stillThere) return;
    const std::string devicePath{takeUntil(line, ' ')};
    seen_.push_back({devicePath, std::string{line}});
}

}  // namespace tallowbrook::host
