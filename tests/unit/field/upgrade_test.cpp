// The upgrade's worker: start packet, files, and the module's verdict.
#include "tests/unit/field/field_test.h"

#include <sys/prctl.h>

namespace unit {
namespace {

const char kUimage[] = "xmodem -lsz -big /tmp/update/QDM_uimage.bin",
           kProgram[] = "xmodem -lsz -big /tmp/update/QDM_program.bin",
           kPatch[] = "xmodem -lsz -big /tmp/update/update.patch";
const std::string kWorker = " KovaUpgradeThread: ";
const std::string kFailed = "90 60 41 FF";

class UpgradeTest : public FieldTest {
  protected:
    static void Run(uint32_t word) {
        gulUpdateFileforKova = word;
        EXPECT_EQ(nullptr, KovaUpgradeThread(reinterpret_cast<void *>(CallBack)));
    }
    static std::string State(unsigned state) {
        return Hex({0x90, 0x50, static_cast<uint8_t>(state / 16), static_cast<uint8_t>(state % 16), 0xFF});
    }
    /** The module reports these states, one a poll. */
    static void Report(const std::vector<unsigned> &states) {
        for (unsigned state : states) {
            Host().AnswerInquiry(State(state));
        }
    }
    static Lines Raised() { return {"DEBUG" + kWorker + "FUN_ENTRY--param:", "updating 1"}; }
    static Lines Transfer(const Lines &commands) {
        Lines lines = {"sleep 100000", "system echo -w 0x09 0x01 > /proc/driver/cpld", "sleep 10000",
                       "WARN" + kWorker + "Start send file......"};
        for (const std::string &command : commands) {
            lines.push_back("INFO" + kWorker + "Now execute cmd[" + command + "]");
            lines.push_back("system " + command);
        }
        const Lines end = {"WARN" + kWorker + "Send file success!",
                           "system echo -w 0x09 0x00 > /proc/driver/cpld", "sleep 10000"};
        return Join({lines, end});
    }
    static Lines Flushed(unsigned failures = 0) {
        Lines lines;
        for (unsigned i = 0; i < failures; ++i) {
            lines.insert(lines.end(), {"flush 2", "WARN" + kWorker + "ViscaCamComFlush fail, try it again",
                                       "sleep 100000"});
        }
        return Join({lines, {"flush 2", "updating 0"}});
    }
    static Lines Asked() {
        return {"DEBUG KovaGetStatus: FUN_ENTRY--param:", Dump("81 09 04 A9 FF"), "send 81 09 04 A9 FF"};
    }
    static Lines Polled(const std::string &state, const std::string &outcome) {
        return Join({Asked(), {"DEBUG KovaGetStatus: ulState[" + state + "]", outcome}});
    }
    static Lines PolledAgain(const std::string &state, const std::string &outcome) {
        return Join({Polled(state, outcome), {"sleep 500000"}});
    }
    static Lines Unexpected(const std::string &state) {
        return Polled(state, "ERROR" + kWorker + "Unexpected state[" + state + "]");
    }
    static Lines Succeeded() { return Polled("4", "INFO" + kWorker + "Upgrade kova success"); }
    static std::string StartPacket() { return Host().Sent().at(0); }
    static Lines Commands() {
        Lines commands;
        for (const std::string &line : Host().Story({Call::System})) {
            if (line.find("cpld") == std::string::npos) {
                commands.push_back(line.substr(7));
            }
        }
        return commands;
    }
};

TEST_F(UpgradeTest, APatchFromTheStartPacketToSuccess) {
    Report({3, 3, 4});
    Run(0x400);
    const Lines upgrading = PolledAgain("3", "DEBUG" + kWorker + "Upgrading kova ...");
    EXPECT_EQ(Join({Raised(),
                    Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                    Transfer({kPatch}),
                    Flushed(),
                    upgrading,
                    upgrading,
                    Succeeded(),
                    {"callback 0"}}),
              Story());
    EXPECT_EQ(0x400U, gulUpdateFileforKova);
}

TEST_F(UpgradeTest, EachCombinationOfFilesIsAnnouncedAndSentInAscendingOrder) {
    const struct {
        uint32_t word;
        const char *packet;
        Lines commands;
    } cases[] = {
        {0x001, "81 01 04 AA 00 00 00 00 00 00 00 01 FF", {kUimage}},
        {0x002, "81 01 04 AA 00 00 00 00 00 00 00 02 FF", {kProgram}},
        {0x003, "81 01 04 AA 00 00 00 00 00 00 00 03 FF", {kUimage, kProgram}},
        {0x400, "81 01 04 AA 00 00 00 00 00 04 00 00 FF", {kPatch}},
        {0x401, "81 01 04 AA 00 00 00 00 00 04 00 01 FF", {kUimage, kPatch}},
        {0x402, "81 01 04 AA 00 00 00 00 00 04 00 02 FF", {kProgram, kPatch}},
        {0x403, "81 01 04 AA 00 00 00 00 00 04 00 03 FF", {kUimage, kProgram, kPatch}},
        {0x3FC, "81 01 04 AA 00 00 00 00 00 03 0F 0C FF", {"cd", "cd", "cd", "cd", "cd", "cd", "cd", "cd"}},
        {0x013, "81 01 04 AA 00 00 00 00 00 00 01 03 FF", {kUimage, kProgram, "cd"}},
    };
    for (uint32_t type : {0x02012000U, kKova, 0x02012200U, kKovaGen2}) {
        for (const auto &test : cases) {
            Restart(type);
            Report({4});
            Run(test.word);
            EXPECT_EQ(Join({Raised(),
                            Sends(test.packet),
                            Transfer(test.commands),
                            Flushed(),
                            Succeeded(),
                            {"callback 0"}}),
                      Story());
        }
    }
}

TEST_F(UpgradeTest, EachBitUpToTenHasItsCommandAndNoneAbove) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        Restart();
        Report({4});
        Run(1U << bit);
        const std::string middle = bit == 0 ? kUimage : bit == 1 ? kProgram : bit == 10 ? kPatch : "cd";
        EXPECT_EQ(bit <= 10 ? Lines{middle} : Lines{}, Commands()) << bit;
    }
}

