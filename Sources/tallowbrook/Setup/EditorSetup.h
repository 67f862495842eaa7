// Brings our extension into the user's editors, and takes it out again.
#pragma once

#include <filesystem>

#include "Setup/ConfigChange.h"
#include "Setup/EditorPrograms.h"

namespace tallowbrook::host {

// Both name every command line first, ask before each editor, and run it after a yes. They give the
// exit status: 0, 1 for a failure, 3 where the user said no. An editor that has nothing to change
// is left alone.

int setUpEditors(const std::vector<EditorProgram>& editors, const std::filesystem::path& package,
                 const EditorOperations& operations, const ReviewOptions& options);

int removeFromEditors(const std::vector<EditorProgram>& editors, const EditorOperations& operations,
                      const ReviewOptions& options);

}  // namespace tallowbrook::host
