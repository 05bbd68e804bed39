/**
 * @file field_camera_test.h
 * Fixture: as CameraTest, with a Kova module, and what field service needs beside it: the package, the
 * archive and the files of the auto-focus tuning, which all programs of a machine share, and the promises
 * that every transfer keeps.
 *
 * The files go over the line by the XMODEM programs of lrzsz at both ends, whose own pauses are shortened.
 */
#ifndef VISCACAM_TESTS_CAMERA_FIELD_CAMERA_TEST_H
#define VISCACAM_TESTS_CAMERA_FIELD_CAMERA_TEST_H

#include <thread>

#include <termios.h>

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"
#include "tests/host/folder.h"

namespace camera {

constexpr char kArchive[] = "/tmp/kova.tgz";
constexpr char kTele[] = "81 01 04 07 02 FF";
constexpr char kWide[] = "81 01 04 07 03 FF";
constexpr char kUimage[] = "uimage";
constexpr char kProgram[] = "program";
constexpr char kPatch[] = "patch";

/** Where a package has a file of this kind. */
std::string PackagePath(const std::string &kind);

/** Bytes that show when one of them is lost or doubled, or when the padding of a block is among them. */
std::string Pattern(size_t size);

/** A file that all programs of the machine share, missing at first. One that stands there is put aside
 * meanwhile. */
class SharedFile {
  public:
    explicit SharedFile(std::string path);
    ~SharedFile();
    SharedFile(const SharedFile &) = delete;
    SharedFile &operator=(const SharedFile &) = delete;
    bool IsThere() const;

  private:
    std::string m_path;
    bool m_kept;
};

/** The folder of upgrade packages, empty. The test fails when there is a package of somebody else's. */
class Package {
  public:
    Package();
    ~Package();
    Package(const Package &) = delete;
    Package &operator=(const Package &) = delete;
    void Clear() const;
    /** The file that announces versions: Announce("1.24", "D013") to a module of the first generation. */
    static void Announce(const std::string &uimage, const std::string &program);
    static void Put(const std::string &kind, const std::string &content);

  private:
    bool m_ours;
};

/** Holds the host's transfers back: each begins when the test lets it. The module waits meanwhile. */
class Gate {
  public:
    Gate();
    ~Gate();
    Gate(const Gate &) = delete;
    Gate &operator=(const Gate &) = delete;
    /** Wait until a transfer is about to begin. */
    void AwaitKnock();
    void Open();

  private:
    Folder m_folder;
    std::string m_board;
    int m_fd = -1;
};

class FieldCameraTest : public CameraTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    /**
     * Whether pauses and time limits of the XMODEM programs last a tenth, as they do at first: half a second
     * for a block, which a line of 9600 bit/s takes a second for. To be said before the module is plugged in.
     */
    static void HurryPrograms(bool hurry);
    /** Nothing takes time but what is said; flashing is over at once. */
    static sim::Options Module(const std::string &camera = "kova1");
    void StartModule(const sim::Options &options = Module());

    /**
     * Queue tele, wide and stop, of which each takes its 2 s. The library's time runs faster from then on:
     * the owner of the line gets it after 4 s at least, and waits 10 s.
     */
    void HoldThreeCommands();
    /** Queue so many that take their 2 s that they are not gone within 10 s. The library's time runs faster.
     */
    void OccupyQueue();
    /** Drop those that still wait, and let the library's time run as usual. */
    void FreeQueue();
    /** Clear what an earlier upgrade left behind, and start one. */
    void BeginUpgrade();
    /**
     * Wait for its end, and look whether the callback came once and everything is as before.
     * @return what the callback was told
     */
    uint32_t EndUpgrade();
    uint32_t Upgrade();
    /** The results that the callback was told since BeginUpgrade(). */
    static std::vector<uint32_t> Results();

    /** KOVA_ExportLog, and look whether everything is as before. */
    uint32_t Export(uint32_t arg);
    /** The archive is one as the module makes them, whole, and filled up with NUL to whole blocks. */
    static void ExpectArchive(const std::string &select);

    /** Remember how the line is set. */
    void RememberLine();
    /** No transfer is under way: no flag is up, the switch is back, the line set as it was. */
    void ExpectLineGivenBack() const;
    /** An inquiry and a command work. */
    void ExpectServing();
    /** Commands, inquiries included, that the module heard from its start packet to the end of the transfer.
     */
    static std::vector<std::string> HeardDuringTransfer();
    /** The module has this file of the last upgrade, with the padding of its last block. */
    void ExpectArrived(const std::string &kind, const std::string &content);
    std::vector<std::string> FilesReceived() const;

    Package m_package;
    SharedFile m_archive{kArchive};

  private:
    termios m_line = {};
};

/** Processor time that the library's receiver has used, in seconds. */
double ReceiverSeconds();

} // namespace camera

#endif
