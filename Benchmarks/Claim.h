// A promised ratio next to the measured one.
#pragma once

#include <string>
#include <vector>

namespace tallowbrook::bench {

struct Claim {
    std::string text;
    double measured = 0;
    double limit = 0;
    enum class Bound { atMost, atLeast } bound = Bound::atMost;

    bool kept() const { return bound == Bound::atMost ? measured <= limit : measured >= limit; }
};

// Prints a line for each; gives the exit status: 1 when one is not kept.
int report(const std::vector<Claim>& claims);

double median(std::vector<double> values);

}  // namespace tallowbrook::bench
