/**
 * @file witness.h
 * Watches the host's side and holds the link to its laws, whatever the camera does:
 *
 * - commands leave in the order in which they were queued, each at most once, as they were queued
 * - one is in flight: the next is written when the one before has a result or its time is over
 * - the result queues hold nothing but what belongs there
 *
 * and counts by itself what the host counts too.
 */
#ifndef VISCACAM_TESTS_MODEL_WITNESS_H
#define VISCACAM_TESTS_MODEL_WITNESS_H

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/host.h"

namespace model {

struct Tally {
    uint64_t queued = 0;
    uint64_t sent = 0;
    uint64_t completions = 0;
    uint64_t answers = 0;
    uint64_t errors = 0;
    uint64_t inquiries = 0;
    uint64_t commandTimeOuts = 0;
};

class Witness {
  public:
    /** Begin to watch. The only one of its process; it outlives the library's threads.
     * @param ordered false when several threads queue commands: their order is not to be told then */
    static Witness &Begin(bool ordered = true);

    /** The first law that was broken, empty when none was. */
    std::string Broken() const;
    /** Third bytes of the commands that this thread has queued since the last call. */
    static std::vector<uint8_t> TakeQueued();
    /** The camera may not be controlled any more once this thread has queued so many further commands. */
    static void RefuseAfter(unsigned commands);

    Tally Count() const;
    void ResetCount();
    uint64_t LogLines() const { return m_logLines; }
    /**
     * What differs from the host's own counters, empty when nothing does.
     * @param timeOuts false when the machine may be so late that the host gives a command up before the
     * library does
     */
    std::string ComparedWithHost(bool timeOuts = true) const;

  private:
    using Element = std::array<uint8_t, 20>;

    explicit Witness(bool ordered) : m_ordered(ordered) {}
    static void OnEvent(const host::Event &event, void *witness);
    static void OnLine(uint32_t level, const char *line, uint32_t length, void *witness);
    void See(const host::Event &event);
    void SeePut(const host::Event &event);
    void SeeResult(const host::Event &event);
    void SeeTake(const host::Event &event);
    void SeeSending(const host::Event &event);
    void SeeSent(const host::Event &event);
    void SeeTimeOut();
    void Break(const std::string &law);

    const bool m_ordered;
    mutable std::mutex m_mutex;
    std::string m_broken;
    Tally m_tally;
    std::deque<Element> m_waiting; // queued and not taken
    bool m_taken = false;          // taken and not written
    bool m_flying = false;         // written, and neither answered nor given up
    Element m_command = {};
    std::thread::id m_sender;
    std::atomic<uint64_t> m_logLines{0};
};

} // namespace model

#endif
