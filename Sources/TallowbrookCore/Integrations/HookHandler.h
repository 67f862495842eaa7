// The entries that make an agent run the helper: how they are recognised and written.
//
// A handler is a JSON object with a "type", a "command" and perhaps more. It is ours when its
// command runs the helper, and an exact one when it runs it as it would be installed today.
//
// Pure functions; safe from any thread.
#pragma once

#include <string>

#include "Integrations/HookInstallSpec.h"
#include "Integrations/JSONNode.h"

namespace tallowbrook::HookHandler {

// Whether the handler runs a command that names the helper as a word of its own or as the last part
// of a path.
bool isOurs(const JSONNode& handler);

// Whether type, command and arguments are those of `spec`. Other members, such as a timeout that
// the user has changed, do not count.
bool isExact(const JSONNode& handler, const HookInstallSpec& spec);

// A group that holds the one handler which `spec` wants for `event`.
JSONNode newGroup(const std::string& event, const HookInstallSpec& spec);

}  // namespace tallowbrook::HookHandler
