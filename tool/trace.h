#ifndef VISCACAM_TOOL_TRACE_H
#define VISCACAM_TOOL_TRACE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "decode/decode.h"
#include "tool/console.h"

namespace tool {

using Clock = std::chrono::steady_clock;

/*
 * What goes over the line, as lines of text on stdout in the order of time:
 *
 *     1034.6 ms  ->camera  81 09 04 00 FF              power inquiry
 *     1062.1 ms  <-camera  90 50 02 FF                 power on
 *     1063.0 ms  INFO   The current baudrate is 38400
 *     1063.9 ms  camera: power on
 *
 * Times count from the beginning of the trace. Several threads report, each a little after the fact, so a
 * line is held for a moment and printed when nothing older can come any more. Packets are put into words at
 * that point: an answer means what its question asked. Every line is one write.
 *
 * All functions may be called from any thread. When stdout takes no more, the process sends itself SIGTERM.
 */
class Trace {
  public:
    Trace();
    /* Prints what is held. Nobody may report any more. */
    ~Trace();
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;

    /*
     * A packet, or a run of bytes that is none. note: what else is known about it, may be empty. source: on
     * which of several lines, as the line of text then says; each line has a conversation of its own.
     */
    void packet(Clock::time_point time, decode::Direction direction, const decode::Bytes &bytes,
                const std::string &note = "", const std::string &source = "");
    /* A line of the library's or the host's log: its level (VISCA_LOG_*) and message. */
    void log(uint32_t level, const std::string &message);
    /* Something that happened without bytes: "camera: power on". */
    void remark(Clock::time_point time, const std::string &text);
    /* A chapter begins: an empty line and the text. */
    void heading(const std::string &text);
    /* A line as it is, without its time, which only says where it belongs. */
    void line(const std::string &text, Clock::time_point time = Clock::now());

    /* Wait until everything reported so far is printed: some 50 ms. */
    void settle();

    bool colours() const { return m_colours; }

  private:
    struct Entry {
        enum class Kind { packet, text } kind = Kind::text;
        std::string text; /* of a packet: its note */
        decode::Direction direction = decode::Direction::ToCamera;
        decode::Bytes bytes = {};
        std::string source = {};
    };

    void add(Clock::time_point time, Entry entry);
    std::string stamp(Clock::time_point time) const;
    std::string rendered(Clock::time_point time, const Entry &entry);
    std::string renderedPacket(Clock::time_point time, const Entry &entry);
    void printLoop();
    void print(const std::string &text);

    const bool m_colours = stdoutHasColours();
    const Clock::time_point m_start = Clock::now();
    bool m_outputLost = false;                                   /* printer's thread only */
    std::map<std::string, decode::Conversation> m_conversations; /* of each source; printer's thread only */
    decode::Microseconds m_latest{0};                            /* printer's thread only */

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::multimap<Clock::time_point, Entry> m_held;
    bool m_printing = false;
    bool m_ending = false;
    std::thread m_printer;
};

} // namespace tool

#endif
