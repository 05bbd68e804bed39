#include "tests/model/witness.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "viscacam.h"

namespace model {

namespace {

constexpr uint32_t SHORTEST_REPLY = 3;
constexpr uint32_t LONGEST_PACKET = 16;
constexpr char TIME_OUT[] = "Wait VISCA RSP msg tiemout!";

thread_local std::vector<uint8_t> t_queued;
thread_local unsigned t_left = 0; // 0: no limit

std::string Hex(const uint8_t *bytes, uint32_t count) {
    std::string text;
    for (uint32_t i = 0; i < count; ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, " %02X", bytes[i]);
        text += byte;
    }
    return text;
}

// What a command's result queue and an inquiry's may hold; 90 begins and FF ends it.
bool BelongsThere(const host::Event &event) {
    const uint8_t *bytes = event.pucElem;
    const uint32_t length = event.ulLength;
    if (length < SHORTEST_REPLY || length > LONGEST_PACKET || bytes[0] != 0x90 || bytes[length - 1] != 0xFF) {
        return false;
    }
    const bool ofCommand = bytes[1] == 0x60 && (bytes[2] == 0x02 || bytes[2] == 0x03);
    if (event.ulQueueId == VISCA_INQUIRY_RESULT_QUEUE_ID) {
        return bytes[1] == 0x50 || (bytes[1] == 0x60 && !ofCommand);
    }
    const bool withSocket =
        (bytes[1] & 0x0F) != 0 && ((bytes[1] & 0xF0) == 0x50 || (bytes[1] & 0xF0) == 0x60);
    return withSocket || ofCommand;
}

void Differ(std::string &text, const char *what, uint64_t seen, uint64_t counted) {
    if (seen != counted) {
        text += std::string(text.empty() ? "" : ", ") + what + ": " + std::to_string(seen) +
                " seen, the host counts " + std::to_string(counted);
    }
}

} // namespace

Witness &Witness::Begin(bool ordered) {
    static Witness &witness = *new Witness(ordered);
    host::AddObserver(OnEvent, &witness);
    host::LogSetup log;
    log.enTarget = host::LogTarget::kSink;
    log.ulLevel = VISCA_LOG_DEBUG;
    log.pfnSink = OnLine;
    log.pContext = &witness;
    (void)host::SetLog(host::Log::kGeneral, log);
    return witness;
}

void Witness::OnEvent(const host::Event &event, void *witness) {
    static_cast<Witness *>(witness)->See(event);
}

void Witness::OnLine(uint32_t level, const char *line, uint32_t, void *witness) {
    Witness &self = *static_cast<Witness *>(witness);
    self.m_logLines += level <= VISCA_LOG_INFO ? 1 : 0;
    if (std::strstr(line, TIME_OUT) != nullptr) {
        self.SeeTimeOut();
    }
}

void Witness::See(const host::Event &event) {
    const std::lock_guard lock(m_mutex);
    switch (event.enKind) {
    case host::EventKind::kQueuePut:
        event.ulQueueId == VISCA_CMD_QUEUE_ID ? SeePut(event) : SeeResult(event);
        break;
    case host::EventKind::kQueueTake:
        SeeTake(event);
        break;
    case host::EventKind::kComSending:
        SeeSending(event);
        break;
    case host::EventKind::kComSent:
        SeeSent(event);
        break;
    default:
        break;
    }
}

void Witness::SeePut(const host::Event &event) {
    if (event.iResult != 0) {
        return;
    }
    Element element;
    std::copy_n(event.pucElem, element.size(), element.begin());
    m_waiting.push_back(element);
    ++m_tally.queued;
    t_queued.push_back(event.pucElem[3]);
    if (t_left != 0 && --t_left == 0) {
        ViscaSetCamCanCtrl(0); // a plain word
    }
}

