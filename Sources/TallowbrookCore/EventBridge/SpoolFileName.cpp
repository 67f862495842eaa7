#include "EventBridge/SpoolFileName.h"

#include <unistd.h>

#include <algorithm>
#include <limits>
#include <tuple>

#include "System/DirectoryListing.h"
#include "System/RandomHex.h"
#include "Text/Digits.h"

namespace tallowbrook {
namespace {

constexpr std::string_view extension = ".jsonl";

std::string randomWord() {
    // Without random bits the time and the process id still keep names apart.
    std::string text = randomHex32().value_or("0");
    for (char& digit : text)
        if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
    return text;
}

}  // namespace

std::string SpoolFileName::make(Prefix prefix, Instant date) {
    std::string name{rawValue(prefix)};
    name += '-' + std::to_string(date.time_since_epoch().count());
    name += '-' + std::to_string(getpid());
    name += '-' + randomWord();
    return name.append(extension);
}

std::string SpoolFileName::makeNext(Prefix prefix, Instant date,
                                    const std::vector<Entry>& segments) {
    if (segments.empty()) return make(prefix, date);
    const std::int64_t newest = segments.back().micros;
    const bool isLast = newest == std::numeric_limits<std::int64_t>::max();
    const Instant behind{Instant::duration{isLast ? newest : newest + 1}};
    return make(prefix, std::max(date, behind));
}

std::optional<SpoolFileName::Entry> SpoolFileName::parse(const std::filesystem::path& file) {
    // The active file and the lock lie in the directory, too, and so may what others put there.
    const std::string name = file.filename().string();
    if (!name.ends_with(extension)) return std::nullopt;
    const std::size_t firstDash = name.find('-');
    if (firstDash == std::string::npos) return std::nullopt;
    const std::size_t secondDash = name.find('-', firstDash + 1);
    if (secondDash == std::string::npos) return std::nullopt;

    const std::string_view text = name;
    const auto prefix = fromRawValue<Prefix>(text.substr(0, firstDash));
    const auto micros =
        parseNumber<std::int64_t>(text.substr(firstDash + 1, secondDash - firstDash - 1));
    if (!prefix || !micros) return std::nullopt;
    return Entry{file, *prefix, *micros};
}

std::expected<std::vector<SpoolFileName::Entry>, FileError> SpoolFileName::listPendingFiles(
    const std::filesystem::path& directory) {
    std::vector<Entry> entries;
    const auto files = entriesOf(directory);
    if (!files) return std::unexpected(files.error());
    for (const auto& file : *files)
        if (auto entry = parse(file)) entries.push_back(std::move(*entry));
    std::ranges::sort(entries, {}, [](const Entry& entry) {
        return std::tie(entry.micros, entry.prefix, entry.url.native());
    });
    return entries;
}

std::vector<SpoolFileName::Entry> SpoolFileName::pendingFiles(
    const std::filesystem::path& directory) {
    return listPendingFiles(directory).value_or(std::vector<Entry>{});
}

}  // namespace tallowbrook
