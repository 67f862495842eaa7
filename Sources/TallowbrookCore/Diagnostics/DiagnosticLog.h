// Where a program that may print nothing says what went wrong: a text file of time-stamped lines,
// capped in size by keeping one older generation beside it (its name + ".1").
//
// Takes no lock: any number of processes may append at once, each line in one append-mode write. A
// lost race between two rotations costs at worst the older generation. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "Domain/Instant.h"

namespace tallowbrook {

struct DiagnosticLog {
    static constexpr std::size_t maxMessageLength = 400;

    std::filesystem::path url;
    std::int64_t maxBytes = 0;  // a larger file is moved aside before the next line

    // Writes one line: `date` in the event date format, a blank, the sanitized message. A log that
    // cannot be written is skipped without a word.
    void append(std::string_view message, Instant date) const;

    // The user's home directory as "~", control characters as blanks; of a text with more than
    // `maxLength` user-perceived characters (Unicode UAX #29) the first `maxLength` and "…".
    static std::string sanitize(std::string_view text, std::size_t maxLength);
};

}  // namespace tallowbrook
