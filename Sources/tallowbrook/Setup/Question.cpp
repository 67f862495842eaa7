#include "Setup/Question.h"

#include <iostream>
#include <string>

#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"

namespace tallowbrook::host {

std::optional<bool> agreesTo(std::string_view question) {
    if (StandardStreams::showAsResult(question) != ExitStatus::done) return std::nullopt;
    std::string answer;
    if (!std::getline(std::cin, answer)) {
        // The line of the question is still open.
        StandardStreams::mention("\n");
        return false;
    }
    return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace tallowbrook::host
