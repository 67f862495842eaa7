#include "Focus/FocusOperations.h"

#include <gtest/gtest.h>

#include "Support/FileContents.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

struct LiveRequests : testing::Test {
    TemporaryDirectory directory;
    std::filesystem::path older = directory.path / "older.json";
    std::filesystem::path request = directory.path / "request.json";
    FocusOperations operations = FocusOperations::live();

    LiveRequests() { writeContents(older, "{}"); }
};

TEST_F(LiveRequests, areTakenOnceTheirFileIsGone) {
    EXPECT_TRUE(operations.requestIsTaken(request)) << "though an older one is not";
}

TEST_F(LiveRequests, thatStayAreNotWaitedForForEver) {
    writeContents(request, "{}");
    EXPECT_FALSE(operations.requestIsTaken(request));
}

}  // namespace
}  // namespace tallowbrook::host
