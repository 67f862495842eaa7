#include "Watch/RefusedEvents.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <string>
#include <utility>

#include "Output/PrintableText.h"
#include "Output/TimeText.h"
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

// Both generations of the log.
struct Log {
    std::string older;
    std::string newer;

    explicit Log(const std::filesystem::path& file)
        : older{linesOf(file.string() + ".1")}, newer{linesOf(file)} {}

    // How much of both lies before a place. Absent where the place is in neither.
    std::optional<std::size_t> positionOf(const Settings::LogPlace& place) const {
        if (ends(newer, place)) return older.size() + place.end;
        if (ends(older, place)) return place.end;
        return std::nullopt;
    }

    std::size_t size() const { return older.size() + newer.size(); }

    Settings::LogPlace lastPlace() const {
        const std::string_view text = newer.empty() ? older : newer;
        const auto line = text.substr(0, text.size() - 1);
        return {text.size(), std::string{line.substr(line.rfind('\n') + 1)}};
    }

    Losses lossesBetween(std::size_t from, std::size_t to) const {
        Losses losses;
        if (from >= to) return losses;
        const auto text = (older + newer).substr(from, to - from);
        for (std::string_view rest = text; !rest.empty();) addLine(losses, takeUntil(rest, '\n'));
        return losses;
    }

 private:
    static bool ends(std::string_view text, const Settings::LogPlace& place) {
        return place.end <= text.size() && text.substr(0, place.end).ends_with(place.line + "\n");
    }
};

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
    const Log log{log_};

    Settings settings{database};
    const auto told = settings.toldOfHelperLog();
    const auto position = told ? log.positionOf(*told) : std::nullopt;
    const auto losses = log.lossesBetween(position.value_or(0), log.size());

    // Remembered before it is said: a database that refuses that would have it said again and
    // again.
    if (losses.count > 0) settings.setToldOfHelperLog(log.lastPlace());
    seen_ = state;
    if (losses.count == 0) return std::nullopt;
    nextRead_ = std::chrono::steady_clock::now() + pauseBetweenNews;
    return Sentence{sentenceOf(losses, now)};
}

std::optional<Sentence> RefusedEvents::newsOfAnotherHost(Database& database, Instant now) {
    const auto place = Settings{database}.toldOfHelperLog();
    const auto before = std::exchange(toldByAnother_, place);
    // Most changes of the database are others.
    if (place == before || !place) return std::nullopt;
    const Log log{log_};
    const auto from = before ? log.positionOf(*before) : std::nullopt;
    const auto losses =
        log.lossesBetween(from.value_or(0), log.positionOf(*place).value_or(log.size()));
    if (losses.count == 0) return std::nullopt;
    return Sentence{sentenceOf(losses, now)};
}

}  // namespace tallowbrook::host
