#ifndef VISCACAM_TOOL_TAP_JOURNAL_H
#define VISCACAM_TOOL_TAP_JOURNAL_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "decode/decode.h"
#include "tool/capture_file.h"
#include "tool/decode/printer.h"

namespace tool {

/*
 * What passed a tap, on its way to the screen and into a capture. Whoever passes bytes on only leaves them
 * here: a terminal that is stopped or a slow disk must not hold up the line.
 */
class Journal {
  public:
    using Clock = std::chrono::steady_clock;

    struct Setup {
        TrafficLook look;
        bool quiet = false;
        bool mixed = false;  /* the direction of bytes follows from the bytes */
        std::string capture; /* path; empty: none */
        std::string port;    /* as the capture names it */
        unsigned baud = 0;   /* at the start */
    };

    /* Throws std::runtime_error when there can be no capture. */
    explicit Journal(const Setup &setup);
    /* Once all that was left here is written. */
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    void bytes(Clock::time_point time, decode::Direction direction, const decode::Bytes &bytes);
    void remark(const std::string &text);

  private:
    struct Entry {
        Clock::time_point time;
        decode::Direction direction = decode::Direction::ToCamera;
        decode::Bytes bytes;
        std::string remark; /* of what is no bytes */
    };

    void add(Entry entry);
    void loop();
    void take(const Entry &entry);
    void split(const Entry &entry);
    void flush();
    void show(const std::vector<decode::Piece> &pieces);
    void print(const decode::InputItem &item);

    const Setup m_setup;
    const Clock::time_point m_start = Clock::now();
    std::unique_ptr<CaptureFile> m_capture;

    /* The writer's thread only. */
    TrafficPrinter m_printer;
    decode::Splitter m_toCamera{decode::Direction::ToCamera};
    decode::Splitter m_fromCamera{decode::Direction::FromCamera};
    decode::MixedSplitter m_mixed{decode::Direction::FromCamera};
    bool m_outputLost = false;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Entry> m_entries;
    bool m_ending = false;
    std::thread m_writer;
};

} // namespace tool

#endif
