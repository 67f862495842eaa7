#include "System/UserHome.h"

#include <cstdlib>

namespace tallowbrook {

std::optional<std::filesystem::path> userHomeDirectory() {
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
    return accountHomeDirectory();
}

}  // namespace tallowbrook
