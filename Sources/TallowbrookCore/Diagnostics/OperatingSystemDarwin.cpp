#include <sys/sysctl.h>

#include <array>

#include "Diagnostics/OperatingSystem.h"

namespace tallowbrook {
namespace {

// Empty when the kernel does not tell.
std::string kernelText(const char* name) {
    std::array<char, 256> buffer{};
    std::size_t size = buffer.size() - 1;
    if (sysctlbyname(name, buffer.data(), &size, nullptr, 0) != 0) return {};
    return buffer.data();
}

}  // namespace

std::string OperatingSystem::description() {
    return "macOS Version " + kernelText("kern.osproductversion") + " (Build " +
           kernelText("kern.osversion") + ")";
}

}  // namespace tallowbrook
