// Any bytes as JSON: a tree that can be read is written and read again as the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Integrations/OrderedJSON.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tallowbrook;
    const auto node = OrderedJSON::parse({reinterpret_cast<const char*>(data), size});
    if (!node) {
        if (node.error().line < 1 || node.error().column < 1) std::abort();
        return 0;
    }
    for (const char* indent : {"", "  "}) {
        const auto again = OrderedJSON::parse(OrderedJSON::serialize(*node, indent));
        if (!again || *again != *node) std::abort();
    }
    return 0;
}
