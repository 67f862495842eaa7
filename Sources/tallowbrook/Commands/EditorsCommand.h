// `tallowbrook setup --editors` and `tallowbrook remove --editors`: our extension in the editors.
#pragma once

#include "EventBridge/TallowbrookPaths.h"
#include "Setup/ConfigChange.h"

namespace tallowbrook::host {

// Both give the exit status: 0, 1 for a failure (no editor is there, too), 2 for a home that the
// extension does not know, 3 when the user said no. A dry run looks at any home.
int setUpEditors(const TallowbrookPaths& paths, const ReviewOptions& options);
int removeFromEditors(const TallowbrookPaths& paths, const ReviewOptions& options);

}  // namespace tallowbrook::host
