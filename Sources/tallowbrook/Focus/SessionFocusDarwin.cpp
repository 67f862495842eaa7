#include "Focus/SessionFocus.h"
#include "Focus/TabFocus.h"

namespace tallowbrook::host {

FocusOutcome focusSession(const SessionSnapshot& session, const TallowbrookPaths& paths,
                          const FocusOperations& operations) {
    if (session.tty) return TabFocus{paths, operations}.focus(*session.tty);
    return FocusOutcome::nothing(
        "The session reported no terminal, so its window cannot be found.");
}

}  // namespace tallowbrook::host
