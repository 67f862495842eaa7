#include "Commands/Greeting.h"

#include <fmt/core.h>

#include "Output/TimeText.h"

namespace tallowbrook::host {
namespace {

constexpr std::size_t maxLines = 3;

// "one, two and three"
std::string joined(const std::vector<std::string_view>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    return text;
}

std::string lines(std::vector<std::string> first, const std::vector<Sentence>& muted) {
    for (const auto& sentence : muted) first.push_back(sentence.text());
    if (first.size() > maxLines) first.resize(maxLines);
    std::string text;
    for (const auto& line : first) text += line + "\n";
    return text;
}

}  // namespace

std::string greeting(const std::vector<GreetedAgent>& agents, const std::vector<Sentence>& muted,
                     Instant now) {
    using State = AgentHealth::State;
    std::vector<std::string_view> watched;
    std::vector<std::string_view> broken;
    for (const auto& [provider, state] : agents) {
        // Some of its hooks may still report.
        if (state != State::notSetUp) watched.push_back(displayName(provider));
        if (state == State::partial || state == State::needsRepair || state == State::unreadable)
            broken.push_back(displayName(provider));
    }
    if (watched.empty())
        return lines({"No agent is set up: run \"tallowbrook setup\" in another terminal."}, muted);
    std::vector<std::string> first{fmt::format("Watching {} since {}. Ctrl-C ends.",
                                               joined(watched), TimeText::shortTime(now, now))};
    if (!broken.empty())
        first.push_back(joined(broken) + (broken.size() == 1 ? " needs" : " need") +
                        " repair: \"tallowbrook health\" says why.");
    return lines(std::move(first), muted);
}

std::string greetingOfAnotherHome(const std::vector<Sentence>& muted, Instant now) {
    return lines({fmt::format("Watching since {}, in another home than the agents report to.",
                              TimeText::shortTime(now, now))},
                 muted);
}

}  // namespace tallowbrook::host
