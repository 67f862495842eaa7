// The word that was meant by one that does not exist.
//
// Pure; safe from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tallowbrook::host {

// The candidate with the fewest typing errors (a letter too many, too few, another one, or two
// exchanged), as long as a third of the letters are right; empty where none is that near. The first
// of several.
std::string nearestWord(std::string_view word, const std::vector<std::string>& candidates);

// "; did you mean "sessions"?", or nothing.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace tallowbrook::host
