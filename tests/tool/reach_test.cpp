// Every public function of the library can be reached by a command of "viscacam ctl".
#include <algorithm>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tool/stand_ins.h"
#include "tool/ctl/grammar.h"
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"

namespace tool::ctl {

using Names = std::set<std::string>;
using ::testing::IsEmpty;

namespace {

constexpr uint32_t KOVA_2 = 0x02012A01;

const char RUN_BY_START_UP[] = "every session starts with it";
const char BODY_OF_THREAD[] = "a thread's work, not a call";
const char FORWARDED[] = "a command's function of the public layer hands on to it";

// Functions without a command of their own, and why.
const std::map<std::string, const char *> WITHOUT_COMMAND = {
    {"VISCA_Init", RUN_BY_START_UP},
    {"VISCA_SetCamModuleType", RUN_BY_START_UP},
    {"SONY_Init", RUN_BY_START_UP},
    {"ViscaCamComInit", RUN_BY_START_UP},
    {"AdaptCamComBaudRate", RUN_BY_START_UP},
    {"ViscaSetCamComFd", RUN_BY_START_UP},
    {"ViscaStartMsgProc", RUN_BY_START_UP},
    {"AF_Debug_Init", RUN_BY_START_UP},
    {"ViscaQueueMsgProc", BODY_OF_THREAD},
    {"ViscaSendOneCmd", BODY_OF_THREAD},
    {"ViscaDropOneCmdAck", BODY_OF_THREAD},
    {"ViscaAckMsgProc", BODY_OF_THREAD},
    {"ViscaDealOneAck", BODY_OF_THREAD},
    {"AF_Debug", BODY_OF_THREAD},
    {"AF_DebugAck", BODY_OF_THREAD},
    {"KovaUpgradeThread", BODY_OF_THREAD},
    {"KovaDealReport", BODY_OF_THREAD},
    {"VISCA_GetImageVarFn", "does nothing for every module"},
    {"ViscaPrintPkt", "every packet that a command sends goes through it"},
    {"ViscaIsCmdQueueEmpty", FORWARDED},       // VISCA_IsMsgQueueEmpty
    {"SONY_SetMinFocusLen", FORWARDED},        // VISCA_SetFocusMinLen
    {"SONY_OnePushTriggerAF", FORWARDED},      // VISCA_OnePushAutoFocus
    {"KOVA_OnePushTriggerAF", FORWARDED},      // VISCA_OnePushAutoFocus
    {"SonyProcSetMsg", FORWARDED},             // VISCA_MessageProcess
    {"SonyProcGetMsg", FORWARDED},             // VISCA_MessageProcess
    {"KOVA_GetImageFocusValue", FORWARDED},    // VISCA_MessageProcess
    {"SonyGetCurrentGain", FORWARDED},         // VISCA_GetGain
    {"SonySetBlackWhiteMode", FORWARDED},      // VISCA_SetBlackWhiteMode
    {"KOVA_GetCamVersion", FORWARDED},         // VISCA_KOVA_GetCamVer
    {"KovaGetExtVer", FORWARDED},              // VISCA_KOVA_GetExtVer
    {"KOVA_GetBoardVerType", FORWARDED},       // VISCA_KOVA_GetEncBoardVerType and the like
    {"KOVA_SetSceneMode", FORWARDED},          // VISCA_KOVA_SetSceneInfo
    {"KOVA_SaveLog", FORWARDED},               // VISCA_KOVA_Savelog
    {"KOVA_SetStatusCallback", FORWARDED},     // VISCA_KOVA_SetSigCallback
    {"KovaSetZoomStatusCallback", FORWARDED},  // VISCA_KOVA_SetSigCallback
    {"KovaSetFocusStatusCallback", FORWARDED}, // VISCA_KOVA_SetSigCallback
};

Names operator+(const Names &one, const Names &other) {
    Names both = one;
    both.insert(other.begin(), other.end());
    return both;
}

Names operator-(const Names &one, const Names &other) {
    Names rest;
    std::set_difference(one.begin(), one.end(), other.begin(), other.end(), std::inserter(rest, rest.end()));
    return rest;
}

Names statedCalls() {
    Names names;
    forEachRow([&](const Row &row) { names.insert(row.calls.begin(), row.calls.end()); });
    return names;
}

Names withoutCommand() {
    Names names;
    for (const auto &entry : WITHOUT_COMMAND)
        names.insert(entry.first);
    return names;
}

// SONY_ZoomIn is what VISCA_ZoomIn hands on to, KOVA_SetIRcut what VISCA_KOVA_SetIRcut does.
Names sameNamesOfTheDriver(const Names &reached) {
    Names names;
    for (const std::string &name : reached) {
        if (name.compare(0, 11, "VISCA_KOVA_") == 0)
            names.insert(name.substr(6));
        else if (name.compare(0, 6, "VISCA_") == 0)
            names.insert("SONY_" + name.substr(6));
    }
    return names;
}

/** What an example calls. Its waits end at once: every call presses Ctrl-C. */
Names calledBy(Bench &bench, const std::string &example) {
    const Interrupt::Scope breakable(bench.interrupt);
    bench.interrupt.take();
    stand_ins::onCall([&] { bench.interrupt.raise(); });
    stand_ins::takeCalled();
    Result result;
    Job job(bench, result);
    const Call call = parseCommand(commandsOf(example).front(), KOVA_2);
    try {
        call.row->run(job, call.arguments);
    } catch (const Refused &) { // no archive, for example
    } catch (const Interrupted &) {
    } catch (const Quit &) {}
    stand_ins::onCall(nullptr);
    return stand_ins::takeCalled();
}

} // namespace

TEST(Reach, EachCommandCallsTheFunctionsThatItsRowStates) {
    Bench bench(nullptr, false);
    bench.moduleType = KOVA_2;
    forEachRow([&](const Row &row) {
        Names called;
        for (const std::string &example : row.examples)
            called = called + calledBy(bench, example);
        EXPECT_EQ(called, Names(row.calls.begin(), row.calls.end())) << row.words;
    });
}

TEST(Reach, EveryPublicFunctionHasACommandOrAReasonForNone) {
    const Names reached = statedCalls();
    EXPECT_GT(stand_ins::all().size(), 190U); // the header was understood
    EXPECT_THAT(stand_ins::all() - reached - sameNamesOfTheDriver(reached) - withoutCommand(), IsEmpty());
}

TEST(Reach, ThereIsNoReasonForAFunctionThatHasACommandOrDoesNotExist) {
    EXPECT_THAT(withoutCommand() - (stand_ins::all() - statedCalls()), IsEmpty());
}

TEST(Reach, EveryExampleIsUnderstood) {
    forEachRow([](const Row &row) {
        EXPECT_FALSE(row.examples.empty()) << row.words;
        for (const std::string &example : row.examples)
            EXPECT_EQ(parseCommand(commandsOf(example).front(), KOVA_2).row, &row) << example;
    });
}

} // namespace tool::ctl
