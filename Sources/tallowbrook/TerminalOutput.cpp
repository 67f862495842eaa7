#include "TerminalOutput.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstdio>

#include "Domain/FileError.h"
#include "TerminalText.h"

namespace tallowbrook::host {

bool TerminalOutput::show(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return true;
    const FileError error{"write", errno};
    std::clearerr(stdout);
    complain("Standard output cannot be written: " + error.description() + ".");
    return false;
}

void TerminalOutput::complain(std::string_view sentence) {
    fmt::print(stderr, "tallowbrook: {}\n", TerminalText::printable(sentence));
}

}  // namespace tallowbrook::host
