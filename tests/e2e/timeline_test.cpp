// A capture as a picture. The captures are written by hand, so that what must be in the picture is known.
#include "tests/e2e/command.h"

#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

namespace e2e {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

const char kHead[] = "# viscacam capture 1\n# started 2026-11-20T19:02:37.000000Z\n# baud 38400\n";
// A command that is done, one that is refused, an inquiry that is answered and one that never is.
const char kTraffic[] = "0.100000 > 81 01 04 07 26 FF\n"
                        "0.140000 < 90 41 FF\n"
                        "0.160000 < 90 51 FF\n"
                        "0.200000 > 81 01 04 08 02 FF\n"
                        "0.230000 < 90 61 41 FF\n"
                        "0.300000 > 81 09 04 47 FF\n"
                        "0.330000 < 90 50 01 02 03 04 FF\n"
                        "0.400000 ! baud 9600\n"
                        "0.500000 > 81 09 04 48 FF\n"
                        "7.000000 < 12 34\n";

class File {
  public:
    File(const std::string &what, const std::string &content) : m_path(temporaryPath(what)) {
        std::ofstream(m_path) << content;
    }
    ~File() { unlink(m_path.c_str()); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    const std::string &path() const { return m_path; }

  private:
    std::string m_path;
};

std::string textOf(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The picture of a traffic in a form; empty when the command did not succeed.
std::string picture(const std::string &traffic, const std::string &form) {
    const File capture("capture", traffic);
    const File output("picture." + form, "");
    Command timeline({"timeline", capture.path(), "-o", output.path()});
    EXPECT_EQ(timeline.finish(), 0) << timeline.err();
    return textOf(output.path());
}

nlohmann::json dataOf(const std::string &page) {
    const std::string mark = "const data = ";
    const size_t at = page.find(mark) + mark.size();
    return nlohmann::json::parse(page.substr(at, page.find(";\n", at) - at));
}

std::vector<std::string> outcomes(const nlohmann::json &data) {
    std::vector<std::string> texts;
    for (const nlohmann::json &exchange : data["exchanges"])
        texts.push_back((exchange[0] == 0 ? "command " : "inquiry ") + exchange[4].get<std::string>() + " " +
                        std::to_string((exchange[2].get<int64_t>() - exchange[1].get<int64_t>()) / 1000));
    return texts;
}

} // namespace

TEST(Timeline, ThePageHoldsEachExchangeFromItsFirstByteToWhatEndedIt) {
    const nlohmann::json data = dataOf(picture(std::string(kHead) + kTraffic, "html"));
    EXPECT_EQ(data["baud"], 38400);
    EXPECT_EQ(data["started"], "2026-11-20 19:02:37 UTC");
    EXPECT_THAT(outcomes(data), ElementsAre("command done 60", "command refused 30", "inquiry done 30",
                                            "inquiry no answer 6000"));
    EXPECT_EQ(data["exchanges"][0][3].get<int64_t>() - data["exchanges"][0][1].get<int64_t>(), 40000)
        << "acknowledged";
    EXPECT_EQ(data["packets"].size(), 9u);
    EXPECT_EQ(data["packets"][0][5], "zoom tele, speed 6");
    EXPECT_EQ(data["remarks"][0][1], "baud 9600");
}

TEST(Timeline, APacketTakesItsTimeOnTheLineAtTheRateOfTheMoment) {
    const nlohmann::json data = dataOf(picture(std::string(kHead) + kTraffic, "html"));
    const auto lasts = [&data](size_t packet) {
        return data["packets"][packet][1].get<int64_t>() - data["packets"][packet][0].get<int64_t>();
    };
    EXPECT_EQ(lasts(0), 1562) << "60 bits at 38400 bit/s";
    EXPECT_EQ(lasts(7), 5208) << "50 bits at 9600 bit/s";
}

TEST(Timeline, AnInquiryIsGivenUpWhenTheHostAsksTheNext) {
    const nlohmann::json data = dataOf(picture(
        std::string(kHead) + "0.1 > 81 09 04 00 FF\n0.6 > 81 09 04 00 FF\n0.63 < 90 50 02 FF\n", "html"));
    EXPECT_THAT(outcomes(data), ElementsAre("inquiry no answer 500", "inquiry done 30"));
}

TEST(Timeline, ThePageNeedsNothingFromAnywhere) {
    const std::string page = picture(std::string(kHead) + kTraffic, "html");
    EXPECT_THAT(page, Not(HasSubstr("http")));
    EXPECT_THAT(page, Not(HasSubstr("src=")));
}

TEST(Timeline, ARemarkCannotEndThePagesScript) {
    const std::string page = picture(std::string(kHead) + "0.1 ! </script><b>\n" + kTraffic, "html");
    EXPECT_THAT(page, HasSubstr("\\u003c/script>\\u003cb>"));
}

TEST(Timeline, TheStillPictureNamesWhatItShows) {
    const std::string svg = picture(std::string(kHead) + kTraffic, "svg");
    EXPECT_THAT(svg, HasSubstr("2 commands, 2 inquiries, 2 refused or not answered"));
    EXPECT_THAT(svg, HasSubstr("zoom tele, speed 6: done after 60.0 ms"));
    EXPECT_THAT(svg, HasSubstr("focus far: refused after 30.0 ms"));
    EXPECT_THAT(svg, HasSubstr("focus position inquiry: no answer after 6000.0 ms"));
    EXPECT_THAT(svg, HasSubstr("81 01 04 07 26 FF"));
}

TEST(Timeline, LogLinesOfTheLibraryWillDo) {
    const std::string prefix = "2026-11-20 19:02:37 ";
    const std::string svg = picture(prefix +
                                        "100000 packet.cpp          @fun:ViscaPrintPkt                 "
                                        "line:103   --[INFO]send:ViscaPacket: 0x81 0x09 0x04 0x47 0xff \n" +
                                        prefix +
                                        "130000 packet.cpp          @fun:ViscaPrintPkt                 "
                                        "line:105   --[INFO]recv:ViscaPacket: 0x90 0x50 0x01 0x02 0x03 "
                                        "0x04 0xff \n",
                                    "svg");
    EXPECT_THAT(svg, HasSubstr("zoom position inquiry: done after 30"));
}

TEST(Timeline, SaysWhatIsWrongWithTheInput) {
    const File hex("hex", "81 09 04 00 FF\n");
    Command timeless({"timeline", hex.path(), "-o", hex.path() + ".svg"});
    EXPECT_EQ(timeless.finish(), 1);
    EXPECT_THAT(timeless.err(), HasSubstr("it holds no times"));
    const File empty("empty", kHead);
    Command nothing({"timeline", empty.path(), "-o", empty.path() + ".svg"});
    EXPECT_EQ(nothing.finish(), 1);
    EXPECT_THAT(nothing.err(), HasSubstr("no packet is in it"));
    Command form({"timeline", hex.path(), "-o", "picture.png"});
    EXPECT_EQ(form.finish(), 2);
    EXPECT_EQ(form.err(), "viscacam: \"picture.png\" ends neither in .svg nor in .html\n");
}

} // namespace e2e
