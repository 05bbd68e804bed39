// The simulator on a terminal, as a person sees it.
#include "tests/e2e/command.h"

#include <cstdio>
#include <cstdlib>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

using Clock = std::chrono::steady_clock;

/** What a terminal shows after a stream of bytes: as much of one as the view needs. */
class Picture {
  public:
    Picture(size_t columns, size_t rows) { resize(columns, rows); }

    void resize(size_t columns, size_t rows) {
        m_columns = columns;
        m_rows.assign(rows, std::string(columns, ' '));
    }
    void feed(char c) {
        if (!m_escape.empty())
            escape(c);
        else if (c == '\x1b')
            m_escape = c;
        else if (c == '\n')
            ++m_row;
        else if (c == '\r')
            m_column = 0;
        else if (m_row < m_rows.size() && m_column < m_columns)
            m_rows[m_row][m_column++] = c;
    }
    std::string text() const {
        std::string all;
        for (std::string row : m_rows) {
            row.resize(row.find_last_not_of(' ') + 1);
            all += row + "\n";
        }
        return all;
    }

  private:
    void escape(char c) {
        m_escape += c;
        if (m_escape.size() == 2 || (c >= ' ' && c < '@'))
            return;
        if (c == 'H' && std::sscanf(m_escape.c_str() + 2, "%zu;%zu", &m_row, &m_column) == 2) {
            --m_row;
            --m_column;
        } else if (c == 'K' && m_row < m_rows.size()) {
            m_rows[m_row].replace(m_column, std::string::npos, m_columns - m_column, ' ');
        } else if (c == 'J') {
            m_rows.assign(m_rows.size(), std::string(m_columns, ' '));
        }
        m_escape.clear();
    }

    size_t m_columns = 0;
    std::vector<std::string> m_rows;
    size_t m_row = 0;
    size_t m_column = 0;
    std::string m_escape;
};

