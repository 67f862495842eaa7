// Makes keys of the bytes that a terminal sends.
//
// Pure but for what it keeps of a key that has not come whole; used by one thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "View/Keys.h"

namespace tallowbrook::host {

// What a key sends, as the terminal's own description has it.
using KeySequences = std::vector<std::pair<std::string, Key>>;

class KeyDecoder {
 public:
    explicit KeyDecoder(KeySequences sequences) : sequences_{std::move(sequences)} {}

    // The keys that are whole by now. Sequences that nobody knows (ECMA-48 control sequences, a
    // character behind Esc) give none, and neither do bytes that are no UTF-8.
    std::vector<Key> take(std::string_view bytes);

    // Whether what came last may be the beginning of a longer key. Where nothing follows soon, it
    // was the Esc key: see `takeRest`.
    bool isPending() const { return !pending_.empty(); }

    // The keys that lie in what is pending, as nothing more belongs to it.
    std::vector<Key> takeRest();

 private:
    struct Match {
        std::size_t length = 0;  // 0: not whole yet
        Key key = 0;             // 0: none
    };
    Match matchFront() const;
    Match matchEscape() const;

    KeySequences sequences_;
    std::string pending_;
};

}  // namespace tallowbrook::host
