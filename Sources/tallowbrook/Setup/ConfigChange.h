// A change to one configuration file, reviewed by the user and carried out.
#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Integrations/ConfigFileWriter.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

struct ReviewOptions {
    bool dryRun = false;     // show what would change, and write nothing
    bool assumeYes = false;  // the user has agreed beforehand
};

enum class ReviewOutcome {
    unchanged,  // there was nothing to do
    applied,
    previewed,  // a dry run
    declined,
    failed,  // the reason is on standard error, and the file is as it was
};

// `notInOrder` where the user said no.
int exitStatus(ReviewOutcome outcome);

// Of several outcomes the one that matters: a failure before a refusal before all else.
int worse(int status, int other);

// False when the user must be asked and cannot be, because standard input is no terminal; says so.
bool canAsk(const ReviewOptions& options);

struct ConfigChange {
    using Planner = std::function<std::expected<ConfigChangePlan, Sentence>()>;

    Planner makePlan;
    ConfigChangePlan plan;  // as first made
    std::filesystem::path backupDirectory;

    [[nodiscard]] static std::expected<ConfigChange, Sentence> prepare(
        Planner makePlan, std::filesystem::path backupDirectory);

    // Shows the difference, and how many hard links would keep the old contents, and asks on
    // standard input, unless there is no difference; applies the plan after a yes and names the
    // backup, or says that the file was left as it is. When the file has changed while the user was
    // asked, shows the new difference and asks again. A file that its owner may not write needs an
    // answer: a yes given beforehand fails.
    ReviewOutcome review(const ReviewOptions& options);
};

// "/home/u/.claude/settings.json (adds 9 hooks, nothing else)", what announces a change.
std::string announcement(const ConfigChangePlan& plan);

}  // namespace tallowbrook::host
