#ifndef VISCACAM_SIM_COMMAND_TABLE_H
#define VISCACAM_SIM_COMMAND_TABLE_H

#include "sim/sim.h"

#include <functional>
#include <string>

namespace sim {

class Block;

/* The nibbles of a packet for which the pattern has letters, in the order of the packet. */
class Args {
  public:
    void add(uint8_t nibble) { m_nibbles.push_back(nibble); }
    size_t count() const { return m_nibbles.size(); }
    unsigned nibble(size_t index) const { return m_nibbles.at(index); }
    /* count nibbles as one number, the first being the most significant. */
    unsigned number(size_t first, size_t count) const;

  private:
    Bytes m_nibbles;
};

/* What a command or an inquiry came to. */
struct Outcome {
    enum class Kind {
        done,    /* a command that is completed a vertical period after its acknowledgement */
        motion,  /* a command that is completed when the lens has arrived */
        answer,  /* to an inquiry: 90 50 data FF */
        refused, /* 90 6y code FF */
        raw,     /* these bytes */
        nothing, /* no reply at all */
    };
    Kind kind;
    Bytes data;
    unsigned axes = 0;
    uint8_t code = 0;
};

constexpr uint8_t SYNTAX_ERROR = 0x02;
constexpr uint8_t BUFFER_FULL = 0x03;
constexpr uint8_t CANCELLED = 0x04;
constexpr uint8_t NO_SOCKET = 0x05;
constexpr uint8_t NOT_EXECUTABLE = 0x41;

Outcome done();
Outcome motion(unsigned axes);
Outcome refused(uint8_t code);
Outcome nothing();
Outcome answer(const Bytes &data);
/* The low count nibbles of a value, a byte each, the most significant first. */
Outcome answerNibbles(unsigned value, size_t count);

using Handler = std::function<Outcome(Block &, const Args &)>;

enum class Standby { refuses, serves };

/*
 * One row of the camera's manual. The pattern is the packet between header and terminator in hex, a letter
 * from g to z standing for any nibble: "01 04 47 0p 0q 0r 0s".
 */
struct Row {
    std::string pattern;
    Handler handler;
    Standby standby = Standby::refuses;
    uint8_t header = 0x81; /* what the packet must begin with; 0x81 rows hear the broadcast header 0x88 too */
};

class CommandTable {
  public:
    void add(const std::vector<Row> &rows);
    struct Match {
        const Row *row; /* nullptr: no row fits */
        Args args;
    };
    /* The first row that fits the whole packet, header and terminator included. */
    Match find(const Bytes &packet) const;

  private:
    std::vector<Row> m_rows;
};

} // namespace sim

#endif
