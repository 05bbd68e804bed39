#include "recording_host.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t *mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t *mutex);
ssize_t __real_read(int fd, void *data, size_t size);
ssize_t __real_write(int fd, const void *data, size_t size);
}

namespace unit {

namespace {

// A loop that has lost its end fills the journal long before the test's time limit.
constexpr size_t kJournalLimit = 500000;
constexpr size_t kMaxPacket = sizeof(ViscaPkt::aucData);

using Guard = std::lock_guard<SupportMutex>;

std::string PacketHex(const ViscaPkt &packet) {
    const size_t count = std::min<size_t>(packet.ulLength, kMaxPacket);
    std::string text = Hex(Bytes(packet.aucData, packet.aucData + count));
    if (packet.ulLength > kMaxPacket) {
        text += " (count " + std::to_string(packet.ulLength) + ")";
    }
    return text;
}

Bytes Raw(const ViscaPkt &packet) {
    Bytes raw(sizeof packet);
    memcpy(raw.data(), &packet, sizeof packet);
    return raw;
}

std::string LevelName(uint32_t level) {
    switch (level) {
    case VISCA_LOG_ERROR:
        return "ERROR";
    case VISCA_LOG_WARN:
        return "WARN";
    case VISCA_LOG_INFO:
        return "INFO";
    case VISCA_LOG_DEBUG:
        return "DEBUG";
    case VISCA_LOG_VERBO:
        return "VERBO";
    default:
        return std::to_string(level);
    }
}

std::string Trimmed(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

constexpr size_t kStampLength = 27; // "2026-02-03 04:05:06 000789 "

bool IsStamp(const std::string &text) {
    static const std::string shape = "dddd-dd-dd dd:dd:dd dddddd ";
    return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), [](char c, char wanted) {
        return wanted == 'd' ? isdigit(static_cast<unsigned char>(c)) != 0 : c == wanted;
    });
}

// The prefix, put together again from its fields, has to be what was logged.
bool PrefixHolds(const LogLine &line, const std::string &prefix) {
    char rest[256];
    snprintf(rest, sizeof rest, "%-20s@fun:%-30sline:%-6d--[%.5s]", line.file.c_str(), line.function.c_str(),
             line.line, line.tag.c_str());
    return prefix.size() > kStampLength && IsStamp(prefix.substr(0, kStampLength)) &&
           prefix.substr(kStampLength) == rest && line.file.find('/') == std::string::npos && line.line > 0;
}

LogLine ParseLine(uint32_t level, const std::string &format, const std::string &whole) {
    LogLine line;
    line.level = level;
    line.format = format;
    line.whole = line.message = whole;
    const size_t fun = whole.find("@fun:");
    const size_t number = whole.find("line:", fun);
    const size_t tag = whole.find("--[", number);
    const size_t end = whole.find(']', tag);
    if (fun == std::string::npos || number == std::string::npos || tag == std::string::npos ||
        end == std::string::npos || fun < kStampLength) {
        return line;
    }
    line.file = Trimmed(whole.substr(kStampLength, fun - kStampLength));
    line.function = Trimmed(whole.substr(fun + 5, number - fun - 5));
    line.line = atoi(whole.c_str() + number + 5);
    line.tag = whole.substr(tag + 3, end - tag - 3);
    line.message = whole.substr(end + 1);
    line.well_formed = PrefixHolds(line, whole.substr(0, end + 1));
    return line;
}

std::string LogText(const LogLine &line) {
    std::string level = LevelName(line.level);
    if (level != line.tag) {
        level = std::to_string(line.level) + "/" + line.tag;
    }
    return level + " " + line.function + ": " + line.message;
}

__attribute__((format(printf, 3, 0))) void RecordLog(Call call, uint32_t level, const char *format,
                                                     va_list args) {
    char text[2048];
    vsnprintf(text, sizeof text, format, args);
    Event event;
    event.call = call;
    event.log = ParseLine(level, format, text);
    event.text = (call == Call::CamLog ? "cam " : "") + LogText(event.log);
    Host().Record(std::move(event));
}

Fault DefaultFault(Call call) {
    switch (call) {
    case Call::Select:
    case Call::Read:
    case Call::Write:
    case Call::Fcntl:
        return {1, 1, -1, EIO};
    case Call::Send:
        return {1, 1, -1, 0};
    case Call::Lock:
    case Call::Unlock:
        return {1, 1, EINVAL, 0};
    case Call::ThreadCreate:
        return {1, 1, EAGAIN, 0};
    default:
        return {};
    }
}

void DrainSocket(int fd) {
    uint8_t scratch[256];
    while (recv(fd, scratch, sizeof scratch, MSG_DONTWAIT) > 0) {}
}

} // namespace

