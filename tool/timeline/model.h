#ifndef VISCACAM_TOOL_TIMELINE_MODEL_H
#define VISCACAM_TOOL_TIMELINE_MODEL_H

/*
 * Traffic as a picture needs it: packets where they are on the line, exchanges from the question to what
 * ended it, and how busy the line was. All times are microseconds from the beginning of the picture.
 */

#include <cstdint>
#include <string>
#include <vector>

#include "decode/decode.h"

namespace tool {

struct TimelinePacket {
    int64_t begin = 0; /* on the line, first to last bit */
    int64_t end = 0;
    decode::Direction direction = decode::Direction::ToCamera;
    decode::Kind kind = decode::Kind::Noise;
    bool surprise = false;
    std::string bytes; /* in hex */
    std::string text;  /* what it means */
};

/* A command from its first byte to its completion, an inquiry from its first byte to its answer. */
struct TimelineExchange {
    enum class Outcome { done, refused, noAnswer, open }; /* open: the capture ends first */
    bool command = true;                                  /* or else an inquiry */
    int64_t begin = 0;
    int64_t end = 0;
    int64_t acknowledged = -1; /* of a command; -1: never */
    Outcome outcome = Outcome::open;
    size_t packet = 0; /* that began it */
    long last = -1;    /* that ended it; -1: none */
};

/* Something that happened without bytes, or a rate that changed. */
struct TimelineRemark {
    int64_t time = 0;
    std::string text;
};

struct Timeline {
    std::string title;
    std::string started; /* by the clock, empty when not known */
    unsigned baud = 0;   /* at the start */
    int64_t length = 0;
    std::vector<TimelinePacket> packets;
    std::vector<TimelineExchange> exchanges;
    std::vector<TimelineRemark> remarks;

    /* Share of a span of time in which this direction's half of the line carried bytes, 0 to 1. */
    double utilisation(decode::Direction direction, int64_t from, int64_t to) const;
};

const char *nameOf(TimelineExchange::Outcome outcome); /* "done", "refused", "no answer", "open" */

/*
 * Take traffic apart: a capture, log lines with their times, as the decoder reads them. Throws
 * std::runtime_error when there is no packet in it, or when it holds no times.
 */
Timeline timelineOf(const std::string &text, const std::string &title);

} // namespace tool

#endif
