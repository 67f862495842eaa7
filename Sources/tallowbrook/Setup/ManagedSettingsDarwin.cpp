#include "Setup/HookObstacle.h"

namespace tallowbrook::host {

// Where both agents' own documentation has them.
ManagedSettings ManagedSettings::ofThisSystem() {
    return {"/Library/Application Support/ClaudeCode", "/etc/codex"};
}

}  // namespace tallowbrook::host
