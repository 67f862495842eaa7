#include "Output/SessionName.h"

#include <utility>

namespace tallowbrook::host {
namespace {

// Together with a project's name of some length it still fits its column in a list.
constexpr std::size_t maxBranchLength = 12;

// What stands before the last slash is often a prefix that all branches share, and how a name
// begins tells more than how it ends.
std::string shortened(const std::string& branch) {
    if (branch.size() <= maxBranchLength) return branch;
    const auto slash = branch.rfind('/');
    auto text = slash == std::string::npos ? branch : branch.substr(slash + 1);
    if (text.size() <= maxBranchLength) return text;
    auto length = maxBranchLength;
    const auto isInsideOfCharacter = [&] {
        return length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80;
    };
    while (isInsideOfCharacter()) --length;
    return text.substr(0, length) + "…";
}

int countOf(const std::map<std::string, int>& counts, const std::string& key) {
    const auto found = counts.find(key);
    return found == counts.end() ? 0 : found->second;
}

}  // namespace

void SessionNames::add(SessionMark mark) {
    if (const auto known = marks_.find(mark.session); known != marks_.end()) remove(known->second);
    if (mark.number == 0) mark.number = freeNumber(mark.project);
    auto& project = projects_[mark.project];
    ++project.sessions;
    ++project.directories[mark.directory];
    if (mark.branch) ++project.branches[shortened(*mark.branch)];
    project.numbers.insert(mark.number);
    marks_[mark.session] = std::move(mark);
}

void SessionNames::remove(const SessionMark& mark) {
    auto& project = projects_[mark.project];
    --project.sessions;
    --project.directories[mark.directory];
    if (mark.branch) --project.branches[shortened(*mark.branch)];
    project.numbers.erase(project.numbers.find(mark.number));
}

int SessionNames::freeNumber(const std::string& project) const {
    const auto found = projects_.find(project);
    int number = 1;
    if (found == projects_.end()) return number;
    // In ascending order, so the first gap ends it.
    for (const int taken : found->second.numbers) {
        if (taken > number) break;
        if (taken == number) ++number;
    }
    return number;
}

bool SessionNames::isTaken(const std::string& project, int number) const {
    const auto found = projects_.find(project);
    return found != projects_.end() && found->second.numbers.contains(number);
}

std::string SessionNames::nameOf(const std::string& session) const {
    const auto found = marks_.find(session);
    if (found == marks_.end()) return {};
    const auto& mark = found->second;
    const auto& project = projects_.at(mark.project);
    if (project.sessions == 1) return mark.project;
    // A branch says nothing of two sessions that work in one directory, or both on it.
    if (mark.branch && countOf(project.directories, mark.directory) == 1) {
        const auto branch = shortened(*mark.branch);
        if (countOf(project.branches, branch) == 1) return mark.project + " (" + branch + ")";
    }
    return mark.project + " #" + std::to_string(mark.number);
}

}  // namespace tallowbrook::host
