#ifndef VISCACAM_TOOL_SIM_CONTROL_SOCKET_H
#define VISCACAM_TOOL_SIM_CONTROL_SOCKET_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <poll.h>
#include <sys/stat.h>

namespace tool {

/*
 * A Unix stream socket on which lines are asked and answered, for the user of the process alone. Any number
 * of lines on a connection, several connections at a time. A client that does not read its answers is
 * disconnected. One thread.
 */
class ControlSocket {
  public:
    /* The answer to a line, without a newline; empty: none. */
    using Answer = std::function<std::string(const std::string &line)>;

    /*
     * Begin to listen. The socket of a process that has ended is replaced. Throws std::invalid_argument when
     * the path is something else or too long, std::runtime_error when another process listens there.
     */
    ControlSocket(const std::string &path, Answer answer);
    ~ControlSocket(); /* removes the path if it is still ours */
    ControlSocket(const ControlSocket &) = delete;
    ControlSocket &operator=(const ControlSocket &) = delete;

    /* What to wait for, and what to do when poll() has returned. */
    void addTo(std::vector<pollfd> &sources) const;
    void handle(const std::vector<pollfd> &sources);

  private:
    struct Client {
        std::string input;
        std::string output;
        bool ended = false; /* asks nothing more */
    };

    void listen();
    void accept();
    bool serve(int fd, Client &client, short events); /* false: it is over */
    bool read(int fd, Client &client);
    void ask(Client &client);

    std::string m_path;
    Answer m_answer;
    int m_listener = -1;
    struct stat m_file = {};
    std::map<int, Client> m_clients;
};

} // namespace tool

#endif