std::string Hex(const Bytes &bytes) {
    std::string text;
    char pair[4];
    for (uint8_t byte : bytes) {
        snprintf(pair, sizeof pair, "%02X", byte);
        text += (text.empty() ? "" : " ") + std::string(pair);
    }
    return text;
}

Bytes FromHex(std::string_view text) {
    Bytes bytes;
    std::string digits;
    for (char c : text) {
        if (c == ' ') {
            continue;
        }
        digits += c;
        if (digits.size() == 2) {
            bytes.push_back(static_cast<uint8_t>(std::stoul(digits, nullptr, 16)));
            digits.clear();
        }
    }
    return bytes;
}

ViscaPkt Packet(std::string_view hex) {
    const Bytes bytes = FromHex(hex);
    ViscaPkt packet{};
    packet.ulLength = static_cast<uint32_t>(bytes.size());
    std::copy_n(bytes.begin(), std::min(bytes.size(), kMaxPacket), packet.aucData);
    return packet;
}

void SupportMutex::lock() {
    __real_pthread_mutex_lock(&m_mutex);
}
void SupportMutex::unlock() {
    __real_pthread_mutex_unlock(&m_mutex);
}

RecordingHost &Host() {
    static auto *host = new RecordingHost; // outlives threads that are still parked when the process ends
    return *host;
}

RecordingHost::RecordingHost() {
    for (Queue &queue : m_queues) {
        queue.fd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    }
    Reset();
}

void RecordingHost::Reset() {
    Guard guard(m_mutex);
    for (Queue &queue : m_queues) {
        queue.elements.clear();
        queue.capacity = 256;
        eventfd_t count;
        eventfd_read(queue.fd, &count);
    }
    m_events.clear();
    m_calls.clear();
    m_faults.clear();
    m_answers.clear();
    m_every_answer.clear();
    m_on_send = nullptr;
    m_on_record = nullptr;
    m_probe_answers.clear();
    m_rate = 0;
    m_module_type = 0x02000001;
    m_sub_type = m_caller = 0;
    m_device_model.clear();
    OpenPort();
}

void RecordingHost::OpenPort() {
    for (int fd : {m_port, m_camera}) {
        if (fd >= 0) {
            close(fd);
        }
    }
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        perror("socketpair");
        abort();
    }
    m_port = ends[0];
    m_camera = ends[1];
}

// --- answers and faults
// -------------------------------------------------------------------------------------

void RecordingHost::SetModuleType(uint32_t type) {
    Guard guard(m_mutex);
    m_module_type = type;
}

void RecordingHost::SetSubType(uint32_t type) {
    Guard guard(m_mutex);
    m_sub_type = type;
}

void RecordingHost::SetCaller(uint32_t caller) {
    Guard guard(m_mutex);
    m_caller = caller;
}

void RecordingHost::SetDeviceModel(const std::string &model) {
    Guard guard(m_mutex);
    m_device_model = model;
}

void RecordingHost::SetCapacity(uint32_t queue, size_t elements) {
    Guard guard(m_mutex);
    m_queues[queue].capacity = elements;
}

void RecordingHost::AnswerInquiry(std::string_view reply) {
    Guard guard(m_mutex);
    m_answers.push_back(Packet(reply));
}

void RecordingHost::AnswerEveryInquiry(std::string_view reply) {
    Guard guard(m_mutex);
    m_every_answer = {Packet(reply)};
}

void RecordingHost::OnSend(std::function<void(const Bytes &)> hook) {
    Guard guard(m_mutex);
    m_on_send = std::move(hook);
}

void RecordingHost::Fail(Call call, unsigned first, unsigned times) {
    Fault fault = DefaultFault(call);
    fault.first = first;
    fault.times = times;
    Fail(call, fault);
}

void RecordingHost::Fail(Call call, Fault fault) {
    Guard guard(m_mutex);
    m_faults[call].push_back(fault);
}

void RecordingHost::Heal() {
    Guard guard(m_mutex);
    m_faults.clear();
}

