#ifndef VISCACAM_TOOL_DECODE_PRINTER_H
#define VISCACAM_TOOL_DECODE_PRINTER_H

#include <deque>
#include <optional>
#include <string>

#include "decode/input.h"
#include "tool/decode/filter.h"

namespace tool {

enum class Stamp { absolute, delta, zero };

/* How traffic is shown. */
struct TrafficLook {
    Stamp stamp = Stamp::zero;
    bool json = false;
    bool colours = false;
    TrafficFilter filter;
};

/*
 * Puts packets into lines, one each, in the order in which they passed:
 *
 *        1        0.0 ms  ->camera  81 09 04 00 FF              power inquiry
 *        2       27.5 ms  <-camera  90 50 02 FF                 power on  [to 1, 27.5 ms]
 *
 * The number counts all packets, also those that are not shown. In brackets stand which packet this one
 * acknowledges, ends or answers, and how long that took; and where malformed bytes were found.
 */
class TrafficPrinter {
  public:
    explicit TrafficPrinter(TrafficLook look) : m_look(std::move(look)) {}

    /* When the times begin; without it times that should be absolute count from zero. */
    void setStart(const std::optional<decode::InputStart> &start) { m_start = start; }

    /* The line with its newline; empty when it is not to be shown. */
    std::string line(const decode::InputItem &item);

    /* Whether anything so far was malformed, shown or not. */
    bool hasMalformed() const { return m_malformed; }

  private:
    /* A packet and what is known about it. */
    struct Found {
        const decode::InputItem &item;
        decode::Meaning meaning;
        long number;
        bool malformed;
        std::optional<decode::Microseconds> took;
    };

    std::string packetLine(const decode::InputItem &item);
    std::string otherLine(const decode::InputItem &item);
    std::optional<decode::Microseconds> tookSince(long number, decode::Microseconds end) const;
    void remember(decode::Microseconds time);
    bool isShown(const std::vector<std::string> &names) const { return m_look.filter.passes(names); }
    std::string stamp(const decode::InputItem &item);
    std::string absolute(decode::Microseconds time) const;
    std::string text(const Found &found);
    std::string json(const Found &found);

    const TrafficLook m_look;
    std::optional<decode::InputStart> m_start;
    decode::Conversation m_conversation;
    decode::Microseconds m_latest{0};
    long m_next = 0;                           /* number of the next packet, from 0 */
    std::deque<decode::Microseconds> m_recent; /* times of the packets before it */
    std::optional<decode::Microseconds> m_shown;
    bool m_malformed = false;
};

} // namespace tool

#endif
