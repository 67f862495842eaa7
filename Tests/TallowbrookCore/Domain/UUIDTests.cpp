#include "Domain/UUID.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tallowbrook {
namespace {

TEST(UUIDText, isWrittenInUpperCaseWithHyphens) {
    UUID uuid{};
    EXPECT_EQ(UUIDText::text(uuid), "00000000-0000-0000-0000-000000000000");
    unsigned value = 0x01;
    for (auto& byte : uuid) {
        byte = static_cast<std::uint8_t>(value);
        value += 0x11;
    }
    EXPECT_EQ(UUIDText::text(uuid), "01122334-4556-6778-899A-ABBCCDDEEF00");
}

TEST(UUIDText, isReadInEitherCase) {
    const auto upper = UUIDText::parse("0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D");
    ASSERT_TRUE(upper);
    EXPECT_EQ(UUIDText::parse("0a1b2c3d-4e5f-4a6b-8c7d-9e0f1a2b3c4d"), upper);
    EXPECT_EQ(UUIDText::text(*upper), "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D");
    EXPECT_EQ(upper->data[0], 0x0A);
    EXPECT_EQ(upper->data[15], 0x4D);
}

TEST(UUIDText, refusesEveryOtherForm) {
    for (const char* text :
         {"", "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4", "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4DE",
          "0A1B2C3D4E5F4A6B8C7D9E0F1A2B3C4D", "0A1B2C3D-4E5F-4A6B-8C7D9-E0F1A2B3C4D"})
        EXPECT_FALSE(UUIDText::parse(text)) << text;
}

TEST(UUIDText, refusesATextWithAnyCharacterReplaced) {
    const std::string valid = "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D";
    for (std::size_t i = 0; i < valid.size(); ++i)
        for (const char other : {'g', 'G', '/', ':', '@', '`', ' ', '\0', '\xFF'}) {
            std::string text = valid;
            text[i] = other;
            EXPECT_FALSE(UUIDText::parse(text)) << i << " " << text;
        }
}

TEST(RandomUUID, isOfVersionFourAndNeverTheSame) {
    std::set<std::string> texts;
    for (int i = 0; i < 1000; ++i) {
        const auto uuid = randomUUID();
        ASSERT_TRUE(uuid);
        const std::string text = UUIDText::text(*uuid);
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string{"89AB"}.find(text[19]), std::string::npos) << text;
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 1000U);
}

}  // namespace
}  // namespace tallowbrook
