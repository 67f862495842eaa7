// Any bytes as a file name of the spool: what is taken for a segment has the parts of one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "EventBridge/SpoolFileName.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tallowbrook;
    const std::string name{reinterpret_cast<const char*>(data), size};
    if (name.find('/') != std::string::npos || name.find('\0') != std::string::npos) return 0;
    const auto entry = SpoolFileName::parse(name);
    if (!entry) return 0;
    const std::string start = std::string{rawValue(entry->prefix)} + "-";
    if (!name.starts_with(start) || !name.ends_with(".jsonl") || entry->url != name) std::abort();
    return 0;
}
