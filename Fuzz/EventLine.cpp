// Any bytes as a line of the spool: an event that can be read is written and read again as the
// same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Domain/EventCoding.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tallowbrook;
    const auto event = EventCoding::decodeLine({reinterpret_cast<const char*>(data), size});
    if (!event) return 0;
    std::string line = EventCoding::encodeLine(*event);
    line.pop_back();
    const auto again = EventCoding::decodeLine(line);
    if (!again || *again != *event) std::abort();
    return 0;
}
