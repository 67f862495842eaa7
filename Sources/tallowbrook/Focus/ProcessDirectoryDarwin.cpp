#include "Focus/ProcessDirectory.h"

namespace tallowbrook::host {

// Not needed: sessions are found by their terminal device here.
std::optional<std::string> directoryOfProcess(pid_t) { return std::nullopt; }

}  // namespace tallowbrook::host
