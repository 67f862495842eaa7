// Taking the hooks out so that not even a blank or an empty list tells of them.
//
// Out of the changed text alone, an empty list that was there before cannot be told from one that
// the setup has made. The backups can tell.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Integrations/ConfigFileWriter.h"
#include "Integrations/HookInstallSpec.h"

namespace tallowbrook::host {

// The first of the candidates that holds none of our hooks and that setting up turns into exactly
// this text: what was there before, for nothing but our hooks has come since. Absent where there is
// none, as after any other change to the file. A pure function; safe from any thread.
std::optional<std::string> textBeforeSetup(const std::string& text,
                                           const std::vector<std::string>& candidates,
                                           const HookInstallSpec& spec);

// The plan that takes our hooks out, made to give back the text before the setup where one of the
// candidates is that.
ConfigChangePlan givingBack(ConfigChangePlan removal, const std::vector<std::string>& candidates,
                            const HookInstallSpec& spec);

}  // namespace tallowbrook::host
