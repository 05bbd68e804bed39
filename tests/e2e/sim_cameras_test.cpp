// Several simulated cameras in a process, and how they are found.
#include "tests/e2e/command.h"

#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

namespace {

/** A folder for the runtime files of the user, for the commands that are started in its scope. */
struct RuntimeFolder {
    const std::string path = temporaryPath("runtime");
    const std::string links = path + "/viscacam";

    RuntimeFolder() {
        EXPECT_EQ(mkdir(path.c_str(), 0700), 0);
        setenv("XDG_RUNTIME_DIR", path.c_str(), 1);
    }
    ~RuntimeFolder() {
        unsetenv("XDG_RUNTIME_DIR");
        EXPECT_EQ(system(("rm -r " + path).c_str()), 0);
    }
};

std::string targetOf(const std::string &link) {
    char target[PATH_MAX] = {};
    return readlink(link.c_str(), target, sizeof target - 1) > 0 ? target : "";
}

} // namespace

TEST(SimCameras, EachHasANameAndALinkOfItsOwn) {
    const RuntimeFolder folder;
    const std::string link = temporaryPath("third");
    Command cameras({"sim", "--camera", "sony4", "--camera", "sony4", "--camera", "0x02012A01@" + link});
    EXPECT_THAT(cameras.waitFor("listening"), EndsWith("link " + folder.links + "/sony4"));
    EXPECT_THAT(cameras.waitFor("listening"),
                MatchesRegex("sony4-2: sony4 .0x02000004. listening.*link " + folder.links + "/sony4-2"));
    EXPECT_THAT(cameras.waitFor("listening"), MatchesRegex("kova2 .*link " + link));
    EXPECT_THAT(targetOf(folder.links + "/sony4-2"), HasSubstr("/dev/pts/"));
    EXPECT_NE(targetOf(folder.links + "/sony4"), targetOf(folder.links + "/sony4-2"));
    cameras.send(SIGTERM);
    EXPECT_EQ(cameras.finish(), 0);
    EXPECT_THAT(targetOf(folder.links + "/sony4"), IsEmpty());
}

TEST(SimCameras, TheLinkIsTheSameFromRunToRunAlsoWhenTheLastRunWasKilled) {
    const RuntimeFolder folder;
    Command killed({"sim"});
    EXPECT_THAT(killed.waitFor("listening"), EndsWith("link " + folder.links + "/sony1"));
    const std::string before = targetOf(folder.links + "/sony1");
    Command beside({"sim"});
    EXPECT_THAT(beside.waitFor("listening"), EndsWith("link " + folder.links + "/sony1-2"));
    EXPECT_EQ(targetOf(folder.links + "/sony1"), before);
    killed.send(SIGKILL);
    EXPECT_EQ(killed.finish(), -SIGKILL);
    Command again({"sim"});
    EXPECT_THAT(again.waitFor("listening"), EndsWith("link " + folder.links + "/sony1"));
}

TEST(SimCameras, TheFolderOfTheLinksBelongsToTheUserAlone) {
    const RuntimeFolder folder;
    Command camera({"sim"});
    camera.waitFor("listening");
    struct stat found = {};
    ASSERT_EQ(lstat(folder.links.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0700U);
}

TEST(SimCameras, NoLinkIsMadeWhereOthersCouldReplaceIt) {
    const RuntimeFolder folder;
    mkdir(folder.links.c_str(), 0700);
    chmod(folder.links.c_str(), 0777);
    Command camera({"sim"});
    EXPECT_THAT(camera.waitFor("listening"), MatchesRegex(".* on /dev/pts/[0-9]+"));
    camera.send(SIGTERM);
    EXPECT_EQ(camera.finish(), 0);
    EXPECT_THAT(camera.err(), HasSubstr("is no folder that belongs to this user alone"));
}

TEST(SimCameras, ALineOfTheDialogIsForAllOrForTheOneThatItNames) {
    const RuntimeFolder folder;
    Command cameras({"sim", "--camera", "sony1", "--camera", "sony1"});
    cameras.waitFor("sony1-2: sony1");
    cameras.type("sony1-2 fault mute\nfault no-ack\nstate\nsony1-2 replug\nquit\n");
    EXPECT_EQ(cameras.waitFor("ok"), "ok");
    EXPECT_EQ(cameras.waitFor("ok"), "sony1: ok");
    EXPECT_EQ(cameras.waitFor("ok"), "sony1-2: ok");
    EXPECT_THAT(cameras.waitFor("{"), MatchesRegex("\\{\"name\":\"sony1\",.*\"faults\":\\[\"no-ack\"\\]\\}"));
    EXPECT_THAT(cameras.waitFor("{"),
                MatchesRegex("\\{\"name\":\"sony1-2\",.*\"faults\":\\[\"mute\",\"no-ack\"\\]\\}"));
    EXPECT_EQ(cameras.waitFor("ok"), "ok: " + folder.links + "/sony1-2");
    EXPECT_EQ(cameras.finish(), 0);
}

TEST(SimCameras, TheTraceNamesTheCamera) {
    const RuntimeFolder folder;
    Command cameras({"sim", "--camera", "sony1", "--camera", "kova2", "--trace", "--boot", "0"});
    EXPECT_THAT(cameras.waitFor("kova2      "),
                MatchesRegex("kova2 +[0-9.]+ ms  <-camera  90 38 FF +network change.*"));
}

TEST(SimCameras, TimeRunsFasterWhereThatIsAskedFor) {
    const RuntimeFolder folder;
    Command camera({"sim", "--boot", "600000", "--speed", "1000", "--latency", "20", "--trace"});
    camera.waitFor("camera: on"); // after 0.6 s instead of ten minutes
}

TEST(SimCameras, LinksThatCannotBeMeantAreRefused) {
    const auto refused = [](std::vector<std::string> arguments, const std::string &why) {
        arguments.insert(arguments.begin(), "sim");
        Command command(arguments);
        EXPECT_EQ(command.finish(), 2);
        EXPECT_THAT(command.err(), HasSubstr(why));
    };
    refused({"--camera", "sony1", "--camera", "sony3", "--link", "/tmp/x"}, "--link is for one camera");
    refused({"--camera", "sony1@/tmp/x", "--camera", "sony3@/tmp/x"}, "two cameras have the link /tmp/x");
    refused({"--camera", "sony1@"}, "no link is given behind \"sony1@\"");
    refused({"--camera", "sony1@/tmp/x", "--link", "/tmp/y"}, "the camera has two links");
    refused({"--latency", "-1"}, "--latency");
    refused({"--speed", "0"}, "--speed");
}

} // namespace e2e
