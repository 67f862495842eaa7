// A whole sentence for the user: what could not be done, or why not. One of the three kinds of
// error in the host, beside a system failure (`FileError`) and the database's exception.
//
// A plain value; safe from any thread.
#pragma once

#include <string>
#include <string_view>

namespace tallowbrook::host {

class Sentence {
 public:
    // Puts a full stop behind words that end in no `.`, `?` or `!`, so that a sentence made of
    // parts never runs into the one behind it.
    explicit Sentence(std::string words);

    // One sentence, or several with a blank between them.
    const std::string& text() const { return text_; }

    // Both, one behind the other.
    Sentence followedBy(std::string_view words) const;

    bool operator==(const Sentence&) const = default;

 private:
    std::string text_;
};

}  // namespace tallowbrook::host
