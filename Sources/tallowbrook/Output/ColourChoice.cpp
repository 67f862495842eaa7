#include "Output/ColourChoice.h"

#include <cstdlib>

namespace tallowbrook::host {

ColourChoice colourChoice(std::string_view word) {
    if (word == "always") return ColourChoice::always;
    return word == "never" ? ColourChoice::never : ColourChoice::automatic;
}

bool wantsColours(ColourChoice choice) {
    if (choice != ColourChoice::automatic) return choice == ColourChoice::always;
    const char* refused = std::getenv("NO_COLOR");
    // Set to nothing it counts as unset, as its inventors have it.
    return refused == nullptr || *refused == '\0';
}

}  // namespace tallowbrook::host
