#include "SessionState/WaitingCycle.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace tallowbrook {

namespace {

constexpr std::chrono::seconds repetitionWindow{10};

std::size_t indexBehind(const std::string& id, const std::vector<std::string>& ids) {
    const auto found = std::ranges::find(ids, id);
    if (found == ids.end()) return 0;
    return static_cast<std::size_t>(found - ids.begin() + 1) % ids.size();
}

}  // namespace

std::optional<std::string> WaitingCycle::next(const std::vector<std::string>& ids, Instant now) {
    if (ids.empty()) {
        last.reset();
        return std::nullopt;
    }
    // From the previous pick, not from the first: a steady pace walks the whole list.
    const bool isRepetition = last && now - last->at < repetitionWindow;
    const std::string& pick = ids[isRepetition ? indexBehind(last->id, ids) : 0];
    last = Pick{pick, now};
    return pick;
}

}  // namespace tallowbrook
