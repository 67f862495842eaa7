// The JSON form (RFC 8259) in which the host keeps one snapshot: members named after the fields,
// absent optional fields left out, dates in the event date format, which cuts below a millisecond.
//
// Pure functions; safe from any thread.
#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Domain/RecordCoding.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::SessionSnapshotCoding {

// One line of compact JSON without a line feed. The texts of the snapshot must be valid UTF-8, its
// dates of the years 1 to 9999.
std::string encode(const SessionSnapshot& snapshot);

// Every field that is not optional must be there with the right type and a known value; an optional
// one may be missing or null. Unknown members are passed over.
std::expected<SessionSnapshot, DecodingError> decode(std::string_view text);

}  // namespace tallowbrook::SessionSnapshotCoding
