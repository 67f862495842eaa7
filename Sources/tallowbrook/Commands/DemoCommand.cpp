#include "Commands/DemoCommand.h"

#include <fmt/core.h>

#include "Commands/CommandLine.h"
#include "Lists/SessionList.h"
#include "Lists/Timeline.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Preferences/HostSettings.h"
#include "SessionState/DemoData.h"

namespace tallowbrook::host {

int demo() {
    const Instant now = currentInstant();
    const auto data = DemoData::make(now, staleAfter);
    std::string text = "A demonstration: none of these sessions is real.\n\n" +
                       SessionList::make(data.sessions, ListScope::all, now).table(now) + "\n";
    for (const auto& entry : data.entries) {
        SessionSnapshot session;
        session.cwd = entry.event.cwd;
        text += PrintableText::padded(session.projectLabel(), 16) +
                timelineRow(entry.event, entry.effect, now);
    }
    return StandardStreams::showAsResult(text);
}

void addDemoCommand(CommandLine& line) {
    line.add("demo", "Show what the lists look like, with made-up sessions",
             [](const TallowbrookPaths&) { return demo(); });
}

}  // namespace tallowbrook::host
