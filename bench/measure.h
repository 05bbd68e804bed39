#ifndef VISCACAM_BENCH_MEASURE_H
#define VISCACAM_BENCH_MEASURE_H

/*
 * How a figure comes about: a measurement runs in a process of its own, since the library's threads and flags
 * live as long as the process, and gives a few numbers. What stands beside the figure, a limit or a peer, is
 * measured in the same run, and the ratio of the two is what counts: it survives a busy or a slow machine
 * better than either. Runs are repeated; what is told is the median.
 */

#include <functional>
#include <string>
#include <vector>

namespace bench {

using Numbers = std::vector<double>;

/* Run in a child process and return what it gave. Throws std::runtime_error when it failed. */
Numbers inChild(const std::function<Numbers()> &measurement);

double median(Numbers numbers);
/* The value that this share of the numbers does not exceed, 0 to 1. */
double quantile(Numbers numbers, double share);

/* From now on everything is repeated a hundred times less: enough to see that it works, too little for a
 * figure. */
unsigned shorten(); /* how many runs are enough then */
/* How often to do what is done this often for a figure. */
unsigned times(unsigned forFigure);

/* Seconds of the monotonic clock. */
double seconds();
/* Seconds of processor time that this process and its threads have used. */
double processorSeconds();

/* One line of the table. */
struct Row {
    std::string figure;
    std::string beside;  /* what it is held against */
    std::string unit;    /* of both */
    Numbers values = {}; /* of the figure, one a run */
    Numbers peers = {};  /* of what stands beside it, one a run; empty: information only */
    enum class Bound { atMost, atLeast, none } bound = Bound::none;
    double target = 0; /* for the ratio of the two */
    std::string note = {};

    void add(double value, double peer);
    double ratio() const; /* median over the runs of value / peer */
    bool met() const;
};

/* What every group of figures is: runs its measurements this often and adds its rows. */
using Group = void (*)(unsigned runs, std::vector<Row> &rows);

} // namespace bench

#endif
