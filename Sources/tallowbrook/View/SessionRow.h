// One session as a line of the live view: its columns, as many as fit, the most telling first.
//
// Pure functions; safe from any thread, while none changes the environment.
#pragma once

#include <cstddef>

#include "View/Picture.h"
#include "View/SessionText.h"

namespace tallowbrook::host {

class RowLayout {
 public:
    explicit RowLayout(std::size_t columns);

    PictureLine line(const ListedSession& session, bool isSelected, Instant now) const;

 private:
    std::size_t columns_;
    std::size_t gap_;
    // Of each column its width; 0 where it is left out.
    std::size_t project_ = 0;
    std::size_t status_ = 0;
    std::size_t reason_ = 0;
    std::size_t since_ = 0;
    std::size_t agent_ = 0;
    std::size_t directory_ = 0;
};

}  // namespace tallowbrook::host
