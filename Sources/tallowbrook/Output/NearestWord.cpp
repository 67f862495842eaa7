#include "Output/NearestWord.h"

#include <algorithm>
#include <cstddef>

namespace tallowbrook::host {
namespace {

// The optimal string alignment distance: two letters exchanged are the commonest slip of all, and
// count once.
std::size_t slips(std::string_view a, std::string_view b) {
    const std::size_t columns = b.size() + 1;
    std::vector<std::size_t> cost((a.size() + 1) * columns);
    const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& {
        return cost[i * columns + j];
    };
    for (std::size_t i = 0; i <= a.size(); ++i) at(i, 0) = i;
    for (std::size_t j = 0; j <= b.size(); ++j) at(0, j) = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t another = a[i - 1] == b[j - 1] ? 0 : 1;
            at(i, j) = std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, at(i - 1, j - 1) + another});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
        }
    return cost.back();
}

}  // namespace

std::string nearestWord(std::string_view word, const std::vector<std::string>& candidates) {
    // No command is that long; what is would only take time.
    constexpr std::size_t longest = 64;
    if (word.empty() || word.size() > longest) return {};
    std::string nearest;
    std::size_t least = word.size() / 3 + 2;
    for (const auto& candidate : candidates) {
        // A word of two letters is near to half of all words.
        const std::size_t most =
            std::max<std::size_t>(1, std::max(word.size(), candidate.size()) / 3);
        const auto count = slips(word, candidate);
        if (count > most || count >= least) continue;
        least = count;
        nearest = candidate;
    }
    return nearest;
}

std::string suggestion(std::string_view word, const std::vector<std::string>& candidates) {
    const auto nearest = nearestWord(word, candidates);
    return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}

}  // namespace tallowbrook::host
