// Any bytes as a payload of every source: what is accepted must survive the way through the spool.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Domain/EventCoding.h"
#include "EventIngestion/PayloadNormalizer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tallowbrook;
    const std::string_view payload{reinterpret_cast<const char*>(data), size};
    for (const auto source : allCases<PayloadSource>()) {
        const auto event =
            PayloadNormalizer::normalize(payload, source, EventOrigin::live, Instant{}, UUID{});
        if (!event) continue;
        std::string line = EventCoding::encodeLine(*event);
        line.pop_back();
        const auto decoded = EventCoding::decodeLine(line);
        if (!decoded || *decoded != *event) std::abort();
    }
    return 0;
}
