#include "Focus/EditorOfSession.h"

namespace tallowbrook::host {

std::vector<std::string> programsAbove(const SessionSnapshot& session,
                                       const FocusOperations& operations) {
    std::vector<std::string> names;
    if (!session.tty) return names;
    for (auto& process : operations.hostChain(*session.tty))
        names.push_back(std::move(process.name));
    return names;
}

}  // namespace tallowbrook::host
