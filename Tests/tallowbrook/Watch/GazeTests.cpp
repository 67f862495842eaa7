#include "Watch/Gaze.h"

#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.h"
#include "Support/SampleSnapshots.h"
#include "Support/StandInProgram.h"
#include "Support/TemporaryDirectory.h"

namespace tallowbrook::host {
namespace {

// With a tmux that answers what the test wants.
struct GazeAt : testing::Test {
    TemporaryDirectory programs;
    EnvironmentVariable path{"PATH", programs.path.string() + ":/usr/bin:/bin"};
    Gaze gaze;

    void tmuxDoes(const std::string& script) const { makeStandIn(programs.path / "tmux", script); }

    void askAndWait() {
        PollLoop loop;
        const auto attached = loop.attach(gaze.source());
        gaze.ask();
        while (gaze.isAwaited()) loop.runOnce();
    }

    // One client that looks at ttys003 in /w/proj; `flags` to `ago` as they say.
    void lookWith(const std::string& flags, const std::string& focusEvents,
                  const std::string& features, int secondsAgo, const std::string& others = "") {
        tmuxDoes("now=$(date +%s)\necho \"client " + flags + " " + focusEvents + " " + features +
                 " $((now - " + std::to_string(secondsAgo) +
                 ")) /dev/ttys003 /w/my proj\"\necho 'pane /dev/ttys003 /w/my proj'\n" + others);
        askAndWait();
    }

    static SessionSnapshot session(std::optional<std::string> tty, std::string directory) {
        auto snapshot = minimalSnapshot();
        snapshot.tty = std::move(tty);
        snapshot.cwd = std::move(directory);
        return snapshot;
    }

    const SessionSnapshot onDevice = session("ttys003", "/elsewhere");
    const SessionSnapshot inDirectory = session(std::nullopt, "/w/my proj");
};

TEST_F(GazeAt, aSessionGoesByItsTerminalElseByItsDirectory) {
    lookWith("attached,focused,UTF-8", "1", "bpaste,focus,title", 3);
    EXPECT_TRUE(gaze.isOn(onDevice));
    EXPECT_TRUE(gaze.isOn(inDirectory));
    EXPECT_FALSE(gaze.isOn(session("ttys004", "/w/my proj")));
    EXPECT_FALSE(gaze.isOn(session(std::nullopt, "/w/other")));
}

TEST_F(GazeAt, aSessionIsUnknownWhereAnotherPaneHasItsDirectory) {
    lookWith("attached,focused", "1", "focus", 3, "echo 'pane /dev/ttys004 /w/my proj'");
    EXPECT_TRUE(gaze.isOn(onDevice));
    EXPECT_FALSE(gaze.isOn(inDirectory));
}

TEST_F(GazeAt, nothingWhereTheTerminalHasNoFocusOrDoesNotTell) {
    lookWith("attached,UTF-8", "1", "focus", 3);
    EXPECT_FALSE(gaze.isOn(onDevice));
    lookWith("attached,focused", "0", "focus", 3);
    EXPECT_FALSE(gaze.isOn(onDevice)) << "tmux does not listen";
    lookWith("attached,focused", "1", "bpaste,title", 3);
    EXPECT_FALSE(gaze.isOn(onDevice)) << "the terminal does not tell";
    lookWith("attached,focused", "1", "", 3);
    EXPECT_FALSE(gaze.isOn(onDevice));
}

TEST_F(GazeAt, nothingWhereNoKeyWasPressedForLong) {
    lookWith("attached,focused", "1", "focus", 600);
    EXPECT_FALSE(gaze.isOn(onDevice));
}

TEST_F(GazeAt, nothingWhereTmuxFailsHangsOrIsMissing) {
    for (const char* script : {"exit 1", "exec sleep 1000", "kill -9 $$", "exec yes", "echo"}) {
        lookWith("attached,focused", "1", "focus", 3);
        ASSERT_TRUE(gaze.isOn(onDevice));
        tmuxDoes(script);
        askAndWait();
        EXPECT_FALSE(gaze.isOn(onDevice)) << script;
    }
    const EnvironmentVariable empty{"PATH", programs.path / "nowhere"};
    Gaze other;
    other.ask();
    EXPECT_FALSE(other.isAwaited());
    EXPECT_FALSE(other.isOn(onDevice));
}

}  // namespace
}  // namespace tallowbrook::host
