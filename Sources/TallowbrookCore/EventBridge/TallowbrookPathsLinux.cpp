#include <cstdlib>

#include "EventBridge/TallowbrookPaths.h"
#include "System/UserHome.h"

namespace tallowbrook {

std::filesystem::path TallowbrookPaths::defaultHome() {
    // The XDG base directory rules: an empty or relative value counts as unset.
    if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && data[0] == '/')
        return std::filesystem::path{data} / "Tallowbrook";
    return userHomeDirectory().value_or("/var/empty") / ".local" / "share" / "Tallowbrook";
}

}  // namespace tallowbrook