void Witness::SeeResult(const host::Event &event) {
    if (!BelongsThere(event)) {
        Break("put on queue " + std::to_string(event.ulQueueId) + ":" + Hex(event.pucElem, event.ulLength));
    }
    if (event.iResult != 0) {
        return;
    }
    if ((event.pucElem[1] & 0xF0) == 0x60) {
        ++m_tally.errors;
    } else {
        ++(event.ulQueueId == VISCA_CMD_RESULT_QUEUE_ID ? m_tally.completions : m_tally.answers);
    }
}

void Witness::SeeTake(const host::Event &event) {
    if (event.ulQueueId == VISCA_CMD_RESULT_QUEUE_ID) {
        m_flying = false;
    }
    if (event.ulQueueId != VISCA_CMD_QUEUE_ID) {
        return;
    }
    if (m_flying) {
        Break("taken while" + Hex(m_command.data() + 1, 4) +
              " was in flight:" + Hex(event.pucElem, event.ulLength));
    }
    std::copy_n(event.pucElem, m_command.size(), m_command.begin());
    m_taken = true;
    m_flying = false;
    m_sender = std::this_thread::get_id();
    const auto found = std::find(m_waiting.begin(), m_waiting.end(), m_command);
    if (found == m_waiting.end() || (m_ordered && found != m_waiting.begin())) {
        Break("taken out of order:" + Hex(event.pucElem, event.ulLength));
        return;
    }
    m_waiting.erase(found);
}

void Witness::SeeSending(const host::Event &event) {
    if (event.ulLength < 2 || event.pucData[1] != 0x01 || m_sender != std::this_thread::get_id()) {
        return;
    }
    if (!m_taken || !std::equal(event.pucData, event.pucData + event.ulLength, m_command.begin())) {
        Break("written but not taken before:" + Hex(event.pucData, event.ulLength));
    }
    m_taken = false;
    m_flying = true;
}

void Witness::SeeSent(const host::Event &event) {
    const bool written = event.iResult >= 0 && static_cast<uint32_t>(event.iResult) == event.ulLength;
    if (event.ulLength >= 2 && event.pucData[1] == 0x09) {
        m_tally.inquiries += written ? 1 : 0;
    } else if (m_sender == std::this_thread::get_id()) {
        m_tally.sent += written ? 1 : 0;
        m_flying = written;
    }
}

void Witness::SeeTimeOut() {
    const std::lock_guard lock(m_mutex);
    if (m_sender != std::this_thread::get_id()) {
        return; // an inquiry's
    }
    if (!m_flying) {
        Break("a command's time was over that was not in flight");
    }
    m_flying = false;
    ++m_tally.commandTimeOuts;
}

void Witness::Break(const std::string &law) {
    if (m_broken.empty()) {
        m_broken = law;
    }
}

std::string Witness::Broken() const {
    const std::lock_guard lock(m_mutex);
    return m_broken;
}

std::vector<uint8_t> Witness::TakeQueued() {
    return std::exchange(t_queued, {});
}

void Witness::RefuseAfter(unsigned commands) {
    t_left = commands;
}

Tally Witness::Count() const {
    const std::lock_guard lock(m_mutex);
    return m_tally;
}

void Witness::ResetCount() {
    const std::lock_guard lock(m_mutex);
    m_tally = Tally();
}

std::string Witness::ComparedWithHost(bool timeOuts) const {
    const Tally seen = Count();
    const host::Counters counted = host::GetCounters();
    std::string text;
    Differ(text, "commands queued", seen.queued, counted.ullCommandsQueued);
    Differ(text, "commands sent", seen.sent, counted.ullCommandsSent);
    Differ(text, "completions", seen.completions, counted.ullCompletions);
    Differ(text, "answers", seen.answers, counted.ullAnswers);
    Differ(text, "errors", seen.errors, counted.ullErrors);
    Differ(text, "inquiries", seen.inquiries, counted.ullInquiriesSent);
    if (timeOuts) {
        Differ(text, "commands without result", seen.commandTimeOuts, counted.ullCommandTimeouts);
    }
    return text;
}

} // namespace model
