// Which parts of a changed JSON value (RFC 8259) come from which parts of the original one.
//
// Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "Integrations/JSONNode.h"

namespace tallowbrook::host {

// A member, or an element, which has no key. Points into the node that it was taken from.
struct JSONItem {
    const JSONMember* member = nullptr;
    const JSONNode* value = nullptr;
};
using JSONItems = std::vector<JSONItem>;

// Of an object or array; none of other values.
JSONItems itemsOf(const JSONNode& node);

// For each new item the old one that it comes from, in rising order; absent where it is new. A
// member comes from the one with its key. An element comes from its equal, or from one that has
// only lost elements within, as a group of handlers does.
std::vector<std::optional<std::size_t>> sourcesOf(const JSONItems& newItems,
                                                  const JSONItems& oldItems);

}  // namespace tallowbrook::host
