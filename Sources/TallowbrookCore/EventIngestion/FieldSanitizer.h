// The strict rules for what an agent's payload may put into an event.
//
// A value is kept whole or dropped: nothing is truncated, escaped or repaired, so that the spool
// holds only short, safe tokens and absolute paths. Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tallowbrook::FieldSanitizer {

// `text` is a member of the payload that is a JSON string; absent stands for a missing member and
// for every other kind of value. `maxLength` counts UTF-8 bytes.

// Keeps a text of ASCII letters, ASCII digits, "-", ".", ":" and "_" that is not empty.
std::optional<std::string> token(const std::optional<std::string>& text, std::size_t maxLength);

// Keeps what `token` keeps, for the ids of sessions, turns and threads.
std::optional<std::string> identifier(const std::optional<std::string>& text,
                                      std::size_t maxLength);

// Keeps an absolute path in valid UTF-8 without control characters, less the slashes at its end. A
// relative path is dropped, not resolved.
std::optional<std::string> path(const std::optional<std::string>& text, std::size_t maxLength);

}  // namespace tallowbrook::FieldSanitizer
