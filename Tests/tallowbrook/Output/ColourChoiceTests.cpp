#include "Output/ColourChoice.h"

#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.h"

namespace tallowbrook::host {
namespace {

bool wantedWith(const std::optional<std::string>& noColour, ColourChoice choice) {
    const EnvironmentVariable variable{"NO_COLOR", noColour};
    return wantsColours(choice);
}

TEST(ColourChoice, isTheEnvironmentsUnlessTheUserChooses) {
    using enum ColourChoice;
    EXPECT_TRUE(wantedWith(std::nullopt, automatic));
    EXPECT_TRUE(wantedWith("", automatic));
    EXPECT_FALSE(wantedWith("1", automatic));
    EXPECT_FALSE(wantedWith("0", automatic));
    EXPECT_TRUE(wantedWith("1", always));
    EXPECT_FALSE(wantedWith(std::nullopt, never));
}

TEST(ColourChoice, isReadFromItsWord) {
    EXPECT_EQ(colourChoice("always"), ColourChoice::always);
    EXPECT_EQ(colourChoice("never"), ColourChoice::never);
    EXPECT_EQ(colourChoice("auto"), ColourChoice::automatic);
}

}  // namespace
}  // namespace tallowbrook::host
