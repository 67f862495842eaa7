// A plain failure of the system while working on a file or directory.
#pragma once

#include <string>

namespace tallowbrook {

struct FileError {
    std::string step;  // the system call, such as "mkdir"
    int errorNumber = 0;
    bool operator==(const FileError&) const = default;

    // "Permission denied", the system's own English error text.
    std::string reason() const;

    // "mkdir failed: Permission denied"
    std::string description() const;
};

}  // namespace tallowbrook
