// What a real program does to the files below a directory, recorded by strace(1) with every byte.
#pragma once

#include <filesystem>

#include "DiskModel.h"
#include "EndToEnd/RunProgram.h"

namespace tallowbrook {

// A run to its end, with all the processes it starts. `disk` has followed everything below
// `directory` until then and follows this run too; the test fails where the model and the real
// directory differ afterwards, such as after a call that the recording does not know.
ProgramResult recordRun(const ProgramCall& call, const std::filesystem::path& directory,
                        DiskModel& disk);

}  // namespace tallowbrook
