#include "View/KeyDecoder.h"

#include <utf8proc.h>

namespace tallowbrook::host {
namespace {

constexpr char escape = '\x1B';

bool isFinal(char byte) { return byte >= 0x40 && byte <= 0x7E; }

// How many bytes a character of UTF-8 (RFC 3629) has that begins with this one; 1 for a byte that
// begins none.
std::size_t lengthBehind(unsigned char first) {
    if (first >= 0xF0) return 4;
    if (first >= 0xE0) return 3;
    return first >= 0xC2 ? 2 : 1;
}

Key named(utf8proc_int32_t codePoint) {
    if (codePoint == '\r') return Keys::enter;
    if (codePoint == '\b') return Keys::backspace;
    return static_cast<Key>(codePoint);
}

}  // namespace

std::vector<Key> KeyDecoder::take(std::string_view bytes) {
    pending_ += bytes;
    std::vector<Key> keys;
    while (!pending_.empty()) {
        const auto match = matchFront();
        if (match.length == 0) break;
        pending_.erase(0, match.length);
        if (match.key != 0) keys.push_back(match.key);
    }
    return keys;
}

std::vector<Key> KeyDecoder::takeRest() {
    std::string rest = std::exchange(pending_, {});
    std::vector<Key> keys;
    while (!rest.empty()) {
        // The beginning of what did not come whole was typed by itself, or is no key at all.
        if (rest.front() == escape) keys.push_back(Keys::escape);
        rest.erase(0, 1);
        for (const Key key : take(rest)) keys.push_back(key);
        rest = std::exchange(pending_, {});
    }
    return keys;
}

KeyDecoder::Match KeyDecoder::matchFront() const {
    if (pending_.front() == escape) return matchEscape();
    const auto length = lengthBehind(static_cast<unsigned char>(pending_.front()));
    if (pending_.size() < length) return {};
    utf8proc_int32_t codePoint = -1;
    const auto read = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(pending_.data()),
                                       static_cast<utf8proc_ssize_t>(length), &codePoint);
    if (read < 1) return {1, 0};
    return {static_cast<std::size_t>(read), named(codePoint)};
}

KeyDecoder::Match KeyDecoder::matchEscape() const {
    bool mayBecomeOne = false;
    for (const auto& [bytes, key] : sequences_) {
        if (pending_.starts_with(bytes)) return {bytes.size(), key};
        mayBecomeOne = mayBecomeOne || bytes.starts_with(pending_);
    }
    if (mayBecomeOne || pending_.size() < 2) return {};
    // What no key is known for must be passed over whole, or its letters would act as keys.
    if (pending_[1] == '[') {
        std::size_t end = 2;
        while (end < pending_.size() && !isFinal(pending_[end])) ++end;
        return end < pending_.size() ? Match{end + 1, 0} : Match{};
    }
    if (pending_[1] == 'O') return pending_.size() > 2 ? Match{3, 0} : Match{};
    // Esc twice is the key itself; before anything else it stands for the Alt key.
    if (pending_[1] == escape) return {1, Keys::escape};
    return {2, 0};
}

}  // namespace tallowbrook::host
