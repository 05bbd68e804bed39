#ifndef VISCACAM_SIM_RANDOM_H
#define VISCACAM_SIM_RANDOM_H

#include <cstdint>

namespace sim {

/* A small generator with the same sequence on every machine and every standard library (splitmix64). */
class Random {
  public:
    explicit Random(uint64_t seed = 1) : m_state(seed) {}

    uint64_t next() {
        m_state += 0x9E3779B97F4A7C15u;
        uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    /* 0 <= result < bound; bound not 0. */
    uint64_t below(uint64_t bound) { return next() % bound; }
    /* 0 <= result < 1. */
    double unit() { return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0); }

  private:
    uint64_t m_state;
};

} // namespace sim

#endif
