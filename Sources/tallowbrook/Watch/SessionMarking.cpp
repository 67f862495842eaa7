#include "Watch/SessionMarking.h"

#include <chrono>

#include "Preferences/HostSettings.h"
#include "Watch/GitBranch.h"

namespace tallowbrook::host {

void SessionMarking::note(const SessionSnapshot& session, const AgentEvent& event) {
    // Of most events a session's name is none of the business, and its mark is not even read.
    if (session.key.isSetupCheck()) return;
    const bool mayBeNew =
        session.eventCount <= 1 || event.category == EventCategory::sessionStarted;
    if (!mayBeNew && event.category != EventCategory::promptSubmitted) return;

    const auto stored = marks_.mark(session.id());
    SessionMark mark{.session = session.id(),
                     .project = session.projectLabel(),
                     .directory = session.cwd.value_or(""),
                     .branch = branchOf(session.cwd.value_or(""))};
    auto& names = namesWith(mark.project);
    // One that was away from the list for long may find its number taken.
    const bool isListed = !names.nameOf(mark.session).empty();
    const bool keepsItsNumber = stored && stored->project == mark.project &&
                                (isListed || !names.isTaken(mark.project, stored->number));
    mark.number = keepsItsNumber ? stored->number : names.freeNumber(mark.project);
    if (mark != stored) marks_.setMark(mark);
    names.add(std::move(mark));
}

std::string SessionMarking::nameOf(const SessionSnapshot& session) {
    auto& names = namesWith(session.projectLabel());
    if (auto name = names.nameOf(session.id()); !name.empty()) return name;
    // It was not listed, or has no mark, being of a time before there were any.
    auto mark = marks_.mark(session.id()).value_or(SessionMark{});
    mark.session = session.id();
    mark.project = session.projectLabel();
    mark.directory = session.cwd.value_or("");
    names.add(std::move(mark));
    return names.nameOf(session.id());
}

std::optional<std::string> SessionMarking::branchOf(const std::string& directory) {
    const auto [found, isNew] = branches_.try_emplace(directory);
    if (isNew) found->second = gitBranch(directory);
    return found->second;
}

// Read once for a batch: a project may have many sessions, and each of their events comes by here.
SessionNames& SessionMarking::namesWith(const std::string& project) {
    if (projects_.insert(project).second) {
        const auto since = now_ - std::chrono::duration_cast<Instant::duration>(listedFor);
        for (auto& mark : marks_.seenSince(since, project)) names_.add(std::move(mark));
    }
    return names_;
}

}  // namespace tallowbrook::host
