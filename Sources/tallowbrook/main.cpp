// tallowbrook: the host program.
#include <csignal>
#include <cstdio>
#include <exception>

#include "Commands/CommandLine.h"
#include "Output/ExitStatus.h"

int main(int argc, char** argv) {
    // A limit to the size of files is then an ordinary write error, which can be said.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return tallowbrook::host::CommandLine{}.run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tallowbrook: Unexpected failure: %s.\n", error.what());
        return tallowbrook::host::ExitStatus::failed;
    }
}
