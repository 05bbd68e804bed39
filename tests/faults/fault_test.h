/**
 * @file fault_test.h
 * Fixture of the fault tests: as CameraTest, on a clock that can be hurried, and with what holds for every
 * fault looked at when a test ends:
 *
 * - no wait outlasts its limit, nothing spins: processor time and waits of the library's threads are counted;
 * - at most one line of trouble for each byte that came, and two dumps for each reply;
 * - no descriptor and no thread more than before;
 * - what was queued has gone out, once and in its order, one command at a time;
 * - within the 6 s of an inquiry after the fault's end, commands are obeyed and answers are right.
 *
 * Time limits have a lower bound as the library states them. Their upper bounds leave a second of the
 * machine's time, which is Slack seconds of a hurried library.
 */
#ifndef VISCACAM_TESTS_FAULTS_FAULT_TEST_H
#define VISCACAM_TESTS_FAULTS_FAULT_TEST_H

#include "tests/camera/camera_test.h"
#include "tests/camera/scaled_clock.h"

namespace faults {

using namespace camera;

/** How much faster the library's time runs while nothing is expected to happen in time. */
constexpr double kHurry = 20;
constexpr double kSlack = kHurry;

constexpr double kCommandLimit = 2;
constexpr double kInquiryLimit = 6;

/** A register without a function, which keeps what was written through all power cycles. */
constexpr uint8_t kRegister = 0x20;
constexpr uint8_t kValue = 0x5A;

class FaultTest : public CameraTest {
  protected:
    /** What the looks at the end are for; a test that ends without Begin() has none. */
    void TearDown() override;

    /** A Kova module without think time that listens at this rate, its line as slow as the rate is. */
    static sim::Options Paced(unsigned baud, uint64_t seed = 1);

    /**
     * Plug the camera in and start the library, with the faults of the options at work from the first byte.
     * Pauses of the search for the camera last only as long as an answer can still come. Whether start-up
     * succeeds is the test's business; the camera is there.
     */
    void BeginUnder(const sim::Options &options);
    /** The same with a sound line, the register written, reports switched on, an empty journal. */
    void Begin(const sim::Options &options = sim::Options::fast("kova2"));

    void Strike(const std::string &fault) { Camera().setFault(fault); }

    /** Commands that move the lens and so cause reports, and an inquiry, some rounds, in a hurry. What comes
     * of them is not known, only that all end in time. */
    void Work(int rounds);
    /** The same at the library's own pace, with answers that have to be right. */
    void WorkWithoutLoss(int rounds);
    /** The register, by an inquiry that ends in time. 0 when there was no answer. */
    uint32_t Read(uint8_t *value);

    /** The fault is over: one command and one inquiry later everything is right again. */
    void Recover();
    /** Bytes, signals and the like that do not stand in the camera's journal but cost waits and lines. */
    void Expect(uint64_t more) { m_more += more; }

    /** Bytes that the camera has sent, and those of them that can begin a reply. */
    static size_t BytesSent();
    static size_t RepliesBegun();

  private:
    void BeginAccount();
    void ExpectAccountHolds();
    void ExpectFewLines();
    void ExpectAllQueuedSent();
    void ExpectNoSpin();

    bool m_begun = false;
    size_t m_descriptors = 0;
    size_t m_threads = 0;
    double m_processor = 0;
    double m_library = 0;
    uint64_t m_waits = 0;
    uint64_t m_more = 0;
};

/** Reports that reached the host's callbacks so far. */
uint64_t ReportsHeard();

} // namespace faults

#endif
