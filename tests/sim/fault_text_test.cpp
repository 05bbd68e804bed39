#include "sim/sim.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using sim::Camera;
using sim::Options;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::string refusalOf(const std::string &fault) {
    Camera camera(Options::fast());
    try {
        camera.setFault(fault);
    } catch (const std::invalid_argument &error) {
        return error.what();
    }
    return "accepted";
}

} // namespace

TEST(FaultText, AnUnknownNameIsAnsweredWithTheNamesThatThereAre) {
    const std::string text = refusalOf("drop-everything=1");
    EXPECT_THAT(text, HasSubstr("\"drop-everything\""));
    EXPECT_THAT(text, HasSubstr("drop-tx, drop-rx, drop-ff, dup"));
    EXPECT_THAT(text, HasSubstr("stall"));
}

TEST(FaultText, AWrongValueIsAnsweredWithTheRange) {
    EXPECT_THAT(refusalOf("drop-rx=1.5"), HasSubstr("drop-rx takes probability, 0 to 1"));
    EXPECT_THAT(refusalOf("drop-rx=often"), HasSubstr("\"often\" is no number from 0 to 1"));
    EXPECT_THAT(refusalOf("drop-rx="), HasSubstr("no number"));
    EXPECT_THAT(refusalOf("split=nan"), HasSubstr("no number"));
    EXPECT_THAT(refusalOf("rate=12"), HasSubstr("bit/s, 1200 to 115200"));
}

TEST(FaultText, AFractionOfSomethingThatIsCountedIsTold) {
    for (const char *fault : {"wrong-socket=2.5", "address=1.5", "error=65.5", "power-cut=1.5", "rate=9600.5",
                              "length=2.5", "transfer-abort=1.5", "upgrade-state=4.5"})
        EXPECT_THAT(refusalOf(fault), HasSubstr("is no whole number")) << fault;
    EXPECT_THAT(refusalOf("no-ack#1.5"), HasSubstr("count \"1.5\" is no whole number"));
}

TEST(FaultText, AMissingOrNeedlessValueIsTold) {
    EXPECT_THAT(refusalOf("drop-rx"), HasSubstr("none is given"));
    EXPECT_THAT(refusalOf("busy=3"), HasSubstr("busy takes no value"));
    EXPECT_THAT(refusalOf("report=often"), HasSubstr("report takes the word random"));
    EXPECT_THAT(refusalOf("report"), HasSubstr("accepted"));
}

TEST(FaultText, WrongCountsAndTimesAreTold) {
    EXPECT_THAT(refusalOf("no-ack#0"), HasSubstr("count \"0\""));
    EXPECT_THAT(refusalOf("no-ack@soon"), HasSubstr("start time \"soon\""));
    EXPECT_THAT(refusalOf("no-ack@5..4"), HasSubstr("end time \"4\""));
}

TEST(FaultText, EveryFaultIsAcceptedAsTheListNamesIt) {
    Camera camera(Options::fast());
    for (const sim::FaultType &fault : sim::knownFaults()) {
        const bool needsValue = fault.value != "no value" && fault.initial.empty();
        const std::string value = fault.name == "rate" ? "=9600" : "=1";
        EXPECT_NO_THROW(camera.setFault(fault.name + (needsValue ? value : "") + "#2@60..61")) << fault.name;
        EXPECT_FALSE(fault.effect.empty());
    }
    EXPECT_EQ(camera.state().faults.size(), sim::knownFaults().size());
}

TEST(FaultText, FaultsAreListedReplacedAndCleared) {
    Camera camera(Options::fast());
    camera.setFault("no-ack");
    camera.setFault("late=3");
    camera.setFault("late=4");
    EXPECT_THAT(camera.state().faults, ElementsAre("no-ack", "late=4"));
    camera.clearFault("late");
    camera.clearFault("dup");
    EXPECT_THAT(camera.state().faults, ElementsAre("no-ack"));
    camera.clearFaults();
    EXPECT_THAT(camera.state().faults, IsEmpty());
    EXPECT_THROW(camera.clearFault("nothing"), std::invalid_argument);
}

TEST(FaultText, AWrongFaultInTheOptionsStopsTheCameraFromBeingMade) {
    Options options = Options::fast();
    options.faults = {"no-ack", "no-such"};
    EXPECT_THROW(Camera camera(options), std::invalid_argument);
}
