#include "Output/StandardStreams.h"

#include <fmt/core.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "Output/PrintableText.h"

namespace tallowbrook::host {

std::expected<void, FileError> StandardStreams::show(std::string_view text) {
    // Flushed each time: a reader behind a pipe waits for the line, and a failure is to be known
    // now.
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return {};
    const int error = errno;
    // The stream would refuse all that follows, although its reader may be back by then.
    std::clearerr(stdout);
    return std::unexpected(FileError{"write", error});
}

void StandardStreams::mention(std::string_view text) {
    [[maybe_unused]] const auto shown = show(text);
}

int StandardStreams::showAsResult(std::string_view text) {
    const auto shown = show(text);
    if (shown) return ExitStatus::done;
    return fail("Standard output cannot be written: " + shown.error().description() + ".");
}

void StandardStreams::complain(std::string_view sentence) {
    // Behind the program's name, since a shell shows the words of several programs in one stream.
    fmt::print(stderr, "tallowbrook: {}\n", PrintableText::printable(sentence));
}

void StandardStreams::complain(const Sentence& sentence) { complain(sentence.text()); }

bool StandardStreams::takesMore(int stream) {
    pollfd writer{stream, POLLOUT, 0};
    return poll(&writer, 1, 0) > 0;
}

void StandardStreams::complainUnlessStalled(std::string_view sentence) {
    if (takesMore(STDERR_FILENO)) complain(sentence);
}

int StandardStreams::fail(std::string_view sentence, int status) {
    complain(sentence);
    return status;
}

int StandardStreams::fail(const Sentence& sentence, int status) {
    return fail(sentence.text(), status);
}

}  // namespace tallowbrook::host
