#include "Integrations/IntegrationHealth.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

namespace tallowbrook {
namespace {

using namespace std::chrono_literals;

using Health = IntegrationHealth;
using Record = IntegrationHealthRecord;

constexpr Instant day{std::chrono::sys_days{std::chrono::year{2025} / 3 / 1}};
constexpr Instant nine = day + 9h;
constexpr Instant ten = day + 10h;
constexpr Instant eleven = day + 11h;
constexpr Seconds grace{600};

TEST(IntegrationHealth, isJudgedByTheSetupTheLastEventAndTheGracePeriod) {
    struct Row {
        Record record;
        Instant now;
        Health health;
        Seconds gracePeriod = grace;
    };
    for (const auto& [record, now, health, gracePeriod] : {
             Row{{ten, {}}, nine, Health::waiting(ten)},
             Row{{ten, {}}, ten, Health::waiting(ten)},
             Row{{ten, {}}, ten + 10min - 1us, Health::waiting(ten)},
             Row{{ten, {}}, ten + 10min, Health::silent(ten)},
             Row{{ten, {}}, ten + 24h, Health::silent(ten)},
             Row{{ten, {}}, ten, Health::silent(ten), Seconds{0}},
             Row{{ten, nine}, ten + 1min, Health::waiting(ten)},
             Row{{ten, ten - 1us}, eleven, Health::silent(ten)},
             Row{{ten, ten}, eleven, Health::receiving(ten)},
             Row{{ten, eleven}, eleven, Health::receiving(eleven)},
             Row{{{}, nine}, eleven, Health::receiving(nine)},
             Row{{}, ten, Health::notApplicable()},
         }) {
        EXPECT_EQ(record.health(true, now, gracePeriod), health);
        EXPECT_EQ(record.health(false, now, gracePeriod), Health::notApplicable());
    }
}

TEST(IntegrationHealth, isDescribedInALine) {
    const Instant instant = day + 14h + 30min + 5s + 999ms;
    EXPECT_EQ(Health::waiting(instant).diagnosticDescription(),
              "waiting for the first event since setup at 2025-03-01T14:30:05Z");
    EXPECT_EQ(Health::silent(instant).diagnosticDescription(),
              "no event since setup at 2025-03-01T14:30:05Z");
    EXPECT_EQ(Health::receiving(instant).diagnosticDescription(),
              "last live event 2025-03-01T14:30:05Z");
    EXPECT_EQ(Health::notApplicable().diagnosticDescription(), std::nullopt);
}

TEST(IntegrationHealthRecord, isSetUpAnewAtAnyTime) {
    Record record{ten, nine};
    record.noteSetUp(eleven);
    EXPECT_EQ(record, (Record{eleven, nine}));
    record.noteSetUp(nine);
    EXPECT_EQ(record, (Record{nine, nine}));
}

TEST(IntegrationHealthRecord, takesOnlyNewerEvents) {
    Record record;
    record.noteLiveEvent(ten);
    EXPECT_EQ(record, (Record{std::nullopt, ten}));
    record.noteLiveEvent(nine);
    record.noteLiveEvent(ten);
    EXPECT_EQ(record, (Record{std::nullopt, ten}));
    record.noteLiveEvent(eleven);
    EXPECT_EQ(record, (Record{std::nullopt, eleven}));
}

TEST(IntegrationHealthRecord, isReconciledWithWhatTheHostSees) {
    struct Row {
        const char* why;
        Record before;
        bool isConfigured;
        bool isReady;
        std::optional<Instant> stored;
        Record after;
    };
    for (const auto& [why, before, isConfigured, isReady, stored, after] : {
             Row{"it waits from now on", {}, true, true, {}, {eleven, {}}},
             Row{"it is not ready yet", {}, true, false, {}, {}},
             Row{"it is not configured", {}, false, true, {}, {}},
             Row{"an event in the record is enough", {{}, nine}, true, true, {}, {{}, nine}},
             Row{"so is one in the store", {}, true, true, nine, {{}, nine}},
             Row{"it was set up already", {ten, {}}, true, true, {}, {ten, {}}},
             Row{"set up, and an event came", {ten, {}}, true, true, nine, {ten, nine}},
             Row{"a newer stored event counts", {ten, nine}, true, true, ten, {ten, ten}},
             Row{"an older one does not", {ten, ten}, true, true, nine, {ten, ten}},
             Row{"no longer configured", {ten, nine}, false, false, {}, {{}, nine}},
             Row{"though it says it is ready", {ten, {}}, false, true, {}, {{}, {}}},
             Row{"the last event is kept all the same", {ten, nine}, false, false, ten, {{}, ten}},
             Row{"not ready, and an event came", {{}, {}}, true, false, nine, {{}, nine}},
             Row{"not ready any more", {ten, {}}, true, false, {}, {ten, {}}},
         }) {
        Record record = before;
        record.reconcile(isConfigured, isReady, stored, eleven);
        EXPECT_EQ(record, after) << why;
    }
}

TEST(IntegrationHealthCoding, writesWhatIsThere) {
    EXPECT_EQ(IntegrationHealthCoding::encode({}), "{}");
    EXPECT_EQ(IntegrationHealthCoding::encode({ten, std::nullopt}),
              R"({"setUpAt":"2025-03-01T10:00:00.000Z"})");
    EXPECT_EQ(
        IntegrationHealthCoding::encode({ten, nine + 1ms}),
        R"({"lastLiveEventAt":"2025-03-01T09:00:00.001Z","setUpAt":"2025-03-01T10:00:00.000Z"})");
}

TEST(IntegrationHealthCoding, readsBackWhatItWrote) {
    for (const auto& record : {Record{}, Record{ten, std::nullopt}, Record{std::nullopt, nine},
                               Record{ten, nine + 123ms}, Record{distantPast, distantPast}})
        EXPECT_EQ(IntegrationHealthCoding::decode(IntegrationHealthCoding::encode(record)), record);
    EXPECT_EQ(IntegrationHealthCoding::decode(R"({"setUpAt":null,"other":1})"), Record{});
}

TEST(IntegrationHealthCoding, refusesAnythingElse) {
    for (const char* text :
         {"", "[]", "null", "{", R"({"setUpAt":1})", R"({"setUpAt":"yesterday"})",
          R"({"lastLiveEventAt":"2025-03-01"})", R"({"lastLiveEventAt":true})",
          R"({"setUpAt":"2025-03-01T10:00:00.000Z","lastLiveEventAt":""})"})
        EXPECT_FALSE(IntegrationHealthCoding::decode(text)) << text;
}

}  // namespace
}  // namespace tallowbrook
