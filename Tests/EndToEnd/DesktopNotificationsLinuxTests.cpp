// The programs on a desktop of the test's own: a bus, and a service that another project wrote to
// be talked to in tests.
#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>

#include "Support/FileContents.h"
#include "Support/PrivateBusLinux.h"
#include "Support/WaitUntil.h"
#include "TestHome.h"

namespace tallowbrook {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string python = "/usr/bin/python3";

struct OnADesktop : testing::Test {
    PrivateBus bus;
    TestHome home;
    std::filesystem::path log = home.directory.path / "service.log";
    std::optional<RunningProgram> service;

    OnADesktop() {
        home.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address;
        // Where a click may lead to: nowhere.
        home.environment["PATH"] = "/nowhere";
    }

    void startService(const std::string& capabilities = "body actions") {
        service.emplace(ProgramCall{
            .program = python,
            .arguments = {"-m", "dbusmock", "--template", "notification_daemon", "--parameters",
                          R"({"capabilities": ")" + capabilities + R"("})", "--logfile",
                          log.string()},
            .environment = home.environment});
        runPython(
            "import dbus, time\n"
            "while not dbus.SessionBus().name_has_owner('org.freedesktop.Notifications'):\n"
            "    time.sleep(0.01)\n");
    }

    void runPython(const std::string& script) const {
        const auto result =
            run({.program = python, .arguments = {"-c", script}, .environment = home.environment});
        EXPECT_EQ(result.status, 0) << result.errors;
    }

    void click(int id) const {
        runPython(
            "import dbus\n"
            "service = dbus.SessionBus().get_object('org.freedesktop.Notifications',"
            " '/org/freedesktop/Notifications')\n"
            "service.EmitSignal('org.freedesktop.Notifications', 'ActionInvoked', 'us',"
            " [dbus.UInt32(" +
            std::to_string(id) + "), 'default'], dbus_interface='org.freedesktop.DBus.Mock')\n");
    }

    // What the host has written down as told on the desktop.
    void waitForTold(int count) const {
        waitUntil([&] {
            SQLite::Database database{home.paths.databaseFile().string()};
            database.setBusyTimeout(1000);
            return database
                       .execAndGet(
                           "SELECT count(*) FROM deliveries"
                           " WHERE channel = 'desktop' AND state = 'told'")
                       .getInt() == count;
        });
    }

    std::string logged() const { return contentsOf(log); }
    void waitForLogged(const std::string& text) const {
        waitUntil([&] { return logged().find(text) != std::string::npos; });
    }
};

TEST_F(OnADesktop, aRequestIsShownReplacedAndTakenBack) {
    startService();
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    home.claude("PermissionRequest");
    waitForLogged(R"(Notify "Tallowbrook" 0 "utilities-terminal" "Claude Code needs permission")");
    EXPECT_THAT(logged(), HasSubstr(R"(["default", "Show", "show", "Show"])"));
    waitForTold(1);
    home.claude("UserPromptSubmit");
    waitForLogged("CloseNotification 1");
    home.claude("PermissionRequest");
    waitForLogged(R"(Notify "Tallowbrook" 0 "utilities-terminal" "Claude Code needs permission")");
    host.send(SIGINT);
    const auto result = host.wait();
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("needs permission: proj")) << "lines are there as well";
}

TEST_F(OnADesktop, aClickIsFollowedBesideTheWatching) {
    startService();
    RunningProgram host{home.hostCall({"watch"})};
    home.claude("PermissionRequest");
    waitForLogged("Notify");
    ASSERT_TRUE(host.waitForOutput("needs permission"));
    click(1);
    // There is no window to be found here.
    EXPECT_TRUE(host.waitForErrors("The window behind the clicked notification was not found."));
    home.claude("Stop");
    EXPECT_TRUE(host.waitForOutput("finished: proj"));
}

