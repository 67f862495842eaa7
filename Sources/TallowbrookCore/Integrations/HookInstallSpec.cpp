#include "Integrations/HookInstallSpec.h"

#include <utility>

#include "EventIngestion/PayloadNormalizer.h"

namespace tallowbrook {
namespace {

constexpr int timeoutSeconds = 5;

// Ends the quoted word, gives a quote by itself, and begins the next quoted word.
constexpr std::string_view quoteInQuotes = R"('\'')";

std::string singleQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += quoteInQuotes;
        else
            quoted += c;
    }
    return quoted + "'";
}

}  // namespace

HookCommand HookCommand::exec(std::string path, std::vector<std::string> arguments) {
    return {Exec{std::move(path), std::move(arguments)}};
}

HookCommand HookCommand::shell(std::string line) { return {Shell{std::move(line)}}; }

const std::string& HookCommand::text() const {
    if (const auto* exec = std::get_if<Exec>(&form)) return exec->path;
    return std::get<Shell>(form).line;
}

HookInstallSpec HookInstallSpec::claudeCode(std::string_view helperPath) {
    return {
        .provider = Provider::claudeCode,
        .events = {"SessionStart", "UserPromptSubmit", "PermissionRequest", "Notification",
                   "PostToolUse", "PostToolUseFailure", "Stop", "StopFailure", "SessionEnd"},
        .command = HookCommand::exec(std::string{helperPath},
                                     {std::string{hookSourceWord(Provider::claudeCode)}}),
        .timeoutSeconds = tallowbrook::timeoutSeconds,
        .eventsWithoutTimeout = {"SessionEnd"},
    };
}

HookInstallSpec HookInstallSpec::codex(std::string_view helperPath) {
    return {
        .provider = Provider::codexCLI,
        .events = {"SessionStart", "UserPromptSubmit", "PermissionRequest", "PostToolUse", "Stop",
                   "Interrupt", "SessionEnd"},
        .command = HookCommand::shell(singleQuoted(helperPath) + " " +
                                      std::string{hookSourceWord(Provider::codexCLI)}),
        .timeoutSeconds = tallowbrook::timeoutSeconds,
        .eventsWithoutTimeout = {"SessionEnd", "Interrupt"},
    };
}

std::optional<std::string> HookInstallSpec::executablePath() const {
    if (const auto* exec = std::get_if<HookCommand::Exec>(&command.form)) return exec->path;
    return leadingSingleQuotedWord(command.text());
}

std::string_view hookSourceWord(Provider provider) {
    return rawValue(provider == Provider::claudeCode ? PayloadSource::claudeCodeHook
                                                     : PayloadSource::codexHook);
}

std::optional<std::string> leadingSingleQuotedWord(std::string_view line) {
    if (!line.starts_with('\'')) return std::nullopt;
    line.remove_prefix(1);
    std::string word;
    while (true) {
        const auto quote = line.find('\'');
        if (quote == std::string_view::npos) return std::nullopt;
        word += line.substr(0, quote);
        line.remove_prefix(quote);
        if (!line.starts_with(quoteInQuotes)) return word;
        word += '\'';
        line.remove_prefix(quoteInQuotes.size());
    }
}

}  // namespace tallowbrook
