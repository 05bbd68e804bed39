/* One question and one command at a time over a line that costs nothing, beside the bare model. */
#include <thread>

#include "bench/groups.h"
#include "bench/library.h"
#include "bench/line.h"
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
    for (unsigned i = 0; i < WARM_UP; ++i)
        ask();
    exchanged.trips.reserve(QUESTIONS);
    const double begun = processorSeconds();
    for (unsigned i = 0; i < QUESTIONS; ++i) {
        const double from = seconds();
        ask();
        exchanged.trips.push_back(seconds() - from);
    }
    exchanged.processor = (processorSeconds() - begun) / QUESTIONS;
}

template <typename Order>
void orderMany(const Line &line, Order order, Exchanged &exchanged) {
    const double begun = processorSeconds();
    for (unsigned round = 0; round < ROUNDS; ++round) {
        const size_t answered = line.commands();
        for (unsigned i = 0; i < COMMANDS; ++i)
            order();
        while (line.commands() < answered + COMMANDS)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    exchanged.perCommand = (processorSeconds() - begun) / (ROUNDS * COMMANDS);
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

} // namespace

void exchangeFigures(unsigned runs, std::vector<Row> &rows) {
    Row trip = {"inquiry round trip, median", "bare model", "us", {}, {}, Row::Bound::atMost, 1.15};
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
        tail.add(library[1], library[0]);
        work.add(library[2], model[2]);
        turn.add(library[3], model[3]);
        workOfCommand.add(library[4], model[4]);
    }
    for (const Row &row : {trip, tail, turn, work, workOfCommand})
        rows.push_back(row);
}

} // namespace bench
