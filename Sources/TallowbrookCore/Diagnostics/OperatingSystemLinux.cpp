#include <sys/utsname.h>

#include "Diagnostics/OperatingSystem.h"
#include "System/FileContents.h"

namespace tallowbrook {
namespace {

// The distribution's name for people, or else the kernel's release.
std::string prettyName() {
    for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
        const auto text = FileContents::read(file);
        if (!text) continue;
        const auto name = OperatingSystem::releaseVariable(*text, "PRETTY_NAME");
        if (name && !name->empty()) return *name;
        // The second file is for systems without the first, not for one that has no name in it.
        break;
    }
    utsname kernel{};
    return uname(&kernel) == 0 ? kernel.release : "";
}

}  // namespace

std::string OperatingSystem::description() { return "Linux " + prettyName(); }

}  // namespace tallowbrook
