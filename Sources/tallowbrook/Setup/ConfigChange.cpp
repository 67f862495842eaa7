#include "Setup/ConfigChange.h"

#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Setup/BackupPruning.h"
#include "Setup/ChangeSummary.h"
#include "Setup/DiffView.h"
#include "Setup/YesNoQuestion.h"

namespace tallowbrook::host {
namespace {

// The owner has taken the leave to write away, from others' programs too. That a new file takes the
// old one's name needs no such leave, so the system would not object.
bool isReadOnly(const std::filesystem::path& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    return !error && exists(status) &&
           (status.permissions() & std::filesystem::perms::owner_write) ==
               std::filesystem::perms::none;
}

// Says what the yes is for, since the whole difference may have scrolled away. Absent when the
// question cannot be shown.
std::optional<bool> agrees(const ConfigChangePlan& plan) {
    return agreesTo(
        fmt::format("{}: {}.\n{}", PrintableText::printable(plan.fileURL.string()), summaryOf(plan),
                    isReadOnly(plan.fileURL) ? "The file is read-only. Change it all the same?"
                                             : "Change it?"));
}

// The user may mean the other names to follow, as with a file that is linked into a repository.
void mentionOtherNames(const std::filesystem::path& file) {
    const auto count = ConfigFileWriter::otherNames(file);
    if (count == 0) return;
    const bool isOne = count == 1;
    StandardStreams::mention(fmt::format("{} has {} other {}; {} will keep the old contents.\n",
                                         PrintableText::printable(file.string()), count,
                                         isOne ? "name (a hard link)" : "names (hard links)",
                                         isOne ? "it" : "they"));
}

// A yes given beforehand was not given to this.
ReviewOutcome refuseReadOnly(const std::filesystem::path& file) {
    StandardStreams::complain(
        fmt::format("{} is read-only and was left as it is. Make it writable (chmod u+w), or leave "
                    "--yes out to be asked.",
                    PrintableText::printable(file.string())));
    return ReviewOutcome::failed;
}

bool isChangedSincePlan(const ConfigFileError& error) {
    return std::holds_alternative<ConfigFileError::ChangedSincePlan>(error.reason);
}

}  // namespace

int exitStatus(ReviewOutcome outcome) {
    switch (outcome) {
        case ReviewOutcome::failed:
            return ExitStatus::failed;
        case ReviewOutcome::declined:
            return ExitStatus::notInOrder;
        case ReviewOutcome::unchanged:
        case ReviewOutcome::applied:
        case ReviewOutcome::previewed:
            break;
    }
    return ExitStatus::done;
}

int worse(int status, int other) {
    if (status == ExitStatus::failed || other == ExitStatus::failed) return ExitStatus::failed;
    return std::max(status, other);
}

bool canAsk(const ReviewOptions& options) {
    // A script that forgot --yes must neither hang nor have its next line taken for an answer.
    if (options.dryRun || options.assumeYes || isatty(STDIN_FILENO) == 1) return true;
    StandardStreams::complain(
        "Standard input is no terminal, so nobody can be asked. Nothing was changed. Use --yes to "
        "agree beforehand, or --dry-run to look.");
    return false;
}

std::string announcement(const ConfigChangePlan& plan) {
    return fmt::format("{} ({})", PrintableText::printable(plan.fileURL.string()), summaryOf(plan));
}

std::expected<ConfigChange, Sentence> ConfigChange::prepare(Planner makePlan,
                                                            std::filesystem::path backupDirectory) {
    auto plan = makePlan();
    if (!plan) return std::unexpected(plan.error());
    return ConfigChange{std::move(makePlan), std::move(*plan), std::move(backupDirectory)};
}

ReviewOutcome ConfigChange::review(const ReviewOptions& options) {
    while (true) {
        if (plan.isNoOp() || !plan.proposedText) return ReviewOutcome::unchanged;
        // What was not shown was not agreed to.
        if (StandardStreams::showAsResult(showDiff(plan.diff, colourOfStandardOutput())) !=
            ExitStatus::done)
            return ReviewOutcome::failed;
        mentionOtherNames(plan.fileURL);
        const bool isLocked = isReadOnly(plan.fileURL);
        if (isLocked && options.assumeYes) return refuseReadOnly(plan.fileURL);
        if (options.dryRun) {
            if (isLocked) StandardStreams::mention("The file is read-only.\n");
            return ReviewOutcome::previewed;
        }
        const auto agreed = options.assumeYes ? std::optional{true} : agrees(plan);
        if (!agreed) return ReviewOutcome::failed;
        if (!*agreed) {
            StandardStreams::mention(fmt::format("{} was left as it is.\n",
                                                 PrintableText::printable(plan.fileURL.string())));
            return ReviewOutcome::declined;
        }

        const auto backup = ConfigFileWriter::apply(plan, backupDirectory, currentInstant());
        if (backup) {
            if (*backup) pruneBackups(plan.fileURL, backupDirectory, **backup);
            const auto kept = *backup ? fmt::format("What was there is kept in {}.\n",
                                                    PrintableText::printable((*backup)->string()))
                                      : std::string{};
            StandardStreams::mention(kept);
            return ReviewOutcome::applied;
        }
        StandardStreams::complain(Sentence{backup.error().description()});
        // The user who agreed beforehand would not see the new difference.
        if (options.assumeYes || !isChangedSincePlan(backup.error())) return ReviewOutcome::failed;
        auto newPlan = makePlan();
        if (!newPlan) {
            StandardStreams::complain(newPlan.error());
            return ReviewOutcome::failed;
        }
        plan = std::move(*newPlan);
    }
}

}  // namespace tallowbrook::host
