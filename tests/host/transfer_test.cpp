/*
 * The board's xmodem program, with sx and rx of lrzsz as the camera: they sit on a socket pair, and a thread
 * carries the bytes between it and the camera's side of a pseudo-terminal.
 */
#include <atomic>
#include <csignal>
#include <cstring>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include "tests/host/fixtures.h"
#include "tests/host/folder.h"

namespace {

using std::chrono::seconds;
using testing::HasSubstr;

const std::string kEightCans(8, '\x18');

std::string Pattern(size_t ulLength) {
    std::string strBytes;
    for (size_t i = 0; i < ulLength; i++) {
        strBytes += static_cast<char>((i * 7 + i / 256) % 256); // every value, 0x11, 0x13 and 0x18 too
    }
    return strBytes;
}

/* Processes */

/** A program that gets some of our descriptors under other numbers. */
class Process {
  public:
    struct Passed {
        int iFd;
        int iAs;
    };
    Process(std::vector<std::string> vstrArguments, const std::vector<Passed> &vstPassed,
            std::vector<std::string> vstrEnvironment) {
        posix_spawn_file_actions_t stActions;
        posix_spawn_file_actions_init(&stActions);
        for (const Passed &st : vstPassed) {
            posix_spawn_file_actions_adddup2(&stActions, st.iFd, st.iAs);
        }
        if (posix_spawnp(&m_iPid, vstrArguments[0].c_str(), &stActions, nullptr,
                         Pointers(vstrArguments).data(), Pointers(vstrEnvironment).data()) != 0) {
            std::abort();
        }
        posix_spawn_file_actions_destroy(&stActions);
    }
    ~Process() {
        if (!m_bReaped) {
            kill(m_iPid, SIGKILL);
            Wait();
        }
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    pid_t Pid() const { return m_iPid; }
    /** Exit status, negative signal number when a signal ended it. */
    int Wait() {
        int iStatus = 0;
        while (waitpid(m_iPid, &iStatus, 0) < 0 && errno == EINTR) {}
        m_bReaped = true;
        return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -WTERMSIG(iStatus);
    }

  private:
    static std::vector<char *> Pointers(std::vector<std::string> &vstr) {
        std::vector<char *> vpc;
        for (std::string &str : vstr) {
            vpc.push_back(str.data());
        }
        vpc.push_back(nullptr);
        return vpc;
    }
    pid_t m_iPid = -1;
    bool m_bReaped = false;
};

std::vector<std::string> Environment(const std::vector<std::string> &vstrMore = {}) {
    std::vector<std::string> vstr = {std::string("PATH=") + std::getenv("PATH")};
    vstr.insert(vstr.end(), vstrMore.begin(), vstrMore.end());
    return vstr;
}

/** The first child of a process that runs a program of this name; negative: none. */
pid_t ChildOf(pid_t iParent, const std::string &strName) {
    const std::string strPid = std::to_string(iParent);
    std::istringstream stChildren(ReadFile("/proc/" + strPid + "/task/" + strPid + "/children"));
    for (pid_t iChild = 0; stChildren >> iChild;) {
        if (ReadFile("/proc/" + std::to_string(iChild) + "/comm") == strName + "\n") {
            return iChild;
        }
    }
    return -1;
}

/* The camera's side */

/** sx or rx behind the camera's side of a pseudo-terminal. */
class Camera {
  public:
    Camera(const Pty &stPty, const std::vector<std::string> &vstrArguments) : m_iLine(stPty.Master()) {
        int aiPair[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, aiPair) != 0) {
            std::abort();
        }
        m_iProgram = aiPair[0];
        // One that waits for ever for an acknowledgement is ended, with status 124.
        std::vector<std::string> vstr = {"timeout", "20"};
        vstr.insert(vstr.end(), vstrArguments.begin(), vstrArguments.end());
        m_stProcess.emplace(vstr, std::vector<Process::Passed>{{aiPair[1], 0}, {aiPair[1], 1}, {Null(), 2}},
                            Environment());
        close(aiPair[1]);
        m_stRelay = std::thread([this] { Relay(); });
    }
    ~Camera() {
        m_stProcess.reset();
        m_bOver = true;
        m_stRelay.join();
        close(m_iProgram);
    }
    Camera(const Camera &) = delete;
    Camera &operator=(const Camera &) = delete;

    int Wait() { return m_stProcess->Wait(); }

