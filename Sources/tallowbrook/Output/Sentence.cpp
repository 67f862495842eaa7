#include "Output/Sentence.h"

#include <utility>

namespace tallowbrook::host {

Sentence::Sentence(std::string words) : text_{std::move(words)} {
    constexpr std::string_view sentenceEnds = ".?!";
    if (!text_.empty() && !sentenceEnds.contains(text_.back())) text_ += '.';
}

Sentence Sentence::followedBy(std::string_view words) const {
    return Sentence{text_ + " " + std::string{words}};
}

}  // namespace tallowbrook::host
