#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "EventIngestion/PayloadNormalizer.h"
#include "Support/Corpora.h"
#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

// Whether the file is taken for valid JSON; that a payload must be an object, too, is another
// matter.
bool isAccepted(const std::filesystem::path& file) {
    const auto event = PayloadNormalizer::normalize(contentsOf(file), PayloadSource::claudeCodeHook,
                                                    EventOrigin::live, Instant{}, UUID{});
    return event || event.error() == NormalizationError::notAnObject();
}

TEST(PublicJSONSuite, everyValidFileIsAcceptedAndEveryInvalidOneRefused) {
    const auto files = Corpora::jsonSuite();
    if (files.empty())
        GTEST_SKIP() << "the public JSON parsing test suite is not in " << Corpora::directory();

    int mandatory = 0;
    for (const auto& file : files) {
        const std::string name = file.filename().string();
        if (!name.starts_with("y_") && !name.starts_with("n_")) continue;
        ++mandatory;
        EXPECT_EQ(isAccepted(file), name.starts_with("y_")) << name;
    }
    EXPECT_EQ(mandatory, Corpora::mandatorySuiteFiles) << "the suite is not whole";
}

}  // namespace
}  // namespace tallowbrook
