// Brings the window in which a session runs to the front: the entry above the ways to do so. One
// implementation per system.
#pragma once

#include "EventBridge/TallowbrookPaths.h"
#include "Focus/FocusOperations.h"
#include "Focus/FocusOutcome.h"
#include "SessionState/SessionSnapshot.h"

namespace tallowbrook::host {

// Goes by the session's terminal device on macOS, and by its working directory on Linux, where an
// agent's device has no name that lasts. Runs other programs, one after the other, and may take
// several seconds.
FocusOutcome focusSession(const SessionSnapshot& session, const TallowbrookPaths& paths,
                          const FocusOperations& operations = FocusOperations::live());

}  // namespace tallowbrook::host
