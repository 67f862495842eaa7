// Where this build keeps what tests use, as absolute paths.
//
// They stand in one source alone: in every test's compile command they would keep a compiler cache
// from serving another clone.
#pragma once

namespace tallowbrook::BuildPaths {

extern const char* const samples;         // Tests/Samples
extern const char* const defaultCorpora;  // public files, where the user names no other place
extern const char* const helper;
extern const char* const host;
extern const char* const editorBundles;  // what script/build-editor makes
extern const char* const applyPlan;      // of Tests/Faults, with the program built on Linux alone

}  // namespace tallowbrook::BuildPaths
