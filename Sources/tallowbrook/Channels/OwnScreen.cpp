#include "Channels/OwnScreen.h"

#include <stdlib.h>

namespace tallowbrook::host {

bool isBeforeThisScreen() {
    // Set by every ssh server for what it starts, see ssh(1).
    const char* connection = getenv("SSH_CONNECTION");
    return connection == nullptr || *connection == '\0';
}

}  // namespace tallowbrook::host
