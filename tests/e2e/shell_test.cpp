// The shell of "viscacam ctl", as a person types.
#include "tests/e2e/command.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

Setting onTerminal() {
    Setting setting;
    setting.terminal = true;
    return setting;
}

/** A shell that keeps its history in a folder of the test. */
class Shell : public ::testing::Test {
  protected:
    Shell() {
        std::filesystem::remove_all(m_state);
        setenv("XDG_STATE_HOME", m_state.c_str(), 1);
    }
    ~Shell() override { std::filesystem::remove_all(m_state); }

    std::string history() const {
        std::ifstream file(m_state + "/viscacam/ctl_history");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    const std::string m_state = temporaryPath("state");
};

/** Started, and ready for keys. */
struct Typing {
    explicit Typing(const std::vector<std::string> &more = {}) : command(withMore(more), onTerminal()) {
        command.waitFor("\"help\" shows the commands");
    }
    static std::vector<std::string> withMore(const std::vector<std::string> &more) {
        std::vector<std::string> arguments = {"ctl", "--sim", "sony1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    int quit() {
        command.type("quit\n");
        return command.finish();
    }
    Command command;
};

} // namespace

TEST_F(Shell, CarriesOutLinesUntilQuit) {
    Typing shell;
    shell.command.type("zoom show\n");
    shell.command.waitFor("zoom  0x0000");
    shell.command.type("zoom show; focus show # twice\n");
    shell.command.waitFor("focus  0x4800");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, EndsAtTheEndOfInput) {
    Typing shell;
    shell.command.type("zoom show\n");
    shell.command.waitFor("zoom  0x0000");
    shell.command.waitForPrompt("sony1> "); // before it the terminal would take the key for itself
    shell.command.type("\x04");
    EXPECT_EQ(shell.command.finish(), 0);
}

TEST_F(Shell, CompletesCommandsAndValues) {
    Typing shell;
    shell.command.type("zoo\tsho\t\n");
    shell.command.waitFor("zoom  0x0000");
    shell.command.type("exp\tse\tmo\tman\tgain=4\n");
    shell.command.waitFor("exposure manual: completed");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, ShowsWhatMayComeNext) {
    Typing shell;
    shell.command.type("wdr \t");
    shell.command.waitFor("auto  off   on");
    shell.command.type("on\n");
    shell.command.waitFor("wide dynamic range on: completed");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, SaysWhatIsWrongAndGoesOn) {
    Typing shell;
    shell.command.type("zoom up\n");
    shell.command.waitFor("viscacam: zoom: \"up\" is not known here; use cut, digital,");
    shell.command.type("zoom show\n");
    shell.command.waitFor("zoom  0x0000");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, BreaksADriveOffAtCtrlC) {
    Typing shell({"--trace"});
    shell.command.type("zoom in 30s\n");
    shell.command.waitFor("completed, socket 1: zoom tele");
    shell.command.type("\x03");
    shell.command.waitFor("completed, socket 1: zoom stop");
    shell.command.waitFor("zoom in 30s: interrupted");
    shell.command.type("focus show\n");
    shell.command.waitFor("focus  0x4800");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, StopsADriveWithoutATimeAtCtrlC) {
    Typing shell;
    shell.command.type("zoom in\n");
    shell.command.waitFor("zoom tele, speed 6: completed");
    shell.command.type("\x03");
    shell.command.waitFor("zoom stop: completed");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, ThrowsAwayTheLineAtCtrlC) {
    Typing shell;
    shell.command.type("zoom \x03");
    shell.command.waitFor("^C");
    shell.command.type("focus show\n");
    shell.command.waitFor("focus  0x4800");
    EXPECT_EQ(shell.quit(), 0);
}

TEST_F(Shell, RemembersLinesFromOneSessionToTheNext) {
    Typing first;
    first.command.type("focus show\n");
    first.command.waitFor("focus  0x4800");
    EXPECT_EQ(first.quit(), 0);
    EXPECT_THAT(history(), HasSubstr("focus\\040show\nquit\n"));
    Typing second;
    second.command.type("\x1b[A\x1b[A\n"); // up, up
    second.command.waitFor("focus  0x4800");
    EXPECT_EQ(second.quit(), 0);
}

} // namespace e2e
