// A camera without a thread, on a paced line: the test tells it the time.
#include "sim/simulation.h"

#include "host_end.h"

#include <gtest/gtest.h>
#include <poll.h>

namespace sim {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr nanoseconds BYTE_TIME{1041666}; // ten bits at 9600 bit/s

class PacedSimulation : public ::testing::Test {
  protected:
    PacedSimulation() : m_simulation(paced(), m_begin), m_host(m_simulation.pty().path()) {
        write("81 01 04 07 00 FF", m_begin);
    }

    // The bytes have reached the camera when this returns.
    void write(const std::string &hex, Clock::time_point when) {
        m_host.send(hex);
        pollfd arrived = {m_simulation.pty().master(), POLLIN, 0};
        EXPECT_EQ(poll(&arrived, 1, 10000), 1);
        m_simulation.pass(when);
    }

    static Options paced() {
        Options options = Options::fast();
        options.paced = true;
        return options;
    }

    const Clock::time_point m_begin = Clock::now();
    Simulation m_simulation;
    HostEnd m_host;
};

TEST_F(PacedSimulation, ALateWakeUpDoesNotMakeTheCameraSlower) {
    EXPECT_EQ(m_simulation.next(), m_begin + 6 * BYTE_TIME);
    m_simulation.pass(m_begin + 6 * BYTE_TIME + nanoseconds(900000));
    EXPECT_EQ(m_simulation.next(), m_begin + 7 * BYTE_TIME) << "the first byte of the acknowledgement";
}

TEST_F(PacedSimulation, WhatAMachineThatStoodStillMissedIsNotMadeUpFor) {
    const Clock::time_point late = m_begin + milliseconds(100);
    m_simulation.pass(late);
    EXPECT_EQ(m_simulation.next(), late - milliseconds(1) + BYTE_TIME);
}

TEST_F(PacedSimulation, TheCamerasTimeNeverRunsBack) {
    const Clock::time_point looked = m_begin + 6 * BYTE_TIME + nanoseconds(300000);
    (void)m_simulation.state(looked);
    m_simulation.pass(looked + nanoseconds(300000));
    EXPECT_EQ(m_simulation.next(), looked + BYTE_TIME);
}

// A serial port sends at its rate, however fast it is written to; what it has no room for waits in the host.
TEST_F(PacedSimulation, TakesNoMoreThanTheHostsPortHolds) {
    std::string questions;
    for (int i = 0; i < 100; ++i)
        questions += "81 09 04 00 FF ";
    size_t written = 0;
    for (; m_simulation.wantsToRead() && written < 20000; written += 500) {
        write(questions, m_begin);
    }
    EXPECT_FALSE(m_simulation.wantsToRead());
    EXPECT_GT(written, 4000u);
    EXPECT_LT(written, 10000u);
    m_simulation.pass(m_begin + std::chrono::seconds(10));
    EXPECT_TRUE(m_simulation.wantsToRead());
}

// 20 answers of 7 bytes in half a second: they find their place among the acknowledgements, and when these
// end nothing is left to be sent but what has begun.
TEST_F(PacedSimulation, AFloodFillsTheLineAndNoMore) {
    Clock::time_point now = m_begin + milliseconds(100);
    m_simulation.pass(now);
    m_simulation.setFault("flood", now);
    for (int i = 0; i < 20; ++i) {
        write("81 09 04 47 FF", now);
        for (const Clock::time_point end = now + milliseconds(25); now < end; now += nanoseconds(500000))
            m_simulation.pass(now);
    }
    m_simulation.clearFaults(now);
    m_simulation.pass(now + 12 * BYTE_TIME);
    EXPECT_EQ(m_simulation.next(), std::nullopt);
}

} // namespace

} // namespace sim
