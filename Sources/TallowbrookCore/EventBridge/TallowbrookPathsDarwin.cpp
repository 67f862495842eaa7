#include "EventBridge/TallowbrookPaths.h"
#include "System/UserHome.h"

namespace tallowbrook {

std::filesystem::path TallowbrookPaths::defaultHome() {
    return userHomeDirectory().value_or("/var/empty") / "Library" / "Application Support" /
           "Tallowbrook";
}

}  // namespace tallowbrook
