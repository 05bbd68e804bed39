#include "tool/tap/journal.h"

#include <csignal>
#include <unistd.h>

#include "tool/console.h"

namespace tool {

namespace {

decode::Microseconds since(Journal::Clock::time_point start, Journal::Clock::time_point time) {
    return std::chrono::duration_cast<decode::Microseconds>(time - start);
}

decode::InputStart startOfTimes() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration_cast<decode::Microseconds>(now), true};
}

} // namespace

Journal::Journal(const Setup &setup) : m_setup(setup), m_printer(setup.look) {
    if (!setup.capture.empty())
        m_capture = std::make_unique<CaptureFile>(setup.capture, setup.port, setup.baud, m_start);
    m_printer.setStart(startOfTimes());
    m_writer = std::thread(&Journal::loop, this);
}

Journal::~Journal() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    m_writer.join();
}

void Journal::bytes(Clock::time_point time, decode::Direction direction, const decode::Bytes &bytes) {
    add({time, direction, bytes, ""});
}

void Journal::remark(const std::string &text) {
    add({Clock::now(), decode::Direction::ToCamera, {}, text});
}

void Journal::add(Entry entry) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(std::move(entry));
    }
    m_changed.notify_all();
}

void Journal::loop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        const bool found =
            m_changed.wait_for(lock, decode::kLongestGap, [this] { return m_ending || !m_entries.empty(); });
        std::deque<Entry> entries;
        entries.swap(m_entries);
        const bool ending = m_ending;
        lock.unlock();
        for (const Entry &entry : entries)
            take(entry);
        if (!found || ending)
            flush();
        lock.lock();
        if (ending && m_entries.empty())
            return;
    }
}

void Journal::take(const Entry &entry) {
    if (entry.bytes.empty()) {
        if (m_capture)
            m_capture->remark(entry.time, entry.remark);
        decode::InputItem item;
        item.sort = decode::InputItem::Sort::Remark;
        item.time = since(m_start, entry.time);
        item.text = entry.remark;
        print(item);
    } else {
        split(entry);
    }
}

// Where the direction follows from the bytes it is known only when a packet is complete.
void Journal::split(const Entry &entry) {
    std::vector<decode::Piece> pieces;
    const decode::Microseconds time = since(m_start, entry.time);
    if (m_setup.mixed) {
        m_mixed.Feed(time, entry.bytes.data(), entry.bytes.size(), pieces);
    } else {
        const bool out = entry.direction == decode::Direction::ToCamera;
        (out ? m_fromCamera : m_toCamera).Feed(time, nullptr, 0, pieces); // ends what is too old
        (out ? m_toCamera : m_fromCamera).Feed(time, entry.bytes.data(), entry.bytes.size(), pieces);
        if (m_capture)
            m_capture->bytes(entry.time, entry.direction, entry.bytes);
    }
    show(pieces);
}

// A packet without an end is shown when nothing came for so long that nothing can.
void Journal::flush() {
    std::vector<decode::Piece> pieces;
    m_toCamera.Flush(pieces);
    m_fromCamera.Flush(pieces);
    m_mixed.Flush(pieces);
    show(pieces);
}

void Journal::show(const std::vector<decode::Piece> &pieces) {
    for (const decode::Piece &piece : pieces) {
        if (m_setup.mixed && m_capture)
            m_capture->bytes(m_start + piece.end, piece.direction, piece.bytes);
        decode::InputItem item;
        item.time = piece.time;
        item.byte = piece.offset;
        item.piece = piece;
        print(item);
    }
}

void Journal::print(const decode::InputItem &item) {
    if (m_setup.quiet || m_outputLost)
        return;
    const std::string line = m_printer.line(item);
    if (!line.empty() && !writeAll(STDOUT_FILENO, line)) {
        m_outputLost = true;
        kill(getpid(), SIGTERM);
    }
}

} // namespace tool
