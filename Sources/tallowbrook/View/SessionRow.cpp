#include "View/SessionRow.h"

#include <algorithm>

#include "Output/PrintableText.h"
#include "Output/TimeText.h"
#include "System/UserHome.h"

namespace tallowbrook::host {
namespace {

// "› ● " before the project.
constexpr std::size_t gutter = 4;
// A narrower window has one blank between two columns.
constexpr std::size_t columnsForGap = 60;

constexpr std::size_t statusColumns = 16;  // "needs permission"
constexpr std::size_t sinceColumns = 7;    // "12 days"
constexpr std::size_t narrowSince = 6;     // "<1 min", "2 days"
constexpr std::size_t agentColumns = 11;   // "Claude Code"
constexpr std::size_t leastProject = 7;
constexpr std::size_t goodProject = 16;
constexpr std::size_t mostProject = 32;
constexpr std::size_t leastReason = 8;
constexpr std::size_t goodReason = 14;
constexpr std::size_t mostReason = 24;
constexpr std::size_t leastDirectory = 24;
constexpr std::size_t mostDirectory = 60;

// "~/work/api" for a directory of the user.
std::string directoryText(const SessionSnapshot& session) {
    auto path = session.cwd.value_or("");
    const auto home = userHomeDirectory();
    if (home && *home != "/" && path.starts_with(home->string() + "/"))
        path.replace(0, home->string().size(), "~");
    return path;
}

std::string rightAligned(const std::string& text, std::size_t columns) {
    const auto width = PrintableText::width(text);
    return std::string(columns > width ? columns - width : 0, ' ') + text;
}

}  // namespace

RowLayout::RowLayout(std::size_t columns)
    : columns_{columns}, gap_{columns < columnsForGap ? 1U : 2U} {
    std::size_t left = columns - std::min(columns, gutter);
    const auto take = [this, &left](std::size_t& column, std::size_t width, std::size_t needed) {
        if (left < width + gap_ + needed) return;
        column = width;
        left -= width + gap_;
    };
    // Each only where enough is left for the project's name.
    take(since_, columns < columnsForGap ? narrowSince : sinceColumns, leastProject);
    take(status_, statusColumns, leastProject);
    take(agent_, agentColumns, goodProject);
    take(reason_, goodReason, goodProject);
    if (reason_ == 0) take(reason_, leastReason, goodProject);
    const auto grow = [&left](std::size_t& column, std::size_t most, std::size_t needed) {
        if (column == 0 || column >= most || left <= needed) return;
        const auto more = std::min(most - column, left - needed);
        column += more;
        left -= more;
    };
    take(directory_, leastDirectory, goodProject);
    grow(reason_, mostReason, goodProject + goodProject / 2);
    project_ = std::min(left, mostProject);
    left -= project_;
    grow(directory_, mostDirectory, 0);
}

PictureLine RowLayout::line(const ListedSession& session, bool isSelected, Instant now) const {
    PictureLine line;
    std::size_t column = 0;
    const auto add = [&](const std::string& text, std::size_t width, Style style) {
        if (width == 0) return;
        // Reversed colours would hide what they say: the symbol and the words say it too.
        if (isSelected) style = {.bold = style.bold, .reverse = true};
        line.push_back(
            {column, PrintableText::padded(PrintableText::printable(text), width), style});
        column += width;
    };
    const auto space = [&](std::size_t width) { add("", width, {}); };
    const auto style = styleOf(session.status);
    const bool waits = session.status == SessionStatus::needsAttention;
    const bool ended = hasEnded(session);

    add(isSelected ? std::string{Symbols::selected.text} : "", std::min<std::size_t>(columns_, 2),
        {.bold = true});
    if (columns_ > 2) add(std::string{symbolOf(session.status).text}, 1, style);
    if (columns_ > 3) space(1);
    add(session.snapshot.projectLabel(), project_, {.bold = waits, .dim = ended});
    const auto addColumn = [&](const std::string& text, std::size_t width, Style columnStyle) {
        if (width == 0) return;
        space(gap_);
        add(text, width, columnStyle);
    };
    addColumn(statusText(session), status_, style);
    addColumn(reasonText(session), reason_, {});
    addColumn(rightAligned(TimeText::lasting(statusSince(session), now), since_), since_,
              {.bold = waits});
    addColumn(agentText(session), agent_, {.dim = true});
    addColumn(directoryText(session.snapshot), directory_, {.dim = true});
    // To the edge, so that the selection is a bar.
    if (isSelected && column < columns_) space(columns_ - column);
    return line;
}

}  // namespace tallowbrook::host
