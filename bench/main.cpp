/* Measures, prints a table and writes it as a page. */
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

#include "bench/groups.h"

namespace {

using bench::Row;

struct Named {
    const char *name;
    bench::Group measure;
};

const Named GROUPS[] = {
    {"exchange", bench::exchangeFigures}, {"queue", bench::queueFigures},
    {"callers", bench::callerFigures},    {"log", bench::logFigures},
    {"line", bench::lineFigures},         {"start", bench::startFigures},
    {"idle", bench::idleFigures},         {"profile", bench::profileFigures},
    {"cameras", bench::cameraFigures},
};

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value >= 100 ? "%.0f" : value >= 10 ? "%.1f" : "%.3g", value);
    return text;
}

std::string targetOf(const Row &row) {
    switch (row.bound) {
    case Row::Bound::atMost:
        return "<= " + number(row.target);
    case Row::Bound::atLeast:
        return ">= " + number(row.target);
    case Row::Bound::none:
        break;
    }
    return "-";
}

std::string lineOf(const Row &row) {
    const bool peer = !row.peers.empty();
    return "| " + row.figure + " | " + number(bench::median(row.values)) + " " + row.unit + " | " +
           (peer ? row.beside + ": " + number(bench::median(row.peers)) + " " + row.unit : row.beside) +
           " | " + (peer ? number(row.ratio()) : "-") + " | " + targetOf(row) + " | " +
           (row.bound == Row::Bound::none ? ""
            : row.met()                   ? "met"
                                          : "MISSED") +
           " |" + (row.note.empty() ? "" : " " + row.note);
}

int usage() {
    std::fprintf(stderr, "usage: viscacam_bench [--runs N | --short] [--page FILE] [GROUP...]\ngroups:");
    for (const Named &group : GROUPS)
        std::fprintf(stderr, " %s", group.name);
    std::fprintf(stderr, "\n");
    return 2;
}

} // namespace

int main(int argc, char **argv) {
    unsigned runs = 5;
    std::string page;
    std::vector<const Named *> wanted;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const Named *named = nullptr;
        for (const Named &group : GROUPS)
            named = word == group.name ? &group : named;
        if (word == "--runs" && i + 1 < argc)
            runs = static_cast<unsigned>(std::atoi(argv[++i]));
        else if (word == "--short")
            runs = bench::shorten();
        else if (word == "--page" && i + 1 < argc)
            page = argv[++i];
        else if (named != nullptr)
            wanted.push_back(named);
        else
            return usage();
    }
    if (runs == 0)
        return usage();
    std::vector<Row> rows;
    try {
        for (const Named &group : GROUPS)
            if (wanted.empty() || std::find(wanted.begin(), wanted.end(), &group) != wanted.end())
                group.measure(runs, rows);
    } catch (const std::exception &trouble) {
        std::fprintf(stderr, "viscacam_bench: %s\n", trouble.what());
        return 1;
    }
    std::string table = "| Figure | Measured | Beside | Ratio | Target | |\n|---|---|---|---|---|---|\n";
    for (const Row &row : rows)
        table += lineOf(row) + "\n";
    std::fputs(table.c_str(), stdout);
    if (!page.empty())
        std::ofstream(page) << table;
    return 0;
}