  private:
    static int Null() {
        static const int iFd = open("/dev/null", O_RDWR | O_CLOEXEC);
        return iFd;
    }
    static void WriteAll(int iFd, const char *pcBytes, ssize_t lLength) {
        for (ssize_t lDone = 0; lDone < lLength;) {
            const ssize_t lWritten = write(iFd, pcBytes + lDone, static_cast<size_t>(lLength - lDone));
            if (lWritten <= 0) {
                return;
            }
            lDone += lWritten;
        }
    }
    static bool Carry(int iFrom, int iTo) {
        char acBytes[4096];
        const ssize_t lRead = read(iFrom, acBytes, sizeof(acBytes));
        WriteAll(iTo, acBytes, lRead);
        return lRead > 0;
    }
    void Relay() {
        std::signal(SIGPIPE, SIG_IGN);
        pollfd astPoll[2] = {{m_iLine, POLLIN, 0}, {m_iProgram, POLLIN, 0}};
        while (!m_bOver) {
            poll(astPoll, 2, 20);
            if ((astPoll[0].revents & POLLIN) != 0) {
                Carry(m_iLine, m_iProgram);
            }
            if (astPoll[1].revents != 0 && !Carry(m_iProgram, m_iLine)) {
                astPoll[1].fd = -1; // the program has ended
                astPoll[1].revents = 0;
            }
        }
    }

    int m_iLine;
    int m_iProgram = -1;
    std::atomic<bool> m_bOver{false};
    std::optional<Process> m_stProcess;
    std::thread m_stRelay;
};

/* The host's side */

bool AreSame(const termios &stOne, const termios &stOther) {
    return stOne.c_iflag == stOther.c_iflag && stOne.c_oflag == stOther.c_oflag &&
           stOne.c_cflag == stOther.c_cflag && stOne.c_lflag == stOther.c_lflag &&
           std::memcmp(stOne.c_cc, stOther.c_cc, sizeof(stOne.c_cc)) == 0 &&
           cfgetispeed(&stOne) == cfgetispeed(&stOther) && cfgetospeed(&stOne) == cfgetospeed(&stOther);
}

/** A line with settings that no transfer would choose, and the script run on it without the host. */
class Line {
  public:
    Line() : m_iFd(open(m_stPty.Path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        termios st = m_stPty.Settings();
        cfmakeraw(&st);
        st.c_iflag |= IXON;
        st.c_cc[VMIN] = 3;
        st.c_cc[VTIME] = 2;
        cfsetspeed(&st, B19200);
        tcsetattr(m_iFd, TCSANOW, &st);
        m_stBefore = m_stPty.Settings();
    }
    ~Line() { close(m_iFd); }
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    std::unique_ptr<Process> Start(std::vector<std::string> vstrArguments, int iLimit = 60) const {
        vstrArguments.insert(vstrArguments.begin(), host::BoardFolder() + "/xmodem");
        return std::make_unique<Process>(
            vstrArguments, std::vector<Process::Passed>{{m_iFd, 7}},
            Environment({"VISCACAM_CAMERA_FD=7", "VISCACAM_TRANSFER_LIMIT=" + std::to_string(iLimit)}));
    }
    Pty &Camera() { return m_stPty; }
    bool IsAsBefore() const { return AreSame(m_stPty.Settings(), m_stBefore); }
    void Say(const std::string &strBytes) const {
        EXPECT_EQ(write(m_stPty.Master(), strBytes.data(), strBytes.size()),
                  static_cast<ssize_t>(strBytes.size()));
    }
    bool IsSilent() const {
        pollfd stPoll = {m_stPty.Master(), POLLIN, 0};
        return poll(&stPoll, 1, 0) == 0;
    }

  private:
    Pty m_stPty;
    int m_iFd;
    termios m_stBefore{};
};

/** The host with a port open on a line, and the library's shell lines run by it. */
class Port {
  public:
    Port() {
        int32_t iFd = -1;
        EXPECT_EQ(host::MapPort(0, m_stPty.Path()), "");
        EXPECT_EQ(DRV_OpenCom(0, &iFd), 0U);
        m_iFd = iFd;
        m_stBefore = m_stPty.Settings();
    }
    ~Port() { host::ClosePort(0); }
    Port(const Port &) = delete;
    Port &operator=(const Port &) = delete;

