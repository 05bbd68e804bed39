#include "bench/line.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "bench/measure.h"

namespace bench {

struct Line::Record {
    static constexpr size_t KEPT = 4096;
    double completed = 0; // when the last command's completion had been written; 0: nothing awaited
    std::atomic<size_t> commands{0};
    size_t count = 0;
    double turnarounds[KEPT] = {};
};

namespace {

const uint8_t ANSWER[] = {0x90, 0x50, 0x00, 0x00, 0x00, 0x00, 0xFF};
const uint8_t POWER_ON[] = {0x90, 0x50, 0x02, 0xFF};
const uint8_t DONE[] = {0x90, 0x41, 0xFF, 0x90, 0x51, 0xFF};

void put(int fd, const uint8_t *bytes, size_t size) {
    if (write(fd, bytes, size) != static_cast<ssize_t>(size))
        _exit(0);
}

void complete(int fd, Line::Record &record) {
    put(fd, DONE, sizeof DONE);
    record.completed = seconds();
    record.commands.fetch_add(1);
}

void answer(int fd, const uint8_t *packet, size_t size, Line::Record &record) {
    const bool inquiry = size > 1 && packet[1] == 0x09;
    if (!inquiry)
        complete(fd, record);
    else if (size == 5 && packet[3] == 0x00)
        put(fd, POWER_ON, sizeof POWER_ON);
    else
        put(fd, ANSWER, sizeof ANSWER);
}

void noteFirstByte(Line::Record &record) {
    if (record.completed == 0)
        return;
    record.turnarounds[record.count++ % Line::Record::KEPT] = seconds() - record.completed;
    record.completed = 0;
}

[[noreturn]] void play(int master, Line::Record &record) {
    uint8_t packet[64];
    size_t size = 0;
    uint8_t bytes[256];
    for (;;) {
        const ssize_t count = read(master, bytes, sizeof bytes);
        if (count <= 0)
            _exit(0);
        noteFirstByte(record);
        for (ssize_t i = 0; i < count; ++i) {
            packet[size] = bytes[i];
            size += size + 1 < sizeof packet ? 1 : 0;
            if (bytes[i] == 0xFF) {
                answer(master, packet, size, record);
                size = 0;
            }
        }
    }
}

void makeRaw(int fd) {
    termios settings = {};
    tcgetattr(fd, &settings);
    cfmakeraw(&settings);
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    cfsetspeed(&settings, B9600);
    tcsetattr(fd, TCSANOW, &settings);
}

} // namespace

Line::Line() {
    void *shared = mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        throw std::runtime_error("no shared memory");
    m_record = new (shared) Record;
    const int master = newTerminal(m_path);
    m_slave = openLine(m_path);
    m_camera = fork();
    if (m_camera == 0)
        play(master, *m_record);
    close(master);
    if (m_camera < 0 || m_slave < 0)
        throw std::runtime_error("no camera at the pseudo-terminal");
}

Line::~Line() {
    kill(m_camera, SIGKILL);
    waitpid(m_camera, nullptr, 0);
    close(m_slave);
    munmap(m_record, sizeof(Record));
}

std::vector<double> Line::turnarounds() const {
    const size_t kept = std::min(m_record->count, Record::KEPT);
    return {m_record->turnarounds, m_record->turnarounds + kept};
}

size_t Line::commands() const {
    return m_record->commands.load();
}

int newTerminal(std::string &path) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    char name[64];
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, name, sizeof name) != 0)
        throw std::runtime_error("no pseudo-terminal");
    path = name;
    return master;
}

int openLine(const std::string &path) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd >= 0)
        makeRaw(fd);
    return fd;
}

} // namespace bench
