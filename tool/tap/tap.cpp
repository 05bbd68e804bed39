/*
 * One thread passes bytes on and does nothing else: poll, read, write. Before the host's bytes are read its
 * rate is: whoever sets a rate and then sends is heard at that rate. A host that only changes its rate is
 * noticed within RATE_INTERVAL.
 */
#include "tool/tap/tap.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "host/host.h"
#include "tool/complain.h"
#include "tool/console.h"
#include "tool/exit_status.h"
#include "tool/signals.h"
#include "tool/sim/links.h"
#include "tool/tap/device.h"
#include "tool/tap/host_end.h"
#include "tool/tap/journal.h"

namespace tool {

namespace {

using Clock = Journal::Clock;
using decode::Bytes;
using decode::Direction;

constexpr std::chrono::milliseconds RATE_INTERVAL{20};
constexpr size_t MOST_WAITING = 4096; // bytes that the host has not read; then they are lost, as on a port

/* Where a poll's result for one descriptor is found; a negative descriptor is not polled. */
enum Watched { WATCH_SIGNAL, WATCH_HOST, WATCH_HOSTS, WATCH_DEVICE, WATCH_COUNT };

class Tap {
  public:
    Tap(TappedDevice &device, HostEnd *host, Direction wire, const LineSettings &settings, Journal &journal)
        : m_device(device), m_host(host), m_wire(wire), m_settings(settings), m_journal(journal) {}

    /* Until there is a signal, or whatever else makes this descriptor readable. */
    void run(int signalFd);

  private:
    void wait(int signalFd, pollfd (&watched)[WATCH_COUNT]) const;
    void followHost();
    void followRate();
    bool fromHost();
    void toDevice();
    void fromDevice();
    void toHost();
    void lose(size_t count);
    void deviceGone();
    void seekDevice();

