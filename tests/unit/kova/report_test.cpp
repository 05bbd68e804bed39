// Reports of the module and the host's callbacks for them.
#include "tests/unit/kova/behaviour_test.h"

#include <atomic>
#include <cstring>
#include <thread>

namespace unit {
namespace {

Lines g_called;

void Zoom(uint32_t active) {
    g_called.push_back("zoom " + std::to_string(active));
}
void Focus(uint32_t active) {
    g_called.push_back("focus " + std::to_string(active));
}
void Other(uint32_t active) {
    g_called.push_back("other " + std::to_string(active));
}
void Reconfigure() {
    g_called.push_back("reconfigure");
}
void StopZoom(uint32_t active) {
    Zoom(active);
    EXPECT_EQ(0U, SONY_ZoomStop());
}

constexpr size_t kZoomByte = 0xAE, kFocusByte = 0xAF, kReconfigByte = 0xEF;

class ReportTest : public KovaTest {
  protected:
    ReportTest() { g_called.clear(); }
    static void Listen() {
        gpfnReportZoomStatus = Zoom;
        gpfnReportFocusStatus = Focus;
        gpfnReconfigKovaImgParam = Reconfigure;
    }
    static Lines Deal(const ViscaPkt &report) {
        g_called.clear();
        Host().Forget();
        KovaDealReport(&report);
        return g_called;
    }
    static Lines Deal(std::string_view hex) { return Deal(Packet(hex)); }
    static ViscaPkt Report(size_t b1, size_t b3, size_t b4) {
        return Packet(Hex(
            {0x90, static_cast<uint8_t>(b1), 0, static_cast<uint8_t>(b3), static_cast<uint8_t>(b4), 0xFF}));
    }
};

TEST_F(ReportTest, ReachTheCallbackOfTheirKind) {
    Listen();
    EXPECT_EQ(Lines{"zoom 1"}, Deal("90 07 00 AE 01 FF"));
    EXPECT_EQ(Lines{"zoom 0"}, Deal("90 07 00 AE 00 FF"));
    EXPECT_EQ(Lines{"focus 1"}, Deal("90 07 00 AF 05 FF"));
    EXPECT_EQ(Lines{"focus 0"}, Deal("90 07 00 AF 00 FF"));
    EXPECT_EQ(Lines{"reconfigure"}, Deal("90 07 00 EF 00 FF"));
    EXPECT_EQ(Lines(), Host().Log());
}

TEST_F(ReportTest, TheLowNibbleOfTheFifthByteSaysWhetherItMoves) {
    Listen();
    for (size_t b4 = 0; b4 <= 0xFF; ++b4) {
        const std::string active = (b4 & 0x0F) != 0 ? " 1" : " 0";
        EXPECT_EQ(Lines{"zoom" + active}, Deal(Report(0x07, kZoomByte, b4)));
        EXPECT_EQ(Lines{"focus" + active}, Deal(Report(0x07, kFocusByte, b4)));
        EXPECT_EQ(Lines{"reconfigure"}, Deal(Report(0x07, kReconfigByte, b4)));
    }
}

TEST_F(ReportTest, OnlyTheLowNibbleOfTheSecondByteMarksAReport) {
    Listen();
    for (size_t b1 = 0; b1 <= 0xFF; ++b1) {
        for (size_t b3 : {kZoomByte, kFocusByte, kReconfigByte, size_t{0xB0}}) {
            const Lines called = Deal(Report(b1, b3, 0x01));
            const bool report = (b1 & 0x0F) == 7;
            EXPECT_EQ(report && b3 != 0xB0 ? 1U : 0U, called.size());
            EXPECT_EQ(report && b3 != 0xB0 ? 0U : 1U, Host().Log().size());
            EXPECT_EQ(report ? 0U : 1U,
                      Host().CountLogged(VISCA_LOG_WARN, "KovaDealReport", "Invalid ack, fail exit\n"));
        }
    }
}

TEST_F(ReportTest, WhatIsNoReportIsPrintedAsItCame) {
    Listen();
    EXPECT_EQ(Lines(), Deal("90 03 00 AE 01 FF"));
    EXPECT_THAT(Host().Log(), ElementsAre("WARN KovaDealReport: Invalid ack, fail exit\n"));
    EXPECT_THAT(Host().CameraLog(), ElementsAre("recv:ViscaPacket: 0x90 0x03 0x00 0xae 0x01 0xff \n"));
}

TEST_F(ReportTest, OtherReportsAreNamedByTheirNumber) {
    Listen();
    for (size_t b3 = 0; b3 <= 0xFF; ++b3) {
        if (b3 == kZoomByte || b3 == kFocusByte || b3 == kReconfigByte) {
            continue;
        }
        for (size_t b4 : {0x00, 0x01, 0xFF}) {
            EXPECT_EQ(Lines(), Deal(Report(0x07, b3, b4)));
            EXPECT_EQ(Lines{"WARN KovaDealReport: Not support " + std::to_string(b3) + " yet\n"},
                      Host().Log());
        }
    }
}

TEST_F(ReportTest, WithoutACallbackReportsAreDroppedInSilence) {
    for (size_t b3 : {kZoomByte, kFocusByte, kReconfigByte}) {
        EXPECT_EQ(Lines(), Deal(Report(0x07, b3, 1)));
        EXPECT_EQ(Lines(), Host().Log());
    }
}

// What lies behind the end of a report is left over from others.
TEST_F(ReportTest, OnlyWhatArrivedIsRead) {
    Listen();
    for (uint32_t length = 0; length <= 16; ++length) {
        for (const char *kind : {"AE", "AF", "EF"}) {
            ViscaPkt report =
                Packet("90 07 00 " + std::string(kind) + " 01 AE 07 07 AE 01 AF AE EF 01 01 FF");
            report.ulLength = length;
            const Lines called = Deal(report);
            SCOPED_TRACE(std::string(kind) + " in " + std::to_string(length));
            const std::string active = length >= 5 ? " 1" : " 0";
            const std::string all = kind[0] == 'E'   ? "reconfigure"
                                    : kind[1] == 'E' ? "zoom" + active
                                                     : "focus" + active;
            EXPECT_EQ(length >= 4 ? Lines{all} : Lines{}, called);
            EXPECT_EQ(length >= 4 ? 0U : 1U, Host().Log().size());
        }
    }
}

TEST_F(ReportTest, ALengthBeyondTheRecordIsNotFollowed) {
    Listen();
    for (uint32_t length : {17U, 256U, 0xFFFFFFFFU}) {
        ViscaPkt report = Packet("90 07 00 AE 01 FF");
        report.ulLength = length;
        EXPECT_EQ(Lines{"zoom 1"}, Deal(report));
        report.aucData[1] = 0x06;
        EXPECT_EQ(Lines(), Deal(report));
    }
}

TEST_F(ReportTest, AnyRecordAtAllIsSurvived) {
    Listen();
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        for (uint32_t length : {0U, 1U, 3U, 16U, 0xFFU}) {
            ViscaPkt report;
            memset(&report, static_cast<int>(byte), sizeof report);
            report.ulLength = length;
            EXPECT_EQ(Lines(), Deal(report)) << "every byte " << byte;
        }
    }
}

// --- from the line

TEST_F(ReportTest, ArriveThroughTheReceiver) {
    Listen();
    Host().Feed("90 07 00 AE 01 FF 90 07 00 AF 00 FF 90 07 00 EF FF");
    for (int i = 0; i < 3; ++i) {
        ViscaDealOneAck();
    }
    EXPECT_EQ((Lines{"zoom 1", "focus 0", "reconfigure"}), g_called);
    EXPECT_EQ(Lines(), Host().Story({Call::Put, Call::Log}));
}

TEST_F(ReportTest, ARunOfReportsOfEveryLengthArrives) {
    Listen();
    for (size_t length = 4; length <= 16; ++length) {
        Bytes report(length, 0);
        report[0] = 0x90, report[1] = 0x07, report[3] = kZoomByte, report[length - 1] = 0xFF;
        g_called.clear();
        Host().Feed(report);
        ViscaDealOneAck();
        // In five bytes the terminator is the fifth; in four it is the kind.
        EXPECT_EQ(length == 4 ? Lines{} : Lines{length == 5 ? "zoom 1" : "zoom 0"}, g_called) << length;
    }
    EXPECT_EQ(Lines{"WARN KovaDealReport: Not support 255 yet\n"}, Host().Log());
    Host().Forget();
    Host().Feed("90 07 FF");
    ViscaDealOneAck();
    EXPECT_EQ(1U, Host().Log().size()) << "too short to have a kind";
}

TEST_F(ReportTest, AReportDoesNotDisturbAnInquiry) {
    Listen();
    Host().OnSend([](const Bytes &) {
        Host().Feed("90 07 00 AE 01 FF 90 50 00 00 00 09 FF");
        ViscaDealOneAck();
        ViscaDealOneAck();
    });
    int32_t luma = 0;
    EXPECT_EQ(0U, KOVA_GetCurLuma(0, &luma));
    EXPECT_EQ(9, luma);
    EXPECT_EQ(Lines{"zoom 1"}, g_called);
}

TEST_F(ReportTest, ACallbackMayQueueCommandsEvenWhileAnInquiryIsUnderWay) {
    EXPECT_EQ(0U, KovaSetZoomStatusCallback(StopZoom));
    Host().OnSend([](const Bytes &) {
        Host().Feed("90 07 00 AE 01 FF 90 50 00 00 00 09 FF");
        ViscaDealOneAck();
        ViscaDealOneAck();
    });
    int32_t luma = 0;
    EXPECT_EQ(0U, KOVA_GetCurLuma(0, &luma));
    EXPECT_EQ(Packets({"AE 02", "07 00"}), Host().Commands());
    EXPECT_EQ(9, luma);
}

// --- setting the callbacks

struct Kind {
    const char *name, *on, *off, *report;
    uint32_t sig_type;
    uint32_t (*set)(ViscaStatusCallback);
    ViscaStatusCallback *pointer;
};
const Kind kKinds[] = {
    {"KovaSetZoomStatusCallback", "AE 02", "AE 03", "90 07 00 AE 01 FF", 0, KovaSetZoomStatusCallback,
     &gpfnReportZoomStatus},
    {"KovaSetFocusStatusCallback", "AF 02", "AF 03", "90 07 00 AF 01 FF", 1, KovaSetFocusStatusCallback,
     &gpfnReportFocusStatus},
};

class CallbackTest : public ReportTest {};

TEST_F(CallbackTest, AreSetReplacedAndTakenAwayWithTheModulesReports) {
    for (const Kind &kind : kKinds) {
        Host().Forget();
        EXPECT_EQ(0U, kind.set(Zoom));
        EXPECT_EQ(Zoom, *kind.pointer);
        EXPECT_EQ(0U, kind.set(Other));
        EXPECT_EQ(Other, *kind.pointer);
        EXPECT_EQ(0U, kind.set(nullptr));
        EXPECT_EQ(nullptr, *kind.pointer);
        EXPECT_EQ(0U, kind.set(nullptr));
        EXPECT_EQ(Packets({kind.on, kind.on, kind.off, kind.off}), Host().Commands());
    }
}

TEST_F(CallbackTest, ARefusedCommandKeepsTheOldOne) {
    for (const Kind &kind : kKinds) {
        for (ViscaStatusCallback old : {static_cast<ViscaStatusCallback>(nullptr), &Zoom}) {
            for (ViscaStatusCallback wanted : {static_cast<ViscaStatusCallback>(nullptr), &Other}) {
                Attach(kKova);
                *kind.pointer = old;
                RefusePut(1);
                EXPECT_EQ(1U, kind.set(wanted));
                EXPECT_EQ(old, *kind.pointer);
                EXPECT_EQ((Lines{Put(wanted != nullptr ? kind.on : kind.off).event,
                                 std::string("ERROR ") + kind.name + ": ViscaEnQueueCmd() fail exit"}),
                          Story());
            }
        }
    }
}

TEST_F(CallbackTest, ASignalTypeChoosesTheKind) {
    for (const Kind &kind : kKinds) {
        Attach(kKova);
        EXPECT_EQ(0U, KOVA_SetStatusCallback(kind.sig_type, Other));
        EXPECT_EQ(Other, *kind.pointer);
        EXPECT_EQ(Lines{"other 1"}, Deal(kind.report));
        RefusePut(1);
        EXPECT_EQ(1U, KOVA_SetStatusCallback(kind.sig_type, nullptr));
        EXPECT_EQ(Other, *kind.pointer);
        EXPECT_EQ(0U, KOVA_SetStatusCallback(kind.sig_type, nullptr));
        EXPECT_EQ(Lines(), Deal(kind.report));
    }
}

TEST_F(CallbackTest, AnotherSignalTypeIsRefusedWithTwo) {
    Listen();
    for (uint32_t type : {2U, 3U, 256U, 0xFFFFFFFFU}) {
        Host().Forget();
        EXPECT_EQ(2U, KOVA_SetStatusCallback(type, Other));
        EXPECT_EQ(
            Lines{"ERROR KOVA_SetStatusCallback: input param invalid, sigtype:" + std::to_string(type) + " "},
            Story());
        EXPECT_EQ(Zoom, gpfnReportZoomStatus);
        EXPECT_EQ(Focus, gpfnReportFocusStatus);
    }
}

TEST_F(CallbackTest, TheReconfigurationCallbackIsStoredAndNothingIsSent) {
    KOVA_SetRecfgImgParamCallback(Reconfigure);
    EXPECT_EQ(Reconfigure, gpfnReconfigKovaImgParam);
    KOVA_SetRecfgImgParamCallback(nullptr);
    EXPECT_EQ(nullptr, gpfnReconfigKovaImgParam);
    EXPECT_EQ(Lines(), Story());
}

// --- replaced while reports arrive

std::atomic<unsigned> g_first{0}, g_second{0}, g_wishes{0};
void First(uint32_t) {
    ++g_first;
}
void Second(uint32_t) {
    ++g_second;
}
void Wish() {
    ++g_wishes;
}

TEST_F(CallbackTest, MayBeReplacedWhileReportsAreDealtWith) {
    constexpr int kRounds = 500;
    std::atomic<bool> done{false};
    std::thread receiver([&] {
        const ViscaPkt reports[] = {Packet("90 07 00 AE 01 FF"), Packet("90 07 00 AF 01 FF"),
                                    Packet("90 07 00 EF FF")};
        while (!done) {
            for (const ViscaPkt &report : reports) {
                KovaDealReport(&report);
            }
        }
    });
    const ViscaStatusCallback turns[] = {First, nullptr, Second};
    for (int round = 0; round < kRounds; ++round) {
        KovaSetZoomStatusCallback(turns[round % 3]);
        KovaSetFocusStatusCallback(turns[(round + 1) % 3]);
        KOVA_SetRecfgImgParamCallback(round % 2 == 0 ? Wish : nullptr);
    }
    // Each of them is reached once it has been set, however the threads took turns.
    KovaSetZoomStatusCallback(First);
    KovaSetFocusStatusCallback(Second);
    KOVA_SetRecfgImgParamCallback(Wish);
    const unsigned first = g_first, second = g_second, wishes = g_wishes;
    while (g_first < first + 2 || g_second < second + 2 || g_wishes < wishes + 2) {
        std::this_thread::yield();
    }
    done = true;
    receiver.join();
    EXPECT_EQ(First, gpfnReportZoomStatus);
    EXPECT_EQ(2U * kRounds + 2, Host().Commands().size());
}

} // namespace
} // namespace unit
