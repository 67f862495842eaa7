#include "Preferences/Mutes.h"

#include <algorithm>
#include <utility>

#include "Domain/RecordCoding.h"
#include "Text/TakeUntil.h"

namespace tallowbrook::host {
namespace {

constexpr std::string_view noEnd = "-";

std::optional<Mute> decodeOne(std::string_view text) {
    const auto end = takeUntil(text, ' ');
    const auto scope = fromRawValue<MuteScope>(takeUntil(text, ' '));
    const auto until = EventDate::parse(end);
    if (!scope || (!until && end != noEnd)) return std::nullopt;
    return Mute{*scope, std::string{text}, until};
}

}  // namespace

bool Mute::isOf(const SessionSnapshot& session) const {
    return name == (scope == MuteScope::session ? session.id() : session.projectLabel());
}

bool Mutes::silence(const SessionSnapshot& session) const {
    return std::ranges::any_of(all, [&](const Mute& mute) { return mute.isOf(session); });
}

Mutes Mutes::asOf(Instant now) const {
    auto mutes = *this;
    std::erase_if(mutes.all, [now](const Mute& mute) { return mute.until && *mute.until <= now; });
    return mutes;
}

void Mutes::add(Mute mute) {
    std::erase_if(all, [&](const Mute& other) {
        return other.scope == mute.scope && other.name == mute.name;
    });
    all.push_back(std::move(mute));
}

std::string MutesCoding::encode(const Mutes& mutes) {
    std::vector<std::string> texts;
    for (const auto& mute : mutes.all) {
        auto text = mute.until ? EventDate::text(*mute.until) : std::string{noEnd};
        text.append(" ").append(rawValue(mute.scope)).append(" ").append(mute.name);
        texts.push_back(std::move(text));
    }
    RecordEncoder encoder;
    encoder.encode("mutes", texts);
    return encoder.text();
}

std::optional<Mutes> MutesCoding::decode(std::string_view text) {
    auto decoder = RecordDecoder::parse(text);
    if (!decoder) return std::nullopt;
    Mutes mutes;
    for (const auto& one : decoder->texts("mutes")) {
        auto mute = decodeOne(one);
        if (!mute) return std::nullopt;
        mutes.all.push_back(std::move(*mute));
    }
    if (decoder->failure()) return std::nullopt;
    return mutes;
}

}  // namespace tallowbrook::host
