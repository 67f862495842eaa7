// The payload on standard input.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace tallowbrook::hook {

struct StandardInput {
    std::unique_ptr<char[]> buffer;
    std::size_t size = 0;
    bool truncated = false;  // more than the limit came: the bytes are of no use

    std::string_view bytes() const { return {buffer.get(), size}; }
};

// Reads descriptor 0 to its end, also past `limit` bytes, so that the agent never waits on
// a full pipe. Keeps at most `limit` bytes. Waits for what is still to come, also where the
// descriptor itself does not block. A read error counts as the end.
StandardInput readStandardInput(std::size_t limit);

}  // namespace tallowbrook::hook
