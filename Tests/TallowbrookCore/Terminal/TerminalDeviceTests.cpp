#include "Terminal/TerminalDevice.h"

#include <gtest/gtest.h>

namespace tallowbrook {
namespace {

TEST(TerminalDevice, hasANameAndAPathWhicheverItWasMadeFrom) {
    struct Row {
        const char* text;
        const char* name;
        const char* path;
    };
    for (const auto& [text, name, path] : {
             Row{"ttys003", "ttys003", "/dev/ttys003"},
             Row{"/dev/ttys003", "ttys003", "/dev/ttys003"},
             Row{"pts/3", "pts/3", "/dev/pts/3"},
             Row{"/dev/pts/3", "pts/3", "/dev/pts/3"},
             Row{"ttyUSB0", "ttyUSB0", "/dev/ttyUSB0"},
             Row{"dev/ttys003", "dev/ttys003", "/dev/dev/ttys003"},
         }) {
        const auto device = TerminalDevice::parse(text);
        ASSERT_TRUE(device) << text;
        EXPECT_EQ(device->name(), name);
        EXPECT_EQ(device->path(), path);
    }
    EXPECT_EQ(TerminalDevice::parse("ttys003"), TerminalDevice::parse("/dev/ttys003"));
    EXPECT_NE(TerminalDevice::parse("ttys003"), TerminalDevice::parse("ttys004"));
}

TEST(TerminalDevice, isNothingThatLeavesDevOrNeedsQuoting) {
    using namespace std::string_view_literals;
    for (const auto text : {""sv,
                            "/"sv,
                            "/dev/"sv,
                            "/dev"sv,
                            "/etc/passwd"sv,
                            "//dev/ttys003"sv,
                            "/dev//ttys003"sv,
                            "/dev/dev/"sv,
                            "pts/"sv,
                            "pts//3"sv,
                            ".."sv,
                            "../x"sv,
                            "pts/../../x"sv,
                            "/dev/./x"sv,
                            "tty s003"sv,
                            "ttys003\n"sv,
                            "ttys003\""sv,
                            "tty'"sv,
                            "tty\\"sv,
                            "tty;x"sv,
                            "tty\0"sv,
                            "tty\u00E9"sv,
                            "not a tty"sv})
        EXPECT_FALSE(TerminalDevice::parse(text)) << text;
}

}  // namespace
}  // namespace tallowbrook
