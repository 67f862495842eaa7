#include "Domain/AgentEvent.h"

namespace tallowbrook {

std::string_view displayName(Provider provider) {
    return provider == Provider::codexCLI ? "Codex CLI" : "Claude Code";
}

}  // namespace tallowbrook
