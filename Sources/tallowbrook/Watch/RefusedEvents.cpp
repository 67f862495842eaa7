#include "Watch/RefusedEvents.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <string>

#include "Output/PrintableText.h"
#include "Output/TimeText.h"
#include "Store/Settings.h"
#include "System/FileContents.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

constexpr std::chrono::minutes pauseBetweenNews{1};
constexpr std::size_t maxLogBytes = 4'194'304;

struct Losses {
    std::int64_t count = 0;
    Instant first{};
    Instant last{};
    std::set<std::string> reasons;

    void add(Instant time, std::string reason) {
        first = count == 0 ? time : std::min(first, time);
        last = count == 0 ? time : std::max(last, time);
        reasons.insert(std::move(reason));
        ++count;
    }
};

bool isForWantOfRoom(std::string_view code) {
    return std::ranges::any_of(std::array{ENOSPC, EDQUOT}, [&](int error) {
        return code.starts_with("io-") && code.ends_with("-errno" + std::to_string(error));
    });
}

// Why an event was lost that the log has this message of; absent for all that cost no event, such
// as a payload that held none.
std::optional<std::string> reasonOf(std::string_view message) {
    constexpr std::string_view refusal = " spool write failed: ";
    if (!message.starts_with("helper: ")) return std::nullopt;
    if (const auto at = message.find(refusal); at != message.npos) {
        const auto code = message.substr(at + refusal.size());
        if (isForWantOfRoom(code)) return "the disk was full";
        if (code == "lock-timeout") return "another process held the spool's lock";
        if (code.starts_with("line-too-large")) return "an event was too large";
        return PrintableText::printable(code);
    }
    if (message.ends_with("; event dropped")) return "an event was too large";
    if (message.find(" unexpected error: ") != message.npos) return "the helper failed";
    return std::nullopt;
}

void addLine(Losses& losses, std::string_view line) {
    const auto time = EventDate::parse(takeUntil(line, ' '));
    if (!time) return;
    if (auto reason = reasonOf(line)) losses.add(*time, std::move(*reason));
}

// The whole lines of a log; a file that is missing or no text of ours has none.
std::string linesOf(const std::filesystem::path& log) {
    auto text = FileContents::read(log, maxLogBytes).value_or("");
    text.resize(text.rfind('\n') + 1);
    return text;
}

// Where the lines begin that come behind a place. Absent where the place is in another log.
std::optional<std::size_t> endOf(const Settings::LogPlace& place, std::string_view text) {
    if (place.end > text.size() || !text.substr(0, place.end).ends_with(place.line + "\n"))
        return std::nullopt;
    return place.end;
}

Settings::LogPlace lastPlace(std::string_view text) {
    const auto line = text.substr(0, text.size() - 1);
    return {text.size(), std::string{line.substr(line.rfind('\n') + 1)}};
}

std::string sentenceOf(const Losses& losses, Instant now) {
    const auto from = TimeText::shortTime(losses.first, now);
    const auto to = TimeText::shortTime(losses.last, now);
    return fmt::format("{} could not be recorded {}: {}.",
                       losses.count == 1 ? "One event" : fmt::format("{} events", losses.count),
                       from == to ? "at " + from : "between " + from + " and " + to,
                       fmt::join(losses.reasons, "; "));
}

}  // namespace

RefusedEvents::LogState RefusedEvents::stateOfLog() const {
    std::error_code error;
    const auto bytes = file_size(log_, error);
    if (error) return {};
    return {last_write_time(log_, error), bytes};
}

bool RefusedEvents::mayHaveNews() const {
    return std::chrono::steady_clock::now() >= nextRead_ && stateOfLog() != seen_;
}

std::optional<Sentence> RefusedEvents::takeNews(Database& database, Instant now) {
    if (!mayHaveNews()) return std::nullopt;
    // Before the reading: what is written meanwhile must look like news afterwards.
    const auto state = stateOfLog();
    const auto text = linesOf(log_);
    const auto older = linesOf(log_.string() + ".1");

    Settings settings{database};
    Losses losses;
    const auto told = settings.toldOfHelperLog();
    const auto begin = told ? endOf(*told, text) : std::nullopt;
    const auto olderBegin = told ? endOf(*told, older) : std::nullopt;
    std::string_view fresh = older;
    for (fresh.remove_prefix(begin ? fresh.size() : olderBegin.value_or(0)); !fresh.empty();)
        addLine(losses, takeUntil(fresh, '\n'));
    fresh = text;
    for (fresh.remove_prefix(begin.value_or(0)); !fresh.empty();)
        addLine(losses, takeUntil(fresh, '\n'));

    // Remembered before it is said: a database that refuses that would have it said again and
    // again.
    if (losses.count > 0) settings.setToldOfHelperLog(lastPlace(text.empty() ? older : text));
    seen_ = state;
    if (losses.count == 0) return std::nullopt;
    nextRead_ = std::chrono::steady_clock::now() + pauseBetweenNews;
    return Sentence{sentenceOf(losses, now)};
}

}  // namespace tallowbrook::host
