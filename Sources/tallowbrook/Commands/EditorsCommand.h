// `tallowbrook setup --editors` and `tallowbrook remove --editors`: our extension in the editors.
#pragma once

#include <string>
#include <vector>

#include "EventBridge/TallowbrookPaths.h"
#include "SessionState/SessionSnapshot.h"
#include "Setup/ConfigChange.h"

namespace tallowbrook::host {

// Both give the exit status: 0, 1 for a failure (no editor is there, too), 2 for a home that the
// extension does not know, 3 when the user said no. A dry run looks at any home.
int setUpEditors(const TallowbrookPaths& paths, const ReviewOptions& options);
int removeFromEditors(const TallowbrookPaths& paths, const ReviewOptions& options);

// A line for each editor that is here or has sessions: whether it has the extension. Empty, or
// ends in a line feed. Nothing is changed, and no editor is run.
std::string editorReport(const std::vector<SessionSnapshot>& sessions);

}  // namespace tallowbrook::host
