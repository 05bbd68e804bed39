#include "sim/options.h"
#include "sim/simulation.h"
#include "sim/state_json.h"

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <future>
#include <iterator>
#include <mutex>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>

namespace sim {

namespace {

constexpr std::chrono::milliseconds LENS_STEP{3};
constexpr uint64_t ONE = 1;

timespec untilDeadline(Clock::time_point deadline) {
    const auto left = std::max(deadline - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    timespec time{};
    time.tv_sec = static_cast<time_t>(seconds.count());
    time.tv_nsec = static_cast<long>((left - seconds).count());
    return time;
}

class Wake {
  public:
    Wake() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (m_descriptor < 0)
            throw std::runtime_error(std::string("cannot make an eventfd: ") + std::strerror(errno));
    }
    ~Wake() { ::close(m_descriptor); }
    Wake(const Wake &) = delete;
    Wake &operator=(const Wake &) = delete;

    int descriptor() const { return m_descriptor; }
    void set() const {
        if (::write(m_descriptor, &ONE, sizeof ONE) < 0)
            return; // set already, to the counter's end
    }
    void clear() const {
        uint64_t count;
        if (::read(m_descriptor, &count, sizeof count) < 0)
            return; // not set
    }

  private:
    int m_descriptor;
};

} // namespace

/* The thread and the lock around one Simulation. */
class Camera::Impl {
  public:
    using Job = std::function<void(Simulation &, Clock::time_point)>;

    explicit Impl(const Options &options)
        : m_trace(options.trace), m_awake(options.awake), m_simulation(options, Clock::now()) {
        m_thread = std::thread([this] { run(); });
    }

    ~Impl() {
        {
            const std::lock_guard lock(m_mutex);
            m_ending = true;
        }
        m_wake.set();
        m_thread.join();
    }

    /*
     * Have the camera's thread do something and wait until it is done: what opens and closes the pty must not
     * happen while that thread sleeps on it. In the trace callback this is that thread.
     */
    void act(const Job &job) {
        std::packaged_task<void()> task([&] { job(m_simulation, Clock::now()); });
        std::future<void> result = task.get_future();
        {
            const std::lock_guard lock(m_mutex);
            if (std::this_thread::get_id() == m_runner)
                task();
            else
                m_jobs.push_back(std::move(task));
        }
        m_wake.set();
        result.get();
    }

    State state() const {
        const std::lock_guard lock(m_mutex);
        State state = m_simulation.state(Clock::now());
        state.wakeUps = m_passes;
        return state;
    }

    Bytes receivedFile(const std::string &kind) const {
        const std::lock_guard lock(m_mutex);
        return m_simulation.receivedFile(kind);
    }

    std::string path() const {
        const std::lock_guard lock(m_mutex);
        return m_simulation.pty().path();
    }

    bool waitFor(const std::function<bool(const State &)> &predicate,
                 std::chrono::milliseconds timeout) const {
        const Clock::time_point deadline = Clock::now() + timeout;
        for (;;) {
            std::unique_lock lock(m_mutex);
            const unsigned long pass = m_passes;
            const State now = m_simulation.state(Clock::now());
            lock.unlock();
            if (predicate(now))
                return true;
            if (Clock::now() >= deadline)
                return false;
            lock.lock();
            const bool moving = now.zoomMoving || now.focusMoving;
            m_changed.wait_until(lock, moving ? std::min(deadline, Clock::now() + LENS_STEP) : deadline,
                                 [&] { return m_passes != pass; });
        }
    }

  private:
    void run() {
        prctl(PR_SET_TIMERSLACK, 1UL); // bytes come when they are due, not up to 50 us later
        for (;;) {
            std::unique_lock lock(m_mutex);
            if (m_ending)
                return;
            m_runner = std::this_thread::get_id();
            std::vector<std::packaged_task<void()>> jobs;
            jobs.swap(m_jobs);
            for (std::packaged_task<void()> &job : jobs)
                job();
            m_simulation.pass(Clock::now());
            ++m_passes;
            const std::vector<TraceEvent> diary = m_simulation.takeDiary();
            lock.unlock();
            m_changed.notify_all();
            for (const TraceEvent &event : diary)
                m_trace(event);
            sleep();
        }
    }

    void sleep() const {
        std::unique_lock lock(m_mutex);
        const Pty &pty = m_simulation.pty();
        const int reads = m_simulation.wantsToRead() ? POLLIN : 0;
        const int writes = m_simulation.wantsToWrite() ? POLLOUT : 0;
        const int master = reads || writes ? pty.master() : -1;
        const auto deadline = m_awake ? std::optional(Clock::time_point()) : m_simulation.next();
        pollfd descriptors[] = {{m_wake.descriptor(), POLLIN, 0},
                                {master, static_cast<short>(reads | writes), 0},
                                {pty.watch(), POLLIN, 0},
                                {m_simulation.transferDescriptor(), POLLIN, 0}};
        lock.unlock();
        const timespec time = deadline ? untilDeadline(*deadline) : timespec{};
        ppoll(descriptors, std::size(descriptors), deadline ? &time : nullptr, nullptr);
        if (descriptors[0].revents & POLLIN)
            m_wake.clear();
    }

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    Trace m_trace;
    const bool m_awake;
    Wake m_wake;
    std::vector<std::packaged_task<void()>> m_jobs;
    mutable Simulation m_simulation; // asked for its state, it first brings itself to the present
    unsigned long m_passes = 0;
    bool m_ending = false;
    std::thread::id m_runner;
    std::thread m_thread;
};

Camera::Camera(const Options &options) : m_impl(std::make_unique<Impl>(checked(options))) {}

Camera::~Camera() = default;

std::string Camera::path() const {
    return m_impl->path();
}

State Camera::state() const {
    return m_impl->state();
}

std::string Camera::stateJson() const {
    return toJson(m_impl->state());
}

Bytes Camera::receivedFile(const std::string &kind) const {
    return m_impl->receivedFile(kind);
}

bool Camera::waitFor(const std::function<bool(const State &)> &predicate,
                     std::chrono::milliseconds timeout) const {
    return m_impl->waitFor(predicate, timeout);
}

void Camera::setFault(const std::string &text) {
    m_impl->act([&](Simulation &simulation, Clock::time_point now) { simulation.setFault(text, now); });
}

void Camera::clearFault(const std::string &name) {
    m_impl->act([&](Simulation &simulation, Clock::time_point now) { simulation.clearFault(name, now); });
}

void Camera::clearFaults() {
    m_impl->act([](Simulation &simulation, Clock::time_point now) { simulation.clearFaults(now); });
}

void Camera::powerCut() {
    m_impl->act([](Simulation &simulation, Clock::time_point now) { simulation.powerCut(now); });
}

void Camera::powerApply() {
    m_impl->act([](Simulation &simulation, Clock::time_point now) { simulation.powerApply(now); });
}

void Camera::hangUp() {
    m_impl->act([](Simulation &simulation, Clock::time_point now) { simulation.hangUp(now); });
}

void Camera::replug() {
    m_impl->act([](Simulation &simulation, Clock::time_point now) { simulation.replug(now); });
}

void Camera::sendRaw(const Bytes &bytes) {
    m_impl->act([&](Simulation &simulation, Clock::time_point now) { simulation.sendRaw(bytes, now); });
}

void Camera::requestConfiguration() {
    m_impl->act([](Simulation &simulation, Clock::time_point now) { simulation.requestConfiguration(now); });
}

} // namespace sim
