// The dialog with simulated cameras through a socket.
#include "tests/e2e/command.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace e2e {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace {

sockaddr_un addressOf(const std::string &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

/** A connection to a socket. */
class Client {
  public:
    explicit Client(const std::string &path) : m_fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const sockaddr_un address = addressOf(path);
        EXPECT_EQ(connect(m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0) << path;
    }
    ~Client() { close(m_fd); }

    void send(const std::string &text) {
        EXPECT_EQ(write(m_fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void endOfQuestions() { shutdown(m_fd, SHUT_WR); }
    /** The next line, without newline; "(end)" when there is none. */
    std::string line() {
        std::string text;
        char c = 0;
        pollfd source = {m_fd, POLLIN, 0};
        while (poll(&source, 1, 60000) == 1 && read(m_fd, &c, 1) == 1) {
            if (c == '\n')
                return text;
            text += c;
        }
        return text + "(end)";
    }
    std::string ask(const std::string &question) {
        send(question + "\n");
        return line();
    }

  private:
    int m_fd;
};

struct SimWithSocket {
    const std::string link = temporaryPath("link");
    const std::string path = temporaryPath("socket");
    Command sim;

    explicit SimWithSocket(const std::vector<std::string> &more = {}) : sim(arguments(more)) {
        sim.waitFor("listening");
    }
    std::vector<std::string> arguments(const std::vector<std::string> &more) const {
        std::vector<std::string> all = {"sim", "--full-speed", "--boot", "0", "--socket", path};
        if (more.empty())
            all.insert(all.end(), {"--link", link});
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
};

} // namespace

TEST(SimSocket, AnswersEachLineByOneLineOfJson) {
    SimWithSocket camera;
    Client client(camera.path);
    EXPECT_EQ(client.ask("fault mute"), "{\"ok\":true}");
    EXPECT_THAT(client.ask("state"), MatchesRegex("\\{\"name\":\"sony1\",\"device\":\"/dev/pts/[0-9]+\",.*"
                                                  "\"faults\":\\[\"mute\"\\]\\}"));
    EXPECT_EQ(client.ask("clear mute"), "{\"ok\":true}");
    EXPECT_EQ(client.ask("replug"), "{\"ok\":true,\"path\":\"" + camera.link + "\"}");
    EXPECT_EQ(client.ask("state now"), "{\"ok\":false,\"error\":\"state takes nothing after it\"}");
    EXPECT_THAT(client.ask("help"), StartsWith("{\"ok\":true,\"help\":\"state "));
}

TEST(SimSocket, AnswersManyLinesAndTheLastOneWithoutNewline) {
    SimWithSocket camera;
    Client client(camera.path);
    client.send("fault mute\n\nclear mute\nnonsense");
    client.endOfQuestions();
    EXPECT_EQ(client.line(), "{\"ok\":true}");
    EXPECT_EQ(client.line(), "{\"ok\":true}");
    EXPECT_THAT(client.line(), HasSubstr("no command is called \\\"nonsense\\\""));
    EXPECT_EQ(client.line(), "(end)");
}

TEST(SimSocket, ServesSeveralClientsAtATime) {
    SimWithSocket camera;
    Client first(camera.path);
    Client second(camera.path);
    first.send("fault no"); // not a line yet
    EXPECT_EQ(second.ask("fault mute"), "{\"ok\":true}");
    EXPECT_EQ(first.ask("-ack"), "{\"ok\":true}");
    EXPECT_THAT(second.ask("state"), HasSubstr("\"faults\":[\"mute\",\"no-ack\"]"));
}

TEST(SimSocket, RefusesALineThatIsTooLong) {
    SimWithSocket camera;
    Client client(camera.path);
    client.send(std::string(5000, 'x'));
    EXPECT_EQ(client.line(), "{\"ok\":false,\"error\":\"the line is too long\"}");
    EXPECT_EQ(client.line(), "(end)");
    EXPECT_EQ(Client(camera.path).ask("fault mute"), "{\"ok\":true}");
}

TEST(SimSocket, AnswersForAllOfSeveralCamerasByAnArray) {
    SimWithSocket cameras({"--camera", "sony4", "--camera", "kova2"});
    Client client(cameras.path);
    EXPECT_EQ(client.ask("kova2 fault mute"), "{\"ok\":true}");
    EXPECT_EQ(client.ask("clear no-ack"),
              "[{\"name\":\"sony4\",\"ok\":true},{\"name\":\"kova2\",\"ok\":true}]");
    EXPECT_THAT(client.ask("all state"),
                MatchesRegex("\\[\\{\"name\":\"sony4\",.*\"faults\":\\[\\]\\},"
                             "\\{\"name\":\"kova2\",.*\"faults\":\\[\"mute\"\\]\\}\\]"));
    EXPECT_THAT(client.ask("sony4"), HasSubstr("a command is missing"));
}

TEST(SimSocket, BelongsToTheUserAloneAndGoesWithTheProcess) {
    SimWithSocket camera;
    struct stat found = {};
    ASSERT_EQ(lstat(camera.path.c_str(), &found), 0);
    EXPECT_TRUE(S_ISSOCK(found.st_mode));
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
    EXPECT_EQ(Client(camera.path).ask("quit"), "{\"ok\":true}");
    EXPECT_EQ(camera.sim.finish(), 0);
    EXPECT_NE(lstat(camera.path.c_str(), &found), 0);
}

TEST(SimSocket, IsNotTakenFromAProcessThatListensThere) {
    SimWithSocket camera;
    Command second(camera.arguments({"--link", temporaryPath("second")}));
    EXPECT_EQ(second.finish(), 1);
    EXPECT_EQ(second.err(), "viscacam: another process listens at " + camera.path + "\n");
    EXPECT_EQ(Client(camera.path).ask("fault mute"), "{\"ok\":true}");
}

TEST(SimSocket, TakesTheSocketOfAProcessThatWasKilled) {
    const std::string path = temporaryPath("socket");
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(path);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    close(fd);
    Command camera({"sim", "--link", temporaryPath("link"), "--socket", path});
    camera.waitFor("listening");
    EXPECT_EQ(Client(path).ask("fault mute"), "{\"ok\":true}");
}

TEST(SimSocket, DoesNotReplaceAFile) {
    const std::string path = temporaryPath("file");
    close(open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    Command camera({"sim", "--socket", path, "--link", temporaryPath("link")});
    EXPECT_EQ(camera.finish(), 2);
    EXPECT_EQ(camera.err(), "viscacam: " + path + " exists and is no socket; choose another path\n");
    unlink(path.c_str());
}

TEST(SimSocket, ASignalPrintsTheStateToo) {
    SimWithSocket camera;
    camera.sim.send(SIGUSR1);
    EXPECT_THAT(camera.sim.waitFor("{"), StartsWith("{\"name\":\"sony1\",\"device\":\"/dev/pts/"));
}

} // namespace e2e
