// docs/image-packets.md: what each image call sends to each module. The page is written from what the library
// really does, call by call with nothing sent before, and compared with the page in the repository, so that
// it cannot drift.
#include "decode/decode.h"
#include "tests/unit/unit_test.h"

#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>

namespace unit {
namespace {

struct Module {
    uint32_t type;
    const char *name;
};
const Module kModules[] = {
    {0x02000001, "0x02000001"}, {0x02000003, "0x02000003"}, {0x02000004, "0x02000004"},
    {0x02000005, "0x02000005"}, {0x02012001, "Kova"},       {0x02012A01, "Kova, second generation"},
};

struct Row {
    std::string call;
    std::string values;
    std::function<uint32_t()> run;
};

ExposureParam Exposure(uint32_t mode) {
    ExposureParam exposure = {};
    exposure.ulExposureMode = mode;
    exposure.lExpCompValue = 28;
    exposure.ulIris = 400;
    exposure.ulShutter = 100;
    exposure.ulGain = 10;
    exposure.ulSlowShutter = 25;
    exposure.ulFastShutter = 10000;
    exposure.ulMaxGain = 90;
    exposure.ulMinGain = 10;
    exposure.bIsAutoSlowShutter = 1;
    exposure.ulMaxSlowShutter = 25;
    exposure.ulWdr = 1;
    exposure.ulWdrLevel = 5;
    exposure.ulMeteringMode = 1;
    exposure.TopX = exposure.TopY = exposure.BotX = exposure.BotY = 50;
    exposure.ulBlackWhiteMode = 2;
    return exposure;
}

Row SetExposure(uint32_t mode) {
    return {"VISCA_SetExposure", "ulExposureMode " + std::to_string(mode), [mode] {
                const ExposureParam exposure = Exposure(mode);
                return VISCA_SetExposure(0, 0, &exposure);
            }};
}

Row SetWhiteBalance(uint32_t mode) {
    return {"VISCA_SetWhiteBalance", "ulWbMode " + std::to_string(mode), [mode] {
                const WhiteBalanceParam wb = {mode, -5, 10};
                return VISCA_SetWhiteBalance(0, 0, &wb);
            }};
}

Row SetBlackWhiteMode(uint32_t mode) {
    return {"VISCA_SetBlackWhiteMode", "ulBlackWhiteMode " + std::to_string(mode),
            [mode] { return VISCA_SetBlackWhiteMode(0, mode); }};
}

// Data words of a message, in the byte order of the machine as a host writes them.
DrvMsgInfo DefogMessage(uint32_t mode, uint32_t sense) {
    DrvMsgInfo message = {};
    message.ulMsgType = 1;
    message.ulMsgCmd = 30;
    const uint32_t words[] = {mode, sense};
    static_assert(sizeof(words) == sizeof(message.aucMsgData));
    memcpy(message.aucMsgData, words, sizeof(words));
    return message;
}

std::vector<Row> ProfileRows() {
    std::vector<Row> rows;
    for (uint32_t mode = 0; mode <= 7; ++mode) {
        rows.push_back(SetExposure(mode));
    }
    for (uint32_t mode : {0U, 1U, 2U, 3U, 6U}) {
        rows.push_back(SetWhiteBalance(mode));
    }
    rows.push_back({"VISCA_SetImageEnhance", "", [] {
                        const ImageEnhanceParam enhance = {128, 100, 140, 0, 0, 120, 60, 60};
                        return VISCA_SetImageEnhance(0, 0, &enhance);
                    }});
    for (uint32_t mode : {0U, 1U, 2U}) {
        rows.push_back(SetBlackWhiteMode(mode));
    }
    for (uint32_t mode : {0U, 3U}) {
        rows.push_back(
            {"VISCA_SetImageVarFn", "defog mode " + std::to_string(mode) + ", sensitivity 2", [mode] {
                 DrvMsgInfo message = DefogMessage(mode, 2);
                 return VISCA_SetImageVarFn(0, 0, &message);
             }});
    }
    return rows;
}

std::vector<Row> MessageRows() {
    return {
        {"VISCA_MessageProcess", "set, command 30, defog mode 3, sensitivity 2",
         [] {
             DrvMsgInfo message = DefogMessage(3, 2);
             return VISCA_MessageProcess(&message);
         }},
        {"VISCA_MessageProcess", "set, command 2, channel 0x12, value 0x34",
         [] {
             DrvMsgInfo message = {1, 2, 0x12, 0, 0, 1, {0x34}};
             return VISCA_MessageProcess(&message);
         }},
        {"VISCA_GetImageVarFn", "", [] { return VISCA_GetImageVarFn(0, 0, nullptr); }},
        {"VISCA_GetExposure", "",
         [] {
             ExposureParam exposure = {};
             return VISCA_GetExposure(0, 0, &exposure);
         }},
        {"VISCA_GetExposureCfg", "",
         [] {
             ExposureParam exposure = {};
             return VISCA_GetExposureCfg(&exposure);
         }},
        {"VISCA_GetGain", "",
         [] {
             uint32_t gain = 0;
             return VISCA_GetGain(0, &gain);
         }},
        {"VISCA_GetWhiteBalance", "",
         [] {
             WhiteBalanceParam wb = {};
             return VISCA_GetWhiteBalance(0, 0, &wb);
         }},
        {"VISCA_GetBlackWhiteMode", "",
         [] {
             uint32_t mode = 0;
             return VISCA_GetBlackWhiteMode(&mode);
         }},
    };
}

// Every packet on its own line of the cell, with its meaning. Queued commands and written inquiries alike.
std::string PacketsSent() {
    Lines packets = Host().Commands();
    for (const std::string &inquiry : Host().Sent()) {
        packets.push_back(inquiry);
    }
    std::string cell;
    for (const std::string &packet : packets) {
        const Bytes bytes = FromHex(packet);
        cell += cell.empty() ? "" : "<br>";
        cell +=
            "`" + packet + "` " + decode::Describe(decode::Direction::ToCamera, bytes.data(), bytes.size());
    }
    return cell.empty() ? "nothing" : cell;
}

std::string RunOn(const Row &row, const Module &module) {
    Host().Reset();
    Host().SetModuleType(module.type);
    Host().AnswerEveryInquiry("90 50 00 00 00 05 FF");
    VISCA_SetCamModuleType(module.type);
    SonyInitVar4IMG();
    Host().Forget();
    row.run();
    return PacketsSent();
}

// One line for each different answer of the modules, in the order of the first that gives it.
std::string Table(const Row &row) {
    std::vector<std::pair<std::string, std::string>> lines;
    for (const Module &module : kModules) {
        const std::string cell = RunOn(row, module);
        auto same = lines.begin();
        while (same != lines.end() && same->second != cell) {
            ++same;
        }
        if (same == lines.end()) {
            lines.emplace_back(module.name, cell);
        } else {
            same->first += "<br>" + std::string(module.name);
        }
    }
    std::string text = "| Module | Packets, in order |\n|---|---|\n";
    for (const auto &[modules, cell] : lines) {
        text += "| " + modules + " | " + cell + " |\n";
    }
    return text;
}

const char kHead[] =
    "# What the image calls send\n"
    "\n"
    "Each call as the first after start-up: nothing is known of what the camera holds, so all of it goes "
    "out. A call that\n"
    "changes nothing sends nothing, except dome type, spot position, manual white balance and defog, which "
    "are always sent. The\n"
    "example values: exposure compensation 28, iris F4, shutter 1/100 s, gain 10, shutter range 1/25 to "
    "1/10000 s, "
    "gain range 10 to 90,\n"
    "automatic slow shutter on with limit 25, WDR on at level 5, spot metering in the centre, "
    "black-and-white; red offset 10, blue\n"
    "offset -5; brightness 128, contrast 100, saturation 140, sharpness 120, noise reduction 60.\n"
    "\n"
    "This page is checked by a test against what the library sends.\n";

std::string Page() {
    std::vector<Row> rows = ProfileRows();
    const std::vector<Row> messages = MessageRows();
    rows.insert(rows.end(), messages.begin(), messages.end());
    std::string text = kHead;
    std::string last;
    for (const Row &row : rows) {
        if (row.call != last) {
            text += "\n## `" + row.call + "`\n";
            last = row.call;
        }
        text += (row.values.empty() ? "" : "\nWith " + row.values + ":\n") + "\n" + Table(row);
    }
    return text;
}

class ImagePacketsTest : public UnitTest {};

TEST_F(ImagePacketsTest, ThePageSaysWhatTheLibrarySends) {
    const std::string page = Page();
    std::ifstream file(VISCACAM_IMAGE_PACKETS_PAGE);
    std::stringstream committed;
    committed << file.rdbuf();
    if (committed.str() != page) {
        std::ofstream("image-packets.md") << page;
    }
    EXPECT_TRUE(committed.str() == page)
        << "docs/image-packets.md differs from what the library sends; the page as it "
           "should be stands in image-packets.md where the test ran";
}

} // namespace
} // namespace unit
