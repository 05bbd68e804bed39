#include "wrapped_libc.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

extern "C" {
int __real_usleep(useconds_t micros);
unsigned __real_sleep(unsigned seconds);
int __real_select(int nfds, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout);
int __real_clock_gettime(clockid_t clock, timespec *now);
int __real_gettimeofday(timeval *now, void *zone);
time_t __real_time(time_t *now);
ssize_t __real_read(int fd, void *data, size_t size);
ssize_t __real_write(int fd, const void *data, size_t size);
int __real_fcntl(int fd, int command, ...);
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                          void *argument);
int __real_pthread_detach(pthread_t thread);
int __real_pthread_mutex_lock(pthread_mutex_t *mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t *mutex);
}

namespace unit {

struct ThreadUnderTest::State {
    SupportMutex mutex;
    pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
    enum class Phase { Running, Parked, Ended } phase = Phase::Running;
    bool time_out = false;
    std::string place;
    pid_t id = 0;
};

namespace {

using Guard = std::lock_guard<SupportMutex>;
using Phase = ThreadUnderTest::State::Phase;
constexpr uint64_t kSecond = 1000000;
constexpr int kParkSeconds = 20;

thread_local ThreadUnderTest::State *t_state = nullptr;
thread_local std::set<const pthread_mutex_t *> t_not_locked; // whose locks have failed

uint64_t Micros(const timeval &time) {
    return static_cast<uint64_t>(time.tv_sec) * kSecond + static_cast<uint64_t>(time.tv_usec);
}

void Note(Call call, const std::string &text, uint64_t micros = 0) {
    Event event;
    event.call = call;
    event.text = text;
    event.micros = micros;
    Host().Record(std::move(event));
}

// Stand still until the test goes on; true when the wait shall time out.
bool Park(const std::string &place) {
    ThreadUnderTest::State &state = *t_state;
    Guard guard(state.mutex);
    state.phase = Phase::Parked;
    state.place = place;
    state.time_out = false;
    pthread_cond_broadcast(&state.changed);
    while (state.phase == Phase::Parked) {
        pthread_cond_wait(&state.changed, state.mutex.native());
    }
    return state.time_out;
}

bool IsEmptySet(int nfds, const fd_set *set) {
    for (int fd = 0; set != nullptr && fd < nfds; ++fd) {
        if (FD_ISSET(fd, set)) {
            return false;
        }
    }
    return true;
}

std::string SelectName(int nfds, const fd_set *reads, uint64_t micros) {
    std::string name = "select";
    for (int fd = 0; reads != nullptr && fd < nfds; ++fd) {
        if (!FD_ISSET(fd, reads)) {
            continue;
        }
        std::string who = "fd " + std::to_string(fd);
        if (fd == Host().PortFd()) {
            who = "port";
        }
        for (uint32_t queue = 0; queue < 4; ++queue) {
            if (fd == Host().QueueFd(queue)) {
                who = "queue " + std::to_string(queue);
            }
        }
        name += " " + who;
    }
    return name + " " + std::to_string(micros);
}

// Which of the wanted descriptors are ready now. Leaves the result in the sets, as select() does.
int Look(int nfds, fd_set *reads, const fd_set &wanted) {
    timeval none{0, 0};
    *reads = wanted;
    return __real_select(nfds, reads, nullptr, nullptr, &none);
}

bool WouldBlock(int fd) {
    pollfd entry{fd, POLLIN, 0};
    return (__real_fcntl(fd, F_GETFL) & O_NONBLOCK) == 0 && poll(&entry, 1, 0) == 0;
}

} // namespace

size_t OpenDescriptors() {
    size_t count = 0;
    DIR *folder = opendir("/proc/self/fd");
    while (readdir(folder) != nullptr) {
        ++count;
    }
    closedir(folder);
    return count;
}

Libc &Clib() {
    static auto *libc = new Libc;
    return *libc;
}

void Libc::Reset() {
    Guard guard(m_mutex);
    m_virtual = true;
    m_start_threads = false;
    m_now = 0;
    m_wall = {1770091506, 789000};
    m_script.clear();
    m_pauses.clear();
    m_on_pause = nullptr;
    m_park_at_pause = 0;
    m_interrupted_pauses.clear();
    m_starts.clear();
}

void Libc::UseRealTime() {
    Guard guard(m_mutex);
    m_virtual = false;
}

bool Libc::Virtual() {
    Guard guard(m_mutex);
    return m_virtual;
}

void Libc::StartThreads() {
    Guard guard(m_mutex);
    m_start_threads = true;
}

void Libc::SetWallClock(time_t seconds, long micros) {
    Guard guard(m_mutex);
    m_wall = {seconds, micros * 1000};
}

uint64_t Libc::Now() {
    Guard guard(m_mutex);
    return m_now;
}

void Libc::Advance(uint64_t micros) {
    Guard guard(m_mutex);
    m_now += micros;
}

timespec Libc::WallClock() {
    Guard guard(m_mutex);
    const uint64_t micros = static_cast<uint64_t>(m_wall.tv_nsec) / 1000 + m_now;
    return {m_wall.tv_sec + static_cast<time_t>(micros / kSecond),
            static_cast<long>(micros % kSecond) * 1000};
}

std::vector<uint64_t> Libc::Pauses() {
    Guard guard(m_mutex);
    return m_pauses;
}

uint64_t Libc::Slept() {
    uint64_t sum = 0;
    for (uint64_t pause : Pauses()) {
        sum += pause;
    }
    return sum;
}

void Libc::Then(SelectStep step) {
    Guard guard(m_mutex);
    m_script.push_back(std::move(step));
}

bool Libc::NextStep(SelectStep *step) {
    Guard guard(m_mutex);
    if (m_script.empty()) {
        return false;
    }
    *step = std::move(m_script.front());
    m_script.pop_front();
    return true;
}

void Libc::OnPause(std::function<void(unsigned)> hook) {
    Guard guard(m_mutex);
    m_on_pause = std::move(hook);
}

void Libc::ParkAtPause(unsigned number) {
    Guard guard(m_mutex);
    m_park_at_pause = number;
}

void Libc::InterruptPause(unsigned number, uint64_t after) {
    Guard guard(m_mutex);
    m_interrupted_pauses[number] = after;
}

std::vector<ThreadStart> Libc::ThreadStarts() {
    Guard guard(m_mutex);
    return m_starts;
}

uint64_t Libc::DoPause(uint64_t micros) {
    unsigned number = 0;
    uint64_t slept = micros;
    bool park = false;
    std::function<void(unsigned)> hook;
    {
        Guard guard(m_mutex);
        m_pauses.push_back(micros);
        number = static_cast<unsigned>(m_pauses.size());
        const auto interrupted = m_interrupted_pauses.find(number);
        if (interrupted != m_interrupted_pauses.end()) {
            slept = interrupted->second;
        }
        m_now += slept;
        park = t_state != nullptr && m_park_at_pause != 0 && number >= m_park_at_pause;
        hook = m_on_pause;
    }
    Note(Call::Sleep, "sleep " + std::to_string(micros), micros);
    if (hook) {
        hook(number);
    }
    if (park) {
        Park("pause " + std::to_string(micros));
    }
    return micros - slept;
}

int Libc::DoSelect(int nfds, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout) {
    const uint64_t micros = timeout == nullptr ? 0 : Micros(*timeout);
    if (IsEmptySet(nfds, reads)) {
        DoPause(micros);
        return 0;
    }
    (void)writes, (void)errors;
    const fd_set wanted = *reads;
    const std::string name = SelectName(nfds, reads, micros);
    Fault fault;
    if (Host().Fails(Call::Select, &fault)) {
        Note(Call::Select, name + ": error", micros);
        errno = fault.error;
        return fault.result;
    }
    while (true) {
        int ready = Look(nfds, reads, wanted);
        SelectStep step;
        if (ready == 0 && NextStep(&step)) {
            Advance(step.advance);
            if (step.action) {
                step.action();
            }
            if (step.error != 0) {
                Note(Call::Select, name + ": error", micros);
                errno = step.error;
                return -1;
            }
            ready = Look(nfds, reads, wanted);
            Note(Call::Select, name + (ready > 0 ? ": ready" : ": nothing"), micros);
            return ready;
        }
        if (ready != 0) {
            Note(Call::Select, name + (ready > 0 ? ": ready" : ": error"), micros);
            return ready;
        }
        if (t_state == nullptr || Park(name)) {
            EXPECT_NE(timeout, nullptr) << "select without time-out and nothing that could end it";
            Advance(micros);
            FD_ZERO(reads);
            Note(Call::Select, name + ": time-out", micros);
            return 0;
        }
    }
}

int Libc::DoThreadCreate(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                         void *argument) {
    Fault fault;
    const bool fails = Host().Fails(Call::ThreadCreate, &fault);
    Note(Call::ThreadCreate, "thread create");
    if (fails) {
        return fault.result;
    }
    bool start = false;
    {
        Guard guard(m_mutex);
        m_starts.push_back({body, argument, attributes == nullptr});
        start = m_start_threads;
    }
    if (start) {
        return __real_pthread_create(thread, attributes, body, argument);
    }
    *thread = pthread_self();
    return 0;
}

int Libc::DoThreadDetach(pthread_t thread) {
    Note(Call::ThreadDetach, "thread detach");
    bool started = false;
    {
        Guard guard(m_mutex);
        started = m_start_threads;
    }
    return started ? __real_pthread_detach(thread) : 0;
}

// --- a thread under test
// ------------------------------------------------------------------------------------

ThreadUnderTest::ThreadUnderTest(std::function<void()> body) : m_state(std::make_shared<State>()) {
    static auto *kept = new std::vector<std::shared_ptr<State>>; // a parked thread outlives its test
    kept->push_back(m_state);
    State *state = m_state.get();
    std::thread([state, body = std::move(body)] {
        t_state = state;
        state->id = static_cast<pid_t>(syscall(SYS_gettid));
        body();
        Guard guard(state->mutex);
        state->phase = Phase::Ended;
        pthread_cond_broadcast(&state->changed);
    }).detach();
}

std::string ThreadUnderTest::WaitParked() {
    timespec deadline;
    __real_clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += kParkSeconds;
    Guard guard(m_state->mutex);
    while (m_state->phase == Phase::Running) {
        if (pthread_cond_timedwait(&m_state->changed, m_state->mutex.native(), &deadline) == ETIMEDOUT) {
            ADD_FAILURE() << "the thread neither waits nor ends";
            return "lost";
        }
    }
    return m_state->phase == Phase::Ended ? "ended" : m_state->place;
}

std::string ThreadUnderTest::Continue(bool time_out) {
    WaitParked();
    {
        Guard guard(m_state->mutex);
        if (m_state->phase == Phase::Parked) {
            m_state->phase = Phase::Running;
            m_state->time_out = time_out;
            pthread_cond_broadcast(&m_state->changed);
        }
    }
    return WaitParked();
}

std::string ThreadUnderTest::Resume() {
    return Continue(false);
}
std::string ThreadUnderTest::TimeOut() {
    return Continue(true);
}

pid_t ThreadUnderTest::Id() {
    WaitParked();
    return m_state->id;
}

std::string ThreadUnderTest::Name() {
    const std::string path = "/proc/self/task/" + std::to_string(Id()) + "/comm";
    char name[32] = "";
    if (FILE *file = fopen(path.c_str(), "r")) {
        if (fgets(name, sizeof name, file) == nullptr) {
            name[0] = '\0';
        }
        fclose(file);
    }
    const std::string text = name;
    return text.substr(0, text.find('\n'));
}

} // namespace unit

