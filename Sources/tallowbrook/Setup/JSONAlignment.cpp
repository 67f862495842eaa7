#include "Setup/JSONAlignment.h"

#include <algorithm>

namespace tallowbrook::host {
namespace {

// The first old item from `next` on that the new one comes from.
std::optional<std::size_t> sourceOf(const JSONItem& item, const JSONItems& oldItems,
                                    std::size_t next, auto comesFrom) {
    for (; next < oldItems.size(); ++next)
        if (comesFrom(item, oldItems[next])) return next;
    return std::nullopt;
}

// Whether the old value becomes the new one by losing elements, as a group that loses handlers.
bool isLeftOf(const JSONNode& newNode, const JSONNode& oldNode) {
    if (newNode == oldNode) return true;
    if (newNode.value.index() != oldNode.value.index()) return false;
    const auto newItems = itemsOf(newNode);
    const auto oldItems = itemsOf(oldNode);
    if (newItems.empty() || newItems.size() > oldItems.size()) return false;
    if (newNode.objectMembers())
        return std::ranges::equal(newItems, oldItems,
                                  [](const JSONItem& item, const JSONItem& old) {
                                      return item.member->rawKey == old.member->rawKey &&
                                             isLeftOf(*item.value, *old.value);
                                  });
    std::size_t next = 0;
    for (const auto& item : newItems) {
        const auto source =
            sourceOf(item, oldItems, next, [](const JSONItem& element, const JSONItem& old) {
                return isLeftOf(*element.value, *old.value);
            });
        // Here the search ends: lists may be so long that pairing them all takes minutes.
        if (!source) return false;
        next = *source + 1;
    }
    return true;
}

bool comesFrom(const JSONItem& item, const JSONItem& old) {
    if (item.member) return item.member->rawKey == old.member->rawKey;
    return isLeftOf(*item.value, *old.value);
}

}  // namespace

JSONItems itemsOf(const JSONNode& node) {
    JSONItems items;
    if (const auto* members = node.objectMembers())
        for (const auto& member : *members) items.push_back({&member, &member.value});
    if (const auto* elements = node.arrayElements())
        for (const auto& element : *elements) items.push_back({nullptr, &element});
    return items;
}

std::vector<std::optional<std::size_t>> sourcesOf(const JSONItems& newItems,
                                                  const JSONItems& oldItems) {
    std::vector<std::optional<std::size_t>> sources;
    std::size_t next = 0;
    for (const auto& item : newItems) {
        sources.push_back(sourceOf(item, oldItems, next, comesFrom));
        if (sources.back()) next = *sources.back() + 1;
    }
    return sources;
}

}  // namespace tallowbrook::host
