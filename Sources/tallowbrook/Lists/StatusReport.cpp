#include "Lists/StatusReport.h"

#include <fmt/core.h>

#include <algorithm>

#include "Domain/RecordCoding.h"
#include "Lists/SessionWords.h"
#include "Output/PrintableText.h"

namespace tallowbrook::host {
namespace {

using enum SessionStatus;

// What is of interest at a glance, the most urgent first.
bool isShown(const ListedSession& session) {
    return session.status == needsAttention || session.status == failed ||
           session.status == working;
}

std::string replaced(std::string_view text, char what, std::string_view by) {
    std::string result;
    for (const char c : text)
        if (c == what)
            result += by;
        else
            result += c;
    return result;
}

// For Pango's markup, in which the user's bar shows the text.
std::string escapedMarkup(std::string_view text) {
    auto result = replaced(PrintableText::printable(text), '&', "&amp;");
    result = replaced(result, '<', "&lt;");
    result = replaced(result, '>', "&gt;");
    result = replaced(result, '"', "&quot;");
    return replaced(result, '\'', "&#39;");
}

// A menu's line ends where its parameters begin. Another bar that looks alike does no harm.
std::string menuText(std::string_view text) {
    return replaced(PrintableText::printable(text), '|', "¦");
}

// tmux would take more for a style, a variable or a command of its own.
std::string tmuxText(std::string_view text) {
    return replaced(PrintableText::printable(text), '#', "##");
}

std::string menuParameter(std::string_view name, std::string_view value) {
    return fmt::format(" {}=\"{}\"", name, value);
}

// The menus have no way to write a quotation mark inside of quotation marks.
bool isOneParameter(std::string_view value) {
    return std::ranges::none_of(value, [](char c) {
        return c == '"' || c == '\'' || c == '|' || c == '\\' ||
               static_cast<unsigned char>(c) < ' ';
    });
}

// " | bash=... param1=... terminal=false", or nothing to click on.
std::string clickParameters(std::vector<std::string> command, const std::string& id) {
    // An id is a word of any agent's; one that begins so would be taken for an option.
    if (command.empty() || id.starts_with('-')) return {};
    command.push_back(id);
    if (!std::ranges::all_of(command, isOneParameter)) return {};
    std::string text = menuParameter("bash", command.front());
    for (std::size_t i = 1; i < command.size(); ++i)
        text += menuParameter("param" + std::to_string(i), command[i]);
    return text + " terminal=false";
}

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const auto& part : parts) text += (text.empty() ? "" : ", ") + part;
    return text;
}

}  // namespace

std::size_t StatusReport::count(SessionStatus status) const {
    return static_cast<std::size_t>(
        std::ranges::count(list.sessions, status, &ListedSession::status));
}

std::string StatusReport::project() const {
    // Those that wait come first.
    const bool waits = !list.sessions.empty() && list.sessions.front().status == needsAttention;
    return waits ? list.sessions.front().name : "";
}

std::string StatusReport::lines() const {
    constexpr std::size_t mostListed = 5;
    constexpr std::size_t nameColumns = 28;
    constexpr std::size_t phraseColumns = 46;
    const auto waiting = count(needsAttention);
    const auto atWork = count(working);
    const auto broken = count(failed);
    std::string text = waiting == 0   ? "No session waits for you"
                       : waiting == 1 ? "1 session waits for you"
                                      : fmt::format("{} sessions wait for you", waiting);
    if (atWork > 0) text += fmt::format(", {} {}", atWork, atWork == 1 ? "works" : "work");
    if (broken > 0) text += fmt::format(", {} failed", broken);
    text += ".\n";
    const auto listed = std::min(waiting, mostListed);
    for (std::size_t i = 0; i < listed; ++i) {
        const auto& session = list.sessions[i];
        const auto row =
            fmt::format("{:>3}  {} {}", i + 1,
                        PrintableText::padded(PrintableText::printable(session.name), nameColumns),
                        PrintableText::padded(PrintableText::printable(statusPhrase(session, now)),
                                              phraseColumns));
        text += row.substr(0, row.find_last_not_of(' ') + 1) + "\n";
    }
    if (waiting > listed) text += fmt::format("     and {} more\n", waiting - listed);
    if (!isWatched) text += "No host runs, so nobody is told: \"tallowbrook watch\" is one.\n";
    if (hasUnread && !isWatched)
        text += "Newer events are not counted: \"tallowbrook sessions\" takes them in.\n";
    return text;
}