    TappedDevice &m_device;
    HostEnd *m_host; /* null: only listens */
    const Direction m_wire;
    LineSettings m_settings; /* of the device */
    Journal &m_journal;
    Bytes m_forDevice;
    Bytes m_forHost;
    bool m_hadHost = false;
    Clock::time_point m_sought{};
};

void Tap::wait(int signalFd, pollfd (&watched)[WATCH_COUNT]) const {
    const bool mayRead = m_hadHost && m_forDevice.empty();
    const int host = m_hadHost && (mayRead || !m_forHost.empty()) ? m_host->fd() : -1;
    const auto events = [](bool in, bool out) {
        return static_cast<short>((in ? POLLIN : 0) | (out ? POLLOUT : 0));
    };
    watched[WATCH_SIGNAL] = {signalFd, POLLIN, 0};
    watched[WATCH_HOST] = {host, events(mayRead, !m_forHost.empty()), 0};
    watched[WATCH_HOSTS] = {m_host == nullptr ? -1 : m_host->watch(), POLLIN, 0};
    watched[WATCH_DEVICE] = {m_device.fd(), events(true, !m_forDevice.empty()), 0};
    poll(watched, WATCH_COUNT, static_cast<int>(RATE_INTERVAL.count()));
}

void Tap::run(int signalFd) {
    for (;;) {
        pollfd watched[WATCH_COUNT];
        wait(signalFd, watched);
        if (watched[WATCH_SIGNAL].revents != 0)
            return;
        if (m_host != nullptr)
            followHost();
        if (!m_device.isOpen())
            seekDevice();
        if (watched[WATCH_DEVICE].revents != 0 && m_device.isOpen())
            fromDevice();
        if (m_host == nullptr)
            continue;
        if (m_device.isOpen() && !m_forDevice.empty())
            toDevice();
        if (m_forDevice.empty()) {
            followRate();
            fromHost();
        }
        toHost();
    }
}

// A port that is closed keeps nothing for whoever opens it next.
void Tap::followHost() {
    m_host->handleWatch();
    if (m_host->hasHost() == m_hadHost)
        return;
    m_hadHost = m_host->hasHost();
    if (!m_hadHost) {
        while (fromHost()) {} // what it sent last
        m_forHost.clear();
        m_host->refresh();
    }
    m_journal.remark(m_hadHost ? "opened" : "closed");
}

void Tap::followRate() {
    const LineSettings wanted = m_host->settings();
    if (!m_device.isOpen() || wanted == m_settings || wanted.speed == B0)
        return;
    const bool done = m_device.set(wanted);
    if (wanted.speed != m_settings.speed) {
        const std::string baud = std::to_string(baudOf(wanted.speed));
        m_journal.remark(done ? "baud " + baud : "the device does not take " + baud + " bit/s");
    }
    m_settings = wanted;
}

// False when there was nothing.
bool Tap::fromHost() {
    uint8_t buffer[512];
    const size_t count = m_host->read(buffer, sizeof buffer);
    if (count == 0)
        return false;
    if (!m_device.isOpen()) {
        lose(count);
        return true;
    }
    m_forDevice.insert(m_forDevice.end(), buffer, buffer + count);
    m_journal.bytes(Clock::now(), Direction::ToCamera, Bytes(buffer, buffer + count));
    toDevice();
    return true;
}

void Tap::toDevice() {
    const ssize_t count = m_device.write(m_forDevice.data(), m_forDevice.size());
    if (count < 0)
        deviceGone();
    else
        m_forDevice.erase(m_forDevice.begin(), m_forDevice.begin() + count);
}

void Tap::fromDevice() {
    uint8_t buffer[512];
    const ssize_t count = m_device.read(buffer, sizeof buffer);
    if (count < 0) {
        deviceGone();
        return;
    }
    if (count == 0)
        return;
    const Clock::time_point now = Clock::now();
    if (m_host != nullptr && m_host->hasHost()) {
        m_forHost.insert(m_forHost.end(), buffer, buffer + count);
        toHost();
    }
    m_journal.bytes(now, m_wire, Bytes(buffer, buffer + count));
}

void Tap::toHost() {
    if (m_forHost.empty())
        return;
    const size_t count = m_host->write(m_forHost.data(), m_forHost.size());
    m_forHost.erase(m_forHost.begin(), m_forHost.begin() + static_cast<ptrdiff_t>(count));
    if (m_forHost.size() <= MOST_WAITING)
        return;
    lose(m_forHost.size());
    m_forHost.clear();
}

void Tap::lose(size_t count) {
    m_journal.remark("lost " + std::to_string(count));
}

void Tap::deviceGone() {
    m_device.close();
    m_journal.remark("gone");
    if (!m_forDevice.empty())
        lose(m_forDevice.size());
    m_forDevice.clear();
    m_sought = Clock::now();
}

// The device may come back under a new number behind the same path.
void Tap::seekDevice() {
    if (Clock::now() - m_sought < host::kWatchInterval)
        return;
    m_sought = Clock::now();
    if (m_device.open(m_settings).empty())
        m_journal.remark("back");
}

int openSignals() {
    const sigset_t signals = holdSignals();
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

bool announce(const TapOptions &options, const TrafficLook &look, const HostEnd *host) {
    if (options.quiet || look.json)
        return true;
    std::string text = "tap of " + options.device + " at " + std::to_string(options.baud) + " bit/s";
    text += host == nullptr ? ", listening" : ", the host opens " + host->path();
    if (!options.capture.empty())
        text += ", capture in " + options.capture;
    return writeAll(STDOUT_FILENO, text + "\n");
}

Journal::Setup journalOf(const TapOptions &options, const TrafficLook &look) {
    Journal::Setup setup;
    setup.look = look;
    setup.quiet = options.quiet;
    setup.mixed = options.listen && options.wire == "both";
    setup.capture = options.capture;
    setup.port = options.device;
    setup.baud = options.baud;
    return setup;
}

} // namespace

int runTap(const TapOptions &options, const TrafficLook &look) {
    const int signalFd = openSignals();
    const LineSettings settings{speedOf(options.baud), false};
    TappedDevice device(options.device, options.listen);
    const std::string why = device.open(settings);
    if (!why.empty()) {
        complain(why);
        return EXIT_REFUSED;
    }
    Links links;
    std::unique_ptr<HostEnd> host;
    if (!options.listen)
        host = std::make_unique<HostEnd>(options.link.empty() ? links.take("tap") : options.link);
    Journal journal(journalOf(options, look));
    if (!announce(options, look, host.get()))
        return EXIT_REFUSED;
    const Direction wire = options.wire == "to-camera" ? Direction::ToCamera : Direction::FromCamera;
    Tap(device, host.get(), wire, settings, journal).run(signalFd);
    close(signalFd);
    return EXIT_DONE;
}

struct CaptureTap::Parts {
    Parts(const std::string &path, const std::string &capture)
        : device(path, false), journal(std::make_unique<Journal>(setupFor(path, capture))) {}

    static Journal::Setup setupFor(const std::string &path, const std::string &capture) {
        Journal::Setup setup;
        setup.quiet = true;
        setup.capture = capture;
        setup.port = path;
        setup.baud = baudOf(LineSettings().speed);
        return setup;
    }

    TappedDevice device;
    HostEnd host{""};
    std::unique_ptr<Journal> journal;
    const int end = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); /* readable: no more */
    std::once_flag ended;
    std::thread thread;
};

CaptureTap::CaptureTap(const std::string &device, const std::string &capture)
    : m_parts(std::make_unique<Parts>(device, capture)) {
    const std::string why = m_parts->device.open(LineSettings());
    if (!why.empty())
        throw std::runtime_error(why);
    m_parts->thread = std::thread([&parts = *m_parts] {
        Tap(parts.device, &parts.host, Direction::FromCamera, LineSettings(), *parts.journal).run(parts.end);
    });
}

CaptureTap::~CaptureTap() {
    finish();
    close(m_parts->end);
}

const std::string &CaptureTap::path() const {
    return m_parts->host.path();
}

void CaptureTap::finish() {
    std::call_once(m_parts->ended, [this] {
        (void)eventfd_write(m_parts->end, 1);
        m_parts->thread.join();
        m_parts->journal.reset();
    });
}

} // namespace tool