// --- the wrapped functions
// ----------------------------------------------------------------------------------

using unit::Call;
using unit::Clib;
using unit::Event;
using unit::Fault;
using unit::Host;

extern "C" {

int __wrap_usleep(useconds_t micros) {
    if (!Clib().Virtual()) {
        unit::Note(Call::Sleep, "sleep " + std::to_string(micros), micros);
        return __real_usleep(micros);
    }
    if (Clib().DoPause(micros) == 0) {
        return 0;
    }
    errno = EINTR;
    return -1;
}

unsigned __wrap_sleep(unsigned seconds) {
    if (!Clib().Virtual()) {
        unit::Note(Call::Sleep, "sleep " + std::to_string(seconds * unit::kSecond), seconds * unit::kSecond);
        return __real_sleep(seconds);
    }
    return static_cast<unsigned>((Clib().DoPause(seconds * unit::kSecond) + unit::kSecond - 1) /
                                 unit::kSecond);
}

int __wrap_select(int nfds, fd_set *reads, fd_set *writes, fd_set *errors, timeval *timeout) {
    return Clib().Virtual() ? Clib().DoSelect(nfds, reads, writes, errors, timeout)
                            : __real_select(nfds, reads, writes, errors, timeout);
}

int __wrap_clock_gettime(clockid_t clock, timespec *now) {
    if (!Clib().Virtual()) {
        return __real_clock_gettime(clock, now);
    }
    *now = Clib().WallClock(); // one clock for all: only differences matter to a monotonic one
    return 0;
}

int __wrap_gettimeofday(timeval *now, void *zone) {
    if (!Clib().Virtual()) {
        return __real_gettimeofday(now, zone);
    }
    const timespec wall = Clib().WallClock();
    *now = {wall.tv_sec, wall.tv_nsec / 1000};
    return 0;
}

time_t __wrap_time(time_t *now) {
    if (!Clib().Virtual()) {
        return __real_time(now);
    }
    const time_t wall = Clib().WallClock().tv_sec;
    if (now != nullptr) {
        *now = wall;
    }
    return wall;
}

ssize_t __wrap_read(int fd, void *data, size_t size) {
    if (fd < 0 || fd != Host().PortFd()) {
        return __real_read(fd, data, size);
    }
    Event event;
    event.call = Call::Read;
    event.fd = fd;
    event.length = static_cast<uint32_t>(size);
    event.text = "read: none";
    Fault fault;
    if (Host().Fails(Call::Read, &fault)) {
        Host().Record(event);
        errno = fault.error;
        return fault.result;
    }
    while (unit::WouldBlock(fd)) {
        if (unit::t_state == nullptr) {
            ADD_FAILURE() << "a read of the port would block for ever";
            errno = EIO;
            return -1;
        }
        unit::Park("read");
    }
    const ssize_t count = __real_read(fd, data, size);
    const int error = errno;
    if (count > 0) {
        const auto *bytes = static_cast<const uint8_t *>(data);
        event.bytes.assign(bytes, bytes + count);
        event.text = "read " + unit::Hex(event.bytes);
    }
    Host().Record(event);
    errno = error;
    return count;
}

ssize_t __wrap_write(int fd, const void *data, size_t size) {
    if (fd < 0 || fd != Host().PortFd()) {
        return __real_write(fd, data, size);
    }
    const auto *bytes = static_cast<const uint8_t *>(data);
    Event event;
    event.call = Call::Write;
    event.fd = fd;
    event.bytes.assign(bytes, bytes + size);
    event.text = "write " + unit::Hex(event.bytes);
    Host().Record(event);
    Fault fault;
    if (Host().Fails(Call::Write, &fault)) {
        errno = fault.error;
        return fault.result;
    }
    Host().PortWritten(event.bytes);
    return static_cast<ssize_t>(size);
}

int __wrap_fcntl(int fd, int command, ...) {
    va_list args;
    va_start(args, command);
    const long argument = va_arg(args, long);
    va_end(args);
    if (fd < 0 || fd != Host().PortFd()) {
        return __real_fcntl(fd, command, argument);
    }
    const bool sets = command == F_SETFL;
    unit::Note(Call::Fcntl, !sets                          ? "fcntl getfl"
                            : (argument & O_NONBLOCK) != 0 ? "fcntl setfl nonblock"
                                                           : "fcntl setfl block");
    Fault fault;
    if (Host().Fails(Call::Fcntl, &fault)) {
        errno = fault.error;
        return fault.result;
    }
    return __real_fcntl(fd, command, static_cast<int>(argument));
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                          void *argument) {
    return Clib().DoThreadCreate(thread, attributes, body, argument);
}

int __wrap_pthread_detach(pthread_t thread) {
    return Clib().DoThreadDetach(thread);
}

int __wrap_pthread_mutex_lock(pthread_mutex_t *mutex) {
    unit::Note(Call::Lock, "lock");
    Fault fault;
    if (Host().Fails(Call::Lock, &fault)) {
        unit::t_not_locked.insert(mutex);
        return fault.result;
    }
    unit::t_not_locked.erase(mutex);
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t *mutex) {
    unit::Note(Call::Unlock, "unlock");
    if (unit::t_not_locked.erase(mutex) != 0) {
        return 0; // of a caller that goes on without the lock
    }
    Fault fault;
    if (Host().Fails(Call::Unlock, &fault)) {
        __real_pthread_mutex_unlock(mutex); // the caller hears of a failure, later tests still get the mutex
        return fault.result;
    }
    return __real_pthread_mutex_unlock(mutex);
}

} // extern "C"
