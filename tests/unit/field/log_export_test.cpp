// The module's own log: saved, and fetched.
#include "tests/unit/field/field_test.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace unit {
namespace {

const std::string kPacket = "81 01 04 A7 00 01 FF";
const std::string kExport = " KOVA_ExportLog: ";
const char kReceive[] = "xmodem -lrz  -small  /tmp/kova.tgz",
           kReceiveSaid[] = "xmodem -lrz -small  /tmp/kova.tgz",
           kReceiveGen2[] = "xmodem -lrz -small /tmp/kova.tgz 115200";

class LogExportTest : public FieldTest {
  protected:
    static Lines Switched() {
        return {"sleep 100000", "system echo -w 0x09 0x01 > /proc/driver/cpld", "sleep 10000",
                "WARN" + kExport + "Start recv file......", "module type"};
    }
    static Lines Received(const std::string &said, const std::string &command) {
        return {"INFO" + kExport + "Now execute cmd: " + said, "system " + command,
                "WARN" + kExport + "Recv file success...", "system echo -w 0x09 0x00 > /proc/driver/cpld",
                "sleep 10000"};
    }
    static Lines Flushed(unsigned failures = 0) {
        Lines lines;
        for (unsigned i = 0; i < failures; ++i) {
            lines.insert(lines.end(), {"flush 2", "WARN" + kExport + "ViscaCamComFlush fail, try it again",
                                       "sleep 100000"});
        }
        return Join({lines, {"flush 2", "export 0", "WARN" + kExport + "Recv file finished... "}});
    }
    static Lines Fetched(unsigned flush_failures = 0) {
        return Join({Switched(), Received(kReceiveSaid, kReceive), Flushed(flush_failures)});
    }
    /** The lock is free, the flag down: another export goes through. */
    static void ExpectAnotherExportGoesThrough() {
        EXPECT_EQ(0U, ViscaIsExportLog());
        Restart();
        EXPECT_EQ(0U, KOVA_ExportLog(1));
        EXPECT_EQ(Join({{"export 1"}, Sends(kPacket), Fetched()}), Story());
    }
};

TEST_F(LogExportTest, FromTheStartPacketToTheArchive) {
    EXPECT_EQ(0U, KOVA_ExportLog(1));
    EXPECT_EQ(Join({{"export 1"}, Sends(kPacket), Fetched()}), Story());
    ExpectAnotherExportGoesThrough();
}

TEST_F(LogExportTest, TheFlagBelongsToWhoeverHoldsTheLock) {
    std::vector<uint32_t> flags; // at each lock and unlock; the export's own come first and last
    Host().OnRecord([&flags](const Event &event) {
        if (event.call == Call::Lock || event.call == Call::Unlock) {
            flags.push_back(ViscaIsExportLog());
        }
    });
    EXPECT_EQ(0U, KOVA_ExportLog(1));
    Host().OnRecord(nullptr);
    ASSERT_GE(flags.size(), 4U);
    EXPECT_EQ(0U, flags.front());
    EXPECT_EQ(1U, flags[1]);
    EXPECT_EQ(0U, flags.back());
}

TEST_F(LogExportTest, TheSecondGenerationReceivesFaster) {
    for (uint32_t type : {0x02012A00U, kKovaGen2, 0x02012A02U, 0x02012AFFU}) {
        Restart(type);
        EXPECT_EQ(0U, KOVA_ExportLog(1));
        EXPECT_EQ(
            Join({{"export 1"}, Sends(kPacket), Switched(), Received(kReceiveGen2, kReceiveGen2), Flushed()}),
            Story());
    }
}

TEST_F(LogExportTest, EveryOtherTypeReceivesAtTheLinesRate) {
    for (uint32_t type : {0x02012000U, kKova, 0x020129FFU, 0x02012B00U, 0x02000001U, 0x03012A01U, kUnset}) {
        Restart(type);
        EXPECT_EQ(0U, KOVA_ExportLog(1));
        EXPECT_EQ(Join({{"export 1"}, Sends(kPacket), Fetched()}), Story()) << std::hex << type;
    }
}

TEST_F(LogExportTest, OnlyTheLowByteOfTheArgumentIsSent) {
    const struct {
        uint32_t argument;
        const char *packet;
    } cases[] = {{0x1234, "81 01 04 A7 03 04 FF"}, {0, "81 01 04 A7 00 00 FF"},
                 {0xFF, "81 01 04 A7 0F 0F FF"},   {0xFFFFFF0F, "81 01 04 A7 00 0F FF"},
                 {0x100, "81 01 04 A7 00 00 FF"},  {0xF0, "81 01 04 A7 0F 00 FF"}};
    for (const auto &test : cases) {
        Restart();
        EXPECT_EQ(0U, KOVA_ExportLog(test.argument));
        EXPECT_THAT(Host().Sent(), ElementsAre(test.packet));
    }
}

TEST_F(LogExportTest, QueuedCommandsGoOutFirst) {
    KeepQueueBusyUntilPause(2);
    EXPECT_EQ(0U, KOVA_ExportLog(1));
    EXPECT_EQ(Join({{"export 1"}, Drained(2), Sends(kPacket), Fetched()}), Story());
}

TEST_F(LogExportTest, AQueueThatDoesNotDrainInTenSecondsFailsItBeforeAnythingIsSent) {
    KeepQueueBusyUntilPause(0);
    EXPECT_EQ(1U, KOVA_ExportLog(1));
    EXPECT_EQ(Join({{"export 1"},
                    Drained(100),
                    {"WARN ViscaWaitCmdQueueEmpty: MsgQueue is busy time out [100]",
                     "ERROR" + kExport + "ViscaWaitCmdQueueEmpty(10) fail exit", "export 0"}}),
              Story());
    ExpectAnotherExportGoesThrough();
}

TEST_F(LogExportTest, APacketThatIsNotWrittenFailsIt) {
    for (int32_t sent : {-1, 0, 6, 8}) {
        Restart();
        Host().Fail(Call::Send, {1, 1, sent, 0});
        EXPECT_EQ(1U, KOVA_ExportLog(1));
        EXPECT_EQ((Lines{"export 1", "send " + kPacket, "ERROR ViscaCamComSend: DRV_ComSend fail",
                         "ERROR" + kExport + "KOVA exportlog:ViscaCamComSend fail", "export 0"}),
                  Story());
    }
    ExpectAnotherExportGoesThrough();
}

TEST_F(LogExportTest, AReceiverThatFailsIsNotNoticed) {
    Host().Fail(Call::System, 1, kForEver);
    EXPECT_EQ(0U, KOVA_ExportLog(1));
    EXPECT_EQ(Join({{"export 1"}, Sends(kPacket), Fetched()}), Story());
}

TEST_F(LogExportTest, TheLineIsFlushedUntilItSucceeds) {
    for (unsigned failures : {1U, 2U, 500U}) {
        Restart();
        Host().Fail(Call::Flush, 1, failures);
        EXPECT_EQ(0U, KOVA_ExportLog(1));
        EXPECT_EQ(Join({{"export 1"}, Sends(kPacket), Fetched(failures)}), Story());
    }
}

TEST_F(LogExportTest, TheLockIsTakenFirstAndReleasedLastOnEveryExit) {
    for (const char *exit : {"done", "busy", "unsent"}) {
        Restart();
        if (exit[0] == 'b') {
            KeepQueueBusyUntilPause(0);
        } else if (exit[0] == 'u') {
            Host().Fail(Call::Send);
        }
        Host().Forget();
        (void)KOVA_ExportLog(1);
        const std::vector<Event> events = Host().Events();
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(Call::Lock, events.front().call) << exit;
        EXPECT_EQ(Call::Unlock, events.back().call) << exit;
        EXPECT_EQ(Host().Events(Call::Lock).size(), Host().Events(Call::Unlock).size());
    }
}

TEST_F(LogExportTest, WhileItRunsCommandsAndEveryInquiryAreRefused) {
    Host().AnswerEveryInquiry("90 50 00 04 FF");
    During(std::string("system ") + kReceive, [] {
        ViscaPkt stop = Packet("81 01 04 07 00"), zoom = Packet("81 09 04 47"), reply = {};
        EXPECT_EQ(1U, ViscaEnQueueCmd(&stop));
        EXPECT_EQ(1U, ViscaInquiry(&zoom, &reply));
        EXPECT_EQ(1U, KovaGetStatus()) << "the upgrade's state too";
        Note("refused");
    });
    EXPECT_EQ(0U, KOVA_ExportLog(1));
    EXPECT_TRUE(HasLine("refused"));
    EXPECT_THAT(Host().Sent(), ElementsAre(kPacket));
    EXPECT_THAT(Host().Commands(), IsEmpty()) << "refused, not deferred";
}

TEST_F(LogExportTest, CommandsAreRefusedFromTheWaitForTheQueueToTheFlush) {
    for (const char *moment :
         {"isempty", "send 81 01 04 A7", "sleep 100000", "system echo -w 0x09 0x00", "flush"}) {
        Restart();
        During(moment, [] {
            ViscaPkt stop = Packet("81 01 04 07 00");
            EXPECT_EQ(1U, ViscaEnQueueCmd(&stop));
            Note("refused");
        });
        EXPECT_EQ(0U, KOVA_ExportLog(1));
        EXPECT_TRUE(HasLine("refused")) << moment;
    }
}

TEST_F(LogExportTest, TheUpgradesFlagIsNeitherNeededNorTouched) {
    ViscaMarkUpdatingCam(1);
    ForgetStory();
    EXPECT_EQ(0U, KOVA_ExportLog(1));
    EXPECT_EQ(Join({{"export 1"}, Sends(kPacket), Fetched()}), Story());
    EXPECT_EQ(1U, ViscaIsUpdatingCam());
}

/** Asleep in the kernel, as /proc tells. */
bool IsAsleep(pid_t thread) {
    std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(stat, line);
    const size_t name_end = line.rfind(')');
    return name_end != std::string::npos && line.compare(name_end, 3, ") S") == 0;
}

TEST_F(LogExportTest, TwoExportsAreOneAfterTheOther) {
    Clib().ParkAtPause(1);
    ThreadUnderTest first([] { KOVA_ExportLog(1); });
    EXPECT_EQ("pause 100000", first.WaitParked());
    Clib().ParkAtPause(0);
    const size_t locks = 1 + Host().Calls(Call::Lock);
    std::atomic<pid_t> id{0};
    std::atomic<bool> done{false};
    std::thread second([&] {
        id = static_cast<pid_t>(syscall(SYS_gettid));
        EXPECT_EQ(0U, KOVA_ExportLog(2));
        done = true;
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done && (id == 0 || Host().Calls(Call::Lock) < locks || !IsAsleep(id)) &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(done);
    EXPECT_EQ("ended", first.Resume());
    second.join();
    EXPECT_THAT(Host().Sent(), ElementsAre(kPacket, "81 01 04 A7 00 02 FF"));
    EXPECT_EQ(2U, CountStarting("flush"));
    const Lines story = Host().Story({Call::Send, Call::Flush});
    EXPECT_THAT(story, ElementsAre("send " + kPacket, "flush 2", "send 81 01 04 A7 00 02 FF", "flush 2"));
    EXPECT_EQ(0U, ViscaIsExportLog());
}

class SaveLogTest : public FieldTest {};

TEST_F(SaveLogTest, OnePacketGoesStraightToTheLine) {
    EXPECT_EQ(0U, KOVA_SaveLog());
    EXPECT_EQ(Sends("81 01 04 B6 FF"), Story());
    EXPECT_THAT(Host().Story({Call::IsEmpty, Call::Put}), IsEmpty());
}

TEST_F(SaveLogTest, NeitherTheQueueNorAFlagHoldsItBack) {
    KeepQueueBusyUntilPause(0);
    ViscaSetCamCanCtrl(0);
    ViscaMarkUpdatingCam(1);
    ViscaMarkExportLog(1);
    ForgetStory();
    EXPECT_EQ(0U, KOVA_SaveLog());
    EXPECT_EQ(Sends("81 01 04 B6 FF"), Story());
}

TEST_F(SaveLogTest, APacketThatIsNotWrittenFailsIt) {
    for (int32_t sent : {-1, 0, 4, 6}) {
        Restart();
        Host().Fail(Call::Send, {1, 1, sent, 0});
        EXPECT_EQ(1U, KOVA_SaveLog());
        EXPECT_EQ((Lines{"send 81 01 04 B6 FF", "ERROR ViscaCamComSend: DRV_ComSend fail",
                         "ERROR KOVA_SaveLog: KOVA savelog:ViscaCamComSend fail"}),
                  Story());
    }
}

TEST_F(SaveLogTest, ThePublicNameForwardsForEveryKovaModule) {
    for (uint32_t type : {0x02012000U, kKova, kKovaGen2, 0x02012FFFU}) {
        Restart(type);
        EXPECT_EQ(0U, VISCA_KOVA_Savelog());
        EXPECT_EQ(Sends("81 01 04 B6 FF"), Story());
        Host().FailNext(Call::Send);
        EXPECT_EQ(1U, VISCA_KOVA_Savelog());
    }
}

TEST_F(SaveLogTest, ThePublicNameDoesNothingForEveryOtherType) {
    for (uint32_t type : {0x02000001U, 0x02000004U, 0x02011FFFU, 0x02013000U, 0x12012001U, 0U, kUnset}) {
        Restart(type);
        EXPECT_EQ(0U, VISCA_KOVA_Savelog());
        EXPECT_EQ((Lines{"DEBUG VISCA_KOVA_Savelog: do nothing"}), Story());
    }
}

} // namespace
} // namespace unit
