#include "Preferences/Mutes.h"

#include <gtest/gtest.h>

#include "Preferences/HostPreferences.h"
#include "Support/SampleEvents.h"
#include "Support/SampleSnapshots.h"

namespace tallowbrook::host {
namespace {

const Mute ofSession{MuteScope::session, "claudeCode|S1", sampleTime};
const Mute ofProject{MuteScope::project, "my proj", std::nullopt};

SessionSnapshot session(const std::string& id, const std::string& directory) {
    auto snapshot = minimalSnapshot();
    snapshot.key = {Provider::claudeCode, id};
    snapshot.cwd = directory;
    return snapshot;
}

TEST(Mutes, silenceASessionOrAProject) {
    const Mutes mutes{{ofSession, ofProject}};
    EXPECT_TRUE(mutes.silence(session("S1", "/w/other")));
    EXPECT_TRUE(mutes.silence(session("S2", "/w/my proj")));
    EXPECT_FALSE(mutes.silence(session("S2", "/w/other")));
    EXPECT_FALSE(Mutes{}.silence(session("S1", "/w/my proj")));
}

TEST(Mutes, end) {
    const Mutes mutes{{ofSession, ofProject}};
    EXPECT_EQ(mutes.asOf(sampleTime - std::chrono::seconds{1}), mutes);
    EXPECT_EQ(mutes.asOf(sampleTime), (Mutes{{ofProject}}));
}

TEST(Mutes, takeThePlaceOfEarlierOnes) {
    Mutes mutes{{ofSession, ofProject}};
    mutes.add({MuteScope::session, "claudeCode|S1", std::nullopt});
    EXPECT_EQ(mutes.all,
              (std::vector<Mute>{ofProject, {MuteScope::session, "claudeCode|S1", std::nullopt}}));
}

TEST(Mutes, areReadAsTheyWereWritten) {
    const Mutes mutes{{ofSession, ofProject}};
    const auto text = MutesCoding::encode(mutes);
    EXPECT_EQ(MutesCoding::decode(text), mutes) << text;
    for (const char* broken : {"", "{}", R"({"mutes":["x"]})", R"({"mutes":["- nobody x"]})",
                               R"({"mutes":["yesterday session x"]})", R"({"mutes":[1]})"})
        EXPECT_EQ(MutesCoding::decode(broken), std::nullopt) << broken;
}

TEST(Pause, endsByItself) {
    Preferences preferences;
    preferences.notifications.paused = true;
    EXPECT_EQ(preferences.asOf(sampleTime), preferences) << "it has no end";
    preferences.host.pausedUntil = sampleTime;
    EXPECT_EQ(preferences.asOf(sampleTime - std::chrono::seconds{1}), preferences);
    EXPECT_EQ(preferences.asOf(sampleTime), Preferences{});
    preferences.notifications.paused = false;
    EXPECT_EQ(preferences.asOf(sampleTime - std::chrono::seconds{1}), Preferences{});
}

}  // namespace
}  // namespace tallowbrook::host
