// A user of one test: a home directory, a data home that does not exist yet, and both programs run
// on them in an environment of their own, so that tests that run at once do not wake each other.
#pragma once

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Domain/AgentEvent.h"
#include "EventBridge/TallowbrookPaths.h"
#include "RunProgram.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook {

struct TestHome {
    TestHome();

    TemporaryDirectory directory;
    TallowbrookPaths paths{directory.path / "data"};
    Environment environment;

    // The helper or the host, with "--home" and this home behind the other arguments.
    ProgramCall hookCall(std::vector<std::string> arguments, std::string input = {}) const;
    ProgramCall hostCall(std::vector<std::string> arguments) const;
    // The same without "--home".
    ProgramCall plainHookCall(std::vector<std::string> arguments, std::string input = {}) const;
    ProgramCall plainHostCall(std::vector<std::string> arguments) const;

    // Returns a millisecond later at the earliest, so that no two events have the same time.
    ProgramResult hook(std::vector<std::string> arguments, std::string input = {}) const {
        ProgramResult result = run(hookCall(std::move(arguments), std::move(input)));
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
        return result;
    }
    ProgramResult host(std::vector<std::string> arguments) const {
        return run(hostCall(std::move(arguments)));
    }

    // Hands an event to the helper as Claude Code does; the test fails if the helper makes a sound.
    void claude(const std::string& eventName, const std::string& session = "S1") const;

    // Writes to the active spool file, as a helper would.
    void spool(const std::string& lines) const;
    void spool(const AgentEvent& event) const;

    // The events of the active spool file. Each line must be one, in the form of the coding.
    std::vector<AgentEvent> spooled() const { return spooled(paths); }
    static std::vector<AgentEvent> spooled(const TallowbrookPaths& paths);

    // The messages of the helper's log without their times, which must be well-formed.
    std::vector<std::string> logged() const { return logged(paths); }
    static std::vector<std::string> logged(const TallowbrookPaths& paths);

    // The number of rows of a table of the host's database.
    int rows(const std::string& table) const;
};

// A Claude Code payload; its directory is /Users/x/proj.
std::string claudePayload(const std::string& eventName, const std::string& session = "S1");

// The same, made `size` bytes long by a member that nobody reads.
std::string claudePayloadOf(std::size_t size);

// `minimalEvent` of Support/SampleEvents.h as it would come now: with a new id.
AgentEvent currentEvent(const std::string& session);

// The host's output with "TIME" in the place of each notification's time of day.
std::string withoutTimes(const std::string& output);

}  // namespace tallowbrook
