// docs/video-norms.md against what the library writes into the monitor-mode register.
#include "tests/unit/unit_test.h"

#include <map>

#include "tests/docs/page.h"

namespace unit {
namespace {

using docs::Cells;

struct Norm {
    uint32_t width, height, rate;
};

// One of every size and rate that a row could tell apart.
const Norm kNorms[] = {
    {1920, 1080, 25}, {1920, 1080, 30}, {1920, 1080, 50}, {1920, 1080, 60}, {1280, 960, 25}, {1280, 960, 30},
    {1280, 960, 50},  {1280, 720, 25},  {1280, 720, 30},  {1280, 720, 60},  {720, 576, 25},  {720, 576, 30},
    {720, 480, 30},   {704, 576, 25},   {720, 577, 25},   {1920, 1080, 24}, {1920, 1080, 0},
};

/// "any", "960", "720 x 576", "not 960"
bool SizeFits(const std::string &cell, const Norm &norm) {
    if (cell == "any")
        return true;
    if (cell == "720 x 576")
        return norm.width == 720 && norm.height == 576;
    if (cell == "height 960")
        return norm.height == 960;
    if (cell == "any other height")
        return norm.height != 960;
    ADD_FAILURE() << "no size: " << cell;
    return false;
}

/// Columns: module types, size, frames a second, register 0x72.
std::string OnThePage(const std::vector<Cells> &rows, const std::string &type, const Norm &norm) {
    for (const Cells &row : rows)
        if (row[0].find(type) != std::string::npos && SizeFits(row[1], norm) &&
            row[2] == std::to_string(norm.rate))
            return row[3];
    return "refused";
}

std::string TypeText(uint32_t type) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(type));
    return text;
}

class VideoNormsPage : public UnitTest {
  protected:
    /// The register that was read holds 0, which no norm has.
    static std::string Written(uint32_t type, const Norm &norm) {
        Host().Reset();
        Host().SetModuleType(type);
        Host().SetCaller(2); // no image detection
        Host().OnSend([](const Bytes &sent) {
            Host().Preload(3, Hex(sent) == "81 09 04 00 FF" ? "90 50 02 FF" : "90 50 00 00 FF");
        });
        const VideoNormParam param = {norm.width, norm.height, norm.rate};
        const uint32_t result = SONY_SetVin(&param);
        for (const std::string &command : Host().Commands())
            if (command.compare(0, 14, "81 01 04 24 72") == 0)
                return "0x" + std::string(1, command[16]) + std::string(1, command[19]);
        EXPECT_EQ(1U, result);
        return "refused";
    }
};

TEST_F(VideoNormsPage, SaysForEveryModuleAndNormWhatIsWritten) {
    const std::vector<Cells> rows = docs::TableRows(docs::ReadSource("docs/video-norms.md"), "Norms");
    ASSERT_FALSE(rows.empty());
    const uint32_t types[] = {0x02000001, 0x02000003, 0x02000004, 0x02000005, 0x02000002, 0x02012000,
                              0x02012001, 0x02012002, 0x02012003, 0x02012004, 0x02012005, 0x02012100,
                              0x02012200, 0x02012A00, 0x02012A01, 0x02012A02, 0x02012A03, 0x02FFFFFF};
    for (const uint32_t type : types)
        for (const Norm &norm : kNorms)
            EXPECT_EQ(OnThePage(rows, TypeText(type), norm), Written(type, norm))
                << TypeText(type) << " " << norm.width << "x" << norm.height << "@" << norm.rate;
}

} // namespace
} // namespace unit
