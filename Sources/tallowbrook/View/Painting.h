// The live view's picture of its content.
//
// Pure functions; safe from any thread, while none changes the environment, which holds the time
// zone.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

#include "View/Picture.h"
#include "View/ViewState.h"

namespace tallowbrook::host {

struct PaintedView {
    Picture picture;
    // When some text of it will read otherwise, to the full minute, so that a screen full of
    // sessions wakes the loop once a minute at most.
    std::optional<Instant> nextChange;
    std::size_t pageHeight = 1;  // lines of the list, or of the overlay
    std::size_t top = 0;         // as shown: those of the state, brought into bounds
    std::size_t overlayTop = 0;
};

// `told` are lines, the latest last, of which the last few are shown where there is room.
PaintedView paint(const ViewContent& content, const ViewState& state, const Offered& offered,
                  const std::deque<std::string>& told, ScreenSize size, Instant now);

}  // namespace tallowbrook::host
