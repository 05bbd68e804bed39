#include "tool/transfer_progress.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/host.h"

namespace tool {

namespace {

using std::chrono::seconds;

constexpr unsigned SECTOR = 128; // lrzsz counts in these, also when it sends blocks of 1024
constexpr unsigned BLOCK_NUMBERS = 256;
constexpr seconds RATE_WINDOW{4};
constexpr std::chrono::milliseconds SHORTEST_WINDOW{200}; // what is read in one go has no rate

bool beginsWith(const std::string &line, const char *text) {
    return line.compare(0, std::strlen(text), text) == 0;
}

} // namespace

std::string TransferState::shown() const {
    char text[128];
    if (total == 0) {
        std::snprintf(text, sizeof text, "%llu bytes", static_cast<unsigned long long>(bytes));
    } else {
        std::snprintf(text, sizeof text, "%llu %%, %llu of %llu bytes",
                      static_cast<unsigned long long>(bytes * 100 / total),
                      static_cast<unsigned long long>(bytes), static_cast<unsigned long long>(total));
    }
    std::string line = text;
    if (bytesPerSecond > 0) {
        std::snprintf(text, sizeof text, ", %.0f bytes/s", bytesPerSecond);
        line += text;
    }
    if (left)
        line += ", " + std::to_string(left->count()) + " s left";
    if (retries > 0)
        line += ", " + std::to_string(retries) + (retries == 1 ? " retry" : " retries");
    return line;
}

void TransferMeter::feed(const std::string &text, Clock::time_point now) {
    for (const char c : text) {
        if (c != '\r' && c != '\n') {
            m_rest += c;
        } else if (!m_rest.empty()) {
            take(m_rest, now);
            m_rest.clear();
        }
    }
    // The sender writes its carriage return before a line, not behind it: such a line is shown a step late.
}

void TransferMeter::restart() {
    m_rest.clear();
    beginFile();
}

void TransferMeter::take(const std::string &line, Clock::time_point now) {
    unsigned number = 0;
    unsigned long long bytes = 0;
    if (beginsWith(line, "Sending ") || line.find(": ready to receive ") != std::string::npos) {
        beginFile();
    } else if (std::sscanf(line.c_str(), "Xmodem sectors/kbytes sent: %u/", &number) == 1) {
        moveTo(uint64_t{number} * SECTOR, now);
    } else if (std::sscanf(line.c_str(), "Blocks received: %u", &number) == 1 && number < BLOCK_NUMBERS) {
        countReceived(number);
        moveTo(m_inFile, now);
    } else if (std::sscanf(line.c_str(), "Bytes received: %llu", &bytes) == 1 ||
               std::sscanf(line.c_str(), "Bytes Sent: %llu", &bytes) == 1) {
        moveTo(bytes, now);
    } else if (beginsWith(line, "Retry ")) {
        ++m_retries;
    }
}

void TransferMeter::beginFile() {
    m_finished += m_inFile;
    m_inFile = 0;
    m_block = 0;
}

// Only the number on the line is told, which starts again after 255. A block that comes twice counts once.
void TransferMeter::countReceived(unsigned block) {
    const unsigned more = (block + BLOCK_NUMBERS - m_block) % BLOCK_NUMBERS;
    m_block = block;
    m_inFile += uint64_t{more} * SECTOR;
}

void TransferMeter::moveTo(uint64_t bytes, Clock::time_point now) {
    m_inFile = bytes;
    m_recent.emplace_back(now, m_finished + m_inFile);
    while (m_recent.size() > 2 && now - m_recent.front().first > RATE_WINDOW)
        m_recent.pop_front();
}

TransferState TransferMeter::state(Clock::time_point now) const {
    TransferState state;
    state.total = m_total;
    state.bytes = m_finished + m_inFile;
    if (m_total != 0)
        state.bytes = std::min(state.bytes, m_total); // the last block of a file is filled up
    state.retries = m_retries;
    if (m_recent.size() < 2)
        return state;
    const std::chrono::duration<double> time = now - m_recent.front().first;
    const uint64_t moved = m_recent.back().second - std::min(m_recent.front().second, m_recent.back().second);
    if (time < SHORTEST_WINDOW || moved == 0)
        return state;
    state.bytesPerSecond = static_cast<double>(moved) / time.count();
    if (m_total != 0)
        state.left = seconds(
            static_cast<long>(static_cast<double>(m_total - state.bytes) / state.bytesPerSecond + 0.5));
    return state;
}

TransferProgress::TransferProgress(uint64_t total) : m_meter(total) {
    char path[] = "/tmp/viscacam-transfer-XXXXXX";
    m_fd = mkostemp(path, O_CLOEXEC);
    if (m_fd < 0)
        throw std::runtime_error(std::string("cannot make a file under /tmp: ") + std::strerror(errno));
    m_path = path;
    host::SetTransferLog(m_path);
}

TransferProgress::~TransferProgress() {
    host::SetTransferLog("");
    unlink(m_path.c_str());
    close(m_fd);
}

// A transfer may append to the file or empty it first.
bool TransferProgress::wasEmptied() const {
    struct stat facts = {};
    return fstat(m_fd, &facts) == 0 && static_cast<uint64_t>(facts.st_size) < m_offset;
}

TransferState TransferProgress::look() {
    if (wasEmptied()) {
        m_meter.restart();
        m_offset = 0;
    }
    char bytes[4096];
    ssize_t count = 0;
    while ((count = pread(m_fd, bytes, sizeof bytes, static_cast<off_t>(m_offset))) > 0) {
        m_offset += static_cast<uint64_t>(count);
        m_meter.feed(std::string(bytes, static_cast<size_t>(count)));
    }
    return m_meter.state();
}

std::optional<std::string> TransferProgress::news() {
    const TransferState state = look();
    if (state.bytes == m_told)
        return std::nullopt;
    m_told = state.bytes;
    return state.shown();
}

} // namespace tool
