#include "tool/replay/replay.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "sim/pty.h"
#include "tool/complain.h"
#include "tool/console.h"
#include "tool/exit_status.h"
#include "tool/replay/player.h"
#include "tool/signals.h"
#include "tool/sim/links.h"
#include "tool/trace.h"

namespace tool {

namespace {

constexpr int LONGEST_WAIT_MS = 1000;

decode::Capture readCapture(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file)
        throw std::runtime_error("cannot read " + path + ": " + std::strerror(errno));
    decode::Capture capture;
    std::string why;
    if (!decode::ReadCapture(text.str(), capture, why))
        throw std::runtime_error(path + ", " + why);
    return capture;
}

/* The line between a host and the player. */
class Stage {
  public:
    Stage(Player &player, sim::Pty &pty, Trace *trace) : m_player(player), m_pty(pty), m_trace(trace) {}

    /* Until there is a signal, or standard input ends where that counts. */
    void run(int signalFd, bool untilEof);

  private:
    int waitMs() const;
    void fromHost();
    void toHost();
    void show(decode::Direction direction, const decode::Bytes &bytes);

    Player &m_player;
    sim::Pty &m_pty;
    Trace *m_trace; /* null: none is wanted */
    decode::Splitter m_toCamera{decode::Direction::ToCamera};
    decode::Splitter m_fromCamera{decode::Direction::FromCamera};
    bool m_saidOver = false;
};

// poll() counts whole milliseconds; the wait is never short of what is due.
int Stage::waitMs() const {
    const std::optional<Clock::time_point> due = m_player.due();
    if (!due)
        return LONGEST_WAIT_MS;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, LONGEST_WAIT_MS));
}

void Stage::run(int signalFd, bool untilEof) {
    for (;;) {
        pollfd watched[] = {{signalFd, POLLIN, 0},
                            {untilEof ? STDIN_FILENO : -1, POLLIN, 0},
                            {m_pty.master(), POLLIN, 0},
                            {m_pty.watch(), POLLIN, 0}};
        poll(watched, 4, waitMs());
        char ignored[64];
        if (watched[0].revents != 0 ||
            (watched[1].revents != 0 && read(STDIN_FILENO, ignored, sizeof ignored) <= 0))
            return;
        m_pty.handleWatch();
        if (m_pty.hasHost())
            m_player.begin(Clock::now());
        fromHost();
        toHost();
    }
}

void Stage::fromHost() {
    const unsigned baud = m_pty.hostBaud();
    uint8_t buffer[512];
    const size_t count = m_pty.read(buffer, sizeof buffer);
    if (count == 0)
        return;
    const decode::Bytes bytes(buffer, buffer + count);
    show(decode::Direction::ToCamera, bytes);
    m_player.take(Clock::now(), baud, bytes);
}

// What a host does not read is lost, as on a port.
void Stage::toHost() {
    for (;;) {
        const decode::Bytes bytes = m_player.next(Clock::now());
        if (bytes.empty())
            break;
        m_pty.write(bytes.data(), bytes.size());
        show(decode::Direction::FromCamera, bytes);
    }
    if (m_player.isOver() && !m_saidOver) {
        m_saidOver = true;
        writeAll(STDOUT_FILENO, "the capture is over\n");
    }
}

void Stage::show(decode::Direction direction, const decode::Bytes &bytes) {
    if (m_trace == nullptr)
        return;
    const Clock::time_point now = Clock::now();
    const auto since = std::chrono::duration_cast<decode::Microseconds>(now.time_since_epoch());
    std::vector<decode::Piece> pieces;
    (direction == decode::Direction::ToCamera ? m_toCamera : m_fromCamera)
        .Feed(since, bytes.data(), bytes.size(), pieces);
    for (const decode::Piece &piece : pieces)
        m_trace->packet(now, direction, piece.bytes);
}

int openSignals() {
    const sigset_t signals = holdSignals();
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

int runReplay(const ReplayOptions &options) {
    Player player(readCapture(options.capture), options.fullSpeed, complain);
    const int signalFd = openSignals();
    Links links;
    sim::Pty pty(options.link.empty() ? links.take("replay") : options.link);
    pty.open();
    writeAll(STDOUT_FILENO, options.capture + ", " + std::to_string(player.packets()) +
                                " packets to the camera, listening on " + pty.path() + "\n");
    std::unique_ptr<Trace> trace = options.trace ? std::make_unique<Trace>() : nullptr;
    Stage(player, pty, trace.get()).run(signalFd, options.untilEof);
    close(signalFd);
    return player.mismatches() == 0 ? EXIT_DONE : EXIT_REFUSED;
}

} // namespace tool
