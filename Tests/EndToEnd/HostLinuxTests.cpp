#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "TestHome.h"

namespace tallowbrook {
namespace {

// Makes standard output a device on which there is never room.
void fillStandardOutput() { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }

TEST(HostOnLinux, keepsWhatItCouldNotTellForTheNext) {
    const TestHome home;
    home.claude("PermissionRequest");
    ProgramCall call = home.hostCall({"watch", "--once"});
    call.prepare = fillStandardOutput;
    run(call);
    EXPECT_EQ(home.rows("events"), 1);

    const ProgramResult next = home.host({"watch", "--once"});
    EXPECT_EQ(next.status, 0);
    EXPECT_NE(next.output.find("Claude Code needs permission"), std::string::npos) << next.output;
}

TEST(HostOnLinux, failsWhereItsOutputCannotBeWritten) {
    const TestHome home;
    home.claude("Stop");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"watch", "--once"}, std::vector<std::string>{"sessions"},
          std::vector<std::string>{"sessions", "--json"}}) {
        ProgramCall call = home.hostCall(arguments);
        call.prepare = fillStandardOutput;
        const ProgramResult result = run(call);
        EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
        EXPECT_NE(result.errors, "") << testing::PrintToString(arguments);
    }
}

}  // namespace
}  // namespace tallowbrook
