#include "Support/BuildPaths.h"

namespace tallowbrook {

const char* const BuildPaths::samples = TALLOWBROOK_SAMPLES;
const char* const BuildPaths::defaultCorpora = TALLOWBROOK_CORPORA_DEFAULT;
const char* const BuildPaths::helper = TALLOWBROOK_HOOK;
const char* const BuildPaths::host = TALLOWBROOK_HOST;
const char* const BuildPaths::editorBundles = TALLOWBROOK_EDITOR_BUNDLES;
const char* const BuildPaths::applyPlan = TALLOWBROOK_APPLY_PLAN;

}  // namespace tallowbrook
