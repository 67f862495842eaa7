#include "Channels/TmuxWindow.h"

#include <string_view>

#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

// What waits for it is told late by so much, at most.
constexpr std::chrono::milliseconds patience{500};

// In a zoomed window only the active pane is to be seen.
constexpr const char* passthroughFormat =
    "#{allow-passthrough} #{window_active} #{?window_zoomed_flag,#{pane_active},1}";

}  // namespace

ProgramRequest TmuxWindow::question(const std::string& tmux, const std::string& pane) {
    return {
        .path = tmux,
        .arguments = {"-u", "display-message", "-p", "-t", pane, passthroughFormat, ";",
                      "list-clients", "-t", pane, "-F", "#{client_termname} #{client_termtype}"},
        .timeout = patience,
        .keepsOutput = true};
}

std::optional<TmuxWindow> TmuxWindow::of(const ProgramEnd& answer) {
    if (answer.way != ProgramEnd::Way::exited || answer.status != 0) return std::nullopt;
    std::string_view rest = answer.output;
    auto line = takeUntil(rest, '\n');
    const auto allowed = takeUntil(line, ' ');
    const bool isVisible = line == "1 1";
    TmuxWindow window{.letsThrough = allowed == "2" || (allowed == "1" && isVisible),
                      .terminals = {}};
    while (!rest.empty()) {
        auto client = takeUntil(rest, '\n');
        window.terminals.emplace_back(takeUntil(client, ' '));
        if (!client.empty()) window.terminals.emplace_back(client);
    }
    return window;
}

}  // namespace tallowbrook::host
