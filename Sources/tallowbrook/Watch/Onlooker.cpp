#include "Watch/Onlooker.h"

#include <algorithm>
#include <utility>

#include "Store/Outbox.h"

namespace tallowbrook::host {
namespace {

bool wasShown(const Channel& channel) {
    const auto events = channel.takeEvents();
    return std::ranges::all_of(events, [](const ChannelEvent& event) {
        return event.kind == ChannelEvent::Kind::handedOver;
    });
}

}  // namespace

Onlooker::Onlooker(Database& database, const Channel& channel, Troubles& troubles, News news)
    : database_{database}, channel_{channel}, troubles_{troubles}, news_{std::move(news)} {
    beginAnew();
}

void Onlooker::beginAnew() {
    // Before the place is read: what is told in between must not count as seen.
    seenVersion_ = database_.dataVersion();
    shownUpTo_ = Outbox{database_}.newestPlace();
    [[maybe_unused]] const auto past = news_();
}

bool Onlooker::pass() {
    return troubles_.during([this] { show(); });
}

void Onlooker::show() {
    const auto version = database_.dataVersion();
    if (version == seenVersion_) return;
    if (const auto news = news_()) troubles_.sayOnce(news->text());
    for (const auto& told : Outbox{database_}.toldSince(shownUpTo_)) {
        channel_.begin({told.notification.number, told.notification.content});
        if (!wasShown(channel_)) {
            troubles_.add(
                "Standard output cannot be written. What is to be told is kept for the next try.");
            return;
        }
        shownUpTo_ = told.place;
    }
    seenVersion_ = version;
}

}  // namespace tallowbrook::host