/** The simulator on a terminal of 100 times 24. */
class Seat {
  public:
    explicit Seat(std::vector<std::string> arguments) {
        std::vector<char *> words = {const_cast<char *>("viscacam"), const_cast<char *>("sim")};
        for (std::string &argument : arguments)
            words.push_back(argument.data());
        words.push_back(nullptr);
        winsize size = {24, 100, 0, 0};
        EXPECT_EQ(openpty(&m_master, &m_slave, nullptr, nullptr, &size), 0);
        tcgetattr(m_slave, &m_found);
        m_pid = fork();
        if (m_pid == 0) {
            close(m_master);
            setenv("TERM", "xterm", 1);
            unsetenv("NO_COLOR");
            if (login_tty(m_slave) == 0)
                execv(VISCACAM_COMMAND, words.data());
            _exit(127);
        }
    }
    ~Seat() {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            kill(m_pid, SIGCONT);
            end();
        }
        EXPECT_EQ(m_out.find("Sanitizer"), std::string::npos) << m_out;
        close(m_slave);
        close(m_master);
    }

    void type(const std::string &keys) {
        EXPECT_EQ(write(m_master, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    /** Wait until the picture holds a text; returns the picture. */
    std::string waitFor(const std::string &text) {
        const Clock::time_point end = Clock::now() + kPatience;
        while (m_picture.text().find(text) == std::string::npos && Clock::now() < end)
            pump();
        EXPECT_THAT(m_picture.text(), HasSubstr(text));
        return m_picture.text();
    }
    void resize(unsigned short columns, unsigned short rows) {
        const winsize size = {rows, columns, 0, 0};
        m_picture.resize(columns, rows);
        EXPECT_EQ(ioctl(m_master, TIOCSWINSZ, &size), 0);
    }
    void send(int signal) { EXPECT_EQ(kill(m_pid, signal), 0); }
    /** Wait until it has stopped or ended; returns the status of waitpid(). */
    int end(int options = 0) {
        int status = 0;
        const Clock::time_point limit = Clock::now() + kPatience;
        while (waitpid(m_pid, &status, options | WNOHANG) == 0 && Clock::now() < limit)
            pump();
        pump();
        if (!WIFSTOPPED(status))
            m_pid = -1;
        return status;
    }
    /** Whether the terminal is as it was found. */
    bool isGivenBack() const {
        termios now = {};
        tcgetattr(m_slave, &now);
        return now.c_lflag == m_found.c_lflag && now.c_iflag == m_found.c_iflag &&
               m_out.rfind("\x1b[?1049l") > m_out.rfind("\x1b[?1049h");
    }
    const std::string &out() const { return m_out; }

  private:
    void pump() {
        pollfd source = {m_master, POLLIN, 0};
        char bytes[4096];
        const ssize_t count = poll(&source, 1, 20) == 1 ? read(m_master, bytes, sizeof bytes) : 0;
        for (ssize_t i = 0; i < count; ++i) {
            m_picture.feed(bytes[i]);
            m_out += bytes[i];
        }
    }

    int m_master = -1;
    int m_slave = -1;
    termios m_found = {};
    pid_t m_pid = -1;
    Picture m_picture{100, 24};
    std::string m_out;
};

const std::vector<std::string> kCamera = {"--full-speed", "--latency", "none", "--boot", "0"};

std::vector<std::string> cameraAt(const std::string &link) {
    std::vector<std::string> arguments = kCamera;
    arguments.insert(arguments.end(), {"--link", link});
    return arguments;
}

std::string lastRowOf(const std::string &picture) {
    return linesOf(picture).back();
}

} // namespace

TEST(SimView, ShowsTheStateThePacketsInWordsAndTheCounters) {
    const std::string link = temporaryPath("link");
    Seat seat(cameraAt(link));
    seat.waitFor("sony1  0x02000001  on  9600 bit/s  " + link);
    const int fd = open(link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_EQ(write(fd, "\x81\x01\x04\x47\x00\x04\x00\x00\xFF", 9), 9);
    const std::string picture = seat.waitFor("completed");
    EXPECT_THAT(picture, HasSubstr("->camera  81 01 04 47 00 04 00 00 FF  zoom to 0x0400"));
    seat.waitFor("zoom  0x0400 [#");
    EXPECT_THAT(seat.waitFor("01 04 47 x1"), HasSubstr("seen 1  ignored 0  noise 0  lost 0"));
    EXPECT_THAT(seat.waitFor("completion x1"), HasSubstr("ack x1"));
    close(fd);
}

TEST(SimView, ObeysWhatIsTypedAtItsBottom) {
    Seat seat(cameraAt(temporaryPath("link")));
    seat.waitFor("sony1>");
    seat.type("fault mutt\x7f"
              "e\r");
    EXPECT_THAT(seat.waitFor("faults    mute"), HasSubstr("\nok\n"));
    seat.type("nonsense\r");
    seat.waitFor("error: no command is called \"nonsense\"");
    seat.type("help\r");
    seat.waitFor("replug            plug the adapter in again");
    seat.type("quit\r");
    EXPECT_EQ(seat.end(), 0);
    EXPECT_TRUE(seat.isGivenBack());
}

TEST(SimView, TabShowsTheNextCameraAndCommandsAreForTheShownOne) {
    Seat seat({"--camera", "sony3@" + temporaryPath("one"), "--camera", "kova2@" + temporaryPath("two")});
    EXPECT_THAT(seat.waitFor("> sony3"), HasSubstr("sony3  0x02000003"));
    seat.type("\t");
    EXPECT_THAT(seat.waitFor("> kova2"), HasSubstr("kova2  0x02012A01"));
    seat.type("fault no-ack\r");
    seat.waitFor("faults    no-ack");
    seat.type("\x1b[A"); // up
    EXPECT_THAT(seat.waitFor("> sony3"), ::testing::Not(HasSubstr("no-ack")));
}

TEST(SimView, FitsItselfToANewSize) {
    Seat seat(cameraAt(temporaryPath("link")));
    seat.waitFor("sony1>");
    seat.resize(50, 10);
    const std::string small = seat.waitFor("sony1>");
    EXPECT_EQ(linesOf(small).size(), 10U);
    EXPECT_EQ(lastRowOf(small), "sony1>");
    seat.resize(140, 40);
    const std::string large = seat.waitFor("sony1>");
    EXPECT_EQ(lastRowOf(large), "sony1>");
    EXPECT_THAT(large, HasSubstr("shutter="));
}

TEST(SimView, LivesOnATerminalWithoutRoom) {
    Seat seat(cameraAt(temporaryPath("link")));
    seat.waitFor("sony1>");
    seat.resize(3, 1);
    seat.waitFor("son");
    seat.type("quit\r");
    EXPECT_EQ(seat.end(), 0);
}

TEST(SimView, GivesTheTerminalBackOnASignal) {
    for (const int signal : {SIGTERM, SIGHUP, SIGQUIT}) {
        Seat seat(cameraAt(temporaryPath("link")));
        seat.waitFor("sony1>");
        EXPECT_FALSE(seat.isGivenBack());
        seat.send(signal);
        EXPECT_EQ(seat.end(), 0) << signal;
        EXPECT_TRUE(seat.isGivenBack()) << signal;
    }
}

TEST(SimView, GivesTheTerminalBackOnCtrlCAndWhenItAborts) {
    Seat seat(cameraAt(temporaryPath("link")));
    seat.waitFor("sony1>");
    seat.type("\x03");
    EXPECT_EQ(seat.end(), 0);
    EXPECT_TRUE(seat.isGivenBack());
    Seat aborted(cameraAt(temporaryPath("link")));
    aborted.waitFor("sony1>");
    aborted.send(SIGABRT);
    EXPECT_EQ(WTERMSIG(aborted.end()), SIGABRT);
    EXPECT_TRUE(aborted.isGivenBack());
}

TEST(SimView, GivesTheTerminalBackWhileItIsStoppedAndTakesItAgain) {
    Seat seat(cameraAt(temporaryPath("link")));
    seat.waitFor("sony1>");
    seat.type("\x1a"); // Ctrl-Z
    EXPECT_TRUE(WIFSTOPPED(seat.end(WUNTRACED)));
    EXPECT_TRUE(seat.isGivenBack());
    seat.send(SIGCONT);
    seat.type("fault mute\r");
    seat.waitFor("faults    mute");
    EXPECT_FALSE(seat.isGivenBack());
}

TEST(SimView, IsLeftOutWhereLinesAreAskedFor) {
    std::vector<std::string> arguments = cameraAt(temporaryPath("link"));
    arguments.push_back("--plain");
    Seat seat(arguments);
    seat.waitFor("listening at 9600");
    seat.type("quit\r");
    EXPECT_EQ(seat.end(), 0);
    EXPECT_THAT(seat.out(), ::testing::Not(HasSubstr("\x1b[")));
}

} // namespace e2e
