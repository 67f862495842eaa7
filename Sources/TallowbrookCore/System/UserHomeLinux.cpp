#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "System/UserHome.h"

namespace tallowbrook {

std::optional<std::filesystem::path> accountHomeDirectory() {
    // The name service would load its modules at run time, which a static program must not do.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> accounts{std::fopen("/etc/passwd", "re"),
                                                                   std::fclose};
    if (!accounts) return std::nullopt;
    while (const passwd* account = fgetpwent(accounts.get())) {
        if (account->pw_uid != getuid()) continue;
        if (account->pw_dir == nullptr || account->pw_dir[0] != '/') return std::nullopt;
        return account->pw_dir;
    }
    return std::nullopt;
}

}  // namespace tallowbrook
