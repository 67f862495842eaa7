#include "Setup/EditorSetup.h"

#include <fmt/core.h>

#include "Output/ExitStatus.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Setup/YesNoQuestion.h"

namespace tallowbrook::host {
namespace {

// One editor, and what is to be done there.
struct Step {
    const EditorProgram* program = nullptr;
    std::vector<std::string> arguments;
    std::string announced;  // "the extension is to be installed"
    std::string question;   // "Install the extension into VS Code?"
    std::string done;
    std::string failed;
};

std::string commandLine(const Step& step) {
    std::string line = step.program->path;
    for (const auto& argument : step.arguments) line += " " + argument;
    return PrintableText::printable(line);
}

int carryOut(const Step& step, const EditorOperations& operations, const ReviewOptions& options) {
    const auto agreed = options.assumeYes ? std::optional{true} : agreesTo(step.question);
    if (!agreed) return ExitStatus::failed;
    if (!*agreed) {
        StandardStreams::mention(
            fmt::format("{} was left as it is.\n", step.program->editor->name));
        return ExitStatus::notInOrder;
    }
    const auto result = operations.run(step.program->path, step.arguments);
    if (result && result->status == 0) {
        StandardStreams::mention(step.done + "\n");
        return ExitStatus::done;
    }
    StandardStreams::complain(
        result
            ? fmt::format("{} Its command line ended with status {}.", step.failed, result->status)
            : fmt::format("{} Its command line did not run to its end.", step.failed));
    return ExitStatus::failed;
}

int carryOutEach(const std::vector<Step>& steps, const EditorOperations& operations,
                 const ReviewOptions& options) {
    if (steps.empty()) return ExitStatus::done;
    if (!canAsk(options)) return ExitStatus::failed;
    for (const auto& step : steps)
        StandardStreams::mention(fmt::format("{}: {}, by\n  {}\n", step.program->editor->name,
                                             step.announced, commandLine(step)));
    int status = ExitStatus::done;
    if (!options.dryRun)
        for (const auto& step : steps) status = worse(status, carryOut(step, operations, options));
    return status;
}

}  // namespace

int setUpEditors(const std::vector<EditorProgram>& editors, const std::filesystem::path& package,
                 const EditorOperations& operations, const ReviewOptions& options) {
    std::vector<Step> steps;
    for (const auto& program : editors) {
        const auto& editor = *program.editor;
        if (hasCurrentExtension(editor, operations.userHome)) {
            StandardStreams::mention(fmt::format("{}: the extension is current\n", editor.name));
            continue;
        }
        const bool isNew = !editor.hasExtension(operations.userHome);
        steps.push_back({
            .program = &program,
            .arguments = program.installation(package),
            .announced = fmt::format("the extension is to be {}", isNew ? "installed" : "renewed"),
            .question =
                fmt::format("{} the extension in {}?", isNew ? "Install" : "Renew", editor.name),
            .done = fmt::format("{} has the extension. A window that is open may have to be "
                                "reloaded.",
                                editor.name),
            .failed = fmt::format("{} did not take the extension.", editor.name),
        });
    }
    return carryOutEach(steps, operations, options);
}

int removeFromEditors(const std::vector<EditorProgram>& editors, const EditorOperations& operations,
                      const ReviewOptions& options) {
    std::vector<Step> steps;
    for (const auto& program : editors) {
        const auto& editor = *program.editor;
        if (!editor.hasExtension(operations.userHome)) {
            StandardStreams::mention(fmt::format("{}: the extension is not there\n", editor.name));
            continue;
        }
        steps.push_back({
            .program = &program,
            .arguments = program.removal(),
            .announced = "the extension is to be removed",
            .question = fmt::format("Remove the extension from {}?", editor.name),
            .done = fmt::format("{} no longer has the extension.", editor.name),
            .failed = fmt::format("{} did not give the extension up.", editor.name),
        });
    }
    return carryOutEach(steps, operations, options);
}

}  // namespace tallowbrook::host
