#include <array>
#include <string>

#include "System/FileContents.h"
#include "Text/Digits.h"
#include "Text/TakeUntil.h"
#include "Watch/ProcessStart.h"

namespace tallowbrook::host {

std::optional<std::int64_t> processStart(pid_t pid) {
    const auto status = FileContents::read("/proc/" + std::to_string(pid) + "/stat");
    if (!status) return std::nullopt;
    // The name in parentheses may hold anything; the fields behind it hold no blanks. The first of
    // them is the third of proc(5)'s list.
    const auto close = status->rfind(')');
    if (close == std::string::npos || close + 2 > status->size()) return std::nullopt;
    std::string_view rest = std::string_view{*status}.substr(close + 2);
    std::array<std::string_view, 20> fields;
    for (auto& field : fields) field = takeUntil(rest, ' ');
    const auto state = fields.front();
    if (state == "Z" || state == "X") return std::nullopt;
    return parseNumber<std::int64_t>(fields.back());
}

// The agent copies the kernel's own number.
bool isStartOf(const NotedStart& noted, std::int64_t start) {
    return parseNumber<std::int64_t>(noted.text) == start;
}

}  // namespace tallowbrook::host
