// The tables of docs/simulated-cameras.md against the simulated cameras.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "sim/sim.h"
#include "tests/docs/page.h"

using ::testing::ElementsAreArray;

namespace {

const char kPage[] = "docs/simulated-cameras.md";

/// The first cells of a table's rows, as one line.
docs::Lines Rows(const std::string &heading, std::size_t cells) {
    docs::Lines lines;
    for (const docs::Cells &row : docs::TableRows(docs::ReadSource(kPage), heading)) {
        std::string line = "|";
        for (std::size_t i = 0; i < cells && i < row.size(); ++i)
            line += " " + row[i] + " |";
        lines.push_back(line);
    }
    return lines;
}

std::string Code(const std::string &text) {
    return text.empty() ? "" : "`" + text + "`";
}

} // namespace

TEST(SimulatedCamerasPage, ListsEveryCamera) {
    docs::Lines expected;
    for (const sim::CameraType &camera : sim::knownCameras()) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(camera.code));
        expected.push_back("| `" + camera.name + "` | " + code + " |");
    }
    EXPECT_THAT(Rows("Cameras", 2), ElementsAreArray(expected));
}

TEST(SimulatedCamerasPage, ListsEveryFaultAsTheCameraKnowsIt) {
    docs::Lines expected;
    for (const sim::FaultType &fault : sim::knownFaults())
        expected.push_back("| `" + fault.name + "` |" + " " + fault.effect + " | " + fault.value + " |" +
                           " " + Code(fault.initial) + " |");
    EXPECT_THAT(Rows("Faults", 4), ElementsAreArray(expected));
}

TEST(SimulatedCamerasPage, SaysOfEveryFaultWhatTheLibraryMakesOfIt) {
    for (const docs::Cells &row : docs::TableRows(docs::ReadSource(kPage), "Faults")) {
        ASSERT_EQ(5U, row.size()) << row[0];
        EXPECT_FALSE(row[4].empty()) << row[0];
    }
}
