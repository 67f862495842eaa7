#include "Commands/EditorsCommand.h"

#include <fmt/core.h>

#include <set>

#include "Focus/BoundedRun.h"
#include "Focus/EditorOfSession.h"
#include "Output/ExitStatus.h"
#include "Output/StandardStreams.h"
#include "Setup/EditorSetup.h"
#include "Setup/ProgramLocation.h"
#include "Setup/ReportingHome.h"
#include "System/UserHome.h"

namespace tallowbrook::host {
namespace {

// An editor's command line starts a whole editor to do it.
constexpr Seconds installTimeout{120};
constexpr std::int64_t maxOutputBytes = 65536;

std::filesystem::path userHome() { return userHomeDirectory().value_or("/var/empty"); }

EditorOperations liveOperations() {
    return {
        .run =
            [](const std::string& path, const std::vector<std::string>& arguments) {
                return runBounded(path, arguments, installTimeout, maxOutputBytes);
            },
        .userHome = userHome(),
    };
}

int withEditors(const TallowbrookPaths& paths, const ReviewOptions& options,
                const std::function<int(const std::vector<EditorProgram>&)>& action) {
    if (!options.dryRun && !agentsReportTo(paths))
        return StandardStreams::fail(
            fmt::format("The extension knows {} alone. Leave --home out, or look with --dry-run.",
                        TallowbrookPaths::defaultHome().string()),
            ExitStatus::wrongUsage);
    const auto editors = editorPrograms(userHome());
    if (editors.empty())
        return StandardStreams::fail(fmt::format(
            "No editor was found: none of {} is on the PATH or where its installer puts it.",
            editorProgramNames()));
    return action(editors);
}

}  // namespace

int setUpEditors(const TallowbrookPaths& paths, const ReviewOptions& options) {
    const auto package = bundledExtension();
    if (!package)
        return StandardStreams::fail(
            "The editors' extension was not found beside this program. Install tallowbrook with "
            "it, or build it where node is there.");
    return withEditors(paths, options, [&](const auto& editors) {
        return setUpEditors(editors, *package, liveOperations(), options);
    });
}

int removeFromEditors(const TallowbrookPaths& paths, const ReviewOptions& options) {
    return withEditors(paths, options, [&](const auto& editors) {
        return removeFromEditors(editors, liveOperations(), options);
    });
}

std::string editorReport(const std::vector<SessionSnapshot>& sessions) {
    const auto home = userHome();
    const auto operations = FocusOperations::live();
    std::set<std::string_view> here;
    std::set<std::string_view> withSessions;
    for (const auto& program : editorPrograms(home)) here.insert(program.editor->name);
    for (const auto& session : sessions)
        if (const auto* editor = editorOf(session, operations)) withSessions.insert(editor->name);
    std::string text;
    for (const auto& editor : EditorBridge::editors) {
        const bool hasSessions = withSessions.contains(editor.name);
        if (editor.hasExtension(home))
            text += fmt::format("{}: extension installed\n", editor.name);
        else if (hasSessions)
            text += fmt::format("{}: extension missing, sessions in it · see setup --editors\n",
                                editor.name);
        else if (here.contains(editor.name))
            text += fmt::format("{}: extension not installed\n", editor.name);
    }
    return text;
}

}  // namespace tallowbrook::host
