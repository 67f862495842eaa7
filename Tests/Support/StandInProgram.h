// A shell script that stands in for a program on PATH.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Support/FileContents.h"

namespace tallowbrook {

// Makes the directory too. `script`: what /bin/sh runs.
inline void makeStandIn(const std::filesystem::path& file, std::string_view script) {
    writeContents(file, "#!/bin/sh\n" + std::string{script} + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

}  // namespace tallowbrook
