// What to do about a text that is nearly JSON (RFC 8259).
//
// Many programs read their configuration with comments and with a comma behind the last item, so
// people write it so. To refuse such a file is not enough: its user must be able to mend it at
// once.
//
// A pure function; safe from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tallowbrook::host {

// Sentences that name comments, commas behind the last item and a key that is there twice, with
// their lines from 1. Absent where the text is valid or where something else is wrong before them.
// Takes linear time.
std::optional<std::string> adviceOn(std::string_view text);

}  // namespace tallowbrook::host
