#include <gtest/gtest.h>

#include <algorithm>

#include "SessionState/DemoData.h"
#include "Support/ChildProcess.h"
#include "Support/FailingSystemCallLinux.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

TEST(DemoDataLinux, isWholeButForItsIdsWhereThereAreNoRandomBytes) {
    const auto seen = inChildProcess([]() -> std::string {
        if (!refuseRandomBytes()) return notRefused;
        const auto data = DemoData::make(sampleTime, Seconds{900});
        const auto withoutID = std::ranges::count_if(
            data.entries, [](const DemoData::Entry& entry) { return entry.event.id.is_nil(); });
        return std::to_string(data.sessions.size()) + " sessions, " +
               std::to_string(data.entries.size()) + " events, " + std::to_string(withoutID) +
               " without an id";
    });
    if (seen == notRefused) GTEST_SKIP() << notRefused;
    EXPECT_EQ(seen, "8 sessions, 39 events, 39 without an id");
}

}  // namespace
}  // namespace tallowbrook
