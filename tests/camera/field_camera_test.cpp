#include "tests/camera/field_camera_test.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace camera {

namespace fs = std::filesystem;

namespace {

constexpr char kFolder[] = "/tmp/update";
constexpr char kVersions[] = "/tmp/update/QDM_VERSION";
constexpr uint32_t kTransferRegister = 0x09;
constexpr size_t kBlock = 128;

// What the callback was told. It takes no argument of the caller's.
struct Outcome {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<uint32_t> results;
};

Outcome &TheOutcome() {
    static Outcome &outcome = *new Outcome;
    return outcome;
}

void CallBack(uint32_t result) {
    Outcome &outcome = TheOutcome();
    const std::lock_guard lock(outcome.mutex);
    outcome.results.push_back(result);
    outcome.changed.notify_all();
}

bool AwaitResult() {
    Outcome &outcome = TheOutcome();
    std::unique_lock lock(outcome.mutex);
    return outcome.changed.wait_for(lock, kLimit, [&] { return !outcome.results.empty(); });
}

bool HasThread(const std::string &name) {
    for (const fs::directory_entry &task : fs::directory_iterator("/proc/self/task")) {
        std::string comm;
        if (std::getline(std::ifstream(task.path() / "comm"), comm) && comm == name) {
            return true;
        }
    }
    return false;
}

// Whoever calls back may call back again as long as it lives.
bool AwaitThreadsEnd(const std::string &name) {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (HasThread(name) && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return !HasThread(name);
}

termios LineSettings() {
    termios settings = {};
    EXPECT_EQ(tcgetattr(ViscaGetCamComFd(), &settings), 0);
    return settings;
}

std::string OutputOf(const std::string &command) {
    std::string output;
    FILE *pipe = popen(command.c_str(), "r");
    char line[256];
    while (fgets(line, sizeof line, pipe) != nullptr) {
        output += line;
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

} // namespace

std::string PackagePath(const std::string &kind) {
    return std::string(kFolder) + "/" + (kind == kPatch ? "update.patch" : "QDM_" + kind + ".bin");
}

std::string Pattern(size_t size) {
    std::string text(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(0x20 + i % 89); // 89 is prime: no two blocks are the same
    }
    return text;
}

SharedFile::SharedFile(std::string path)
    : m_path(std::move(path)), m_kept(rename(m_path.c_str(), (m_path + ".kept").c_str()) == 0) {}

SharedFile::~SharedFile() {
    unlink(m_path.c_str());
    if (m_kept) {
        rename((m_path + ".kept").c_str(), m_path.c_str());
    }
}

bool SharedFile::IsThere() const {
    return access(m_path.c_str(), F_OK) == 0;
}

Package::Package() : m_ours(mkdir(kFolder, 0755) == 0 || fs::is_empty(kFolder)) {
    EXPECT_TRUE(m_ours) << "there is an upgrade package in " << kFolder << " already: move it away";
}

Package::~Package() {
    if (m_ours) {
        fs::remove_all(kFolder);
    }
}

void Package::Clear() const {
    ASSERT_TRUE(m_ours);
    for (const fs::directory_entry &file : fs::directory_iterator(kFolder)) {
        fs::remove(file);
    }
}

void Package::Announce(const std::string &uimage, const std::string &program) {
    WriteFile(kVersions, "Package 1\nuImage  VER_NEW: " + uimage + " \nprogram VER_NEW:QDMV100R001B01" +
                             program + " \n");
}

void Package::Put(const std::string &kind, const std::string &content) {
    WriteFile(PackagePath(kind), content);
}

Gate::Gate() : m_board(host::BoardFolder()) {
    const std::string program = m_folder / "xmodem";
    EXPECT_EQ(mkfifo((m_folder / "gate").c_str(), 0600), 0);
    WriteFile(program,
              "#!/bin/sh\ncat '" + (m_folder / "gate") + "'\nexec '" + m_board + "/xmodem' \"$@\"\n");
    EXPECT_EQ(chmod(program.c_str(), 0700), 0);
    host::SetBoardFolder(fs::path(program).parent_path());
}

Gate::~Gate() {
    Open();
    host::SetBoardFolder(m_board);
}

void Gate::AwaitKnock() {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (m_fd < 0 && std::chrono::steady_clock::now() < end) {
        m_fd = open((m_folder / "gate").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC); // not without a reader
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_GE(m_fd, 0) << "no transfer begins";
}

void Gate::Open() {
    if (m_fd >= 0) {
        close(m_fd);
        m_fd = -1;
    }
}

void FieldCameraTest::SetUp() {
    HurryPrograms(true);
    CameraTest::SetUp();
    ASSERT_FALSE(HasFailure());
}

void FieldCameraTest::TearDown() {
    SetLibraryTimeScale(1);
    CameraTest::TearDown();
}

void FieldCameraTest::HurryPrograms(bool hurry) {
    setenv("LD_PRELOAD", hurry ? VISCACAM_QUICK_ALARM : "", 1);
}

sim::Options FieldCameraTest::Module(const std::string &camera) {
    sim::Options options = sim::Options::fast(camera);
    options.kova.flashTime = std::chrono::milliseconds(0);
    return options;
}

void FieldCameraTest::StartModule(const sim::Options &options) {
    StartWithoutFiles(options);
    RememberLine();
}

void FieldCameraTest::HoldThreeCommands() {
    Camera().setFault("no-completion#3");
    SetLibraryTimeScale(5);
    for (const char *command : {"81 01 04 07 02", "81 01 04 07 03", "81 01 04 07 00"}) {
        EXPECT_EQ(Queue(command), 0u);
    }
}

void FieldCameraTest::OccupyQueue() {
    Camera().setFault("no-completion");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(Queue("81 01 04 07 00"), 0u);
    }
    SetLibraryTimeScale(20);
}

void FieldCameraTest::FreeQueue() {
    EXPECT_GT(host::EmptyQueue(VISCA_CMD_QUEUE_ID), 0u);
    EXPECT_TRUE(host::WaitDrained(kLimit));
    SetLibraryTimeScale(1);
    Camera().clearFaults();
}

void FieldCameraTest::BeginUpgrade() {
    {
        const std::lock_guard lock(TheOutcome().mutex);
        TheOutcome().results.clear();
    }
    __atomic_store_n(&gulUpdateFileforKova, 0, __ATOMIC_RELAXED);
    ASSERT_EQ(KOVA_UpdateKova(CallBack), 0u);
}

uint32_t FieldCameraTest::EndUpgrade() {
    EXPECT_TRUE(AwaitResult()) << "the upgrade hangs";
    EXPECT_TRUE(AwaitThreadsEnd("KovaUpgradeThd"));
    const std::vector<uint32_t> results = Results();
    EXPECT_THAT(results, SizeIs(1)) << "called back once";
    ExpectLineGivenBack();
    CatchUp();
    return results.empty() ? 0xDEAD : results[0];
}

uint32_t FieldCameraTest::Upgrade() {
    BeginUpgrade();
    return HasFatalFailure() ? 0xDEAD : EndUpgrade();
}

std::vector<uint32_t> FieldCameraTest::Results() {
    const std::lock_guard lock(TheOutcome().mutex);
    return TheOutcome().results;
}

uint32_t FieldCameraTest::Export(uint32_t arg) {
    const uint32_t result = KOVA_ExportLog(arg);
    ExpectLineGivenBack();
    CatchUp();
    return result;
}

void FieldCameraTest::ExpectArchive(const std::string &select) {
    EXPECT_EQ(ReadFile(kArchive).size() % kBlock, 0u);
    // gzip looks at length and CRC of all there is, and lets NUL follow.
    EXPECT_EQ(OutputOf("gzip -t < " + std::string(kArchive) + " 2>&1"), "");
    const std::string name = "kova-log-" + select + "-";
    EXPECT_EQ(OutputOf("tar tzf " + std::string(kArchive) + " 2>&1"),
              name + "system.txt\n" + name + "serial.txt\n" + name + "focus.txt\n");
}

void FieldCameraTest::RememberLine() {
    m_line = LineSettings();
}

void FieldCameraTest::ExpectLineGivenBack() const {
    EXPECT_EQ(ViscaIsUpdatingCam(), 0u);
    EXPECT_EQ(ViscaIsExportLog(), 0u);
    EXPECT_EQ(host::CpldRegister(kTransferRegister), 0u);
    const termios line = LineSettings();
    EXPECT_EQ(cfgetospeed(&line), cfgetospeed(&m_line));
    EXPECT_EQ(cfgetispeed(&line), cfgetispeed(&m_line));
    EXPECT_EQ(line.c_iflag, m_line.c_iflag);
    EXPECT_EQ(line.c_oflag, m_line.c_oflag);
    EXPECT_EQ(line.c_cflag, m_line.c_cflag);
    EXPECT_EQ(line.c_lflag, m_line.c_lflag);
    EXPECT_TRUE(std::equal(line.c_cc, line.c_cc + NCCS, m_line.c_cc));
}

void FieldCameraTest::ExpectServing() {
    if (HasFailure()) {
        return; // and keep the journal of it
    }
    Forget();
    EXPECT_EQ(Zoom(), State().zoom);
    EXPECT_EQ(VISCA_ZoomStop(), 0u);
    Drain();
    EXPECT_THAT(Heard(), ElementsAre("81 09 04 47 FF", kZoomStop));
    EXPECT_EQ(TimeOuts(), 0u);
}

std::vector<std::string> FieldCameraTest::HeardDuringTransfer() {
    std::vector<std::string> heard;
    bool during = false;
    for (const Step &step : Journal::Get().Wire()) {
        during = during ? step.text != "* transfer complete" : StartsWith(step.text, "* transfer begins");
        if (during && (StartsWith(step.text, "> 81") || StartsWith(step.text, "~"))) {
            heard.push_back(step.text.substr(2));
        }
    }
    return heard;
}

void FieldCameraTest::ExpectArrived(const std::string &kind, const std::string &content) {
    const sim::Bytes bytes = Camera().receivedFile(kind);
    const std::string received(bytes.begin(), bytes.end());
    EXPECT_EQ(received.size(), (content.size() + kBlock - 1) / kBlock * kBlock) << kind;
    EXPECT_TRUE(received.substr(0, content.size()) == content) << kind << " of " << content.size();
    EXPECT_EQ(received.find_first_not_of('\x1A', content.size()), std::string::npos) << kind;
}

std::vector<std::string> FieldCameraTest::FilesReceived() const {
    std::vector<std::string> kinds;
    for (const sim::KovaFile &file : State().kova.filesReceived) {
        kinds.push_back(file.kind);
    }
    return kinds;
}

double ReceiverSeconds() {
    for (const host::ThreadInfo &thread : host::Threads()) {
        if (thread.strName == "ViscaAckMsgProc") {
            uint64_t nanoseconds = 0;
            std::ifstream("/proc/self/task/" + std::to_string(thread.ulThreadId) + "/schedstat") >>
                nanoseconds;
            return static_cast<double>(nanoseconds) / 1e9;
        }
    }
    ADD_FAILURE() << "no receiver";
    return 0;
}

} // namespace camera
