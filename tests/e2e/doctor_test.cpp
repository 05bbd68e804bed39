// Why a camera does not answer, as the doctor tells it.
#include "tests/e2e/command.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <pty.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

namespace {

/** A simulated camera that answers at once. */
struct Camera {
    const std::string link = temporaryPath("camera");
    Command sim;

    explicit Camera(const std::vector<std::string> &more = {}, const std::string &boot = "0")
        : sim(arguments(more, boot)) {
        sim.waitFor(boot == "0" ? "camera: on" : "listening");
    }
    std::vector<std::string> arguments(const std::vector<std::string> &more, const std::string &boot) const {
        std::vector<std::string> all = {"sim", "--full-speed", "--latency", "none",   "--boot",
                                        boot,  "--link",       link,        "--trace"};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    void fault(const std::string &text) {
        sim.type("fault " + text + "\n");
        sim.waitFor("ok");
    }
};

/** A pseudo-terminal whose other end is played by a function: it gets each byte that was sent. */
class Wire {
  public:
    explicit Wire(const std::function<std::string(char)> &answer, const std::string &atOnce = "") {
        char name[64] = {};
        termios raw = {};
        cfmakeraw(&raw);
        EXPECT_EQ(openpty(&m_master, &m_slave, name, &raw, nullptr), 0);
        for (const int fd : {m_master, m_slave})
            fcntl(fd, F_SETFD, FD_CLOEXEC);
        m_path = name;
        EXPECT_EQ(write(m_master, atOnce.data(), atOnce.size()), static_cast<ssize_t>(atOnce.size()));
        m_player = std::thread([this, answer] { play(answer); });
    }
    ~Wire() {
        m_over = true;
        m_player.join();
        close(m_slave);
        if (m_master >= 0)
            close(m_master);
    }
    const std::string &path() const { return m_path; }

  private:
    void play(const std::function<std::string(char)> &answer) {
        char byte = 0;
        pollfd source = {m_master, POLLIN, 0};
        while (!m_over && m_master >= 0) {
            if (poll(&source, 1, 10) != 1 || read(m_master, &byte, 1) != 1)
                continue;
            const std::string said = answer(byte);
            if (said == "pull") {
                close(m_master);
                m_master = -1;
            } else if (write(m_master, said.data(), said.size()) < 0) {
                return;
            }
        }
    }

