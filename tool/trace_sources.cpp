#include "tool/trace_sources.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "decode/xmodem.h"
#include "host/host.h"

namespace tool {

// A log line is "date time file@fun:... line:...--[LEVEL]message".
std::string messageOfLog(const std::string &line) {
    const size_t tag = line.find("--[");
    const size_t end = tag == std::string::npos ? tag : line.find(']', tag);
    std::string message = end == std::string::npos ? line : line.substr(end + 1);
    while (!message.empty() && (message.back() == '\n' || message.back() == ' '))
        message.pop_back();
    return message;
}

namespace {

void onLogLine(uint32_t level, const char *line, uint32_t length, void *context) {
    static_cast<Trace *>(context)->log(level, messageOfLog(std::string(line, length)));
}

// A dump is "recv:ViscaPacket: 0x90 0x41 0xff".
decode::Bytes bytesOfDump(const std::string &message) {
    decode::Bytes bytes;
    const char *at = message.c_str();
    while ((at = std::strstr(at, "0x")) != nullptr) {
        char *end = nullptr;
        bytes.push_back(static_cast<uint8_t>(std::strtoul(at, &end, 16)));
        at = end;
    }
    return bytes;
}

// Whether the library routes it; what it rejects it dumps twice in a row.
bool isReply(const decode::Bytes &bytes) {
    if (bytes.size() < 3 || bytes.back() != 0xFF)
        return false;
    const unsigned kind = bytes[1] >> 4U;
    return kind == 0x0 || (kind >= 0x4 && kind <= 0x6);
}

void onCameraLogLine(uint32_t, const char *line, uint32_t length, void *context) {
    static decode::Bytes rejected; // the host hands over one line at a time
    const std::string message = messageOfLog(std::string(line, length));
    if (message.compare(0, 5, "recv:") != 0)
        return; // what is sent comes from the observer, with its time
    const decode::Bytes bytes = bytesOfDump(message);
    if (!rejected.empty() && bytes == rejected) {
        rejected.clear();
        return;
    }
    rejected = isReply(bytes) ? decode::Bytes() : bytes;
    static_cast<Trace *>(context)->packet(Clock::now(), decode::Direction::FromCamera, bytes);
}

std::string rateText(const host::Event &event) {
    return std::to_string(event.ulBaudRate) + " bit/s";
}

void onHostEvent(const host::Event &event, void *context) {
    Trace &trace = *static_cast<Trace *>(context);
    const Clock::time_point time{std::chrono::nanoseconds(event.ullTimeNs)};
    switch (event.enKind) {
    case host::EventKind::kComSending:
        trace.packet(time, decode::Direction::ToCamera,
                     decode::Bytes(event.pucData, event.pucData + event.ulLength));
        break;
    case host::EventKind::kComOpened:
        trace.remark(time, std::string("port: ") + event.pcDevice + " opened");
        break;
    case host::EventKind::kComRateSet:
        trace.remark(time, "port: set to " + rateText(event));
        break;
    case host::EventKind::kComVanished:
        trace.remark(time, std::string("port: ") + event.pcDevice + " is gone");
        break;
    case host::EventKind::kComBack:
        trace.remark(time, std::string("port: ") + event.pcDevice + " is back, at " + rateText(event));
        break;
    default:
        break;
    }
}

} // namespace

namespace {

// The bytes of a file transfer are no packets; what they say is told in a few words.
bool isOfTransfer(const sim::TraceEvent &event) {
    static const std::string MARK = "transfer: ";
    return event.direction != sim::Direction::remark && event.text.compare(0, MARK.size(), MARK) == 0;
}

std::string transferText(const sim::TraceEvent &event) {
    const char *arrow = event.direction == sim::Direction::toCamera ? "->camera  " : "<-camera  ";
    return arrow + ("XMODEM: " + decode::XmodemMeaning(event.bytes));
}

} // namespace

sim::Trace cameraTrace(Trace &trace, const std::string &name) {
    return [&trace, name](const sim::TraceEvent &event) {
        if (event.direction == sim::Direction::remark) {
            trace.remark(event.time, (name.empty() ? "camera: " : name + ": ") + event.text);
            return;
        }
        if (isOfTransfer(event)) {
            trace.remark(event.time, transferText(event));
            return;
        }
        const bool out = event.direction == sim::Direction::toCamera;
        trace.packet(event.time, out ? decode::Direction::ToCamera : decode::Direction::FromCamera,
                     event.bytes, event.text, name);
    };
}

void followLog(Trace &trace) {
    host::LogSetup setup;
    setup.enTarget = host::LogTarget::kSink;
    setup.ulLevel = VISCA_LOG_INFO;
    setup.pfnSink = onLogLine;
    setup.pContext = &trace;
    host::SetLog(host::Log::kGeneral, setup);
}

void followHost(Trace &trace) {
    host::LogSetup setup;
    setup.enTarget = host::LogTarget::kSink;
    setup.ulLevel = VISCA_LOG_DEBUG;
    setup.pfnSink = onCameraLogLine;
    setup.pContext = &trace;
    host::SetLog(host::Log::kCamera, setup);
    host::AddObserver(onHostEvent, &trace);
}

} // namespace tool
