#include <fmt/core.h>

#include "Focus/AgentProcessesLinux.h"
#include "Focus/DirectoryFocus.h"
#include "Focus/SessionFocus.h"

namespace tallowbrook::host {
namespace {

// Encodes all but the unreserved characters of RFC 3986 and the slashes of a path.
std::string percentEncoded(std::string_view path) {
    constexpr std::string_view kept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string text;
    for (const char c : path)
        if (kept.contains(c))
            text += c;
        else
            text += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return text;
}

}  // namespace

FocusOutcome focusSession(const SessionSnapshot& session, const TallowbrookPaths& paths,
                          const FocusOperations& operations) {
    if (!session.cwd)
        return FocusOutcome::nothing(
            "The session's working directory is not known, so its window cannot be found.");
    // An editor registers its own scheme with the desktop, and has no program of a name that lasts.
    const auto open = [&](const EditorWindow& window, const std::string& target) {
        const auto opener = operations.findProgram("xdg-open");
        if (!opener) return false;
        const auto url =
            std::string{editorNamed(window.appName).urlScheme} + "://file" + percentEncoded(target);
        const auto result = operations.run(*opener, {url});
        return result && result->status == 0;
    };
    const DirectoryFocus focus{operations, EditorFocus{paths, operations, open}, agentRunsOn,
                               agentFamiliesIn};
    return focus.focus(*session.cwd);
}

}  // namespace tallowbrook::host
