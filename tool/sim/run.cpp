#include "tool/sim/run.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "tool/complain.h"
#include "tool/console.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/signals.h"
#include "tool/sim/control_socket.h"
#include "tool/sim/dialog.h"
#include "tool/sim/lines.h"
#include "tool/sim/view.h"

namespace tool {

namespace {

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string valueText(const sim::FaultType &fault) {
    if (fault.value.empty())
        return "";
    return " [" + fault.value + (fault.initial.empty() ? "" : ", " + fault.initial + " if not given") + "]";
}

int list() {
    std::string text = "cameras:\n";
    for (const sim::CameraType &camera : sim::knownCameras())
        text += "  " + shown(camera) + "\n";
    text += "faults, as NAME[=VALUE][#COUNT][@START[..END]]:\n";
    for (const sim::FaultType &fault : sim::knownFaults())
        text += "  " + padded(fault.name, 16) + fault.effect + valueText(fault) + "\n";
    return writeAll(STDOUT_FILENO, text) ? EXIT_DONE : EXIT_REFUSED;
}

// Before any thread: those that end us, SIGUSR1, and with a picture those that it must be taken away for.
int openSignals(bool drawn) {
    sigset_t signals = holdSignals();
    sigaddset(&signals, SIGUSR1);
    if (drawn) {
        for (const int signal : {SIGWINCH, SIGTSTP, SIGQUIT})
            sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

// False when the signal asks for the end.
bool obeySignal(int fd, Front &front) {
    signalfd_siginfo info = {};
    if (read(fd, &info, sizeof info) != sizeof info)
        return true;
    switch (static_cast<int>(info.ssi_signo)) {
    case SIGUSR1:
        front.showState();
        return true;
    case SIGWINCH:
        front.resized();
        return true;
    case SIGTSTP:
        front.suspend();
        return true;
    default:
        return false;
    }
}

/* Everything that is waited for. */
class Server {
  public:
    Server(const SimOptions &options, int signalFd, Front &front, Fleet &fleet)
        : m_signalFd(signalFd), m_front(front) {
        if (options.socket.empty())
            return;
        m_socket.emplace(options.socket, [this, &fleet](const std::string &line) {
            const DialogReply reply = obey(fleet, line);
            m_over = m_over || reply.quit;
            return asJson(reply);
        });
    }

    void run() {
        while (!m_over && !m_front.over()) {
            m_front.refresh();
            wait();
        }
    }

  private:
    void wait() {
        std::vector<pollfd> sources = {{m_signalFd, POLLIN, 0}, {m_front.input(), POLLIN, 0}};
        if (m_socket)
            m_socket->addTo(sources);
        if (poll(sources.data(), sources.size(), m_front.limitMs()) <= 0)
            return;
        if (sources[0].revents != 0 && !obeySignal(m_signalFd, m_front))
            m_over = true;
        if (sources[1].revents != 0)
            m_front.read();
        if (m_socket)
            m_socket->handle(sources);
    }

    int m_signalFd;
    Front &m_front;
    std::optional<ControlSocket> m_socket;
    bool m_over = false;
};

void serve(const SimOptions &options, int signalFd, Front &front) {
    Fleet fleet(options,
                [&](const std::string &name, size_t number) { return front.traceFor(name, number); });
    Server server(options, signalFd, front, fleet);
    front.begin(fleet);
    server.run();
    front.end();
}

} // namespace

int runSim(const SimOptions &options) {
    if (options.list)
        return list();
    const bool drawn = !options.plain && !options.trace && !options.untilEof && canDraw();
    const int signalFd = openSignals(drawn);
    std::unique_ptr<Front> front;
    if (drawn)
        front = std::make_unique<View>();
    else
        front = std::make_unique<Lines>(options);
    try {
        serve(options, signalFd, *front);
    } catch (const std::invalid_argument &wrong) {
        front.reset(); // the terminal first
        complain(wrong.what());
        return EXIT_USAGE;
    } catch (const std::runtime_error &refused) {
        front.reset();
        complain(refused.what());
        return EXIT_REFUSED;
    }
    return EXIT_DONE;
}

} // namespace tool
