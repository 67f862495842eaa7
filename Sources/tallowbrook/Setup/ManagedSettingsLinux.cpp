#include "Setup/HookObstacle.h"

namespace tallowbrook::host {

// Where both agents' own documentation has them.
ManagedSettings ManagedSettings::ofThisSystem() { return {"/etc/claude-code", "/etc/codex"}; }

}  // namespace tallowbrook::host