    int m_master = -1;
    int m_slave = -1;
    std::string m_path;
    std::atomic<bool> m_over{false};
    std::thread m_player;
};

struct Told {
    int status;
    std::string out; ///< broken lines joined
};

/** A device that does not answer is given up soon; one that does has all the time that a busy machine needs.
 */
Told tell(const std::string &device, const std::string &timeoutMs = "5000", const Setting &setting = {}) {
    Command doctor({"doctor", device, "--timeout", timeoutMs}, setting);
    Told told;
    told.status = doctor.finish();
    for (const std::string &line : linesOf(doctor.out())) {
        const size_t first = line.find_first_not_of(' ');
        const bool goesOn = first != std::string::npos && first >= 5;
        told.out += goesOn ? " " + line.substr(first) : "\n" + line;
    }
    EXPECT_THAT(doctor.err(), IsEmpty());
    return told;
}

Told tellSilent(const std::string &device) {
    return tell(device, "50");
}

size_t placeOf(const std::string &text, const std::string &all) {
    EXPECT_THAT(all, HasSubstr(text));
    return all.find(text);
}

} // namespace

TEST(Doctor, FindsAHealthyCameraItsRateItsTimesAndItsVersion) {
    const Camera camera({"--camera", "sony3", "--baud", "19200"});
    const Told told = tell(camera.link);
    EXPECT_EQ(told.status, 0);
    EXPECT_THAT(told.out, HasSubstr("\ncamera       ok    answers at 19200 bit/s\n"));
    EXPECT_THAT(told.out, HasSubstr("\npower        ok    the camera is on\n"));
    EXPECT_THAT(told.out,
                ContainsRegex("\nround trip   ok    20 inquiries, least [0-9.]+ ms, median [0-9.]+ ms"));
    EXPECT_THAT(told.out, HasSubstr("; the bytes alone take 4.7 ms\n")); // 9 bytes of 10 bits
    EXPECT_THAT(told.out, HasSubstr("model 0x0467 (sony 7500), version 0x0130, 2 sockets\n"));
    EXPECT_THAT(told.out, HasSubstr("What to do:\n  1. Nothing: the camera answers at 19200 bit/s."));
}

TEST(Doctor, ReadsAllVersionsOfAKovaModule) {
    const Camera camera({"--camera", "kova2"});
    const Told told = tell(camera.link);
    EXPECT_EQ(told.status, 0);
    for (const char *version :
         {"uImage version 1.23", "program version B02D014SP05", "encoder software version \"V1.0.3\"",
          "motor board version 3, type 2", "extension version R01-B02_C3"})
        EXPECT_THAT(told.out, HasSubstr(std::string("\nversion      ok    ") + version + "\n"));
}

TEST(Doctor, AsksOnlyAndLeavesTheDeviceAsItWas) {
    Camera camera({"--camera", "kova2", "--baud", "19200"});
    const int fd = open(camera.link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios before = {};
    tcgetattr(fd, &before);
    cfsetspeed(&before, B1200);
    tcsetattr(fd, TCSANOW, &before);
    close(fd);
    EXPECT_EQ(tell(camera.link).status, 0);
    const int again = open(camera.link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios after = {};
    tcgetattr(again, &after);
    EXPECT_EQ(cfgetospeed(&after), static_cast<speed_t>(B1200));
    EXPECT_EQ(after.c_cflag, before.c_cflag);
    close(again);
    camera.sim.type("state\n");
    const std::string state = camera.sim.waitFor("{");
    const size_t seen = placeOf("\"seen\":{\"09 00 02\":1,", state);
    EXPECT_THAT(state.substr(seen, state.find('}', seen) - seen), Not(ContainsRegex("\"(01|2y|30)")));
    EXPECT_THAT(state, Not(HasSubstr("\"ack\"")));
}

TEST(Doctor, TellsAsJsonWhatItFound) {
    const Camera camera;
    Command doctor({"doctor", camera.link, "--json", "--timeout", "5000"});
    EXPECT_EQ(doctor.finish(), 0);
    EXPECT_THAT(doctor.out(), MatchesRegex("\\{\"device\":\"" + camera.link +
                                           "\",\"healthy\":true,\"rate\":9600,\"roundTrip\":\\{\"asked\":20,"
                                           "\"lost\":0,\"minMs\":[0-9.]+,\"medianMs\":[0-9.]+,\"maxMs\":"
                                           "[0-9.]+\\},\"versions\":\\[\"vendor .*\"\\],\"findings\":\\[.*"
                                           "\\],\"advice\":\\[\"Nothing: .*\"\\]\\}\n"));
}

TEST(Doctor, AdvisesOnSilenceInTheOrderRateAddressCablePower) {
    Camera camera;
    camera.fault("mute");
    const Told told = tellSilent(camera.link);
    EXPECT_EQ(told.status, 1);
    const size_t rate = placeOf("\n  1. Has the camera another rate than", told.out);
    const size_t address = placeOf("\n  2. Is its address set to 1?", told.out);
    const size_t cable = placeOf("\n  3. Are transmit and receive crossed", told.out);
    const size_t power = placeOf("\n  4. Has the camera its supply?", told.out);
    EXPECT_LT(rate, address);
    EXPECT_LT(address, cable);
    EXPECT_LT(cable, power);
}

TEST(Doctor, KnowsALoopback) {
    const Wire wire([](char byte) { return std::string(1, byte); });
    const Told told = tellSilent(wire.path());
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("\ncamera       bad   loopback: every byte that is sent comes back"));
    EXPECT_THAT(told.out, HasSubstr("\n  1. The transmit and the receive line are joined"));
}

TEST(Doctor, KnowsTheEchoOfATwoWireAdapter) {
    const Wire wire([](char byte) {
        return byte == '\xFF' ? std::string("\xFF\x90\x50\x02\xFF") : std::string(1, byte);
    });
    const Told told = tell(wire.path());
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("\necho         bad   the bytes that are sent come back in front of"));
}

TEST(Doctor, HearsNoise) {
    const Wire wire([](char) { return std::string(); }, std::string("\x00\x17\xC3\x20\x55", 5));
    const Told told = tellSilent(wire.path());
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out,
                HasSubstr("\nidle line    bad   noise: 5 bytes that belong to no packet: 00 17 C3 20 55\n"));
    EXPECT_THAT(told.out, HasSubstr("Something disturbs the line"));
}

