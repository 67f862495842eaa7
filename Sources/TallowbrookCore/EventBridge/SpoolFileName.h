// The names of spool segments, and the order in which segments are processed.
//
// A name is prefix-micros-pid-RANDHEX.jsonl, such as overflow-1763177455123456-4242-9F3A01C.jsonl.
// Safe from any thread.
#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Domain/EnumNames.h"
#include "Domain/Instant.h"
#include "System/FileError.h"

namespace tallowbrook::SpoolFileName {

// In the order of processing: what a writer moved aside came before what the drainer claimed.
enum class Prefix { overflow, ingest };
inline constexpr std::array prefixNames{
    std::pair{Prefix::overflow, std::string_view{"overflow"}},
    std::pair{Prefix::ingest, std::string_view{"ingest"}},
};
constexpr const auto& namesOf(Prefix) { return prefixNames; }

struct Entry {
    std::filesystem::path url;
    Prefix prefix = Prefix::overflow;
    std::int64_t micros = 0;  // since 1970-01-01 UTC
    bool operator==(const Entry&) const = default;
};

// A new name with this process's id and 32 random bits.
std::string make(Prefix prefix, Instant date);

// `make` for a new segment of the directory that holds `segments`, in their order: with the time
// `date`, or where the clock was set back behind the newest of them, with one microsecond more than
// that has. So the file just moved aside is never the oldest, which a full spool deletes.
std::string makeNext(Prefix prefix, Instant date, const std::vector<Entry>& segments);

// What a file's name says of it; absent when it is no segment.
std::optional<Entry> parse(const std::filesystem::path& file);

// The segments of a directory, oldest first; of the same time by prefix, then by name in ascending
// byte order. Other files are passed over. Fails with the step "list" when the directory cannot be
// listed to its end.
[[nodiscard]] std::expected<std::vector<Entry>, FileError> listPendingFiles(
    const std::filesystem::path& directory);

// What `listPendingFiles` gives; empty where it fails.
std::vector<Entry> pendingFiles(const std::filesystem::path& directory);

}  // namespace tallowbrook::SpoolFileName
