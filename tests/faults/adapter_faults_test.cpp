// Faults of the adapter: pulled, plugged in again, taken by another process.
#include <sys/wait.h>
#include <unistd.h>

#include "tests/faults/fault_test.h"

namespace faults {

namespace {

// Another process that uses the reference host: it tries the port when told to, and holds it until told
// again. Started before this process has threads.
class OtherProcess {
  public:
    explicit OtherProcess(const std::string &path) {
        EXPECT_EQ(pipe(m_orders), 0);
        EXPECT_EQ(pipe(m_answers), 0);
        m_child = fork();
        if (m_child == 0) {
            Serve(path);
        }
    }
    ~OtherProcess() {
        for (int fd : {m_orders[0], m_orders[1], m_answers[0], m_answers[1]}) {
            close(fd);
        }
        if (m_child > 0) {
            kill(m_child, SIGKILL);
            waitpid(m_child, nullptr, 0);
        }
    }
    OtherProcess(const OtherProcess &) = delete;
    OtherProcess &operator=(const OtherProcess &) = delete;

    bool Opens() { return Order('o'); }
    bool Closes() { return Order('c'); }

  private:
    bool Order(char order) {
        char answer = '?';
        EXPECT_EQ(write(m_orders[1], &order, 1), 1);
        EXPECT_EQ(read(m_answers[0], &answer, 1), 1);
        return answer == 'y';
    }
    [[noreturn]] void Serve(const std::string &path) {
        close(m_orders[1]); // it ends with the test, however that ends
        close(m_answers[0]);
        host::SetLogLevel(host::Log::kGeneral, host::kLogOff);
        char order = 0;
        while (read(m_orders[0], &order, 1) == 1) {
            int32_t fd = -1;
            const bool done = order == 'c' || (host::MapPort(0, path).empty() && DRV_OpenCom(0, &fd) == 0);
            if (order == 'c') {
                host::ClosePort(0);
            }
            const char answer = done ? 'y' : 'n';
            if (write(m_answers[1], &answer, 1) != 1) {
                break;
            }
        }
        _exit(0);
    }

    int m_orders[2] = {-1, -1};
    int m_answers[2] = {-1, -1};
    pid_t m_child = -1;
};

std::string LinkPath() {
    return ::testing::TempDir() + "viscacam-faults-" + std::to_string(getpid());
}

} // namespace

class AdapterFaults : public FaultTest, public ::testing::WithParamInterface<unsigned> {
  protected:
    static sim::Options Linked(unsigned baud) {
        sim::Options options = Paced(baud);
        options.link = LinkPath();
        return options;
    }
};

// A failing read is logged after pauses of 20 ms, 200 ms, 1 s, 1 s ...
TEST_P(AdapterFaults, F23_APulledOneCostsALineASecondAndFailsWritersAtOnce) {
    Begin(Linked(GetParam()));
    Strike("hang-up");
    ASSERT_TRUE(AwaitHost("vanished"));
    uint8_t value = 7;
    EXPECT_EQ(Read(&value), 1u);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    ASSERT_TRUE(AwaitHost("DEBUG ViscaCamComSend failed!"));
    EXPECT_THAT(HostSteps("sent"), ElementsAre("sent -1", "sent -1"));
    const double begin = LibrarySeconds();
    SetLibraryTimeScale(kHurry);
    Pass(std::chrono::milliseconds(300));
    SetLibraryTimeScale(1);
    EXPECT_LE(static_cast<double>(HostCount("read error")), 5 + LibrarySeconds() - begin);
    EXPECT_EQ(TimeOuts(), 0u) << "nothing is waited for that was not written";
    Expect(10);

    Camera().replug();
    ASSERT_TRUE(AwaitHost("back " + std::to_string(GetParam())));
    Recover();
}

TEST_P(AdapterFaults, F24_OnePluggedInAgainGoesOnBehindTheSameDescriptor) {
    Begin(Linked(GetParam()));
    const int32_t fd = ViscaGetCamComFd();
    Strike("replug=0.3");
    ASSERT_TRUE(AwaitHost("back " + std::to_string(GetParam())));
    EXPECT_EQ(ViscaGetCamComFd(), fd);
    Expect(10);
    WorkWithoutLoss(1);
    Recover();
}

INSTANTIATE_TEST_SUITE_P(Rates, AdapterFaults, ::testing::Values(9600u, 19200u, 38400u),
                         ::testing::PrintToStringParamName());

using Processes = AdapterFaults;

TEST_F(Processes, F31_ASecondOneIsRefusedAndDisturbsNothing) {
    OtherProcess other(LinkPath());
    Begin(Linked(9600));
    EXPECT_FALSE(other.Opens());
    EXPECT_FALSE(other.Opens());
    WorkWithoutLoss(1);
    Recover();
}

TEST_F(Processes, F31_TheSecondOneIsToldWhyAndMayTryAgain) {
    OtherProcess other(LinkPath());
    sim::Options options = Linked(9600);
    PlugIn(options);
    ASSERT_TRUE(other.Opens());
    EXPECT_EQ(ViscaCamComInit(0), 1u);
    EXPECT_EQ(HostCount("in use by another process"), 1u);
    EXPECT_EQ(HostCount("ERROR Open sony ctrl serial port fail exit"), 1u);
    EXPECT_EQ(ViscaGetCamComFd(), -1);
    ASSERT_TRUE(other.Closes());
    EXPECT_EQ(ViscaCamComInit(0), 0u);
    EXPECT_EQ(ViscaIsCamCanCtrl(), 1u);
}

} // namespace faults
