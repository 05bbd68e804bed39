// The demo with a camera on a port: one that another process simulates, and ports that are none.
#include "tests/e2e/command.h"
#include "tests/e2e/trace_lines.h"

#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

namespace {

/** A serial line with nobody at its other end. */
class SilentPort {
  public:
    SilentPort() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        grantpt(m_master);
        unlockpt(m_master);
        m_path = ptsname(m_master);
        m_slave = open(m_path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~SilentPort() {
        close(m_slave);
        close(m_master);
    }
    const std::string &path() const { return m_path; }

  private:
    int m_master;
    int m_slave = -1;
    std::string m_path;
};

void expectRefusal(const std::string &port, const std::string &why, const Setting &setting = Setting()) {
    Command demo({"demo", "--port", port}, setting);
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_EQ(demo.err(), "viscacam: cannot open " + port + ": " + why + "\n");
    EXPECT_THAT(demo.out(), IsEmpty()) << "nothing is started";
}

} // namespace

TEST(DemoPort, DrivesACameraThatAnotherProcessSimulates) {
    const std::string link = temporaryPath("camera");
    Command camera({"sim", "--camera", "sony4", "--link", link, "--baud", "19200", "--boot", "0"});
    camera.waitFor("listening");
    Command demo({"demo", "--port", link, "--type", "sony4"});
    EXPECT_EQ(demo.finish(), 0) << demo.err();

    EXPECT_EQ(linesOf(demo.out())[0], "Camera sony4 (0x02000004) at " + link);
    const std::vector<Chapter> chapters = chaptersOf(demo.out());
    ASSERT_THAT(chapters, SizeIs(20));
    EXPECT_THAT(chapters[1].others, Contains(MatchesRegex(".* ms  port: set to 19200 bit/s")));
    EXPECT_THAT(chapters[1].others, Contains(MatchesRegex(".* ms  INFO   The current baudrate is 19200")));
    EXPECT_THAT(packetsOf(chapters[1]),
                ElementsAre("> 81 01 04 06 03 FF", "< 90 41 FF", "< 90 51 FF", "> 81 09 04 00 FF",
                            "< 90 50 02 FF", "> 81 09 04 06 FF", "< 90 50 03 FF"));
    EXPECT_THAT(packetsOf(chapters[9]), ElementsAre("> 81 01 04 38 02 FF", "< 90 41 FF", "< 90 51 FF",
                                                    "> 81 09 04 38 FF", "< 90 50 02 FF"));
    EXPECT_THAT(chapters[19].others, Contains("30 of 30 agree"));

    camera.type("state\n");
    const std::string state = camera.waitFor("\"zoom\"");
    EXPECT_THAT(state, HasSubstr("\"zoom\":10240,"));
    EXPECT_THAT(state, HasSubstr("\"dzoom\":3"));
    EXPECT_THAT(state, HasSubstr("\"focusMode\":2"));
    EXPECT_THAT(state, HasSubstr("\"iris\":13,")) << "F2.8 of the block with 960 lines";
}

TEST(DemoPort, EndsWhenTheAdapterIsPulledInTheMiddle) {
    const std::string link = temporaryPath("camera");
    Command camera({"sim", "--link", link, "--boot", "0"});
    camera.waitFor("listening");
    Command demo({"demo", "--port", link});
    demo.waitFor("zoom tele, speed 6");
    camera.type("hang-up\n");
    EXPECT_EQ(demo.finish(), 1);
    EXPECT_THAT(demo.err(),
                MatchesRegex("viscacam: (the device at the port is gone|.* could not be read)\n"));
}

TEST(DemoPort, IsRefusedWhenItNamesNoDevice) {
    expectRefusal("/dev/no-such-device", "no such device");
}

TEST(DemoPort, IsRefusedWhenItIsARegularFile) {
    const std::string path = temporaryPath("file");
    std::ofstream(path) << "text";
    expectRefusal(path, "a regular file, not a serial device");
    unlink(path.c_str());
}

TEST(DemoPort, IsRefusedWhenItIsADirectoryOrAnotherKindOfDevice) {
    expectRefusal("/tmp", "a directory, not a serial device");
    expectRefusal("/dev/null", "not a serial device");
}

TEST(DemoPort, IsRefusedWithoutPermission) {
    const SilentPort port;
    ASSERT_EQ(chmod(port.path().c_str(), 0), 0);
    Setting asNobody;
    asNobody.asNobody = true;
    expectRefusal(port.path(), "no permission", asNobody);
}

TEST(DemoPort, IsRefusedWhileAnotherProcessHasItOpenAlsoToRoot) {
    const SilentPort port;
    Command first({"demo", "--port", port.path()});
    first.waitFor("opened");
    expectRefusal(port.path(), "in use by another process (" + std::to_string(first.pid()) + ")");
}

} // namespace e2e
