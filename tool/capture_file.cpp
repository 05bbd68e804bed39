#include "tool/capture_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tool/complain.h"
#include "tool/console.h"

namespace tool {

namespace {

using std::chrono::duration_cast;

std::string cannotWrite(const std::string &path) {
    return "cannot write " + path + ": " + std::strerror(errno);
}

int create(const std::string &path) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0644);
    if (fd < 0)
        throw std::runtime_error(cannotWrite(path));
    return fd;
}

} // namespace

CaptureFile::CaptureFile(const std::string &path, const std::string &port, unsigned baud,
                         Clock::time_point start)
    : m_path(path), m_start(start), m_fd(create(path)) {
    const auto started = std::chrono::system_clock::now() - (Clock::now() - start);
    decode::CaptureHead head;
    head.started = duration_cast<decode::Microseconds>(started.time_since_epoch());
    head.port = port;
    head.baud = baud;
    if (!writeAll(m_fd, decode::CaptureText(head))) {
        const std::string why = cannotWrite(path);
        close(m_fd);
        throw std::runtime_error(why);
    }
}

CaptureFile::~CaptureFile() {
    if (m_fd >= 0)
        close(m_fd);
}

void CaptureFile::bytes(Clock::time_point time, decode::Direction direction, const decode::Bytes &bytes) {
    decode::CaptureRecord record;
    record.direction = direction;
    record.bytes = bytes;
    write(time, std::move(record));
}

void CaptureFile::remark(Clock::time_point time, const std::string &text) {
    decode::CaptureRecord record;
    record.sort = decode::CaptureRecord::Sort::Remark;
    record.remark = text;
    write(time, std::move(record));
}

// A file that takes no more is given up, and that is said once.
void CaptureFile::write(Clock::time_point time, decode::CaptureRecord record) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_latest = std::max(m_latest, duration_cast<decode::Microseconds>(time - m_start));
    record.time = m_latest;
    if (m_fd < 0 || writeAll(m_fd, decode::CaptureText(record)))
        return;
    complain(cannotWrite(m_path) + "; the capture ends here");
    close(m_fd);
    m_fd = -1;
}

} // namespace tool
