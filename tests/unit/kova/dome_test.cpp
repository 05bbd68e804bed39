// The dome type that a second-generation module is told.
#include "tests/unit/kova/behaviour_test.h"

#include <cstring>

namespace unit {
namespace {

class DomeTest : public KovaTest {
  protected:
    /** Last byte of the command; -1 when it was something else. */
    static int Told() {
        Host().Forget();
        KovaSetDomeTypeToCam();
        const Lines commands = Host().Commands();
        for (int type = 0; type <= 4; ++type) {
            if (commands == Packets({"D1 00 00 00 0" + std::to_string(type)})) {
                return type;
            }
        }
        return -1;
    }
    static uint32_t Apply(uint32_t image_type = 0) {
        const ExposureParam profile{};
        return SONY_SetExposure(0, image_type, &profile);
    }
    static bool ToldWith(uint32_t type, uint32_t image_type) {
        Attach(type);
        Host().SetDeviceModel("ITC-WH");
        Apply(image_type);
        const Lines commands = Host().Commands();
        const bool told = !commands.empty() && commands[0] == Packets({"D1 00 00 00 01"})[0];
        EXPECT_EQ(told ? 1U : 0U, Host().Events(Call::Manuinfo).size());
        return told;
    }
};

TEST_F(DomeTest, TheModelSaysTheType) {
    const struct {
        const char *model;
        int type;
    } rows[] = {
        {"ITC WH", 1},     {"WHITC", 1},    {"ITC-IR-WH", 1}, {"X-IR-WH-ITC-9", 1},
        {"IT ITC WH", 1},  {"ITC-IR", 2},   {"IR/ITC", 2},    {"IT-WH", 3},
        {"WHITE", 3},      {"IT IR WH", 3}, {"IT-IR", 4},     {"CIRCUIT", 4},
        {"ITC", 0},        {"IT", 0},       {"WH", 0},        {"IR", 0},
        {"IRWH", 0},       {"", 0},         {"itc-wh", 0},    {"I TC WH", 0},
        {"ITC W H", 0},    {"ICT IR", 0},   {"TI WH", 0},     {"ITCHI", 0},
        {"IT W-H I-R", 0},
    };
    for (const auto &row : rows) {
        Attach(kKovaGen2);
        Host().SetDeviceModel(row.model);
        EXPECT_EQ(row.type, Told()) << row.model;
    }
}

TEST_F(DomeTest, OnlyTheModelsTextIsRead) {
    const auto fill = [](const char *before, const std::string &model, const char *after) {
        g_manuinfo = [=](ManuInfo *info) {
            strcpy(reinterpret_cast<char *>(info->aucReserved0) + 128 - strlen(before) - 1, before);
            info->aucReserved0[127] = static_cast<uint8_t>(before[strlen(before) - 1]);
            memcpy(info->szDeviceModel, model.data(), model.size());
            memcpy(info->aucReserved1, after, strlen(after));
        };
        return Told();
    };
    const std::string most(58, 'x');
    EXPECT_EQ(0, fill("ITC WH I", "TC", "IR"));
    EXPECT_EQ(0, fill("ITC", most + "xxxxxI", "TC WH"));
    EXPECT_EQ(0, fill("ITC", std::string("ITC\0WH", 6), "IR")) << "the text ends at its NUL";
    EXPECT_EQ(1, fill("xx", most + "ITC-WH", "IR")) << "a text that fills its field has no NUL";
    EXPECT_EQ(2, fill("xx", most + "ITC-IR", "WH"));
}

TEST_F(DomeTest, GarbageForAModelIsTypeZero) {
    for (unsigned byte = 1; byte <= 0xFF; ++byte) {
        g_manuinfo = [=](ManuInfo *info) { memset(info, static_cast<int>(byte), sizeof *info); };
        EXPECT_EQ(0, Told());
    }
}

TEST_F(DomeTest, WithoutManufacturingInformationTheTypeIsZero) {
    Host().SetDeviceModel("ITC-WH");
    Host().Fail(Call::Manuinfo);
    EXPECT_EQ(0, Told());
}

TEST_F(DomeTest, ARefusalIsLogged) {
    Host().SetDeviceModel("IT-WH");
    RefusePut(1);
    KovaSetDomeTypeToCam();
    EXPECT_EQ((Lines{Put("D1 00 00 00 03").event, "ERROR KovaSetDomeTypeToCam: ViscaEnQueueCmd() fail exit"}),
              Story());
}

TEST_F(DomeTest, AnExposureProfileTellsItToTheSecondGenerationOnly) {
    for (uint32_t type : {0x02012A00U, 0x02012A01U, 0x02012A02U, 0x02012AFFU}) {
        EXPECT_TRUE(ToldWith(type, 0)) << type;
    }
    for (uint32_t type : {0x02012000U, 0x02012001U, 0x02012100U, 0x02012200U, 0x020129FFU, 0x02012B00U,
                          0x02000001U, 0x02000A01U, 0x12012A01U}) {
        EXPECT_FALSE(ToldWith(type, 0)) << type;
    }
}

TEST_F(DomeTest, ItIsToldWithEveryProfile) {
    Attach(kKovaGen2);
    Apply();
    Host().Forget();
    Apply();
    EXPECT_EQ(Packets({"D1 00 00 00 00"})[0], Host().Commands().at(0));
}

TEST_F(DomeTest, AnImageTypeThatIsRefusedTellsNothing) {
    EXPECT_FALSE(ToldWith(kKovaGen2, 1));
    EXPECT_EQ(Lines(), Host().Commands());
}

TEST_F(DomeTest, ARefusalDoesNotStopTheProfile) {
    Attach(kKovaGen2);
    RefusePut(1);
    EXPECT_EQ(0U, Apply());
    EXPECT_LT(2U, Host().Commands().size());
}

} // namespace
} // namespace unit
