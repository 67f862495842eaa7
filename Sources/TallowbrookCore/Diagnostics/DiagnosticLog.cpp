#include "Diagnostics/DiagnosticLog.h"

#include <sys/stat.h>
#include <unistd.h>
#include <utf8proc.h>

#include <cstdio>
#include <optional>

#include "EventBridge/SpoolWriter.h"
#include "EventBridge/TallowbrookPaths.h"
#include "System/UserHome.h"

namespace tallowbrook {
namespace {

void abbreviateHome(std::string& text) {
    const auto directory = userHomeDirectory();
    if (!directory) return;
    std::string home = directory->string();
    while (home.ends_with('/')) home.pop_back();
    if (home.empty()) return;
    for (std::size_t at = 0; (at = text.find(home, at)) != std::string::npos; ++at)
        text.replace(at, home.size(), "~");
}

// A message must stay one line, and must not move the cursor of the terminal that shows it.
void blankControlCharacters(std::string& text) {
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) c = ' ';
    }
}

// The number of bytes that the first `count` user-perceived characters take; a byte that is not
// UTF-8 counts as a character.
std::size_t prefixLength(std::string_view text, std::size_t count) {
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    std::size_t position = 0;
    std::size_t characters = 0;
    std::optional<utf8proc_int32_t> previous;  // absent at the start and behind a byte that is none
    utf8proc_int32_t state = 0;
    while (position < text.size()) {
        utf8proc_int32_t current = 0;
        auto length = utf8proc_iterate(
            bytes + position, static_cast<utf8proc_ssize_t>(text.size() - position), &current);
        const bool isValid = length > 0;
        if (!isValid) length = 1;
        const bool startsCharacter =
            !isValid || !previous || utf8proc_grapheme_break_stateful(*previous, current, &state);
        if (startsCharacter && characters++ == count) return position;
        if (!isValid || !previous) state = 0;
        previous = isValid ? std::optional{current} : std::nullopt;
        position += static_cast<std::size_t>(length);
    }
    return position;
}

void rotateIfTooLarge(const DiagnosticLog& log) {
    struct stat status{};
    if (stat(log.url.c_str(), &status) != 0 || status.st_size <= log.maxBytes) return;
    // Two processes may do this at once; the loser finds nothing to rename and goes on.
    const std::string older = log.url.string() + ".1";
    unlink(older.c_str());
    [[maybe_unused]] const int result = std::rename(log.url.c_str(), older.c_str());
}

}  // namespace

void DiagnosticLog::append(std::string_view message, Instant date) const {
    std::string line = EventDate::text(date) + " " + sanitize(message, maxMessageLength) + "\n";
    if (!TallowbrookPaths::ensureDirectory(url.parent_path())) return;
    rotateIfTooLarge(*this);
    // There is nowhere left to report to.
    [[maybe_unused]] const auto result = SpoolWriter::appendBytes(line, url);
}

std::string DiagnosticLog::sanitize(std::string_view text, std::size_t maxLength) {
    std::string result{text};
    // Before the cut, which would leave a part of the home directory that is not recognised.
    abbreviateHome(result);
    blankControlCharacters(result);
    // No character takes less than a byte, so most texts need not be looked at.
    if (result.size() <= maxLength) return result;
    const std::size_t kept = prefixLength(result, maxLength);
    if (kept == result.size()) return result;
    return result.substr(0, kept) + "…";
}

}  // namespace tallowbrook