std::string StatusReport::shortText() const {
    std::vector<std::string> parts;
    if (const auto n = count(needsAttention); n > 0) parts.push_back(fmt::format("{} waiting", n));
    if (const auto n = count(working); n > 0) parts.push_back(fmt::format("{} working", n));
    if (const auto n = count(failed); n > 0) parts.push_back(fmt::format("{} failed", n));
    return parts.empty() ? "nothing waiting" : joined(parts);
}

std::string StatusReport::tmux() const {
    std::vector<std::string> parts;
    if (const auto n = count(needsAttention); n > 0)
        parts.push_back(
            fmt::format("#[fg=magenta]{} waiting: {}#[default]", n, tmuxText(project())));
    if (const auto n = count(working); n > 0)
        parts.push_back(fmt::format("#[fg=cyan]{} working#[default]", n));
    if (const auto n = count(failed); n > 0)
        parts.push_back(fmt::format("#[fg=red]{} failed#[default]", n));
    return joined(parts);
}

std::string StatusReport::waybar() const {
    std::string tooltip;
    for (const auto& session : list.sessions)
        if (isShown(session))
            tooltip += (tooltip.empty() ? "" : "\n") +
                       escapedMarkup(session.name + ": " + statusPhrase(session, now));
    const char* kind = count(needsAttention) > 0 ? "waiting"
                       : count(failed) > 0       ? "failed"
                       : count(working) > 0      ? "working"
                                                 : "idle";
    RecordEncoder encoder;
    // A module without a text is hidden.
    encoder.encode("text", tooltip.empty() ? "" : escapedMarkup(shortText()));
    encoder.encode("tooltip", tooltip.empty() ? shortText() : tooltip);
    encoder.encode("class", kind);
    return PrintableText::printableJSON(encoder.text());
}

std::string StatusReport::xbar(const std::vector<std::string>& focusCommand) const {
    // Neither the program's pictures nor its styles for what a session is called.
    const std::string asItIs = " emojize=false symbolize=false ansi=false";
    std::string text = shortText() + "\n---\n";
    for (const auto& session : list.sessions) {
        if (!isShown(session)) continue;
        // A line that began with the name could begin with "--", which makes a menu of its own.
        text += menuText(statusPhrase(session, now) + " · " + session.name) + " |" +
                clickParameters(focusCommand, session.snapshot.key.sessionID) + asItIs + "\n";
    }
    if (!isWatched) text += "No host runs: tallowbrook watch\n";
    return text.substr(0, text.size() - 1);
}

std::string StatusReport::json() const {
    RecordEncoder encoder;
    encoder.encode("schema", 1);
    encoder.encode("waiting", static_cast<std::int64_t>(count(needsAttention)));
    encoder.encode("working", static_cast<std::int64_t>(count(working)));
    encoder.encode("failed", static_cast<std::int64_t>(count(failed)));
    encoder.encode("hostRuns", isWatched);
    if (count(needsAttention) > 0) encoder.encode("project", project());
    return PrintableText::printableJSON(encoder.text());
}

std::expected<std::string, Sentence> StatusReport::filled(std::string_view pattern) const {
    std::string text;
    while (!pattern.empty()) {
        const auto open = pattern.find('{');
        text += pattern.substr(0, open);
        if (open == std::string_view::npos) break;
        const auto close = pattern.find('}', open);
        const auto name = pattern.substr(open + 1, close - open - 1);
        if (close == std::string_view::npos)
            return std::unexpected(Sentence{"A brace of the format has no end"});
        if (name == "waiting")
            text += std::to_string(count(needsAttention));
        else if (name == "working")
            text += std::to_string(count(working));
        else if (name == "failed")
            text += std::to_string(count(failed));
        else if (name == "project")
            text += PrintableText::printable(project());
        else
            return std::unexpected(
                Sentence{fmt::format("The format knows {{waiting}}, {{working}}, {{failed}} and "
                                     "{{project}}, and no {{{}}}",
                                     name)});
        pattern.remove_prefix(close + 1);
    }
    return text;
}

}  // namespace tallowbrook::host
