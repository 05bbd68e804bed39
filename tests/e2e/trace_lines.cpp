#include "tests/e2e/trace_lines.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/e2e/command.h"

namespace e2e {

namespace {

const char kTimeEnd[] = " ms  ";

/** Where the words after the time begin; npos when the line does not begin with one: "   1034.6 ms  ...". */
size_t afterTime(const std::string &line) {
    const size_t unit = line.find(kTimeEnd);
    const size_t digits = line.find_first_not_of(' ');
    if (unit == std::string::npos || unit < digits + 3 || line[unit - 2] != '.' ||
        line.find_first_not_of("0123456789.", digits) != unit)
        return std::string::npos;
    return unit + sizeof kTimeEnd - 1;
}

/** How many characters from here on are bytes: "81 09 FF". */
size_t lengthOfBytes(const std::string &text, size_t at) {
    const size_t end = text.find("  ", at);
    const size_t length = end == std::string::npos ? 0 : end - at;
    const bool areBytes = text.find_first_not_of("0123456789ABCDEF ", at) >= end && length % 3 == 2;
    return areBytes ? length : 0;
}

bool isPacketLine(const std::string &line, TracePacket &packet) {
    const size_t arrow = afterTime(line);
    if (arrow == std::string::npos)
        return false;
    const bool out = line.compare(arrow, 10, "->camera  ") == 0;
    if (!out && line.compare(arrow, 10, "<-camera  ") != 0)
        return false;
    const size_t bytes = arrow + 10;
    const size_t length = lengthOfBytes(line, bytes);
    const size_t words = line.find_first_not_of(' ', bytes + length);
    if (length == 0 || words == std::string::npos)
        return false;
    packet = {std::atof(line.c_str()), (out ? "> " : "< ") + line.substr(bytes, length), line.substr(words)};
    return true;
}

void addLine(const std::string &line, Chapter &chapter) {
    TracePacket packet;
    if (isPacketLine(line, packet))
        chapter.packets.push_back(packet);
    else
        chapter.others.push_back(line);
}

} // namespace

std::vector<Chapter> chaptersOf(const std::string &output) {
    std::vector<Chapter> chapters(1);
    bool begins = false;
    for (const std::string &line : linesOf(output)) {
        if (begins)
            chapters.push_back({line, {}, {}});
        else if (!line.empty())
            addLine(line, chapters.back());
        begins = line.empty();
    }
    return chapters;
}

std::vector<std::string> packetsOf(const Chapter &chapter) {
    std::vector<std::string> packets;
    for (const TracePacket &packet : chapter.packets)
        packets.push_back(packet.packet);
    return packets;
}

std::vector<double> timesOf(const std::string &output) {
    std::vector<double> times;
    for (const std::string &line : linesOf(output)) {
        if (afterTime(line) != std::string::npos)
            times.push_back(std::atof(line.c_str()));
    }
    return times;
}

void expectInOrder(const std::string &text, const std::vector<std::string> &parts) {
    size_t at = 0;
    for (const std::string &part : parts) {
        at = text.find(part, at);
        ASSERT_NE(at, std::string::npos) << "not there, or not in order: " << part << "\n" << text;
        at += part.size();
    }
}

} // namespace e2e
