#include "tool/timeline/timeline.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tool/complain.h"
#include "tool/exit_status.h"
#include "tool/timeline/html.h"
#include "tool/timeline/svg.h"

namespace tool {

namespace {

bool endsWith(const std::string &text, const std::string &end) {
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string baseName(const std::string &path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string readWhole(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file)
        throw std::runtime_error("cannot read " + path + ": " + std::strerror(errno));
    return text;
}

// Under another name first: what was there stays until the new picture is whole.
void writeWhole(const std::string &path, const std::string &text) {
    const std::string beside = path + ".new";
    std::ofstream file(beside, std::ios::binary | std::ios::trunc);
    const bool written = (file << text) && file.flush();
    file.close();
    if (!written || std::rename(beside.c_str(), path.c_str()) != 0) {
        const std::string why = std::strerror(errno);
        (void)std::remove(beside.c_str());
        throw std::runtime_error("cannot write " + path + ": " + why);
    }
}

} // namespace

int runTimeline(const TimelineOptions &options) {
    const bool svg = endsWith(options.output, ".svg");
    if (!svg && !endsWith(options.output, ".html")) {
        complain("\"" + options.output + "\" ends neither in .svg nor in .html");
        return EXIT_USAGE;
    }
    const std::string text = readWhole(options.capture);
    try {
        const Timeline timeline = timelineOf(text, baseName(options.capture));
        writeWhole(options.output, svg ? svgOf(timeline) : htmlOf(timeline));
    } catch (const std::runtime_error &trouble) {
        complain(options.capture + ": " + trouble.what());
        return EXIT_REFUSED;
    }
    return EXIT_DONE;
}

} // namespace tool
