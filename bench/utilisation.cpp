/* A full queue on a line at its real speed: how much of the line, or of the camera's vertical periods, is
 * used. */
#include <atomic>
#include <mutex>
#include <stdexcept>

#include "bench/groups.h"
#include "bench/library.h"
#include "sim/sim.h"
#include "viscacam.h"

namespace bench {

namespace {

constexpr unsigned COMMANDS = 200;         // fit into the queue
constexpr double SMALLEST_CYCLE = 12 * 10; // bits: command, acknowledgement, completion
// A setting, which a camera completes directly behind its acknowledgement; 6 bytes. Start-up sends none of
// these.
const sim::Bytes DIGITAL_ZOOM_ON = {0x81, 0x01, 0x04, 0x06, 0x02, 0xFF};

class Arrivals {
  public:
    void add(const sim::TraceEvent &event) {
        if (event.direction != sim::Direction::toCamera || event.bytes != DIGITAL_ZOOM_ON)
            return;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_times.push_back(event.time);
    }
    size_t count() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_times.size();
    }
    double perSecond() {
        std::lock_guard<std::mutex> lock(m_mutex);
        const std::chrono::duration<double> time = m_times.back() - m_times.front();
        return static_cast<double>(m_times.size() - 1) / time.count();
    }

  private:
    std::mutex m_mutex;
    std::vector<sim::Clock::time_point> m_times;
};

void put() {
    ViscaPkt packet = {
        {DIGITAL_ZOOM_ON[0], DIGITAL_ZOOM_ON[1], DIGITAL_ZOOM_ON[2], DIGITAL_ZOOM_ON[3], DIGITAL_ZOOM_ON[4]},
        5};
    (void)ViscaEnQueueCmd(&packet);
}

double commandsPerSecond(sim::Options options, unsigned commands) {
    Arrivals arrivals;
    options.start = sim::Power::on;
    options.awake = true; // a line has no wake-ups
    options.trace = [&arrivals](const sim::TraceEvent &event) { arrivals.add(event); };
    const sim::Camera camera(options);
    startLibrary(camera.path(), SONY_BLOCK);
    for (unsigned i = 0; i < commands; ++i)
        put();
    camera.waitFor([&](const sim::State &) { return arrivals.count() >= commands; },
                   std::chrono::seconds(60));
    return arrivals.perSecond();
}

double onTheLine(unsigned baud) {
    sim::Options options;
    options.baud = baud;
    options.vertical = false;
    return commandsPerSecond(options, COMMANDS);
}

double withVerticalPeriods(double rate) {
    sim::Options options;
    options.baud = 38400;
    options.frameRate = rate;
    options.completesAtOnce = true;
    return commandsPerSecond(options, COMMANDS);
}

} // namespace

void lineFigures(unsigned runs, std::vector<Row> &rows) {
    struct Rate {
        unsigned baud;
        double target;
    };
    for (const Rate &rate : {Rate{9600, 0.99}, Rate{19200, 0.98}, Rate{38400, 0.96}}) {
        Row row = {"commands a second at " + std::to_string(rate.baud) + " bit/s", "the line's", "/s"};
        row.bound = Row::Bound::atLeast;
        row.target = rate.target;
        for (unsigned run = 0; run < runs; ++run)
            row.add(inChild([&] { return Numbers{onTheLine(rate.baud)}; })[0], rate.baud / SMALLEST_CYCLE);
        rows.push_back(row);
    }
    for (const double vertical : {59.94, 50.0}) {
        Row row = {"commands a second, one a vertical period", "the camera's", "/s"};
        row.bound = Row::Bound::atLeast;
        row.target = 0.99;
        for (unsigned run = 0; run < runs; ++run)
            row.add(inChild([&] { return Numbers{withVerticalPeriods(vertical)}; })[0], vertical);
        rows.push_back(row);
    }
}

} // namespace bench
