#include "sim/child.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sim {

namespace {

constexpr size_t MOST_AT_ONCE = 4096;
constexpr std::chrono::milliseconds LONGEST_RUN{5000};

/* How the program finds itself: no signal blocked or ignored, and of our descriptors none but the socket. */
class Surroundings {
  public:
    explicit Surroundings(int socket) {
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, socket, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&files, socket, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
        posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
#endif
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(&attributes,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~Surroundings() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    Surroundings(const Surroundings &) = delete;
    Surroundings &operator=(const Surroundings &) = delete;

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

} // namespace

Child::Child(const std::vector<std::string> &command) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::runtime_error(std::string("cannot make a socket: ") + std::strerror(errno));
    m_socket = ends[0];
    fcntl(m_socket, F_SETFL, O_NONBLOCK);
    try {
        spawn(command, ends[1]);
    } catch (...) {
        ::close(ends[1]);
        ::close(m_socket);
        throw;
    }
    ::close(ends[1]);
}

void Child::spawn(const std::vector<std::string> &command, int socket) {
    std::vector<char *> words;
    for (const std::string &word : command)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    const Surroundings surroundings(socket);
    const int error = posix_spawnp(&m_process, words[0], &surroundings.files, &surroundings.attributes,
                                   words.data(), environ);
    if (error != 0)
        throw std::runtime_error("cannot run " + command[0] + ": " + std::strerror(error));
}

Child::~Child() {
    if (m_process > 0) {
        kill(-m_process, SIGKILL);
        reap();
    }
    ::close(m_socket);
}

int Child::reap() {
    int status = -1;
    while (waitpid(m_process, &status, 0) < 0 && errno == EINTR)
        continue;
    m_process = -1;
    return status;
}

Bytes Child::read() {
    Bytes bytes;
    uint8_t buffer[MOST_AT_ONCE];
    ssize_t count;
    while ((count = ::read(m_socket, buffer, sizeof buffer)) > 0)
        bytes.insert(bytes.end(), buffer, buffer + count);
    m_over = count == 0 || (errno != EAGAIN && errno != EINTR);
    return bytes;
}

void Child::write(const Bytes &bytes) const {
    if (send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0)
        return; // it is full, or ending
}

bool Child::succeeded() {
    const int status = m_process > 0 ? reap() : -1;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool runToEnd(const std::vector<std::string> &command) try {
    Child child(command);
    const Clock::time_point deadline = Clock::now() + LONGEST_RUN;
    while (!child.over() && Clock::now() < deadline) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting{child.descriptor(), POLLIN, 0};
        poll(&waiting, 1, static_cast<int>(left.count()));
        child.read();
    }
    return child.over() && child.succeeded();
} catch (const std::runtime_error &) {
    return false;
}

} // namespace sim
