// Whether a notification on the screen of this machine is seen by the one who runs the host.
#pragma once

namespace tallowbrook::host {

// False for a host that was started across ssh: its user sits before another screen. Reads the
// environment.
bool isBeforeThisScreen();

inline constexpr const char* notBeforeThisScreen =
    "the host runs across ssh, and this would show on the screen over there";

}  // namespace tallowbrook::host
