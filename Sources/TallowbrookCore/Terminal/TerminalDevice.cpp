#include "Terminal/TerminalDevice.h"

#include <algorithm>

namespace tallowbrook {
namespace {

constexpr std::string_view directory = "/dev/";

bool isAllowed(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/';
}

}  // namespace

std::optional<TerminalDevice> TerminalDevice::parse(std::string_view nameOrPath) {
    std::string_view name = nameOrPath;
    if (name.starts_with(directory)) name.remove_prefix(directory.size());
    // Without dots there is no way up, and so no way out of /dev.
    if (name.empty() || !std::ranges::all_of(name, isAllowed)) return std::nullopt;
    if (name.starts_with('/') || name.ends_with('/') || name.contains("//")) return std::nullopt;
    return TerminalDevice{name};
}

std::string TerminalDevice::path() const { return std::string{directory} + name_; }

}  // namespace tallowbrook