TEST(Doctor, HearsNoiseBetweenTheAnswers) {
    Camera camera;
    camera.fault("noise=1");
    const Told told = tell(camera.link);
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("\ncamera       ok    answers at 9600 bit/s\n"));
    EXPECT_THAT(told.out, HasSubstr("\nidle line    bad   noise: "));
}

TEST(Doctor, HearsThatACameraWasSwitchedOn) {
    const Wire wire([](char) { return std::string(); }, "\x90\x38\xFF");
    EXPECT_THAT(tellSilent(wire.path()).out,
                HasSubstr("\nidle line    note  1 packet came unasked: 90 38 FF, "));
}

TEST(Doctor, HearsWhatNobodyAskedFor) {
    const Wire wire([](char byte) {
        return byte == '\xFF' ? std::string("\x90\x50\x02\xFF\x90\x50\x02\xFF") : std::string();
    });
    const Told told = tell(wire.path(), "200");
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, ContainsRegex("idle line    bad   [0-9]+ packets came unasked: 90 50 02 FF"));
    EXPECT_THAT(told.out, HasSubstr("is a second program or a second host talking to this camera?"));
}

TEST(Doctor, SaysThatAnAnswerCannotBeRead) {
    const Wire wire([](char byte) { return byte == '\xFF' ? std::string("\x1B\xF0\xFE") : std::string(); });
    const Told told = tellSilent(wire.path());
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("no answer can be read: 9600 bit/s (1B F0 FE), 19200 bit/s"));
    EXPECT_THAT(told.out, HasSubstr("\n  1. Set the camera to 9600, 19200 or 38400 bit/s, 8 bits"));
}

TEST(Doctor, FindsACameraOfAnotherAddress) {
    Camera camera;
    camera.fault("address=3");
    const Told told = tell(camera.link);
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("a camera answers at 9600 bit/s, but as address 3;"));
    EXPECT_THAT(told.out, HasSubstr("\n  1. Set the camera to address 1"));
}

TEST(Doctor, AsksTheOtherAddressesToo) {
    std::string packet;
    const Wire wire([&packet](char byte) {
        packet += byte;
        if (byte != '\xFF')
            return std::string();
        const bool forUs = packet == std::string("\x85\x09\x04\x00\xFF", 5);
        packet.clear();
        return std::string(forUs ? "\xD0\x50\x02\xFF" : "");
    });
    EXPECT_THAT(tellSilent(wire.path()).out, HasSubstr("but as address 5; the library"));
}

TEST(Doctor, TellsStandbyFromStartingUp) {
    Camera camera;
    camera.fault("standby");
    const Told standby = tell(camera.link);
    EXPECT_EQ(standby.status, 1);
    EXPECT_THAT(standby.out, HasSubstr("\npower        bad   standby: the camera has its supply"));
    EXPECT_THAT(standby.out, HasSubstr("\n  1. Switch the camera on"));
    const Camera booting({}, "600000");
    const Told starting = tell(booting.link, "400");
    EXPECT_EQ(starting.status, 1);
    EXPECT_THAT(starting.out, HasSubstr("\npower        bad   the camera starts up"));
}

