// The sessions and projects of which the user wants to hear nothing for a while.
//
// Plain values and pure functions; safe from any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Domain/EnumNames.h"
#include "Domain/Instant.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

enum class MuteScope { session, project };
inline constexpr std::array muteScopeNames{
    std::pair{MuteScope::session, std::string_view{"session"}},
    std::pair{MuteScope::project, std::string_view{"project"}},
};
constexpr const auto& namesOf(MuteScope) { return muteScopeNames; }

struct Mute {
    MuteScope scope = MuteScope::session;
    std::string name;              // the session's storage id, or the project's label
    std::optional<Instant> until;  // absent: until the user says so
    bool operator==(const Mute&) const = default;

    bool isOf(const SessionSnapshot& session) const;
};

struct Mutes {
    std::vector<Mute> all;
    bool operator==(const Mutes&) const = default;

    bool silence(const SessionSnapshot& session) const;

    // Those that have not ended by `now`.
    Mutes asOf(Instant now) const;

    // In place of an earlier one of the same session or project.
    void add(Mute mute);
};

namespace MutesCoding {

// JSON (RFC 8259) in one line: an object whose member "mutes" is a list of texts, each the end in
// the event date format or "-", the scope, and the name, with a blank between them.
std::string encode(const Mutes& mutes);
// Absent for anything else.
std::optional<Mutes> decode(std::string_view text);

}  // namespace MutesCoding
}  // namespace tallowbrook::host
