#include "Diagnostics/OperatingSystem.h"

#include "Text/TakeUntil.h"

namespace tallowbrook {
namespace {

// A value without the quotes and backslashes that os-release(5) puts it into.
std::string unquoted(std::string_view text) {
    const char quote = text.empty() ? '\0' : text.front();
    if (quote != '"' && quote != '\'') return std::string{text};
    text.remove_prefix(1);
    std::string value;
    while (!text.empty() && text.front() != quote) {
        // As in a shell, a backslash means itself between single quotes.
        if (quote == '"' && text.front() == '\\' && text.size() > 1) text.remove_prefix(1);
        value += text.front();
        text.remove_prefix(1);
    }
    return value;
}

}  // namespace

std::optional<std::string> OperatingSystem::releaseVariable(std::string_view releaseFile,
                                                            std::string_view name) {
    std::optional<std::string> value;
    while (!releaseFile.empty()) {
        std::string_view line = takeUntil(releaseFile, '\n');
        if (!line.starts_with(name)) continue;
        line.remove_prefix(name.size());
        // A variable assigned twice has the last value.
        if (line.starts_with('=')) value = unquoted(line.substr(1));
    }
    return value;
}

}  // namespace tallowbrook
