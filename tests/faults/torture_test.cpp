// Every service of the host and every system call that the library makes fails: each once, at its first,
// second, ... n-th call, then from there on for ever. What comes of it is stated below, row by row; a call
// that no row speaks of fails the test. Afterwards flags, descriptors and threads are as they should be and
// the next exchange works, so no lock is left held.
//
// The flush of the line, the power-on poll and a module that goes on upgrading are waited for without bound:
// there "for ever" ends after kEver calls, which is more than any bounded wait makes.
#include "tests/unit/unit_test.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace unit {
namespace {

constexpr unsigned kEver = 500;
constexpr size_t kLineBuffer = 256;
constexpr uint64_t kCommandLimit = 2000000, kInquiryLimit = 6000000; // microseconds
constexpr uint64_t kTornLimit = 2000000;                             // a second for each torn reply before

constexpr char kDone[] = "done", kRefused[] = "refused", kUnsent[] = "unsent", kFailed[] = "failed",
               kNothing[] = "no answer", kHeld[] = "failed, line held";

/** A part of the library's life, on one thread: the receiver's and the sender's turns are made by the test.
 */
struct Step {
    const char *name;
    void (*prepare)();
    std::string (*run)();
};

void PrintTo(const Step &step, std::ostream *out) {
    *out << step.name;
}

/** One kind of call in one step. `call` counts within the step; 0: every one that no row before names. */
struct Row {
    const char *step;
    Call kind;
    unsigned call;
    const char *once; /**< what comes of one failure */
    const char *ever; /**< what comes of it when all later calls fail, too */
    const char *says; /**< a log line then; empty: none is stated */
};

unsigned g_told; // reports that reached the host

void Told(uint32_t) {
    ++g_told;
}

uint32_t g_verdict;

void Verdict(uint32_t result) {
    g_verdict = result;
}

/* ---- The camera and its receiver ---- */

void Receive(std::string_view bytes) {
    if (Host().Unread() < kLineBuffer) { // beyond it a line nobody reads loses bytes
        Host().Feed(bytes);
    }
    while (Host().Unread() > 0) {
        const size_t before = Host().Unread();
        ViscaDealOneAck();
        if (Host().Unread() == before) {
            return; // the read failed: the rest comes with the next turn
        }
    }
}

unsigned g_states; // of an upgrade that goes on
unsigned g_boots;  // of a camera that is not on yet

std::string AnswerTo(const Bytes &packet) {
    const std::string hex = Hex(packet);
    if (packet[1] == 0x01) {
        return hex.compare(0, 11, "81 01 04 AA") == 0 || hex.compare(0, 11, "81 01 04 A7") == 0
                   ? ""
                   : "90 41 FF 90 51 FF";
    }
    if (hex == "81 09 04 A9 FF") {
        return g_states > 0 && --g_states > 0 ? "90 50 00 03 FF" : "90 50 00 04 FF";
    }
    if (hex == "81 09 04 00 FF") {
        return g_boots > 0 && --g_boots > 0 ? "90 50 03 FF" : "90 50 02 FF";
    }
    return "90 50 05 0A FF";
}

void Camera(const Bytes &packet) {
    Receive(AnswerTo(packet));
}

/* ---- The steps ---- */

// Found wrong while calls fail: the test's own locks may fail then, too.
std::string g_wrong;

void Check(bool holds, const char *what) {
    if (!holds) {
        g_wrong += std::string(what) + "; ";
    }
}

void Nothing() {}

std::string Open() {
    const uint32_t result = ViscaCamComInit(0);
    Check(ViscaIsCamCanCtrl() == (result == 0 ? 1 : 0), "can-control");
    return result == 0 ? kDone : kFailed;
}

std::string Threads() {
    return ViscaStartMsgProc() == 0 ? kDone : kFailed;
}

std::string Command() {
    if (SONY_ZoomStop() != 0) {
        return kRefused;
    }
    if (ViscaSendOneCmd() != 0) {
        return kUnsent;
    }
    const uint64_t begin = Clib().Now();
    ViscaDropOneCmdAck();
    Check(Clib().Now() - begin <= kCommandLimit, "time of a command");
    return kDone;
}

std::string ThreeCommands() {
    std::string worst = kDone;
    for (int i = 0; i < 3; ++i) {
        const std::string result = Command();
        worst = result == kDone ? worst : result;
    }
    return worst;
}

std::string Inquiry() {
    uint8_t value = 7;
    const uint64_t begin = Clib().Now();
    const uint32_t result = SonyGetRegisterVal(0x20, &value);
    Check(Clib().Now() - begin <= kInquiryLimit + kTornLimit, "time of an inquiry");
    Check(value == 0x5A || value == 0, "value");
    return result != 0 ? kFailed : value == 0x5A ? kDone : kNothing;
}

std::string Report() {
    g_told = 0;
    Receive("90 07 00 AE 01 FF");
    return g_told == 1 ? kDone : kNothing;
}

std::string PowerOn() {
    return SonyWaitPowerOn() == 0 ? kDone : kFailed;
}

std::string Upgrade() {
    gulUpdateFileforKova = 0x400;
    g_verdict = kUnset;
    KovaUpgradeThread(reinterpret_cast<void *>(Verdict));
    Check(g_verdict != kUnset, "no verdict");
    const bool held = ViscaIsUpdatingCam() == 1;
    ViscaMarkUpdatingCam(0);
    return g_verdict == 0 ? kDone : held ? kHeld : kFailed;
}

std::string Export() {
    const uint32_t result = KOVA_ExportLog(0);
    Check(ViscaIsExportLog() == 0, "export flag");
    return result == 0 ? kDone : kFailed;
}

void BeforeOpening() {
    ViscaSetCamComFd(-1);
    ViscaSetCamCanCtrl(0);
    Host().AnswerProbe(9600, "90 50 02 FF");
}

void Reports() {
    gpfnReportZoomStatus = Told;
}

void Boots() {
    g_boots = 3;
}

void Module() {
    Host().SetModuleType(0x02012001);
    VISCA_SetCamModuleType(0x02012001);
    g_states = 3;
}

const Step kSteps[] = {
    {"open", BeforeOpening, Open}, {"threads", Nothing, Threads}, {"commands", Nothing, ThreeCommands},
    {"inquiry", Nothing, Inquiry}, {"report", Reports, Report},   {"power-on", Boots, PowerOn},
    {"upgrade", Module, Upgrade},  {"export", Module, Export},
};

/* ---- What is stated ---- */

const Row kRows[] = {
    // A search for the camera that cannot be made is made again a second later, twenty times.
    {"open", Call::Open, 0, kFailed, kFailed, "Open sony ctrl serial port fail exit\n"},
    {"open", Call::Fcntl, 0, kDone, kFailed, "AdaptCamComBaudRate fail 1 times, try it after 1 sec\n"},
    {"open", Call::SetParam, 0, kDone, kFailed, "i[0] DRV_SetComParam 0 fail exit\n"},
    {"open", Call::Write, 0, kDone, kFailed, "write fail exit\n"},
    {"open", Call::Read, 0, kDone, kFailed, ""},
    {"open", Call::Flush, 0, kDone, kDone, "DRV_FlushCom fail, try it again\n"},

    {"threads", Call::ThreadCreate, 1, kFailed, kFailed, "create Queue Msg Proc fail exit Ret[11]\n"},
    {"threads", Call::ThreadCreate, 2, kFailed, kFailed, "create Ack Msg Proc fail exit Ret[11]\n"},

    // A command that is not queued or not written is lost, and the caller of the first learns it. Whatever
    // happens to its result costs time only.
    {"commands", Call::Put, 1, kRefused, kRefused, "Visca QueueCmdCushion fail\n"},
    {"commands", Call::Put, 3, kRefused, kRefused, "Visca QueueCmdCushion fail\n"},
    {"commands", Call::Put, 5, kRefused, kRefused, "Visca QueueCmdCushion fail\n"},
    {"commands", Call::Put, 6, kDone, kDone, "Put CMD Result msg to queue failed!\n"},
    {"commands", Call::Put, 0, kDone, kRefused, "Put CMD Result msg to queue failed!\n"},
    {"commands", Call::Take, 1, kUnsent, kUnsent, "QUEUE GetSerialData failed!\n"},
    {"commands", Call::Take, 3, kUnsent, kUnsent, "QUEUE GetSerialData failed!\n"},
    {"commands", Call::Take, 5, kUnsent, kUnsent, "QUEUE GetSerialData failed!\n"},
    {"commands", Call::Take, 6, kDone, kDone, ""},
    {"commands", Call::Take, 0, kDone, kUnsent, ""},
    {"commands", Call::IsEmpty, 0, kDone, kDone, ""},
    {"commands", Call::ReadFd, 0, kDone, kDone, "Get VISCA_CMD_RESULT_QUEUE_ID fd failed.\n"},
    {"commands", Call::Send, 0, kUnsent, kUnsent, "DRV_ComSend fail\n"},
    {"commands", Call::Lock, 0, kDone, kDone, ""},
    {"commands", Call::Unlock, 0, kDone, kDone, ""},
    {"commands", Call::Select, 0, kDone, kDone, ""},
    {"commands", Call::Read, 0, kDone, kDone, ""},

    {"inquiry", Call::ReadFd, 0, kFailed, kFailed, "Get VISCA_INQUIRY_RESULT_QUEUE_ID fd failed.\n"},
    {"inquiry", Call::Lock, 1, kFailed, kFailed, "pthread_mutex_lock fail exit\n"},
    {"inquiry", Call::Lock, 2, kDone, kDone, ""},
    {"inquiry", Call::Unlock, 1, kDone, kDone, ""},
    {"inquiry", Call::Unlock, 2, kDone, kDone, "pthread_mutex_unlock fail\n"},
    {"inquiry", Call::Send, 0, kFailed, kFailed, "ViscaCamComSend fail\n"},
    {"inquiry", Call::Put, 0, kNothing, kNothing, "Put Inquiry Result msg to queue failed!\n"},
    {"inquiry", Call::Take, 0, kNothing, kNothing, ""},
    {"inquiry", Call::Read, 1, kNothing, kNothing, "read error, fail exit\n"},
    {"inquiry", Call::Read, 0, kNothing, kNothing, "Unexpected Ack, fail exit\n"},
    {"inquiry", Call::Select, 5, kNothing, kNothing, "Wait VISCA RSP msg failed!\n"},
    {"inquiry", Call::Select, 0, kDone, kNothing, ""}, // a reply's bytes are then read without waiting

    {"report", Call::Read, 1, kNothing, kNothing, "read error, fail exit\n"},
    {"report", Call::Read, 0, kNothing, kNothing, "Unexpected Ack, fail exit\n"},
    {"report", Call::Select, 0, kDone, kDone, ""},

    // An answer that does not come is none that says "on": asked again. An inquiry that fails ends it.
    {"power-on", Call::ReadFd, 0, kFailed, kFailed, "ViscaInquiry failed exit\n"},
    {"power-on", Call::Send, 0, kFailed, kFailed, "ViscaInquiry failed exit\n"},
    {"power-on", Call::Lock, 1, kFailed, kFailed, "ViscaInquiry failed exit\n"},
    {"power-on", Call::Lock, 3, kFailed, kFailed, "ViscaInquiry failed exit\n"},
    {"power-on", Call::Lock, 5, kFailed, kFailed, "ViscaInquiry failed exit\n"},
    {"power-on", Call::Lock, 6, kDone, kDone, ""},
    {"power-on", Call::Lock, 0, kDone, kFailed, ""},
    {"power-on", Call::Unlock, 0, kDone, kDone, ""},
    {"power-on", Call::Put, 0, kDone, kDone, "Put Inquiry Result msg to queue failed!\n"},
    {"power-on", Call::Take, 0, kDone, kDone, ""},
    {"power-on", Call::Read, 0, kDone, kDone, ""},
    {"power-on", Call::Select, 0, kDone, kDone, ""},

    // Only an announcement that is not written keeps the line. Twenty states that make no sense are a
    // failure.
    {"upgrade", Call::IsEmpty, 0, kDone, kDone, "[  1] Wait queue empty, usleep(100,000)\n"},
    {"upgrade", Call::Lock, 1, kDone, kFailed, "pthread_mutex_lock fail exit\n"},
    {"upgrade", Call::Lock, 8, kDone, kDone, ""},
    {"upgrade", Call::Lock, 0, kDone, kFailed, ""},
    {"upgrade", Call::Unlock, 0, kDone, kDone, ""},
    {"upgrade", Call::Send, 1, kHeld, kHeld, "KOVA update:ViscaCamComSend fail\n"},
    {"upgrade", Call::Send, 0, kDone, kFailed, "Unexpected state[1]\n"},
    {"upgrade", Call::System, 0, kDone, kDone, ""},
    {"upgrade", Call::Flush, 0, kDone, kDone, "ViscaCamComFlush fail, try it again\n"},
    {"upgrade", Call::ReadFd, 0, kDone, kFailed, "Unexpected state[1]\n"},
    {"upgrade", Call::Put, 0, kDone, kFailed, "Unexpected state[0]\n"},
    {"upgrade", Call::Take, 0, kDone, kFailed, "Unexpected state[0]\n"},
    {"upgrade", Call::Read, 0, kDone, kFailed, "Unexpected state[0]\n"},
    {"upgrade", Call::Select, 0, kDone, kFailed, ""},

    {"export", Call::IsEmpty, 0, kDone, kFailed, "[  1] Wait queue empty, usleep(100,000)\n"},
    {"export", Call::Lock, 1, kDone, kFailed, ""},
    {"export", Call::Lock, 2, kDone, kFailed, "pthread_mutex_lock fail exit\n"},
    {"export", Call::Lock, 0, kDone, kDone, ""},
    {"export", Call::Unlock, 0, kDone, kDone, ""},
    {"export", Call::Send, 0, kFailed, kFailed, "KOVA exportlog:ViscaCamComSend fail\n"},
    {"export", Call::System, 0, kDone, kDone, ""},
    {"export", Call::Flush, 0, kDone, kDone, "ViscaCamComFlush fail, try it again\n"},
};

constexpr Call kKinds[] = {Call::Put,    Call::Take,     Call::IsEmpty, Call::ReadFd,
                           Call::Open,   Call::SetParam, Call::Flush,   Call::Send,
                           Call::System, Call::Select,   Call::Read,    Call::Write,
                           Call::Fcntl,  Call::Lock,     Call::Unlock,  Call::ThreadCreate};

const Row *Stated(const Step &step, Call kind, unsigned call) {
    for (const Row &row : kRows) {
        if (strcmp(row.step, step.name) == 0 && row.kind == kind && (row.call == call || row.call == 0)) {
            return &row;
        }
    }
    return nullptr;
}

size_t CountEntries(const char *folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

bool WasSaid(const std::string &message) {
    for (const Event &event : Host().Events(Call::Log)) {
        if (event.log.message == message) {
            return true;
        }
    }
    return message.empty();
}

} // namespace

class TortureTest : public UnitTest, public ::testing::WithParamInterface<Step> {
  protected:
    // As at the step's begin, whatever the step before left.
    static void Restart() {
        EXPECT_THAT(Host().Complaints(), IsEmpty());
        Host().Reset();
        Clib().Reset();
        Host().OnSend(Camera);
        VISCA_SetCamModuleType(0x02000001);
        ViscaSetCamComFd(Host().PortFd());
        ViscaSetCamCanCtrl(1);
        ViscaMarkUpdatingCam(0);
        ViscaMarkExportLog(0);
        gulUpdateFileforKova = 0;
        g_states = g_boots = 0;
        g_wrong.clear();
        GetParam().prepare();
    }