TEST_F(OnADesktop, aServiceThatStandsStillDelaysNothing) {
    startService();
    RunningProgram host{home.hostCall({"watch"})};
    ASSERT_TRUE(host.waitForOutput("No sessions to show."));
    home.claude("Stop", "S0");
    waitForTold(1);
    service->send(SIGSTOP);
    home.claude("PermissionRequest");
    EXPECT_TRUE(host.waitForOutput("needs permission: proj"));
    EXPECT_TRUE(host.waitForErrors(
        "The channel \"desktop\" failed: the notification service does not answer."));
    home.claude("Stop", "S2");
    EXPECT_TRUE(host.waitForOutput("finished: proj"));
    service->send(SIGCONT);
    // What it was given and has not answered in time takes its own place.
    waitForLogged(R"(Notify "Tallowbrook" 2 "utilities-terminal" "Claude Code needs permission")");
}

TEST_F(OnADesktop, nothingIsShownWhereTheUserHasChosenLines) {
    startService();
    EXPECT_EQ(home.host({"preferences", "channels", "lines"}).status, 0);
    RunningProgram host{home.hostCall({"watch"})};
    home.claude("PermissionRequest");
    EXPECT_TRUE(host.waitForOutput("needs permission: proj"));
    EXPECT_EQ(home.host({"preferences", "channels", "auto"}).status, 0);
    home.claude("Stop");
    waitForLogged("Claude Code finished");
    EXPECT_THAT(logged(), Not(HasSubstr("needs permission")));
}

TEST_F(OnADesktop, aTestNotificationTellsOfItsClick) {
    startService();
    RunningProgram host{home.hostCall({"notify", "--test"})};
    ASSERT_TRUE(host.waitForOutput("  Shown. Click on it within 30 seconds, or press Ctrl-C.\n"));
    click(1);
    const auto result = host.wait();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output,
              "desktop: mock-notify 1.0 on the session bus\n"
              "  Shown. Click on it within 30 seconds, or press Ctrl-C.\n"
              "  Clicked: notifications and clicks work.\n");
    waitForLogged("CloseNotification 1");
}

TEST_F(OnADesktop, aTestNotificationSaysWhatIsInTheWay) {
    EXPECT_EQ(home.host({"notify", "--test"}),
              (ProgramResult{.status = 3,
                             .output = "desktop: no notification service on the session bus\n"
                                       "terminal: the host runs on no terminal\n"
                                       "Nothing can be shown but the lines of \"tallowbrook "
                                       "watch\".\n"}));
    home.environment["DBUS_SESSION_BUS_ADDRESS"] = std::nullopt;
    home.environment["XDG_RUNTIME_DIR"] = std::nullopt;
    EXPECT_THAT(home.host({"notify", "--test"}).output,
                HasSubstr("desktop: no session bus: DBUS_SESSION_BUS_ADDRESS is not set\n"));
}

TEST_F(OnADesktop, aTestNotificationWaitsNoLongerThanItIsTold) {
    startService();
    const auto result = home.host({"notify", "--test", "--wait", "0"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("  Not clicked. If you saw nothing, "));
    for (const std::string wait : {"-1", "601", "soon", ""})
        EXPECT_EQ(home.host({"notify", "--test", "--wait", wait}).status, 2) << wait;
    EXPECT_EQ(home.host({"notify"}).status, 2);
}

TEST_F(OnADesktop, aTestNotificationSaysWhereThereAreNoClicks) {
    startService("body");
    EXPECT_EQ(home.host({"notify", "--test"}),
              (ProgramResult{
                  .status = 0,
                  .output = "desktop: mock-notify 1.0 on the session bus, which takes no clicks\n"
                            "  Shown. This channel cannot tell of a click.\n"}));
}

TEST_F(OnADesktop, doctorSaysWhereTheUserIsTold) {
    startService();
    EXPECT_THAT(home.host({"doctor"}).output,
                HasSubstr("You are told by (auto):\n"
                          "  lines: used · printed where tallowbrook watch runs\n"
                          "  desktop: used · mock-notify 1.0 on the session bus\n"));
    service.reset();
    EXPECT_THAT(home.host({"doctor"}).output,
                HasSubstr("  desktop: not used · no notification service on the session bus\n"));
}

}  // namespace
}  // namespace tallowbrook