TEST(Doctor, CountsAnswersThatAreLost) {
    int asked = 0;
    const Wire wire([&asked](char byte) {
        const bool answered = byte == '\xFF' && ++asked < 4;
        return std::string(answered ? "\x90\x50\x03\xFF" : "");
    });
    const Told told = tell(wire.path(), "300");
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("\nanswers      bad   3 of 5 inquiries had no answer"));
    EXPECT_THAT(told.out, HasSubstr("\n  1. Answers get lost: check"));
}

TEST(Doctor, NotesSlowAnswers) {
    const Wire wire([](char byte) {
        if (byte == '\xFF')
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // of the camera
        return std::string(byte == '\xFF' ? "\x90\x50\x03\xFF" : "");
    });
    const Told told = tell(wire.path());
    EXPECT_THAT(told.out, ContainsRegex("\nround trip   note  [0-9]+ inquiries, least [2-9][0-9][0-9]"));
    EXPECT_THAT(told.out, HasSubstr("a slow shutter stretches"));
}

TEST(Doctor, NamesTheProgramThatHasThePortOpenAndLeavesTheLineAlone) {
    Camera camera;
    const int fd = open(camera.link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const Told told = tell(camera.link);
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("(process " + std::to_string(getpid()) + "); the line was left alone"));
    EXPECT_THAT(told.out, HasSubstr("\n  1. End the program that has the port open."));
    close(fd);
    camera.sim.type("state\n");
    EXPECT_THAT(camera.sim.waitFor("{"), HasSubstr("\"packetsSeen\":0,"));
}

TEST(Doctor, SaysWhatPermissionIsMissing) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root's rights to make a device that others may not open";
    const Camera camera;
    char device[64] = {};
    ASSERT_GT(readlink(camera.link.c_str(), device, sizeof device - 1), 0);
    ASSERT_EQ(chmod(device, 0660), 0);
    Setting nobody;
    nobody.asNobody = true;
    const Told told = tell(device, "5000", nobody);
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, ContainsRegex("\npermission   bad   nobody may not read and write it"));
    EXPECT_THAT(told.out, ContainsRegex("1. Become a member of the group [a-z]+ \\(\"sudo usermod -aG"));
    ASSERT_EQ(chmod(device, 0600), 0);
    EXPECT_THAT(tell(device, "5000", nobody).out, HasSubstr("1. Not even the group"));
}

TEST(Doctor, SaysWhatIsNoSerialDevice) {
    EXPECT_THAT(tell("/dev/no-such-device").out,
                HasSubstr("device       bad   /dev/no-such-device is not there"));
    EXPECT_THAT(tell("/dev").out, HasSubstr("/dev is a directory, not a serial device"));
    EXPECT_THAT(tell("/dev/null").out, HasSubstr("not a serial one"));
    const std::string link = temporaryPath("dangling");
    ASSERT_EQ(symlink("/dev/no-such-device", link.c_str()), 0);
    const Told told = tell(link);
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("is a link to a device that is not there"));
    EXPECT_THAT(told.out, HasSubstr("\n  1. Plug the adapter in"));
    unlink(link.c_str());
}

TEST(Doctor, NoticesThatTheAdapterIsPulled) {
    const Wire wire([](char) { return std::string("pull"); });
    const Told told = tell(wire.path());
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.out, HasSubstr("\ndevice       bad   it has gone while it was in use"));
}

TEST(Doctor, EndsAtOnceWhenItIsInterrupted) {
    const Wire wire([](char) { return std::string(); });
    Command doctor({"doctor", wire.path(), "--timeout", "60000"});
    doctor.waitFor("adapter");
    doctor.send(SIGINT);
    EXPECT_EQ(doctor.finish(), 1);
    EXPECT_EQ(doctor.err(), "viscacam: interrupted; the device has its settings back\n");
}

TEST(Doctor, WrongUsageIsRefused) {
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"doctor"}, {"doctor", "/dev/null", "--timeout", "1"}}) {
        Command doctor(arguments);
        EXPECT_EQ(doctor.finish(), 2);
        EXPECT_THAT(doctor.err(), Not(IsEmpty()));
    }
}

} // namespace e2e