bool RecordingHost::Fails(Call call, Fault *fault) {
    Guard guard(m_mutex);
    const unsigned number = ++m_calls[call];
    for (const Fault &candidate : m_faults[call]) {
        if (number >= candidate.first && number - candidate.first < candidate.times) {
            *fault = candidate;
            return true;
        }
    }
    return false;
}

unsigned RecordingHost::Calls(Call call) {
    Guard guard(m_mutex);
    return m_calls[call];
}

// --- queues
// -------------------------------------------------------------------------------------------------

bool RecordingHost::PutLocked(uint32_t number, const ViscaPkt &packet) {
    Queue &queue = m_queues[number];
    if (queue.elements.size() >= queue.capacity) {
        return false;
    }
    queue.elements.push_back(packet);
    eventfd_write(queue.fd, 1);
    return true;
}

void RecordingHost::Preload(uint32_t queue, std::string_view hex) {
    Preload(queue, Packet(hex));
}

void RecordingHost::Preload(uint32_t queue, const ViscaPkt &packet) {
    Guard guard(m_mutex);
    PutLocked(queue, packet);
}

size_t RecordingHost::QueueLength(uint32_t queue) {
    Guard guard(m_mutex);
    return m_queues[queue].elements.size();
}

int RecordingHost::QueueFd(uint32_t queue) {
    return m_queues[queue].fd;
}

uint32_t RecordingHost::DoPut(uint32_t type, uint32_t queue, const void *data, uint32_t length) {
    ViscaPkt packet{};
    memcpy(&packet, data, std::min<size_t>(length, sizeof packet));
    Fault fault;
    const bool fails = Fails(Call::Put, &fault);
    Event event;
    event.call = Call::Put;
    event.text = "put " + std::to_string(queue) + ": " + PacketHex(packet);
    event.bytes = Raw(packet);
    event.type = type;
    event.queue = queue;
    event.length = length;
    Record(std::move(event));
    if (fails) {
        return static_cast<uint32_t>(fault.result);
    }
    Guard guard(m_mutex);
    return queue < kQueues && PutLocked(queue, packet) ? 0 : 1;
}

uint32_t RecordingHost::DoTake(uint32_t number, void **element) {
    Fault fault;
    const bool fails = Fails(Call::Take, &fault);
    Event event;
    event.call = Call::Take;
    event.queue = number;
    event.text = "take " + std::to_string(number) + ": none";
    bool taken = false;
    {
        Guard guard(m_mutex);
        if (!fails && number < kQueues && !m_queues[number].elements.empty()) {
            Queue &queue = m_queues[number];
            queue.taken = queue.elements.front();
            queue.elements.pop_front();
            eventfd_t count;
            if (queue.elements.empty()) {
                eventfd_read(queue.fd, &count);
            }
            *element = &queue.taken;
            event.text = "take " + std::to_string(number) + ": " + PacketHex(queue.taken);
            event.bytes = Raw(queue.taken);
            taken = true;
        }
    }
    Record(std::move(event));
    return taken ? 0 : (fails ? static_cast<uint32_t>(fault.result) : 1);
}

uint32_t RecordingHost::DoIsEmpty(uint32_t type, uint32_t queue, uint32_t *flag) {
    Fault fault;
    const bool fails = Fails(Call::IsEmpty, &fault);
    Event event;
    event.call = Call::IsEmpty;
    event.type = type;
    event.queue = queue;
    event.text = "isempty " + std::to_string(queue) + ": failed";
    if (!fails || fault.result == 0) {
        *flag = fails ? static_cast<uint32_t>(fault.error) : QueueLength(queue) == 0 ? 1 : 0;
        event.text = "isempty " + std::to_string(queue) + ": " + std::to_string(*flag);
    }
    Record(std::move(event));
    return fails ? static_cast<uint32_t>(fault.result) : 0;
}

uint32_t RecordingHost::DoReadFd(uint32_t type, uint32_t queue, int32_t *fd) {
    Fault fault;
    const bool fails = Fails(Call::ReadFd, &fault);
    Event event;
    event.call = Call::ReadFd;
    event.text = "readfd " + std::to_string(queue);
    event.type = type;
    event.queue = queue;
    Record(std::move(event));
    if (!fails || fault.result == 0) {
        *fd = fails ? fault.error : QueueFd(queue);
    }
    return fails ? static_cast<uint32_t>(fault.result) : 0;
}

