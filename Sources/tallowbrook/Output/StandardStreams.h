// The two ways in which the host speaks to its user.
#pragma once

#include <expected>
#include <string_view>

#include "Output/ExitStatus.h"
#include "Output/Sentence.h"
#include "System/FileError.h"

namespace tallowbrook::host::StandardStreams {

// Writes the text to standard output as it is, at once.
[[nodiscard]] std::expected<void, FileError> show(std::string_view text);

// Writes as `show` does, where a text that cannot be written is no reason to stop.
void mention(std::string_view text);

// Writes as `show` does, for a command that has nothing else to do: gives its exit status, 0, or 1
// with the reason on standard error.
int showAsResult(std::string_view text);

// Writes "tallowbrook: " and the sentence, made printable, to standard error.
void complain(std::string_view sentence);
void complain(const Sentence& sentence);

// Whether a write to this stream will not wait: it has room, or will fail.
bool takesMore(int stream);

// Complains, unless standard error takes nothing now, for a caller who must not wait.
void complainUnlessStalled(std::string_view sentence);

// Complains, for a command that ends with it: gives the status.
int fail(std::string_view sentence, int status = ExitStatus::failed);
int fail(const Sentence& sentence, int status = ExitStatus::failed);

}  // namespace tallowbrook::host::StandardStreams
