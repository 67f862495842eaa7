#include "Integrations/HookInstallSpec.h"

#include <utility>

#include "Domain/AgentProfile.h"

namespace tallowbrook {
namespace {

// Ends the quoted word, gives a quote by itself, and begins the next quoted word.
constexpr std::string_view quoteInQuotes = R"('\'')";

// Within single quotes a shell takes every other byte for itself.
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

HookCommand commandOf(const AgentProfile& profile, std::string_view helperPath) {
    const std::string source{rawValue(profile.hooks().source)};
    switch (profile.hookForm) {
        case HookForm::exec:
            return HookCommand::exec(std::string{helperPath}, {source});
        case HookForm::shellLine:
            break;
    }
    return HookCommand::shell(singleQuoted(helperPath) + " " + source);
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

HookInstallSpec HookInstallSpec::of(Provider provider, std::string_view helperPath) {
    const auto& profile = AgentProfile::of(provider);
    HookInstallSpec spec{.provider = provider,
                         .events = {},
                         .command = commandOf(profile, helperPath),
                         .timeoutSeconds = profile.hookTimeoutSeconds,
                         .eventsWithoutTimeout = {}};
    for (const auto& event : profile.hooks().events) {
        if (event.hook == HookInstallation::none) continue;
        spec.events.emplace_back(event.name);
        if (event.hook == HookInstallation::withoutTimeout)
            spec.eventsWithoutTimeout.emplace(event.name);
    }
    return spec;
}

HookInstallSpec HookInstallSpec::claudeCode(std::string_view helperPath) {
    return of(Provider::claudeCode, helperPath);
}

HookInstallSpec HookInstallSpec::codex(std::string_view helperPath) {
    return of(Provider::codexCLI, helperPath);
}

std::optional<std::string> HookInstallSpec::executablePath() const {
    if (const auto* exec = std::get_if<HookCommand::Exec>(&command.form)) return exec->path;
    return leadingSingleQuotedWord(command.text());
}

std::string_view hookSourceWord(Provider provider) {
    return rawValue(AgentProfile::of(provider).hooks().source);
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