// --- port
// ---------------------------------------------------------------------------------------------------

int RecordingHost::PortFd() {
    Guard guard(m_mutex);
    return m_port;
}

void RecordingHost::Feed(std::string_view hex) {
    Feed(FromHex(hex));
}

void RecordingHost::Feed(const Bytes &bytes) {
    Guard guard(m_mutex);
    if (!bytes.empty() &&
        __real_write(m_camera, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        perror("feed");
        abort();
    }
}

void RecordingHost::HangUp() {
    Guard guard(m_mutex);
    shutdown(m_camera, SHUT_WR);
}

size_t RecordingHost::Unread() {
    int count = 0;
    ioctl(PortFd(), FIONREAD, &count);
    return static_cast<size_t>(count);
}

void RecordingHost::AnswerProbe(uint32_t rate, std::string_view reply) {
    Guard guard(m_mutex);
    m_probe_answers[rate] = FromHex(reply);
}

void RecordingHost::PortWritten(const Bytes &bytes) {
    Bytes answer;
    {
        Guard guard(m_mutex);
        const auto found = m_probe_answers.find(m_rate);
        if (bytes != Bytes{0x81, 0x09, 0x04, 0x00, 0xFF} || found == m_probe_answers.end()) {
            return;
        }
        answer = found->second;
    }
    Feed(answer);
}

uint32_t RecordingHost::DoOpen(uint32_t port, int32_t *fd) {
    Fault fault;
    const bool fails = Fails(Call::Open, &fault);
    Event event;
    event.call = Call::Open;
    event.text = "open " + std::to_string(port);
    event.queue = port;
    Record(std::move(event));
    if (!fails) {
        *fd = PortFd();
    }
    return fails ? static_cast<uint32_t>(fault.result) : 0;
}

uint32_t RecordingHost::DoSetParam(uint32_t type, const DrvComParam &param) {
    Fault fault;
    const bool fails = Fails(Call::SetParam, &fault);
    char text[96];
    snprintf(text, sizeof text, "setparam %u: %u %u %u %u %u %u %u", type, param.ulParam0, param.ulParam1,
             param.ulBaudRate, param.ucDataBits, param.ucStopBits, param.ucParam2, param.ucParam3);
    Event event;
    event.call = Call::SetParam;
    event.text = text;
    event.type = type;
    Record(std::move(event));
    Guard guard(m_mutex);
    if (!fails) {
        m_rate = param.ulBaudRate;
    }
    return fails ? static_cast<uint32_t>(fault.result) : 0;
}

uint32_t RecordingHost::DoFlush(int32_t fd, uint32_t mode) {
    Fault fault;
    const bool fails = Fails(Call::Flush, &fault);
    Event event;
    event.call = Call::Flush;
    event.text = "flush " + std::to_string(mode);
    event.fd = fd;
    Record(std::move(event));
    if (!fails) {
        DrainSocket(PortFd());
    }
    return fails ? static_cast<uint32_t>(fault.result) : 0;
}

void RecordingHost::AnswerSent(const Bytes &bytes) {
    Guard guard(m_mutex);
    if (bytes.size() < 2 || bytes[1] != 0x09) {
        return;
    }
    if (!m_answers.empty()) {
        PutLocked(VISCA_INQUIRY_RESULT_QUEUE_ID, m_answers.front());
        m_answers.pop_front();
    } else if (!m_every_answer.empty()) {
        PutLocked(VISCA_INQUIRY_RESULT_QUEUE_ID, m_every_answer.front());
    }
}

int32_t RecordingHost::DoSend(int32_t fd, uint32_t length, const uint8_t *data) {
    Fault fault;
    const bool fails = Fails(Call::Send, &fault);
    const Bytes bytes(data, data + length);
    Event event;
    event.call = Call::Send;
    event.text = "send " + Hex(bytes);
    event.bytes = bytes;
    event.fd = fd;
    event.length = length;
    Record(std::move(event));
    if (fails) {
        return fault.result;
    }
    AnswerSent(bytes);
    std::function<void(const Bytes &)> hook;
    {
        Guard guard(m_mutex);
        hook = m_on_send;
    }
    if (hook) {
        hook(bytes);
    }
    return static_cast<int32_t>(length);
}

// --- system services
// ----------------------------------------------------------------------------------------

uint32_t RecordingHost::DoManuinfo(ManuInfo *info) {
    Fault fault;
    const bool fails = Fails(Call::Manuinfo, &fault);
    Event event;
    event.call = Call::Manuinfo;
    event.text = "manuinfo";
    Record(std::move(event));
    if (fails) {
        return static_cast<uint32_t>(fault.result);
    }
    Guard guard(m_mutex);
    memset(info, 0, sizeof *info);
    m_device_model.copy(info->szDeviceModel, sizeof info->szDeviceModel - 1);
    return 0;
}

uint32_t RecordingHost::DoSystem(const char *command) {
    Fault fault;
    const bool fails = Fails(Call::System, &fault);
    Event event;
    event.call = Call::System;
    event.text = std::string("system ") + command;
    Record(std::move(event));
    return fails ? static_cast<uint32_t>(fault.result) : 0;
}

uint32_t RecordingHost::DoAsk(Call call) {
    Fault fault;
    Fails(call, &fault);
    Event event;
    event.call = call;
    event.text = call == Call::ModuleType ? "module type" : call == Call::SubType ? "sub type" : "caller";
    Record(std::move(event));
    Guard guard(m_mutex);
    return call == Call::ModuleType ? m_module_type : call == Call::SubType ? m_sub_type : m_caller;
}

// --- journal
// ------------------------------------------------------------------------------------------------

void RecordingHost::Record(Event event) {
    std::function<void(const Event &)> hook;
    {
        Guard guard(m_mutex);
        m_events.push_back(event);
        hook = m_on_record;
        if (m_events.size() > kJournalLimit) {
            fprintf(stderr, "runaway: %zu events, the last one \"%s\"\n", m_events.size(),
                    event.text.c_str());
            abort();
        }
    }
    if (hook) {
        hook(event);
    }
}

void RecordingHost::OnRecord(std::function<void(const Event &)> hook) {
    Guard guard(m_mutex);
    m_on_record = std::move(hook);
}

void RecordingHost::Forget() {
    Guard guard(m_mutex);
    m_events.clear();
}

std::vector<Event> RecordingHost::Events() {
    Guard guard(m_mutex);
    return m_events;
}

std::vector<Event> RecordingHost::Events(Call call) {
    Guard guard(m_mutex);
    std::vector<Event> events;
    std::copy_if(m_events.begin(), m_events.end(), std::back_inserter(events),
                 [call](const Event &event) { return event.call == call; });
    return events;
}

Lines RecordingHost::Story(std::initializer_list<Call> calls) {
    Guard guard(m_mutex);
    Lines lines;
    for (const Event &event : m_events) {
        if (std::find(calls.begin(), calls.end(), event.call) != calls.end()) {
            lines.push_back(event.text);
        }
    }
    return lines;
}

Lines RecordingHost::Log() {
    return Story({Call::Log});
}

Lines RecordingHost::CameraLog() {
    Lines lines;
    for (const Event &event : Events(Call::CamLog)) {
        lines.push_back(event.log.message);
    }
    return lines;
}

Lines RecordingHost::PacketsPut(uint32_t queue) {
    Lines lines;
    for (const Event &event : Events(Call::Put)) {
        if (event.queue == queue) {
            lines.push_back(event.text.substr(strlen("put 0: ")));
        }
    }
    return lines;
}

Lines RecordingHost::Commands() {
    return PacketsPut(VISCA_CMD_QUEUE_ID);
}
Lines RecordingHost::Results() {
    return PacketsPut(VISCA_CMD_RESULT_QUEUE_ID);
}
Lines RecordingHost::Answers() {
    return PacketsPut(VISCA_INQUIRY_RESULT_QUEUE_ID);
}

Lines RecordingHost::Sent() {
    Lines lines;
    for (const Event &event : Events(Call::Send)) {
        lines.push_back(Hex(event.bytes));
    }
    return lines;
}

size_t RecordingHost::CountLogged(uint32_t level, std::string_view function, std::string_view message) {
    const std::vector<Event> events = Events(Call::Log);
    return static_cast<size_t>(std::count_if(events.begin(), events.end(), [&](const Event &event) {
        return event.log.level == level && event.log.function == function && event.log.message == message;
    }));
}

bool RecordingHost::Logged(uint32_t level, std::string_view function, std::string_view message) {
    return CountLogged(level, function, message) > 0;
}

Lines RecordingHost::Complaints() {
    static const std::string prefix = "%.4d-%.2d-%.2d %.2d:%.2d:%.2d %.6lu %-20s@fun:%-30sline:%-6d--[%.5s]";
    Lines complaints;
    for (const Event &event : Events()) {
        const LogLine &log = event.log;
        if (event.call == Call::Log || event.call == Call::CamLog) {
            const std::string tag = event.call == Call::CamLog ? "INFO" : LevelName(log.level);
            if (!log.well_formed || log.tag != tag || log.message.empty() || log.message.back() != '\n' ||
                log.format.compare(0, prefix.size(), prefix) != 0) {
                complaints.push_back("log line: " + log.whole);
            }
        }
        if ((event.call == Call::Put || event.call == Call::IsEmpty || event.call == Call::ReadFd) &&
            event.type != VISCA_QUEUE_TYPE) {
            complaints.push_back("queue type " + std::to_string(event.type) + ": " + event.text);
        }
        if (event.call == Call::Put && event.length != VISCA_QUEUE_ELEM_SIZE) {
            complaints.push_back("element of " + std::to_string(event.length) + " bytes: " + event.text);
        }
    }
    return complaints;
}

} // namespace unit

