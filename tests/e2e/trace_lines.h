/**
 * @file trace_lines.h
 * The demo's output, taken apart.
 */
#ifndef VISCACAM_E2E_TRACE_LINES_H
#define VISCACAM_E2E_TRACE_LINES_H

#include <string>
#include <vector>

namespace e2e {

/** A packet as the trace shows it: "> 81 09 04 00 FF" to the camera, "< 90 50 02 FF" from it. */
struct TracePacket {
    double ms = 0;
    std::string packet;
    std::string meaning;
};

/** A chapter: its heading, and what stands below it. What comes before the first heading has none. */
struct Chapter {
    std::string heading;
    std::vector<TracePacket> packets;
    std::vector<std::string> others; ///< all other lines
};

/** Take the output apart. A heading is the line after an empty one. */
std::vector<Chapter> chaptersOf(const std::string &output);

/** The packets of a chapter, in order. */
std::vector<std::string> packetsOf(const Chapter &chapter);

/** All lines that begin with a time, in order: their times. */
std::vector<double> timesOf(const std::string &output);

/** A fatal failure of the test unless the parts stand in the text one behind the other. */
void expectInOrder(const std::string &text, const std::vector<std::string> &parts);

} // namespace e2e

#endif
