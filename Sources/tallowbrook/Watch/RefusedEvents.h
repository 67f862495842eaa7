// The events that helpers could not record, as the helper's log counts them: told once there is
// somebody to tell it, since a helper may not say a word.
//
// Used by one thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "EventBridge/TallowbrookPaths.h"
#include "Output/Sentence.h"
#include "Store/Database.h"
#include "Store/Settings.h"

namespace tallowbrook::host {

class RefusedEvents {
 public:
    explicit RefusedEvents(const TallowbrookPaths& paths) : log_{paths.helperLogFile()} {}

    // Whether the log has changed since `takeNews` read it. False for a minute after that, so that
    // a loss that goes on makes one sentence a minute.
    bool mayHaveNews() const;

    // How many events were refused since this was told, when, and why; absent when there are none,
    // and while `mayHaveNews` is false. The database remembers what was told. Throws
    // SQLite::Exception when that fails, and tells it the next time.
    std::optional<Sentence> takeNews(Database& database, Instant now);

    // The same of what another host has told since the last call, for one that looks on. The first
    // call tells what was told before. Throws SQLite::Exception when the database fails.
    std::optional<Sentence> newsOfAnotherHost(Database& database, Instant now);

 private:
    struct LogState {
        std::filesystem::file_time_type changedAt{};
        std::uintmax_t bytes = 0;
        bool operator==(const LogState&) const = default;
    };
    LogState stateOfLog() const;

    std::filesystem::path log_;
    LogState seen_;
    std::chrono::steady_clock::time_point nextRead_{};
    std::optional<Settings::LogPlace> toldByAnother_;
};

}  // namespace tallowbrook::host
