// What sessions are called, so that two of one project are told apart.
//
// Plain values; safe from any thread, a `SessionNames` from one at a time.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace tallowbrook::host {

// What a session's name is made of. It is written down when the session begins and kept, so that
// the session is called the same whatever becomes of the others.
struct SessionMark {
    std::string session;                // by storage id
    std::string project;                // its label
    std::string directory;              // empty where it is unknown
    int number = 0;                     // from 1 among those of its project; 0: none was given
    std::optional<std::string> branch;  // of git, at its latest prompt
    bool operator==(const SessionMark&) const = default;
};

// The sessions that a list shows, by what they are called.
class SessionNames {
 public:
    // A session, or its new mark. One without a number gets the smallest that is free.
    void add(SessionMark mark);

    // The smallest from 1 on that no session of the project has.
    int freeNumber(const std::string& project) const;
    bool isTaken(const std::string& project, int number) const;

    // "docs-site" where the session is the only one of its project; else "docs-site (main)" where
    // its branch tells it apart, and "docs-site #2" where that does not. A long branch is
    // cut, and its prefix left out. Empty for a session that was not added. Not made fit for a
    // screen.
    std::string nameOf(const std::string& session) const;

 private:
    struct Project {
        std::size_t sessions = 0;
        std::map<std::string, int> directories;  // how many sessions each has
        std::map<std::string, int> branches;     // as they are shown
        std::multiset<int> numbers;
    };

    void remove(const SessionMark& mark);

    std::map<std::string, SessionMark> marks_;  // by session
    std::map<std::string, Project> projects_;
};

}  // namespace tallowbrook::host
