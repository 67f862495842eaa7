#include <pwd.h>
#include <unistd.h>

#include <vector>

#include "System/UserHome.h"

namespace tallowbrook {

std::optional<std::filesystem::path> accountHomeDirectory() {
    // Far more than the texts of any one entry; a longer entry counts as unknown.
    std::vector<char> buffer(16 * 1024);
    passwd account{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &account, buffer.data(), buffer.size(), &found) != 0) return {};
    if (found == nullptr || found->pw_dir == nullptr || found->pw_dir[0] != '/') return {};
    return found->pw_dir;
}

}  // namespace tallowbrook