// --- the services
// -------------------------------------------------------------------------------------------

using unit::Call;
using unit::Event;
using unit::Host;

extern "C" {

uint32_t QUEUE_PutRawData(uint32_t ulType, uint32_t ulQueueId, const void *pData, uint32_t ulLength) {
    return Host().DoPut(ulType, ulQueueId, pData, ulLength);
}

uint32_t QUEUE_GetSerialData(uint32_t ulQueueId, void **ppElem) {
    return Host().DoTake(ulQueueId, ppElem);
}

uint32_t QUEUE_IsEmpty(uint32_t ulType, uint32_t ulQueueId, uint32_t *pulFlag) {
    return Host().DoIsEmpty(ulType, ulQueueId, pulFlag);
}

uint32_t QUEUE_GetQueueReadFd(uint32_t ulType, uint32_t ulQueueId, int32_t *piFd) {
    return Host().DoReadFd(ulType, ulQueueId, piFd);
}

uint32_t DRV_OpenCom(uint32_t ulComPort, int32_t *piFd) {
    return Host().DoOpen(ulComPort, piFd);
}

uint32_t DRV_SetComParam(uint32_t ulType, const DrvComParam *pstParam) {
    return Host().DoSetParam(ulType, *pstParam);
}

uint32_t DRV_FlushCom(int32_t iFd, uint32_t ulMode) {
    return Host().DoFlush(iFd, ulMode);
}

int32_t DRV_ComSend(int32_t iFd, uint32_t ulLength, const uint8_t *pucData) {
    return Host().DoSend(iFd, ulLength, pucData);
}

void DRV_Common_Print(uint32_t ulLevel, const char *pcFormat, ...) {
    va_list args;
    va_start(args, pcFormat);
    unit::RecordLog(Call::Log, ulLevel, pcFormat, args);
    va_end(args);
}

void DRV_Common_Print_Cam(uint32_t ulLevel, const char *pcFormat, ...) {
    va_list args;
    va_start(args, pcFormat);
    unit::RecordLog(Call::CamLog, ulLevel, pcFormat, args);
    va_end(args);
}

uint32_t COMDRV_GetCamModuleType(void) {
    return Host().DoAsk(Call::ModuleType);
}
uint32_t COMDRV_GetProductSubType(void) {
    return Host().DoAsk(Call::SubType);
}
uint32_t COMDRV_GetCaller(void) {
    return Host().DoAsk(Call::Caller);
}
uint32_t COMDRV_GetManuinfo(ManuInfo *pstManuInfo) {
    return Host().DoManuinfo(pstManuInfo);
}
uint32_t COMDRV_System(const char *pcCommand) {
    return Host().DoSystem(pcCommand);
}

uint32_t COMDRV_DBG_RegisterThreadInfo(uint32_t ulType, uint32_t ulThreadId, const char *pcName) {
    char name[17] = "";
    prctl(PR_GET_NAME, name);
    Event event;
    event.call = Call::Register;
    event.text = "register " + std::to_string(ulType) + " " + pcName;
    event.queue = ulThreadId;
    event.thread = name;
    Host().Record(std::move(event));
    return 0;
}

} // extern "C"