    static int Run(const std::string &strCommand) {
        const auto iStatus = static_cast<int>(COMDRV_System(strCommand.c_str()));
        return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
    }
    Pty &Camera() { return m_stPty; }
    int Fd() const { return m_iFd; }
    bool IsAsBefore() const { return AreSame(m_stPty.Settings(), m_stBefore); }

  private:
    Pty m_stPty;
    int m_iFd = -1;
    termios m_stBefore{};
};

/* Whole files */

struct Size {
    size_t ulSent;
    size_t ulReceived; // whole blocks of 128, or 1024
};
constexpr Size kSizes[] = {{0, 0},     {1, 128},     {127, 128},   {128, 128},
                           {129, 256}, {1023, 1024}, {1024, 1024}, {1025, 1152}};

std::string Padded(const Size &st) {
    return Pattern(st.ulSent) + std::string(st.ulReceived - st.ulSent, '\x1A');
}

// A transfer takes lrzsz a second however short the file, so all sizes go at once, each over its own line.
template <typename Transfer>
void ForEachSize(Transfer pfnTransfer) {
    std::vector<std::future<void>> vstRunning;
    for (const Size &st : kSizes) {
        vstRunning.push_back(std::async(std::launch::async, [=] { pfnTransfer(st); }));
    }
}

TEST(Xmodem, SendsAFileOfAnySizeWholeAndRestoresTheLine) {
    ForEachSize([](const Size &st) {
        const Folder stFolder;
        Line stLine;
        WriteFile(stFolder / "sent", Pattern(st.ulSent));
        Camera stCamera(stLine.Camera(), {"rx", "-bc", stFolder / "received"});
        EXPECT_EQ(stLine.Start({"-lsz", "-big", stFolder / "sent"})->Wait(), 0) << st.ulSent;
        EXPECT_EQ(stCamera.Wait(), 0) << st.ulSent;
        EXPECT_TRUE(std::filesystem::exists(stFolder / "received")) << st.ulSent;
        EXPECT_EQ(ReadFile(stFolder / "received"), Padded(st)) << st.ulSent;
        EXPECT_TRUE(stLine.IsAsBefore()) << st.ulSent;
    });
}

TEST(Xmodem, ReceivesAFileOfAnySizeWholeAndRestoresTheLine) {
    ForEachSize([](const Size &st) {
        const Folder stFolder;
        Line stLine;
        WriteFile(stFolder / "sent", Pattern(st.ulSent));
        WriteFile(stFolder / "received", "from an earlier day");
        Camera stCamera(stLine.Camera(), {"sx", "-b", stFolder / "sent"});
        const char *pcRate = st.ulSent % 2 == 0 ? "9600" : "115200";
        EXPECT_EQ(stLine.Start({"-lrz", "-small", stFolder / "received", pcRate})->Wait(), 0) << st.ulSent;
        EXPECT_EQ(stCamera.Wait(), 0) << st.ulSent; // it has heard the last acknowledgement
        EXPECT_TRUE(std::filesystem::exists(stFolder / "received")) << st.ulSent;
        EXPECT_EQ(ReadFile(stFolder / "received"), Padded(st)) << st.ulSent;
        EXPECT_TRUE(stLine.IsAsBefore()) << st.ulSent;
    });
}

TEST(Xmodem, SendsAHundredThousandBytesAtFullSpeedAndLogsTheWay) {
    const Folder stFolder;
    Port stPort;
    WriteFile(stFolder / "sent", Pattern(100000));
    host::SetTransferLog(stFolder / "log");
    Camera stCamera(stPort.Camera(), {"rx", "-bc", stFolder / "received"});
    EXPECT_EQ(Port::Run("xmodem -lsz -big " + stFolder / "sent"), 0);
    EXPECT_EQ(stCamera.Wait(), 0);
    // 97 blocks of 1024 and 6 of 128
    EXPECT_TRUE(ReadFile(stFolder / "received") == Pattern(100000) + std::string(96, '\x1A'));
    EXPECT_THAT(ReadFile(stFolder / "log"), HasSubstr("\rXmodem sectors/kbytes sent: 776/97k"));
    EXPECT_TRUE(stPort.IsAsBefore());
}

TEST(Xmodem, TransfersFollowEachOtherAndTheLineServesTheLibraryAgain) {
    const Folder stFolder;
    Port stPort;
    WriteFile(stFolder / "one", Pattern(300));
    WriteFile(stFolder / "log", "kept\n");
    host::SetTransferLog(stFolder / "log");
    {
        Camera stCamera(stPort.Camera(), {"rx", "-bc", stFolder / "two"});
        EXPECT_EQ(Port::Run("xmodem -lsz -big " + stFolder / "one"), 0);
        EXPECT_EQ(stCamera.Wait(), 0);
    }
    {
        Camera stCamera(stPort.Camera(), {"sx", "-b", stFolder / "two"});
        EXPECT_EQ(Port::Run("xmodem -lrz  -small  " + stFolder / "three"), 0);
        EXPECT_EQ(stCamera.Wait(), 0);
    }
    EXPECT_EQ(ReadFile(stFolder / "three"), Pattern(300) + std::string(84, '\x1A'));
    EXPECT_THAT(ReadFile(stFolder / "log"),
                testing::AllOf(testing::StartsWith("kept\n"), HasSubstr("sectors/kbytes sent"),
                               HasSubstr("Blocks received: 3")));
    const uint8_t aucPacket[] = {0x81, 0x01, 0x04, 0x07, 0x02, 0xFF};
    EXPECT_EQ(DRV_ComSend(stPort.Fd(), sizeof(aucPacket), aucPacket), 6);
    EXPECT_EQ(stPort.Camera().Hear(6), std::string("\x81\x01\x04\x07\x02\xFF"));
}

/* Transfers that end otherwise */

TEST(Xmodem, TheRateHoldsForTheTransferAlone) {
    const Folder stFolder;
    Line stLine;
    const auto stScript = stLine.Start({"-lrz", "-small", stFolder / "received", "115200"});
    ASSERT_EQ(stLine.Camera().Hear(1), "C");
    const termios stDuring = stLine.Camera().Settings();
    EXPECT_EQ(cfgetospeed(&stDuring), static_cast<speed_t>(B115200));
    EXPECT_EQ(stDuring.c_iflag & static_cast<tcflag_t>(IXON | ICRNL), 0U);
    stLine.Say(kEightCans);
    EXPECT_EQ(stScript->Wait(), 128);
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(Xmodem, ACameraThatCancelsEndsTheTransferAndLeavesNoFile) {
    const Folder stFolder;
    Line stLine;
    WriteFile(stFolder / "received", "from an earlier day");
    const auto stScript = stLine.Start({"-lrz", "-small", stFolder / "received"});
    ASSERT_EQ(stLine.Camera().Hear(1), "C");
    stLine.Say(kEightCans);
    EXPECT_EQ(stScript->Wait(), 128);
    EXPECT_FALSE(std::filesystem::exists(stFolder / "received"));
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(Xmodem, AScriptThatIsToldToEndCancelsAndRestoresTheLine) {
    const Folder stFolder;
    for (const int iSignal : {SIGTERM, SIGINT, SIGHUP}) {
        Line stLine;
        const auto stScript = stLine.Start({"-lrz", "-small", stFolder / "received", "115200"});
        ASSERT_EQ(stLine.Camera().Hear(1), "C");
        kill(stScript->Pid(), iSignal);
        EXPECT_EQ(stScript->Wait(), 128 + iSignal);
        EXPECT_THAT(stLine.Camera().Hear(8), HasSubstr(kEightCans));
        EXPECT_FALSE(std::filesystem::exists(stFolder / "received"));
        EXPECT_TRUE(stLine.IsAsBefore());
    }
}

TEST(Xmodem, ATransferProgramThatIsKilledEndsTheScript) {
    const Folder stFolder;
    Line stLine;
    const auto stScript = stLine.Start({"-lrz", "-small", stFolder / "received", "115200"});
    ASSERT_EQ(stLine.Camera().Hear(1), "C");
    const pid_t iTransfer = ChildOf(stScript->Pid(), "rx");
    ASSERT_GT(iTransfer, 0);
    kill(iTransfer, SIGKILL);
    EXPECT_EQ(stScript->Wait(), 128 + SIGKILL);
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(Xmodem, ALineThatIsGoneEndsASend) {
    const Folder stFolder;
    WriteFile(stFolder / "sent", Pattern(2048));
    Line stLine;
    const auto stScript = stLine.Start({"-lsz", "-big", stFolder / "sent"});
    stLine.Say("C");
    ASSERT_EQ(stLine.Camera().Hear(1029).size(), 1029U);
    stLine.Camera().Close();
    EXPECT_GE(stScript->Wait(), 128); // 124 would be the limit
}

TEST(Xmodem, ALineThatIsGoneEndsAReception) {
    const Folder stFolder;
    Line stLine;
    const auto stScript = stLine.Start({"-lrz", "-small", stFolder / "received"});
    ASSERT_EQ(stLine.Camera().Hear(1), "C");
    stLine.Camera().Close();
    EXPECT_GE(stScript->Wait(), 128); // 124 would be the limit
    EXPECT_FALSE(std::filesystem::exists(stFolder / "received"));
}

/* The bound. These take the second that is the shortest limit. */

TEST(XmodemLimit, ASendToACameraThatNeverAnswersIsGivenUp) {
    const Folder stFolder;
    Port stPort;
    WriteFile(stFolder / "sent", Pattern(300));
    host::SetTransferLimit(seconds(1));
    EXPECT_EQ(Port::Run("xmodem -lsz -big " + stFolder / "sent"), 124);
    EXPECT_THAT(stPort.Camera().Hear(8), HasSubstr(kEightCans));
    EXPECT_TRUE(stPort.IsAsBefore());
}

TEST(XmodemLimit, AReceptionFromACameraThatNeverSendsIsGivenUp) {
    const Folder stFolder;
    Port stPort;
    host::SetTransferLimit(seconds(1));
    EXPECT_EQ(Port::Run("xmodem -lrz -small " + stFolder / "received" + " 115200"), 124);
    EXPECT_THAT(stPort.Camera().Hear(9), HasSubstr("C" + kEightCans));
    EXPECT_FALSE(std::filesystem::exists(stFolder / "received"));
    EXPECT_TRUE(stPort.IsAsBefore());
}

TEST(XmodemLimit, NoiseIsNoProgress) {
    const Folder stFolder;
    WriteFile(stFolder / "sent", Pattern(300));
    Line stLine;
    std::atomic<bool> bOver{false};
    const auto stScript = stLine.Start({"-lsz", "-big", stFolder / "sent"}, 1);
    std::thread stNoise([&] {
        while (!bOver) {
            stLine.Say("\x90\x41");
            poll(nullptr, 0, 10);
        }
    });
    EXPECT_EQ(stScript->Wait(), 124);
    bOver = true;
    stNoise.join();
    EXPECT_TRUE(stLine.IsAsBefore());
}

// sx itself would repeat a block ten times, and say so each time.
TEST(XmodemLimit, RepetitionsAreNoProgress) {
    const Folder stFolder;
    WriteFile(stFolder / "sent", Pattern(2048));
    Line stLine;
    const auto stScript = stLine.Start({"-lsz", "-big", stFolder / "sent"}, 1);
    stLine.Say("C");
    ASSERT_EQ(stLine.Camera().Hear(1029).substr(0, 3), std::string("\x02\x01\xFE", 3));
    stLine.Say("\x06");
    std::atomic<bool> bOver{false};
    std::thread stRefusals([&] {
        while (!bOver) {
            poll(nullptr, 0, 400);
            stLine.Say("\x15");
        }
    });
    EXPECT_EQ(stScript->Wait(), 124);
    bOver = true;
    stRefusals.join();
}

/* What is not begun */

TEST(XmodemRefusal, WrongUsageSaysSoAndLeavesTheLineAlone) {
    const std::vector<std::string> avstrWrong[] = {
        {},
        {"-lsz"},
        {"-lsz", "-big"},
        {"-lsz", "-big", ""},
        {"-big", "-lsz", "file"},
        {"-lsz", "-huge", "file"},
        {"-lrz", "-small", "file", "fast"},
        {"-lrz", "-small", "file", "9600", "more"},
    };
    Line stLine;
    for (const std::vector<std::string> &vstrWrong : avstrWrong) {
        EXPECT_EQ(stLine.Start(vstrWrong)->Wait(), 2) << testing::PrintToString(vstrWrong);
    }
    EXPECT_EQ(stLine.Start({"-lsz", "-big", "file"}, 0)->Wait(), 2);
    EXPECT_TRUE(stLine.IsSilent());
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(XmodemRefusal, ARateThatTheLineDoesNotKnowIsCancelled) {
    const Folder stFolder;
    Line stLine;
    EXPECT_EQ(stLine.Start({"-lrz", "-small", stFolder / "received", "12345"})->Wait(), 2);
    EXPECT_EQ(stLine.Camera().Hear(8), kEightCans);
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(XmodemRefusal, AMissingFileIsCancelled) {
    const Folder stFolder;
    Line stLine;
    EXPECT_EQ(stLine.Start({"-lsz", "-big", stFolder / "missing"})->Wait(), 1);
    EXPECT_EQ(stLine.Camera().Hear(8), kEightCans);
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(XmodemRefusal, AFileThatCannotBeWrittenIsCancelled) {
    const Folder stFolder;
    Line stLine;
    EXPECT_EQ(stLine.Start({"-lrz", "-small", stFolder / "no/such/folder/file"})->Wait(), 1);
    EXPECT_EQ(stLine.Camera().Hear(8), kEightCans);
    EXPECT_TRUE(stLine.IsAsBefore());
}

TEST(XmodemRefusal, WithoutLrzszTheTransferIsCancelled) {
    const Folder stFolder;
    WriteFile(stFolder / "sent", Pattern(300));
    Port stPort;
    setenv("PATH", "/no/programs/here", 1);
    EXPECT_EQ(Port::Run("xmodem -lsz -big " + stFolder / "sent" + " 2> " + stFolder / "said"), 127);
    EXPECT_EQ(ReadFile(stFolder / "said"), "xmodem: sx not found: is lrzsz installed?\n");
    EXPECT_EQ(stPort.Camera().Hear(8), kEightCans);
    EXPECT_TRUE(stPort.IsAsBefore());
}

TEST(XmodemRefusal, WithoutAnOpenPortThereIsNoTransfer) {
    const Folder stFolder;
    WriteFile(stFolder / "sent", Pattern(300));
    EXPECT_EQ(Port::Run("xmodem -lsz -big " + stFolder / "sent" + " 2> " + stFolder / "said"), 1);
    EXPECT_EQ(ReadFile(stFolder / "said"), "xmodem: no camera port is open\n");
}

TEST(XmodemRefusal, APortThatAnotherProcessHoldsIsNotTouched) {
    const Folder stFolder;
    WriteFile(stFolder / "sent", Pattern(300));
    Pty stPty;
    const int iOther = open(stPty.Path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(flock(iOther, LOCK_EX), 0); // a lock belongs to the opening: as good as another process
    int32_t iFd = -1;
    ASSERT_EQ(host::MapPort(0, stPty.Path()), "");
    EXPECT_NE(DRV_OpenCom(0, &iFd), 0U);
    EXPECT_EQ(Port::Run("xmodem -lsz -big " + stFolder / "sent"), 1);
    pollfd stPoll = {stPty.Master(), POLLIN, 0};
    EXPECT_EQ(poll(&stPoll, 1, 0), 0);
    close(iOther);
}

/* Keeping others out, and leaving nobody behind */

TEST(Xmodem, OthersAreKeptOutDuringATransferAndNobodyHoldsTheLineAfterIt) {
    const Folder stFolder;
    Port stPort;
    const Pty &stPty = stPort.Camera();
    const auto IsFree = [&] {
        return Process({"flock", "-n", stPty.Path(), "true"}, {}, Environment()).Wait() == 0;
    };
    auto stRunning = std::async(std::launch::async,
                                [&] { return Port::Run("xmodem -lrz -small " + stFolder / "received"); });
    ASSERT_EQ(stPty.Hear(1), "C");
    EXPECT_FALSE(IsFree());
    ASSERT_EQ(write(stPty.Master(), kEightCans.data(), 8), 8);
    EXPECT_EQ(stRunning.get(), 128);
    host::ClosePort(0);
    EXPECT_TRUE(IsFree());
}

TEST(Xmodem, ALogThatCannotBeWrittenDoesNotStopTheTransfer) {
    const Folder stFolder;
    Port stPort;
    host::SetTransferLog(stFolder / "no/such/folder/log");
    auto stRunning = std::async(std::launch::async,
                                [&] { return Port::Run("xmodem -lrz -small " + stFolder / "received"); });
    ASSERT_EQ(stPort.Camera().Hear(1), "C");
    ASSERT_EQ(write(stPort.Camera().Master(), kEightCans.data(), 8), 8);
    EXPECT_EQ(stRunning.get(), 128);
}

} // namespace