TEST_F(UpgradeTest, TheStartPacketCarriesEveryNibbleTheHighestFirst) {
    Report({4});
    Run(0x12345678);
    EXPECT_EQ("81 01 04 AA 01 02 03 04 05 06 07 08 FF", StartPacket());
    Restart();
    Report({4});
    Run(0xFFFFFFFF);
    EXPECT_EQ("81 01 04 AA 0F 0F 0F 0F 0F 0F 0F 0F FF", StartPacket());
    EXPECT_THAT(Commands(),
                ElementsAre(kUimage, kProgram, "cd", "cd", "cd", "cd", "cd", "cd", "cd", "cd", kPatch));
}

TEST_F(UpgradeTest, TheWordIsReadOnce) {
    During("send 81 01 04 AA", [] { gulUpdateFileforKova = 0; });
    Report({4});
    Run(0x400);
    EXPECT_EQ(Lines{kPatch}, Commands());
}

TEST_F(UpgradeTest, AnEmptyWordTouchesNothing) {
    Run(0);
    EXPECT_EQ((Lines{"DEBUG" + kWorker + "FUN_ENTRY--param:", "INFO" + kWorker + "No need update kova",
                     "callback 0"}),
              Story());
}

TEST_F(UpgradeTest, TheWorkerHasAName) {
    char before[17] = "", name[17] = "";
    prctl(PR_GET_NAME, before);
    Run(0);
    prctl(PR_GET_NAME, name);
    prctl(PR_SET_NAME, before);
    EXPECT_STREQ("KovaUpgradeThd", name);
}

// --- the queue

TEST_F(UpgradeTest, QueuedCommandsGoOutFirst) {
    KeepQueueBusyUntilPause(3);
    Report({4});
    Run(0x400);
    EXPECT_EQ(Join({Raised(),
                    Drained(3),
                    Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                    Transfer({kPatch}),
                    Flushed(),
                    Succeeded(),
                    {"callback 0"}}),
              Story());
}

TEST_F(UpgradeTest, AQueueThatDoesNotDrainInTenSecondsDoesNotStopIt) {
    KeepQueueBusyUntilPause(0);
    Report({4});
    Run(0x400);
    EXPECT_EQ(Join({Raised(),
                    Drained(100),
                    {"WARN ViscaWaitCmdQueueEmpty: MsgQueue is busy time out [100]",
                     "WARN" + kWorker + "ViscaWaitCmdQueueEmpty(10) fail exit"},
                    Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                    Transfer({kPatch}),
                    Flushed(),
                    Succeeded(),
                    {"callback 0"}}),
              Story());
    EXPECT_EQ(1U, Host().QueueLength(VISCA_CMD_QUEUE_ID)) << "left for the sender";
}

// --- failures

TEST_F(UpgradeTest, AStartPacketThatIsNotWrittenEndsItWithTheFlagRaised) {
    for (int32_t sent : {-1, 0, 12, 14}) {
        Restart();
        Host().Fail(Call::Send, {1, 1, sent, 0});
        Run(0x400);
        EXPECT_EQ(
            Join({Raised(),
                  {"send 81 01 04 AA 00 00 00 00 00 04 00 00 FF", "ERROR ViscaCamComSend: DRV_ComSend fail",
                   "ERROR" + kWorker + "KOVA update:ViscaCamComSend fail", "callback 1"}}),
            Story());
        EXPECT_EQ(1U, ViscaIsUpdatingCam());
        EXPECT_EQ(0x400U, gulUpdateFileforKova);
    }
}