    // The host has mended what failed, and does away with answers that came too late.
    static void ExpectNextExchangeWorks() {
        if (ViscaGetCamComFd() == -1) {
            EXPECT_EQ(kDone, Open()) << "may be tried again";
        }
        ViscaSetCamCanCtrl(1);
        Receive("FF");
        for (uint32_t queue :
             {VISCA_CMD_QUEUE_ID, VISCA_CMD_RESULT_QUEUE_ID, VISCA_INQUIRY_RESULT_QUEUE_ID}) {
            void *element = nullptr;
            while (Host().QueueLength(queue) > 0 && QUEUE_GetSerialData(queue, &element) == 0) {}
        }
        EXPECT_EQ(kDone, Command());
        EXPECT_EQ(kDone, Inquiry());
        EXPECT_EQ(1u, ViscaIsCmdQueueEmpty());
    }

    static void Torture(Call kind, unsigned call, const Row &row) {
        for (const bool ever : {false, true}) {
            SCOPED_TRACE(ever ? "for ever" : "once");
            Restart();
            const size_t descriptors = CountEntries("/proc/self/fd");
            const size_t threads = CountEntries("/proc/self/task");
            Host().Fail(kind, call, ever ? kEver : 1);
            const std::string result = GetParam().run();
            Host().Heal();
            EXPECT_EQ(ever ? row.ever : row.once, result);
            EXPECT_EQ("", g_wrong);
            EXPECT_TRUE(WasSaid(row.says)) << row.says;
            EXPECT_EQ(0u, ViscaIsCamComBusy());
            EXPECT_EQ(descriptors, CountEntries("/proc/self/fd"));
            EXPECT_EQ(threads, CountEntries("/proc/self/task"));
            ExpectNextExchangeWorks();
        }
    }
};

TEST_P(TortureTest, EachCallThatFailsHasItsStatedResult) {
    Restart();
    ASSERT_EQ(kDone, GetParam().run());
    std::map<Call, unsigned> calls;
    for (Call kind : kKinds) {
        calls[kind] = Host().Calls(kind);
    }
    for (const auto &[kind, count] : calls) {
        for (unsigned call = 1; call <= count; ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(count) + " of kind " +
                         std::to_string(static_cast<int>(kind)));
            const Row *row = Stated(GetParam(), kind, call);
            if (row == nullptr) {
                ADD_FAILURE() << "nothing is stated";
                continue;
            }
            Torture(kind, call, *row);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Steps, TortureTest, ::testing::ValuesIn(kSteps), [](const auto &step) {
    std::string name = step.param.name;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
});

} // namespace unit
