#include "Focus/Tmux.h"

#include <fmt/core.h>

#include <algorithm>
#include <sstream>

namespace tallowbrook::host {
namespace {

// The first `count` words of the line and then its rest, which may hold blanks; empty when there
// are not so many.
std::vector<std::string> split(const std::string& line, std::size_t count) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (parts.size() < count) {
        const auto end = line.find(' ', start);
        if (end == std::string::npos) return {};
        parts.push_back(line.substr(start, end - start));
        start = end + 1;
    }
    parts.push_back(line.substr(start));
    return parts;
}

}  // namespace

std::optional<Tmux> Tmux::find(const FocusOperations& operations) {
    auto program = operations.findProgram("tmux");
    if (!program) return std::nullopt;
    return Tmux{std::move(*program), operations};
}

std::optional<std::vector<std::string>> Tmux::run(std::vector<std::string> arguments) const {
    // Without this, names are cut down to ASCII where the locale is.
    arguments.insert(arguments.begin(), "-u");
    const auto result = operations_->run(program_, arguments);
    if (!result || result->status != 0) return std::nullopt;
    std::vector<std::string> lines;
    std::istringstream stream{result->output};
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<Tmux::Pane> Tmux::panes() const {
    constexpr std::size_t words = 3;
    std::vector<Pane> panes;
    // By ids, which hold no blanks; the directory may, and so comes last.
    const auto lines = run(
        {"list-panes", "-a", "-F", "#{pane_id} #{session_id} #{pane_tty} #{pane_current_path}"});
    if (!lines) return panes;
    for (const auto& line : *lines) {
        const auto parts = split(line, words);
        // A window that several sessions share is listed with each of them.
        if (!parts.empty() && std::ranges::find(panes, parts[0], &Pane::id) == panes.end())
            panes.push_back({parts[0], parts[1], parts[2], parts[3]});
    }
    return panes;
}

bool Tmux::select(const Pane& pane) const {
    return run({"select-window", "-t", pane.id, ";", "select-pane", "-t", pane.id}).has_value();
}

std::optional<std::string> Tmux::show(const Pane& pane) const {
    const auto lines = run({"list-clients", "-F", "#{session_id} #{client_tty}"});
    if (!lines) return std::nullopt;
    // A client of another session would have to leave what its user looks at, so it comes second.
    std::optional<std::string> other;
    for (const auto& line : *lines) {
        const auto parts = split(line, 1);
        if (parts.empty()) continue;
        if (parts[0] == pane.session) return parts[1];
        if (!other) other = parts[1];
    }
    if (!other || !run({"switch-client", "-c", *other, "-t", pane.id})) return std::nullopt;
    return other;
}

FocusOutcome Tmux::selectedUnseen(const Pane& pane) {
    return FocusOutcome::instead(
        fmt::format("The tmux pane {} was selected, but no terminal shows it: \"tmux attach -t "
                    "'{}'\" does.",
                    pane.id, pane.session));
}

}  // namespace tallowbrook::host
