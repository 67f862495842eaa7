#include "Domain/AgentProfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string_view>

#include "EventIngestion/PayloadNormalizer.h"
#include "Integrations/HookInstallSpec.h"
#include "Support/SampleEvents.h"

namespace tallowbrook {
namespace {

using testing::Each;
using testing::EndsWith;
using testing::Not;
using testing::StartsWith;

// What no two agents may share, or one would be taken for the other.
TEST(AgentProfile, everyAgentHasNamesOfItsOwn) {
    std::set<std::pair<int, std::string_view>> names;
    for (const auto provider : allCases<Provider>()) {
        const auto& profile = AgentProfile::of(provider);
        EXPECT_EQ(profile.provider, provider);
        int kind = 0;
        for (const std::string_view name :
             {profile.displayName, hookSourceWord(provider), profile.locations.executableName,
              std::string_view{profile.locations.configDirectoryVariable},
              profile.locations.configDirectory, profile.locations.hookConfigFile,
              profile.locations.extensionPrefix}) {
            EXPECT_NE(name, "") << rawValue(provider);
            EXPECT_TRUE(names.insert({kind++, name}).second) << name;
        }
        EXPECT_THAT(profile.nextStep, EndsWith(".")) << rawValue(provider);
    }
}

TEST(AgentProfile, everyPathBeginsWithASlashAndDoesNotEndWithOne) {
    for (const auto provider : allCases<Provider>()) {
        const auto& places = AgentProfile::of(provider).locations;
        std::vector<std::string_view> paths{places.configDirectory, places.hookConfigFile};
        for (const auto& list : {places.homeExecutables, places.extensionExecutables,
                                 places.linuxExtensionExecutables, places.absoluteExecutables})
            paths.insert(paths.end(), list.begin(), list.end());
        EXPECT_THAT(paths, Each(StartsWith("/")));
        EXPECT_THAT(paths, Each(Not(EndsWith("/"))));
        EXPECT_THAT(places.hookConfigFile, StartsWith(places.configDirectory));
    }
}

TEST(AgentProfile, everySourceBelongsToOneAgentAndNamesItsEventsOnce) {
    std::set<PayloadSource> sources;
    for (const auto provider : allCases<Provider>()) {
        EXPECT_EQ(AgentProfile::of(provider).hooks().channel, EventChannel::hook);
        for (const auto& source : AgentProfile::of(provider).sources) {
            EXPECT_TRUE(sources.insert(source.source).second) << rawValue(source.source);
            EXPECT_EQ(AgentProfile::of(source.source).provider, provider);
            EXPECT_EQ(&agentSource(source.source), &source);
            std::set<std::string_view> names;
            for (const auto& event : source.events)
                EXPECT_TRUE(names.insert(event.name).second) << event.name;
            EXPECT_FALSE(names.empty()) << rawValue(source.source);
        }
    }
    EXPECT_EQ(sources.size(), allCases<PayloadSource>().size());
}

TEST(AgentProfile, theHooksOfEveryAgentTellWhatASessionGoesThrough) {
    for (const auto provider : allCases<Provider>()) {
        std::set<EventCategory> told;
        for (const auto& event : AgentProfile::of(provider).hooks().events)
            if (event.hook != HookInstallation::none) told.insert(event.category);
        for (const auto category : {EventCategory::sessionStarted, EventCategory::promptSubmitted,
                                    EventCategory::attentionRequested, EventCategory::activity,
                                    EventCategory::turnCompleted, EventCategory::sessionEnded})
            EXPECT_TRUE(told.contains(category)) << rawValue(provider) << " " << rawValue(category);
        EXPECT_GT(AgentProfile::of(provider).hookTimeoutSeconds, 0);
    }
}

TEST(AgentProfile, everyEventIsReadAsItsRuleSays) {
    for (const auto source : allCases<PayloadSource>())
        for (const auto& rule : agentSource(source).events) {
            PayloadFields fields;
            fields[agentSource(source).eventName] = rule.name;
            if (rule.detail) fields[rule.detail->from] = "x";
            const auto event =
                PayloadNormalizer::makeEvent(fields, source, EventOrigin::live, sampleTime, UUID{});
            EXPECT_EQ(event.eventType, rule.name);
            EXPECT_EQ(event.category, rule.category) << rule.name;
            EXPECT_NE(event.category, EventCategory::unrecognized) << rule.name;
            EXPECT_EQ(event.attention, rule.attention) << rule.name;
            EXPECT_EQ(event.attention.has_value(),
                      event.category == EventCategory::attentionRequested)
                << rule.name;
            if (rule.detail) {
                EXPECT_EQ(event.detail.*(rule.detail->to), "x") << rule.name;
            }
        }
}

}  // namespace
}  // namespace tallowbrook
