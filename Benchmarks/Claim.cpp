#include "Claim.h"

#include <fmt/core.h>

#include <algorithm>

namespace tallowbrook::bench {

int report(const std::vector<Claim>& claims) {
    int status = 0;
    for (const auto& claim : claims) {
        fmt::print("{:<64} {:>7.2f}  {} {:<6g} {}\n", claim.text, claim.measured,
                   claim.bound == Claim::Bound::atMost ? "at most " : "at least", claim.limit,
                   claim.kept() ? "kept" : "MISSED");
        if (!claim.kept()) status = 1;
    }
    return status;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

}  // namespace tallowbrook::bench
