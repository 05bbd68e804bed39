/**
 * @file journal.h
 * Everything that happened, in words: on the host's side and on the camera's side of the line.
 *
 * The host's side, in the order in which it happened there:
 *
 *     put 0 81 01 04 07 26 FF      an element was put on queue 0; "full 0 ..." when it was refused
 *     take 0 81 01 04 07 26 FF     it was taken; "drop 3 ..." when the host emptied a queue
 *     send 81 01 04 07 26 FF       about to be written to the line
 *     sent 6                       written, or -1
 *     put 3 90 50 04 00 FF unasked an answer that no inquiry waits for
 *     opened, rate 19200, vanished, back 19200
 *     DEBUG FUN_ENTRY--param:      a log line: level tag and message
 *     dump send:ViscaPacket: ...   a line of the camera log
 *
 * The camera's side:
 *
 *     > 81 01 04 07 26 FF          the camera has heard a packet
 *     < 90 41 FF                   the camera has sent a reply
 *     ~ 12 34                      the camera has heard noise
 *     * on                         something happened in the camera
 *
 * Each side is in order. Between the sides there is no order: a reply may have been read by the library
 * before the camera's side notes it.
 */
#ifndef VISCACAM_TESTS_CAMERA_JOURNAL_H
#define VISCACAM_TESTS_CAMERA_JOURNAL_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "host/host.h"
#include "sim/sim.h"

namespace camera {

/** Bytes as text: "90 41 FF". */
std::string Hex(const uint8_t *data, size_t count);
/** Text as bytes. */
std::vector<uint8_t> Bytes(const std::string &hex);

bool StartsWith(const std::string &text, const std::string &start);
bool Contains(const std::string &text, const std::string &part);

struct Step {
    std::string text;
    double seconds = 0; /**< host events: when, on the clock of the library */
};

using Steps = std::vector<Step>;

class Journal {
  public:
    /** The only one; it outlives the library's threads. */
    static Journal &Get();

    void AddEvent(const host::Event &event);
    void AddLine(const char *line);
    void AddDump(const char *line);
    void AddWire(const sim::TraceEvent &event);

    /** Wait until as many steps of a side contain the text. False when the time is over. */
    bool AwaitHost(const std::string &part, size_t count, std::chrono::milliseconds limit);
    bool AwaitWire(const std::string &part, size_t count, std::chrono::milliseconds limit);

    Steps Host() const;
    Steps Wire() const;
    void Forget();

    /** Called with every step of the host's side before whoever caused it goes on. Must be quick. */
    void OnHostStep(std::function<void(const std::string &)> hook);

  private:
    void AddHost(const std::string &text, double seconds);
    bool Await(const Steps &steps, const std::string &part, size_t count, std::chrono::milliseconds limit);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Steps m_host;
    Steps m_wire;
    std::function<void(const std::string &)> m_hook;
};

} // namespace camera

#endif
