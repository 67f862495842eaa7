#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "EventIngestion/PayloadNormalizer.h"

namespace tallowbrook {
namespace {

std::filesystem::path corpora() {
    if (const char* named = std::getenv("TALLOWBROOK_CORPORA")) return named;
    return TALLOWBROOK_CORPORA_DEFAULT;
}

// Whether the file is taken for valid JSON; that a payload must be an object, too, is another
// matter.
bool isAccepted(const std::filesystem::path& file) {
    std::ifstream stream{file, std::ios::binary};
    const std::string payload{std::istreambuf_iterator<char>{stream}, {}};
    const auto event = PayloadNormalizer::normalize(payload, PayloadSource::claudeCodeHook,
                                                    EventOrigin::live, Instant{}, UUID{});
    return event || event.error() == NormalizationError::notAnObject();
}

TEST(PublicJSONSuite, everyValidFileIsAcceptedAndEveryInvalidOneRefused) {
    const auto directory = corpora() / "json-test-suite" / "test_parsing";
    if (!std::filesystem::is_directory(directory))
        GTEST_SKIP() << "the public JSON parsing test suite is not at " << directory;

    int mandatory = 0;
    for (const auto& entry : std::filesystem::directory_iterator{directory}) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with("y_") && !name.starts_with("n_")) continue;
        ++mandatory;
        EXPECT_EQ(isAccepted(entry.path()), name.starts_with("y_")) << name;
    }
    EXPECT_EQ(mandatory, 283) << "the suite is not whole";
}

}  // namespace
}  // namespace tallowbrook
