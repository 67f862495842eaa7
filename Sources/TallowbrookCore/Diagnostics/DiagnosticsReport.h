// What a user can paste into a support request: versions, where the data lies, how much of it there
// is, what was found of each agent, and the newest lines of the helper's log.
//
// The host fills in the record. A plain value; safe from any thread. Rendering reads the
// environment for the home directory: not while another thread changes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Domain/AgentEvent.h"
#include "Domain/Instant.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Integrations/ProviderDetection.h"

namespace tallowbrook {

struct DiagnosticsReport {
    std::string appVersion;
    std::string helperVersion;
    TallowbrookPaths paths;
    std::vector<ProviderDetection> detections;          // one per agent, in the order to be shown
    std::map<Provider, std::string> integrationStates;  // short texts of the host's choice
    std::map<Provider, std::string> integrationHealth;  // likewise
    std::string notificationAuthorization;              // likewise
    std::optional<std::int64_t> storedEventCount;       // absent when the store could not be asked
    std::map<std::string, std::int64_t> sessionCountsByStatus;  // by raw value of `SessionStatus`
    std::optional<Instant> lastEventAt;                         // of the newest stored event
    std::int64_t pendingSpoolFiles = 0;
    std::vector<std::string> helperLogTail;  // oldest first; the last 10 are shown
    bool operator==(const DiagnosticsReport&) const = default;

    // Lines joined by line feeds, without one at the end. Shows the user's home directory as "~"
    // and control characters as blanks, whatever texts the record holds.
    std::string render() const;

    // The last `lines` lines of the file that are not empty, in file order. Empty when the file
    // cannot be read or is not UTF-8 as a whole. Reads the whole file; never waits for a pipe.
    static std::vector<std::string> tail(const std::filesystem::path& file, std::size_t lines);
};

}  // namespace tallowbrook
