#include "Setup/YesNoQuestion.h"

#include <iostream>

#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"

namespace tallowbrook::host {

std::optional<bool> agreesTo(const std::string& question) {
    if (StandardStreams::showAsResult(question + " [y/N] ") != ExitStatus::done)
        return std::nullopt;
    std::string answer;
    if (!std::getline(std::cin, answer)) {
        // The line of the question is still open.
        StandardStreams::mention("\n");
        return false;
    }
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace tallowbrook::host
