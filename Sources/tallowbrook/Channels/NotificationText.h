// Text made fit for what other programs show: a notification service, a terminal's own
// notifications.
//
// Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tallowbrook::host::NotificationText {

// More than any notification service shows of a title or a text.
inline constexpr std::size_t maxTitleLength = 200;
inline constexpr std::size_t maxBodyLength = 500;

// The text as one line: control characters, marks that turn the direction of writing and bytes that
// are no UTF-8 are left out, white space stands for line feeds. Of a text of more than `maxLength`
// user-perceived characters the front is kept, cut between two of them, with "…" behind it.
std::string plain(std::string_view text, std::size_t maxLength);

// The text with `&`, `<` and `>` as the entities of XML (https://www.w3.org/TR/xml/).
std::string escapedMarkup(std::string_view text);

}  // namespace tallowbrook::host::NotificationText
