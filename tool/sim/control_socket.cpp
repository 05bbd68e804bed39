#include "tool/sim/control_socket.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr size_t LONGEST_LINE = 4096;
constexpr size_t MOST_UNREAD = 1 << 20;
constexpr size_t MOST_CLIENTS = 32;
const char TOO_LONG[] = "{\"ok\":false,\"error\":\"the line is too long\"}\n";

sockaddr_un addressOf(const std::string &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw std::invalid_argument("the path of a socket has at most " +
                                    std::to_string(sizeof address.sun_path - 1) + " characters: " + path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

int makeSocket() {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        throw std::runtime_error(std::string("cannot make a socket: ") + std::strerror(errno));
    return fd;
}

bool connects(const sockaddr_un &address) {
    const int fd = makeSocket();
    const bool connected = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    close(fd);
    return connected;
}

// What a process that was killed has left behind may go, nothing else.
void makeRoom(const std::string &path, const sockaddr_un &address) {
    struct stat found = {};
    if (lstat(path.c_str(), &found) != 0)
        return;
    if (!S_ISSOCK(found.st_mode))
        throw std::invalid_argument(path + " exists and is no socket; choose another path");
    if (connects(address))
        throw std::runtime_error("another process listens at " + path);
    unlink(path.c_str());
}

} // namespace

ControlSocket::ControlSocket(const std::string &path, Answer answer)
    : m_path(path), m_answer(std::move(answer)) {
    m_listener = makeSocket();
    try {
        listen();
    } catch (...) {
        close(m_listener);
        throw;
    }
}

void ControlSocket::listen() {
    const sockaddr_un address = addressOf(m_path);
    makeRoom(m_path, address);
    const mode_t mask = umask(S_IXUSR | S_IRWXG | S_IRWXO);
    const int bound = bind(m_listener, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    const int error = errno;
    umask(mask);
    if (bound != 0)
        throw std::runtime_error("cannot make the socket " + m_path + ": " + std::strerror(error));
    lstat(m_path.c_str(), &m_file);
    if (::listen(m_listener, SOMAXCONN) != 0)
        throw std::runtime_error("cannot listen at " + m_path + ": " + std::strerror(errno));
}

ControlSocket::~ControlSocket() {
    for (const auto &[fd, client] : m_clients)
        close(fd);
    close(m_listener);
    struct stat now = {};
    if (lstat(m_path.c_str(), &now) == 0 && now.st_dev == m_file.st_dev && now.st_ino == m_file.st_ino)
        unlink(m_path.c_str());
}

void ControlSocket::addTo(std::vector<pollfd> &sources) const {
    if (m_clients.size() < MOST_CLIENTS)
        sources.push_back({m_listener, POLLIN, 0}); // the others wait in the queue
    for (const auto &[fd, client] : m_clients) {
        const int events = (client.ended ? 0 : POLLIN) | (client.output.empty() ? 0 : POLLOUT);
        sources.push_back({fd, static_cast<short>(events), 0});
    }
}

void ControlSocket::handle(const std::vector<pollfd> &sources) {
    for (const pollfd &source : sources) {
        const auto client = m_clients.find(source.fd);
        if (source.revents == 0)
            continue;
        if (source.fd == m_listener) {
            accept();
        } else if (client != m_clients.end() && !serve(source.fd, client->second, source.revents)) {
            close(source.fd);
            m_clients.erase(client);
        }
    }
}

void ControlSocket::accept() {
    const int fd = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd >= 0)
        m_clients[fd];
}

bool ControlSocket::serve(int fd, Client &client, short events) {
    if (!client.ended && (events & (POLLIN | POLLHUP)) != 0 && !read(fd, client))
        return false;
    ask(client);
    const ssize_t sent = send(fd, client.output.data(), client.output.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno != EAGAIN && errno != EINTR)
        return false;
    client.output.erase(0, sent > 0 ? static_cast<size_t>(sent) : 0);
    return client.output.size() <= MOST_UNREAD && !(client.ended && client.output.empty());
}

bool ControlSocket::read(int fd, Client &client) {
    char bytes[LONGEST_LINE];
    const ssize_t count = recv(fd, bytes, sizeof bytes, 0);
    if (count < 0)
        return errno == EAGAIN || errno == EINTR;
    client.input.append(bytes, static_cast<size_t>(count));
    client.ended = count == 0;
    if (client.ended && !client.input.empty())
        client.input += '\n'; // the last line may have none
    return true;
}

void ControlSocket::ask(Client &client) {
    for (size_t end = client.input.find('\n'); end != std::string::npos; end = client.input.find('\n')) {
        const std::string answer = m_answer(client.input.substr(0, end));
        client.output += answer.empty() ? "" : answer + "\n";
        client.input.erase(0, end + 1);
    }
    if (client.input.size() > LONGEST_LINE) {
        client.input.clear();
        client.output += TOO_LONG;
        client.ended = true;
    }
}

} // namespace tool
