// A user whom file modes bind. They do not bind root, so a test that runs as root lends a user id
// that no account has, and leaves what has to be refused to a child process under that id.
#pragma once

#include <grp.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "Support/ChildProcess.h"

namespace tallowbrook {

struct OrdinaryUser {
    static constexpr const char* missing = "needs a user who is not root, and may not become one";

    uid_t id;

    // The user of the tests where that is not root. Absent when root may not become another.
    static std::optional<OrdinaryUser> find() {
        if (geteuid() != 0) return OrdinaryUser{geteuid()};
        // An id of this process's own, so that tests that run at once do not meet.
        const OrdinaryUser user{static_cast<uid_t>(2'000'000'000 + getpid())};
        const auto became = inChildProcess([&] { return user.become() ? "yes" : "no"; });
        return became == "yes" ? std::optional{user} : std::nullopt;
    }

    // Gives the user a file or directory, but not what lies in it.
    bool own(const std::filesystem::path& path) const {
        return chown(path.c_str(), id, static_cast<gid_t>(id)) == 0;
    }

    // Makes the calling process this user's for good.
    bool become() const {
        if (geteuid() == id) return true;
        return setgroups(0, nullptr) == 0 && setgid(static_cast<gid_t>(id)) == 0 && setuid(id) == 0;
    }
};

}  // namespace tallowbrook
