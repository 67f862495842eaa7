#include "Commands/StatusCommand.h"

#include <fmt/core.h>

#include <memory>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/SessionChoice.h"
#include "EventBridge/SpoolDrainer.h"
#include "Lists/StatusReport.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Setup/ProgramLocation.h"
#include "Watch/HostLock.h"

namespace tallowbrook::host {
namespace {

// What a menu runs, with the session's id behind it. A menu has no home but the usual one to go by.
std::vector<std::string> focusCommand(const TallowbrookPaths& paths) {
    const auto program = runningProgram();
    if (!program) return {};
    std::vector<std::string> command{program->string(), "focus"};
    if (paths.home != TallowbrookPaths::standard().home)
        command.insert(command.begin() + 1, {"--home", paths.home.string()});
    return command;
}

std::expected<std::string, Sentence> inFormat(const StatusReport& report, const std::string& format,
                                              const TallowbrookPaths& paths) {
    if (format == "tmux") return report.tmux();
    if (format == "waybar") return report.waybar();
    if (format == "xbar") return report.xbar(focusCommand(paths));
    if (format == "json") return report.json();
    if (format.find('{') != std::string::npos) return report.filled(format);
    return std::unexpected(
        Sentence{fmt::format("There is no format \"{}\": give tmux, waybar, xbar, json, or a "
                             "template such as \"{{waiting}} wait\"",
                             format)});
}

}  // namespace

int showStatus(const TallowbrookPaths& paths, const StatusForm& form) {
    return withDatabaseIfAny(paths, [&](Database* database) {
        StatusReport report;
        report.now = currentInstant();
        if (database != nullptr) report.list = storedSessions(*database, report.now);
        report.isWatched = HostLock::isHeld(paths);
        report.hasUnread = SpoolDrainer{paths}.pendingSegmentCount() > 0;
        if (form.isShort) return StandardStreams::showAsResult(report.shortText() + "\n");
        if (!form.format) return StandardStreams::showAsResult(report.lines());
        const auto text = inFormat(report, *form.format, paths);
        if (!text) return StandardStreams::fail(text.error(), ExitStatus::wrongUsage);
        return StandardStreams::showAsResult(*text + "\n");
    });
}

int showStatusAndHints(const TallowbrookPaths& paths) {
    const int status = showStatus(paths, {});
    if (status != ExitStatus::done) return status;
    const auto* hints = Database::exists(paths)
                            ? "\n\"tallowbrook sessions\" lists the sessions.\n"
                            : "\n\"tallowbrook setup\" lets your agents report.\n";
    return StandardStreams::showAsResult(hints +
                                         std::string{"\"tallowbrook help\" lists the commands.\n"});
}

void addStatusCommand(CommandLine& line) {
    const auto form = std::make_shared<StatusForm>();
    auto words = line.add(
        "status", "Tell in a line who waits, works or failed",
        [form](const TallowbrookPaths& paths) { return showStatus(paths, *form); },
        "It reads what is stored and no more, so that a prompt or a bar can ask often.\n"
        "\nExamples:\n"
        "  tallowbrook status\n"
        "  tallowbrook status --short\n"
        "  tallowbrook status --format tmux\n"
        "  tallowbrook status --format '{waiting} wait, {working} work'");
    words.addFlag("--short", form->isShort, "Only the numbers: \"2 waiting, 5 working\"");
    words.addOption("--format", "FORMAT", form->format,
                    "tmux, waybar, xbar (also for SwiftBar), json, or a template of {waiting}, "
                    "{working}, {failed} and {project}",
                    "--short");
}

}  // namespace tallowbrook::host
