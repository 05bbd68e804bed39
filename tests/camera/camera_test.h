/**
 * @file camera_test.h
 * Fixture: a simulated camera on port 0 of the reference host, the library started on it, and a journal of
 * what happens on both sides.
 *
 * The library's threads and flags live as long as the process, so each case needs a process of its own. ctest
 * gives it one; a second case in the same process fails with a word about that.
 *
 * Nothing waits by sleeping: waits are for a step of the journal or a state of the camera, with a limit that
 * only a failing test reaches.
 */
#ifndef VISCACAM_TESTS_CAMERA_CAMERA_TEST_H
#define VISCACAM_TESTS_CAMERA_CAMERA_TEST_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/host.h"
#include "sim/sim.h"
#include "tests/camera/journal.h"
#include "viscacam.h"

namespace camera {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/** Reached only by a test that fails. */
constexpr std::chrono::milliseconds kLimit{30000};

/** What both the sender and an inquiry log when their time is over, as hosts know the line. */
constexpr char kTimeOut[] = "Wait VISCA RSP msg tiemout!";

/** What a command and an inquiry are called on the line. */
constexpr char kProbe[] = "81 09 04 00 FF";
constexpr char kDzoomOff[] = "81 01 04 06 03 FF";
constexpr char kZoomStop[] = "81 01 04 07 00 FF";

class CameraTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /** A camera on port 0, its type as the board's. The library is not started. */
    void PlugIn(const sim::Options &options = sim::Options::fast());
    /** Tell board and public layer which module is attached. */
    static void SetModuleType(uint32_t type);
    /** VISCA_Init, and wait until all that it sends is done. */
    void StartLibrary();
    /** PlugIn and StartLibrary; the journal then begins afresh. */
    void Start(const sim::Options &options = sim::Options::fast());
    /**
     * As Start(), but a Kova module is not made ready as VISCA_Init does it: its clock, its orientation and
     * the version files, which all programs of a machine share, are left out. Its capabilities are known.
     */
    void StartWithoutFiles(const sim::Options &options);
    void StartWithoutFiles(const std::string &camera) { StartWithoutFiles(sim::Options::fast(camera)); }

    sim::Camera &Camera() { return *m_camera; }
    sim::State State() const { return m_camera->state(); }
    /** Wait for a state of the camera. */
    bool AwaitCamera(const std::function<bool(const sim::State &)> &predicate) const;
    /** These settings of the camera have these values. */
    void ExpectSettings(const std::map<std::string, int> &expected) const;
    /** The camera has obeyed whatever it was told, and in time. */
    void ExpectNothingRefused() const;
    /** Let the camera send bytes of its own: SendRaw("90 51 FF"). */
    void SendRaw(const std::string &hex) { Camera().sendRaw(Bytes(hex)); }

    /** The next command is acknowledged and not completed, until Complete(). */
    void HoldNextCompletion() { Camera().setFault("no-completion#1"); }
    void Complete() { SendRaw("90 51 FF"); }

    /**
     * Wait until all queued commands are dealt with and the camera's side of the journal is up to date. On
     * the host's side the step that ended the last command may follow a moment later.
     */
    void Drain();
    /** Wait until the camera's side of the journal holds everything up to now. */
    void CatchUp();
    /** Let real time pass, for tests whose subject is what happens over time. */
    static void Pass(std::chrono::milliseconds time);

    static bool AwaitHost(const std::string &part, size_t count = 1);
    static bool AwaitWire(const std::string &part, size_t count = 1);
    /** Wait until so many elements wait in a queue of the host: a put is noted before the element is in. */
    static bool AwaitDepth(uint32_t queue, uint32_t depth);
    /** Empty the journal and set the host's counters to 0. */
    static void Forget();

    /** Packets that the camera has heard, probes and inquiries included. */
    static std::vector<std::string> Heard();
    /** Commands that the camera has heard. */
    static std::vector<std::string> Commands();
    /** Both directions of the line, "> ..." and "< ...". */
    static std::vector<std::string> Line();
    /** Steps of the host's side that begin so. */
    static std::vector<std::string> HostSteps(const std::string &start);
    /** How many steps of the host's side contain this text. */
    static size_t HostCount(const std::string &part);
    /**
     * Commands and inquiries whose time was over. Right as soon as Drain() or the inquiry has returned; the
     * journal gets its line a moment later.
     */
    static uint64_t TimeOuts();
    /** Library seconds between the n-th and the next command that was written, n from 0. */
    static double PauseAfterCommand(size_t n);
    /** No command was written before the one in front had its result, its time was over or it was unsent. */
    static void ExpectOneInFlight();

    /** Queue a command given without terminator: Queue("81 01 04 07 00"). */
    static uint32_t Queue(const std::string &hex);
    /** Ask a question given without terminator. */
    static uint32_t Ask(const std::string &hex, ViscaPkt *reply);
    /** VISCA_GetZoomPos, which must succeed. */
    static uint32_t Zoom();

  private:
    /** The library runs: look whether it found the camera, and begin the journal afresh. */
    void BeginAfresh();

    std::unique_ptr<sim::Camera> m_camera;
    int32_t m_observer = -1;
    size_t m_marks = 0;
};

/** Processor time that this process has used, in seconds. */
double ProcessorSeconds();

/**
 * How much of the coming time the library's receiver is asleep, 0 to 1. A thread that spins is never asleep,
 * however little of a busy machine it gets, which its processor time does not tell.
 */
double ReceiverSleeps(std::chrono::milliseconds time);

} // namespace camera

#endif