TEST_F(UpgradeTest, ThatFlagBarsCommandsUntilTheNextUpgradeOrTheHostLowersIt) {
    Host().Fail(Call::Send);
    Run(0x400);
    ViscaPkt stop = Packet("81 01 04 07 00");
    EXPECT_EQ(1U, ViscaEnQueueCmd(&stop));
    Report({4});
    Run(0x400);
    EXPECT_EQ(0U, ViscaIsUpdatingCam());
    EXPECT_EQ(0U, ViscaEnQueueCmd(&stop));
}

TEST_F(UpgradeTest, TransfersAndSwitchesThatFailAreNotNoticed) {
    Host().Fail(Call::System, 1, kForEver);
    Report({4});
    Run(0x403);
    EXPECT_EQ(Join({Raised(),
                    Sends("81 01 04 AA 00 00 00 00 00 04 00 03 FF"),
                    Transfer({kUimage, kProgram, kPatch}),
                    Flushed(),
                    Succeeded(),
                    {"callback 0"}}),
              Story());
}

TEST_F(UpgradeTest, TheLineIsFlushedUntilItSucceeds) {
    for (unsigned failures : {1U, 2U, 500U}) {
        Restart();
        Host().Fail(Call::Flush, 1, failures);
        Report({4});
        Run(0x400);
        EXPECT_EQ(Join({Raised(),
                        Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                        Transfer({kPatch}),
                        Flushed(failures),
                        Succeeded(),
                        {"callback 0"}}),
                  Story());
    }
}

// --- the verdict

TEST_F(UpgradeTest, AModuleThatFailedIsReported) {
    Report({3, 5});
    Run(0x400);
    const Lines verdict = Join({PolledAgain("3", "DEBUG" + kWorker + "Upgrading kova ..."),
                                Polled("5", "ERROR" + kWorker + "Upgrade kova fail"),
                                {"callback 1"}});
    EXPECT_EQ(Join({Raised(), Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"), Transfer({kPatch}), Flushed(),
                    verdict}),
              Story());
}

TEST_F(UpgradeTest, EveryOtherStateIsUnexpectedAndAskedAgain) {
    for (unsigned state : {0U, 1U, 2U, 6U, 7U, 16U, 19U, 20U, 255U}) {
        Restart();
        Report({state, 4});
        Run(0x400);
        EXPECT_EQ(Join({Raised(),
                        Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                        Transfer({kPatch}),
                        Flushed(),
                        Unexpected(std::to_string(state)),
                        {"sleep 500000"},
                        Succeeded(),
                        {"callback 0"}}),
                  Story());
    }
}

TEST_F(UpgradeTest, TwentyUnexpectedStatesEndItWithoutAnotherWord) {
    Host().AnswerEveryInquiry(State(9));
    Run(0x400);
    Lines polls;
    for (unsigned i = 0; i < 19; ++i) {
        polls = Join({polls, Unexpected("9"), {"sleep 500000"}});
    }
    EXPECT_EQ(Join({Raised(),
                    Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                    Transfer({kPatch}),
                    Flushed(),
                    polls,
                    Unexpected("9"),
                    {"callback 1"}}),
              Story());
}

TEST_F(UpgradeTest, NineteenAreBorneHoweverMuchProgressLiesBetween) {
    for (unsigned last : {4U, 0U}) {
        Restart();
        for (unsigned i = 0; i < 19; ++i) {
            Report({i % 2 == 0 ? 2U : 200U, 3, 3});
        }
        Report({last, 4});
        Run(0x400);
        EXPECT_EQ(last == 4 ? "callback 0" : "callback 1", Story().back());
        EXPECT_EQ(1U + 19 * 3 + 1, Host().Sent().size());
        EXPECT_EQ(1U, CountStarting("callback"));
        EXPECT_EQ(57U, CountStarting("sleep 500000"));
    }
}

TEST_F(UpgradeTest, InquiriesThatFailCountAsStateOne) {
    Host().AnswerEveryInquiry(kFailed);
    Run(0x400);
    const Lines poll =
        Join({Asked(),
              {"ERROR KovaGetStatus: ViscaInquiry failed exit", "ERROR" + kWorker + "Unexpected state[1]"}});
    Lines polls;
    for (unsigned i = 0; i < 19; ++i) {
        polls = Join({polls, poll, {"sleep 500000"}});
    }
    EXPECT_EQ(Join({Raised(),
                    Sends("81 01 04 AA 00 00 00 00 00 04 00 00 FF"),
                    Transfer({kPatch}),
                    Flushed(),
                    polls,
                    poll,
                    {"callback 1"}}),
              Story());
}

