// Why an agent's configuration file was left alone, and what its user can do about it.
#pragma once

#include <filesystem>

#include "Integrations/ConfigFileError.h"
#include "Output/Sentence.h"

namespace tallowbrook::host {

// Names the file and says that nothing was changed: once, where it is the only file that was to be.
// Reads the file again, to tell where in it the trouble is.
Sentence refusal(const ConfigPlanError& error, const std::filesystem::path& file, bool isOnlyFile);

}  // namespace tallowbrook::host
