#include "tests/camera/journal.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace camera {

namespace {

std::string QueueStep(const char *what, const host::Event &event) {
    const std::string unasked = event.bUnasked ? " unasked" : "";
    return std::string(what) + " " + std::to_string(event.ulQueueId) + " " +
           Hex(event.pucData, event.ulLength) + unasked;
}

std::string InWords(const host::Event &event) {
    switch (event.enKind) {
    case host::EventKind::kQueuePut:
        return QueueStep(event.iResult == 0 ? "put" : "full", event);
    case host::EventKind::kQueueTake:
        return QueueStep("take", event);
    case host::EventKind::kQueueDrop:
        return QueueStep("drop", event);
    case host::EventKind::kComSending:
        return "send " + Hex(event.pucData, event.ulLength);
    case host::EventKind::kComSent:
        return "sent " + std::to_string(event.iResult);
    case host::EventKind::kComOpened:
        return "opened";
    case host::EventKind::kComRateSet:
        return "rate " + std::to_string(event.ulBaudRate);
    case host::EventKind::kComVanished:
        return "vanished";
    case host::EventKind::kComBack:
        return "back " + std::to_string(event.ulBaudRate);
    }
    return "unknown event";
}

// "2026-11-20 ... line:17    --[WARN]message\n" becomes "WARN message".
std::string WithoutPrefix(const std::string &line) {
    const size_t open = line.find("--[");
    const size_t close = line.find(']', open);
    if (open == std::string::npos || close == std::string::npos) {
        return line;
    }
    const size_t end = line.find_last_not_of('\n');
    return line.substr(open + 3, close - open - 3) + " " + line.substr(close + 1, end - close);
}

std::string WireInWords(const sim::TraceEvent &event) {
    const std::string bytes = Hex(event.bytes.data(), event.bytes.size());
    switch (event.direction) {
    case sim::Direction::toCamera:
        return (StartsWith(event.text, "noise") ? "~ " : "> ") + bytes;
    case sim::Direction::toHost:
        return "< " + bytes;
    case sim::Direction::remark:
        break;
    }
    return "* " + event.text;
}

size_t Count(const Steps &steps, const std::string &part) {
    return static_cast<size_t>(std::count_if(steps.begin(), steps.end(),
                                             [&](const Step &step) { return Contains(step.text, part); }));
}

} // namespace

std::string Hex(const uint8_t *data, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, "%02X", data[i]);
        text += (i == 0 ? "" : " ") + std::string(byte);
    }
    return text;
}

std::vector<uint8_t> Bytes(const std::string &hex) {
    std::istringstream stream(hex);
    std::vector<uint8_t> bytes;
    for (std::string byte; stream >> byte;) {
        bytes.push_back(static_cast<uint8_t>(std::stoul(byte, nullptr, 16)));
    }
    return bytes;
}

bool StartsWith(const std::string &text, const std::string &start) {
    return text.compare(0, start.size(), start) == 0;
}

bool Contains(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

Journal &Journal::Get() {
    static Journal &journal = *new Journal;
    return journal;
}

void Journal::AddHost(const std::string &text, double seconds) {
    const std::lock_guard lock(m_mutex);
    m_host.push_back({text, seconds});
    if (m_hook) {
        m_hook(text);
    }
    m_changed.notify_all();
}

void Journal::AddEvent(const host::Event &event) {
    AddHost(InWords(event), static_cast<double>(event.ullTimeNs) / 1e9);
}

void Journal::AddLine(const char *line) {
    AddHost(WithoutPrefix(line), 0);
}

void Journal::AddDump(const char *line) {
    const std::string text = WithoutPrefix(line);
    AddHost("dump " + text.substr(text.find(' ') + 1), 0);
}

void Journal::AddWire(const sim::TraceEvent &event) {
    const std::lock_guard lock(m_mutex);
    m_wire.push_back({WireInWords(event), 0});
    m_changed.notify_all();
}

bool Journal::Await(const Steps &steps, const std::string &part, size_t count,
                    std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] { return Count(steps, part) >= count; });
}

bool Journal::AwaitHost(const std::string &part, size_t count, std::chrono::milliseconds limit) {
    return Await(m_host, part, count, limit);
}

bool Journal::AwaitWire(const std::string &part, size_t count, std::chrono::milliseconds limit) {
    return Await(m_wire, part, count, limit);
}

Steps Journal::Host() const {
    const std::lock_guard lock(m_mutex);
    return m_host;
}

Steps Journal::Wire() const {
    const std::lock_guard lock(m_mutex);
    return m_wire;
}

void Journal::Forget() {
    const std::lock_guard lock(m_mutex);
    m_host.clear();
    m_wire.clear();
}

void Journal::OnHostStep(std::function<void(const std::string &)> hook) {
    const std::lock_guard lock(m_mutex);
    m_hook = std::move(hook);
}

} // namespace camera
