#include "Commands/HostChannels.h"

#include <chrono>
#include <utility>

#include "Channels/ChannelLadder.h"
#include "Channels/ExecChannel.h"
#include "Channels/ProgramText.h"
#include "Output/ExitStatus.h"
#include "Setup/ProgramLocation.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
namespace {

// Each of the programs that it asks is bounded by less.
constexpr std::chrono::seconds timeToFocus{60};

// How a program that is no host brings a session to the front.
std::string focusCommand(const TallowbrookPaths& paths, const std::string& sessionStorageID) {
    const auto program = runningProgram();
    if (!program) return {};
    const auto id = sessionStorageID.substr(sessionStorageID.find('|') + 1);
    return ProgramText::quoted(program->string()) + " --home " +
           ProgramText::quoted(paths.home.string()) + " focus -- " + ProgramText::quoted(id);
}

}  // namespace

std::vector<Channel> otherChannels(const TallowbrookPaths& paths, Database& database,
                                   const std::optional<std::string>& exec, Troubles::Say say,
                                   bool mayAskTerminal) {
    const SayWhy sayWhy = [say = std::move(say)](const Sentence& sentence) {
        say(sentence.text());
    };
    auto channels = makeLadder(
        {.say = sayWhy,
         .focusCommand =
             [paths](const std::string& session) { return focusCommand(paths, session); },
         .mayAskTerminal = mayAskTerminal});
    channels.push_back(makeExecChannel(
        {.command = [&database,
                     exec] { return exec ? *exec : Settings{database}.preferences().host.exec; },
         .say = sayWhy}));
    return channels;
}

void showClicked(const std::string& session, const TallowbrookPaths& paths, ChildPrograms& programs,
                 const Troubles::Say& say) {
    std::vector<std::string> words{"--home", paths.home.string()};
    // What tells of several sessions leads to the first that waits.
    if (session.empty())
        words.emplace_back("next");
    else
        words.insert(words.end(), {"focus", session});
    const auto ended = [say](int status, const std::string& output) {
        if (status == ExitStatus::done) return;
        say("The window behind the clicked notification was not found. " +
            (status == ExitStatus::notInOrder ? output.substr(0, output.find_last_not_of('\n') + 1)
                                              : std::string{"\"tallowbrook focus\" says why."}));
    };
    const auto program = runningProgram();
    if (!program || !programs.run(program->string(), words, timeToFocus, ended))
        say("A click on a notification could not be followed: no program can be started.");
}

}  // namespace tallowbrook::host
