// Learning of the exits of children by one descriptor, for a loop that waits on descriptors.
//
// Used by one thread. One implementation per system.
#pragma once

#include <sys/types.h>

#include <vector>

#include "System/FileDescriptor.h"

namespace tallowbrook {

class ExitWatch {
 public:
    ExitWatch();

    // Watches a child of this process that was not reaped yet. False where the system cannot; also
    // for one that has exited already, as far as the system takes it for gone.
    bool add(pid_t child);

    // Readable, as poll(2) has it, once a child that is watched has exited; negative where the
    // system gave none.
    int descriptor() const { return queue_.number(); }

    // Watches those that have exited no longer. They are left to be reaped.
    void consume();

 private:
    FileDescriptor queue_;
    std::vector<FileDescriptor> children_;  // where the system has a descriptor for each
};

}  // namespace tallowbrook
