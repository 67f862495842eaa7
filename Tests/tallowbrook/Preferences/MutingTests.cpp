#include "Preferences/Muting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Preferences/PreferenceTable.h"

namespace tallowbrook::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const auto calendar = Calendar::fixed(std::chrono::minutes{0});
const Instant noon{std::chrono::hours{12}};
const Instant midnight{std::chrono::hours{24}};

std::vector<std::string> texts(const std::vector<Sentence>& sentences) {
    std::vector<std::string> all;
    for (const auto& sentence : sentences) all.push_back(sentence.text());
    return all;
}

Preferences with(Preferences preferences, std::string_view name, std::string_view value) {
    return setPreference(std::move(preferences), name, value).value();
}

// What is said of the defaults with one of them changed.
std::vector<std::string> saidOf(std::string_view name, std::string_view value, Instant now = noon) {
    return texts(Muting::of(with({}, name, value), now, calendar).sentences());
}

TEST(Muting, ofTheDefaultsIsNone) {
    EXPECT_THAT(texts(Muting::of({}, noon, calendar).sentences()), IsEmpty());
}

TEST(Muting, ofEverythingSaysWhyAndHowToEndIt) {
    EXPECT_THAT(
        saidOf("enabled", "off"),
        ElementsAre(
            "Nothing is told, as \"enabled\" is off (tallowbrook preferences enabled on)."));
    EXPECT_THAT(
        saidOf("paused", "on"),
        ElementsAre("Nothing is told, as \"paused\" is on (tallowbrook preferences paused off)."));

    Preferences kinds;
    for (const char* name : {"notifyOnAttention", "notifyOnCompletion", "notifyOnFailure"})
        kinds = with(kinds, name, "off");
    EXPECT_THAT(texts(Muting::of(kinds, noon, calendar).sentences()),
                ElementsAre("Nothing is told, as every kind is off (tallowbrook preferences "
                            "notifyOnAttention on)."));

    // As an older program may have stored it.
    Preferences age;
    age.notifications.maxEventAge = Seconds{0};
    EXPECT_THAT(texts(Muting::of(age, noon, calendar).sentences()),
                ElementsAre("Nothing is told, as \"maxEventAge\" is 0 (tallowbrook preferences "
                            "maxEventAge 600)."));
}

TEST(Muting, ofQuietHoursIsSaidInOtherWordsWhileTheyLast) {
    EXPECT_THAT(saidOf("quietHours", "22:00-07:00"),
                ElementsAre("Nothing is told from 22:00 to 07:00."));
    EXPECT_THAT(saidOf("quietHours", "22:00-07:00", midnight),
                ElementsAre("Quiet hours: nothing is told until 07:00."));
    const auto quiet = with({}, "quietHours", "22:00-07:00");
    EXPECT_THAT(Muting::of(quiet, noon, calendar).sentencesNow(), IsEmpty());
    EXPECT_THAT(texts(Muting::of(quiet, midnight, calendar).sentencesNow()),
                ElementsAre("Quiet hours: nothing is told until 07:00."));
}

TEST(Muting, ofAPartNamesIt) {
    EXPECT_THAT(saidOf("notifyOnAttention", "off"),
                ElementsAre("Not told: requests and reminders of them."));
    EXPECT_THAT(saidOf("notifyOnFailure", "off"), ElementsAre("Not told: failed turns."));
    EXPECT_THAT(saidOf("reminderInterval", "off"), ElementsAre("Not told: reminders."));
    EXPECT_THAT(saidOf("dedupeInterval", "59"), IsEmpty());
    EXPECT_THAT(saidOf("dedupeInterval", "60"),
                ElementsAre("Not told: the same of a session within 60 s."));
    EXPECT_THAT(saidOf("maxEventAge", "10"), IsEmpty());
    EXPECT_THAT(saidOf("maxEventAge", "9"),
                ElementsAre("Not told: what comes more than 9 s late."));
    EXPECT_THAT(
        texts(Muting::of(with(with({}, "notifyOnCompletion", "off"), "reminderInterval", "off"),
                         noon, calendar)
                  .sentences()),
        ElementsAre("Not told: completed turns, reminders."));
}

TEST(Muting, ofEverythingLeavesTheRestUnsaid) {
    const auto preferences =
        with(with(with({}, "paused", "on"), "notifyOnFailure", "off"), "quietHours", "22:00-07:00");
    EXPECT_EQ(Muting::of(preferences, midnight, calendar).sentences().size(), 1U);
}

}  // namespace
}  // namespace tallowbrook::host
