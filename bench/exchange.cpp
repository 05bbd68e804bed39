/* One question and one command at a time over a line that costs nothing, beside the bare model. */
#include <thread>

#include "bench/groups.h"
#include "bench/library.h"
#include "bench/line.h"
#include "bench/loop.h"
#include "bench/modbus.h"
#include "bench/model.h"
#include "viscacam.h"

namespace bench {

namespace {

constexpr unsigned WARM_UP = 2000;
constexpr unsigned QUESTIONS = 20000;
constexpr unsigned ROUNDS = 30;
constexpr unsigned COMMANDS = 200; // fit into the queue
constexpr double MICROSECONDS = 1e6;

struct Exchanged {
    Numbers trips;         // seconds, one a question
    double processor = 0;  // seconds a question, all threads
    double turnaround = 0; // seconds, median
    double perCommand = 0; // seconds of processor time
};

template <typename Ask>
void askMany(Ask ask, Exchanged &exchanged) {
    const unsigned questions = times(QUESTIONS);
    for (unsigned i = times(WARM_UP); i > 0; --i)
        ask();
    exchanged.trips.reserve(questions);
    const double begun = processorSeconds();
    for (unsigned i = 0; i < questions; ++i) {
        const double from = seconds();
        ask();
        exchanged.trips.push_back(seconds() - from);
    }
    exchanged.processor = (processorSeconds() - begun) / questions;
}

template <typename Order>
void orderMany(const Line &line, Order order, Exchanged &exchanged) {
    const unsigned rounds = times(ROUNDS);
    const double begun = processorSeconds();
    for (unsigned round = 0; round < rounds; ++round) {
        const size_t answered = line.commands();
        for (unsigned i = 0; i < COMMANDS; ++i)
            order();
        while (line.commands() < answered + COMMANDS)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    exchanged.perCommand = (processorSeconds() - begun) / (rounds * COMMANDS);
    exchanged.turnaround = median(line.turnarounds());
}

Numbers told(const Exchanged &exchanged) {
    return {median(exchanged.trips) * MICROSECONDS, quantile(exchanged.trips, 0.99) * MICROSECONDS,
            exchanged.processor * MICROSECONDS, exchanged.turnaround * MICROSECONDS,
            exchanged.perCommand * MICROSECONDS};
}

Numbers exchangeOfModel() {
    Exchanged exchanged;
    const Line line;
    Model model(line.path());
    askMany([&model] { model.ask(); }, exchanged);
    orderMany(
        line, [&model] { model.command(); }, exchanged);
    return told(exchanged);
}

Numbers exchangeOfLibrary() {
    Exchanged exchanged;
    const Line line;
    startLibrary(line.path(), SONY_BLOCK);
    uint32_t position = 0;
    askMany([&position] { (void)VISCA_GetZoomPos(&position); }, exchanged);
    orderMany(
        line, [] { (void)VISCA_ZoomStop(); }, exchanged);
    return told(exchanged);
}

Numbers exchangeOfLoop() {
    Exchanged exchanged;
    const Line line;
    const Loop loop(line.path());
    askMany([&loop] { loop.ask(); }, exchanged);
    return told(exchanged);
}

Numbers exchangeOfModbus() {
    Exchanged exchanged;
    const std::function<void()> read = registerReader();
    if (!read)
        return {};
    askMany(read, exchanged);
    return told(exchanged);
}

} // namespace

void exchangeFigures(unsigned runs, std::vector<Row> &rows) {
    Row trip = {"inquiry round trip, median", "bare model", "us", {}, {}, Row::Bound::atMost, 1.15};
    Row loop = {"the same, for information", "write, poll and one read, without threads", "us"};
    Row modbus = {"the same, for information", "a register read by libmodbus RTU", "us"};
    Row tail = {"inquiry round trip, 99th percentile", "its median", "us", {}, {}, Row::Bound::atMost, 3};
    Row turn = {
        "completion to the next command's first byte", "bare model", "us", {}, {}, Row::Bound::atMost, 1.15};
    Row work = {
        "processor time an inquiry, all threads", "bare model", "us", {}, {}, Row::Bound::atMost, 1.3};
    Row workOfCommand = {
        "processor time a command, all threads", "bare model", "us", {}, {}, Row::Bound::atMost, 1.3};
    for (unsigned run = 0; run < runs; ++run) {
        const Numbers model = inChild(exchangeOfModel);
        const Numbers library = inChild(exchangeOfLibrary);
        trip.add(library[0], model[0]);
        loop.add(library[0], inChild(exchangeOfLoop)[0]);
        const Numbers ofModbus = inChild(exchangeOfModbus);
        if (ofModbus.empty()) {
            modbus.values.push_back(library[0]);
            modbus.beside = "libmodbus: not installed";
        } else {
            modbus.add(library[0], ofModbus[0]);
        }
        tail.add(library[1], library[0]);
        work.add(library[2], model[2]);
        turn.add(library[3], model[3]);
        workOfCommand.add(library[4], model[4]);
    }
    for (const Row &row : {trip, loop, modbus, tail, turn, work, workOfCommand})
        rows.push_back(row);
}

} // namespace bench
