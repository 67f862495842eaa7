#include "Terminal/ProcessTable.h"

#include <sys/stat.h>

#include "Text/UTF8.h"

namespace tallowbrook {

std::string ProcessTable::decodeCommandName(std::string_view buffer) {
    buffer = buffer.substr(0, maxCommandNameBytes);
    buffer = buffer.substr(0, buffer.find('\0'));
    return UTF8::replacingInvalid(buffer);
}

std::optional<dev_t> ProcessTable::deviceNumber(const TerminalDevice& terminal) {
    struct stat status{};
    if (stat(terminal.path().c_str(), &status) != 0) return std::nullopt;
    return status.st_rdev;
}

}  // namespace tallowbrook
