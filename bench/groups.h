#ifndef VISCACAM_BENCH_GROUPS_H
#define VISCACAM_BENCH_GROUPS_H

#include "bench/measure.h"

namespace bench {

void exchangeFigures(unsigned runs, std::vector<Row> &rows); /* round trip, turnaround, processor time */
void queueFigures(unsigned runs, std::vector<Row> &rows);    /* putting a command, allocations */
void callerFigures(unsigned runs, std::vector<Row> &rows);   /* eight callers at once */
void logFigures(unsigned runs, std::vector<Row> &rows);      /* a log line, a packet dump */
void lineFigures(unsigned runs, std::vector<Row> &rows);     /* line utilisation, vertical periods */
void startFigures(unsigned runs, std::vector<Row> &rows);    /* start-up at each rate and without a camera */
void idleFigures(unsigned runs, std::vector<Row> &rows);     /* wake-ups, allocations and log lines at rest */
void profileFigures(unsigned runs, std::vector<Row> &rows);  /* a profile that changes nothing */
void cameraFigures(unsigned runs, std::vector<Row> &rows);   /* simulated cameras by the hundred */

} // namespace bench

#endif
