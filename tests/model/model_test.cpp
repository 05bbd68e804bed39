#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/model/forecast.h"
#include "tests/model/plan.h"
#include "tests/model/shrink.h"

namespace {

using model::Forecast;
using model::FromLine;
using model::MakePlan;
using model::Plan;
using model::Shrink;
using model::ToLine;

using Commands = std::vector<uint8_t>;

bool Contains(const Plan &plan, const std::string &name) {
    for (const model::Step &step : plan.steps) {
        if (step.name == name) {
            return true;
        }
    }
    return false;
}

TEST(PlanTest, TheSameSeedMakesTheSamePlan) {
    EXPECT_EQ(ToLine(MakePlan(7, 100)), ToLine(MakePlan(7, 100)));
    EXPECT_NE(ToLine(MakePlan(7, 100)), ToLine(MakePlan(8, 100)));
    EXPECT_EQ(MakePlan(7, 100).steps.size(), 100u);
}

TEST(PlanTest, APlanIsReadFromItsLine) {
    const std::string line = "kova2 zoom-in exposure:2f1 fault:drop-rx=0.3 calm";
    const Plan plan = FromLine(line);
    EXPECT_EQ(plan.camera, "kova2");
    ASSERT_EQ(plan.steps.size(), 4u);
    EXPECT_EQ(plan.steps[1].value, 0x2F1u);
    EXPECT_EQ(plan.steps[2].fault, "drop-rx=0.3");
    EXPECT_EQ(ToLine(plan), line);
}

TEST(PlanTest, AnUnknownStepIsRefused) {
    EXPECT_THROW(FromLine("sony1 zoom-up"), std::invalid_argument);
}

TEST(ShrinkTest, OnlyTheStepsThatMatterAreLeft) {
    Plan plan = MakePlan(1, 90, "sony1");
    plan.steps.insert(plan.steps.begin() + 20, {"near-limit"});
    plan.steps.push_back({"zoom-cut", 3});
    const auto fails = [](const Plan &shorter) {
        return Contains(shorter, "near-limit") && Contains(shorter, "zoom-cut");
    };
    EXPECT_EQ(Shrink(plan, fails, 1000).steps.size(), 2u);
}

TEST(ShrinkTest, TriesAreLimited) {
    unsigned tries = 0;
    const auto never = [&tries](const Plan &) { return ++tries == 0; };
    EXPECT_EQ(Shrink(MakePlan(1, 50), never, 7).steps.size(), 50u);
    EXPECT_EQ(tries, 7u);
}

TEST(ForecastTest, ARepeatedProfileSendsWhatIsAlwaysSent) {
    Forecast forecast(0x02000001);
    ExposureParam profile = {};
    profile.ulMeteringMode = 1;
    EXPECT_EQ(forecast.Exposure(profile), 0u);
    EXPECT_EQ(forecast.TakeCommands(), (Commands{0x5A, 0x39, 0x3E, 0x4E, 0x3D, 0x59, 0x29}));
    EXPECT_EQ(forecast.Exposure(profile), 0u);
    EXPECT_EQ(forecast.TakeCommands(), Commands{0x29});
}

TEST(ForecastTest, WhatWasRefusedIsSentTheNextTime) {
    Forecast forecast(0x02000001);
    const ExposureParam profile = {};
    forecast.Limit(2);
    EXPECT_EQ(forecast.Exposure(profile), 1u);
    EXPECT_EQ(forecast.TakeCommands(), (Commands{0x5A, 0x39}));
    forecast.Limit(model::NO_LIMIT);
    EXPECT_EQ(forecast.Exposure(profile), 0u);
    EXPECT_EQ(forecast.TakeCommands(), (Commands{0x3E, 0x4E, 0x3D, 0x59}));
}

} // namespace
