// How an event becomes one line of the spool and back, so that both ends agree byte for byte.
//
// A line is a compact JSON object (RFC 8259, UTF-8) with ascending keys, slashes not escaped, and
// one line feed behind it. Pure functions; safe from any thread.
#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Domain/AgentEvent.h"
#include "Domain/RecordCoding.h"

namespace tallowbrook::EventCoding {

// The coders of every record of this system; the line coding below agrees with them.
RecordEncoder makeEncoder();
std::expected<RecordDecoder, DecodingError> makeDecoder(std::string_view text);

void encodeDetail(RecordEncoder& encoder, const EventDetail& detail);
EventDetail decodeDetail(RecordDecoder& decoder);

// The texts of the event must be valid UTF-8, as those are that the normalizer or a decoder gave.
std::string encodeLine(const AgentEvent& event);

// Takes a line without its line feed. Every required key must be there with the right type and a
// known value, an optional one may be missing or null, unknown keys are passed over. Strict in
// everything else: a key twice, invalid UTF-8, a lone surrogate, a number too large for a double
// (a tiny one and a zero are none, whatever their exponents), or more than 32 nested levels fail
// the line.
std::expected<AgentEvent, DecodingError> decodeLine(std::string_view line);

}  // namespace tallowbrook::EventCoding
