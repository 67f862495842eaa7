#include "Setup/ReportingHome.h"

namespace tallowbrook::host {

bool agentsReportTo(const TallowbrookPaths& paths) {
    const auto standard = TallowbrookPaths::defaultHome();
    // Joined with nothing, both end in a slash. Either may not exist yet, and then has no identity
    // by which it could be compared.
    if ((paths.home / "").lexically_normal() == (standard / "").lexically_normal()) return true;
    std::error_code error;
    return std::filesystem::equivalent(paths.home, standard, error);
}

}  // namespace tallowbrook::host