TEST_F(UpgradeTest, ASilentModuleIsGivenUpAfterTwentyTimeOuts) {
    Run(0x400);
    EXPECT_EQ(20U, CountStarting("ERROR" + kWorker + "Unexpected state[0]"));
    EXPECT_EQ("callback 1", Story().back());
    EXPECT_EQ(20U * 6000000 + 19U * 500000 + 120000, Clib().Now());
}

TEST_F(UpgradeTest, AModuleThatStaysBusyIsAskedEveryHalfSecondWithoutEnd) {
    constexpr unsigned kPolls = 500;
    Host().AnswerEveryInquiry(State(3));
    Clib().ParkAtPause(3 + kPolls);
    gulUpdateFileforKova = 0x400;
    ThreadUnderTest worker([] { KovaUpgradeThread(reinterpret_cast<void *>(CallBack)); });
    EXPECT_EQ("pause 500000", worker.WaitParked());
    EXPECT_EQ(120000 + kPolls * 500000ULL, Clib().Now());
    EXPECT_EQ(0U, CountStarting("callback"));
    EXPECT_EQ(0U, ViscaIsUpdatingCam());
    Host().AnswerEveryInquiry(State(4));
    EXPECT_EQ("ended", worker.Resume());
    EXPECT_EQ("callback 0", Story().back());
}

TEST_F(UpgradeTest, TheStateIsMadeOfTwoWholeBytes) {
    const struct {
        const char *reply;
        uint32_t state;
    } cases[] = {{"90 50 00 03 FF", 3},       {"90 50 00 00 FF", 0},  {"90 50 0F 0F FF", 255},
                 {"90 50 10 05 FF", 261},     {"90 50 00 14 FF", 20}, {"90 50 FE FE FF", 4318},
                 {"90 50 00 04 09 09 FF", 4}, {"90 50 FF", 255 * 16}};
    for (const auto &test : cases) {
        Restart();
        Host().AnswerInquiry(test.reply);
        EXPECT_EQ(test.state, KovaGetStatus()) << test.reply;
        EXPECT_EQ(Join({Asked(), {"DEBUG KovaGetStatus: ulState[" + std::to_string(test.state) + "]"}}),
                  Story());
    }
}

TEST_F(UpgradeTest, AStateThatCannotBeAskedIsOne) {
    Host().Fail(Call::Send);
    EXPECT_EQ(1U, KovaGetStatus());
    EXPECT_EQ("ERROR KovaGetStatus: ViscaInquiry failed exit", Story().back());
    ViscaSetCamCanCtrl(0);
    EXPECT_EQ(1U, KovaGetStatus());
    EXPECT_EQ("ERROR KovaGetStatus: ViscaInquiry failed exit", Story().back());
}

// --- others meanwhile

TEST_F(UpgradeTest, WhileFilesAreSentCommandsAndInquiriesAreRefusedAndOnlyTheStateIsAsked) {
    Host().AnswerEveryInquiry(State(4));
    bool asked = false;
    During(std::string("system ") + kPatch, [&] {
        asked = true;
        ViscaPkt stop = Packet("81 01 04 07 00"), zoom = Packet("81 09 04 47"), reply = {};
        EXPECT_EQ(1U, ViscaEnQueueCmd(&stop));
        EXPECT_EQ(1U, ViscaInquiry(&zoom, &reply));
        EXPECT_EQ(4U, KovaGetStatus());
    });
    Run(0x400);
    EXPECT_TRUE(asked);
    EXPECT_THAT(Host().Sent(),
                ElementsAre("81 01 04 AA 00 00 00 00 00 04 00 00 FF", "81 09 04 A9 FF", "81 09 04 A9 FF"));
    EXPECT_THAT(Host().Commands(), IsEmpty()) << "refused, not deferred";
    EXPECT_EQ(0U, Host().QueueLength(VISCA_CMD_QUEUE_ID));
}

TEST_F(UpgradeTest, CommandsAreRefusedFromTheWaitForTheQueueToTheFlush) {
    for (const char *moment :
         {"isempty", "send 81 01 04 AA", "sleep 100000", "system echo -w 0x09 0x00", "flush"}) {
        Restart();
        Report({4});
        During(moment, [] {
            ViscaPkt stop = Packet("81 01 04 07 00");
            EXPECT_EQ(1U, ViscaEnQueueCmd(&stop));
            Note("refused");
        });
        Run(0x400);
        EXPECT_TRUE(HasLine("refused")) << moment;
    }
}

TEST_F(UpgradeTest, WhileTheModuleFlashesCommandsAreTaken) {
    Report({3, 4});
    During("sleep 500000", [] {
        ViscaPkt stop = Packet("81 01 04 07 00");
        EXPECT_EQ(0U, ViscaEnQueueCmd(&stop));
    });
    Run(0x400);
    EXPECT_THAT(Host().Commands(), ElementsAre("81 01 04 07 00 FF"));
}

} // namespace
} // namespace unit
