#include "tool/ctl/follower.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "viscacam_host.h"

namespace tool::ctl {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds LOOK_EVERY{100};
constexpr milliseconds COMMAND_LIMIT{2300}; // the library waits 2 s
constexpr std::chrono::seconds MOTION_LIMIT{20};
constexpr uint8_t INQUIRY_MARK = 0x09;

decode::Bytes bytesOf(const host::Event &event) {
    return event.pucData == nullptr ? decode::Bytes()
                                    : decode::Bytes(event.pucData, event.pucData + event.ulLength);
}

bool isError(const decode::Bytes &bytes) {
    return bytes.size() >= 4 && (bytes[1] & 0xF0U) == 0x60;
}

std::string milli(Clock::duration time) {
    return std::to_string(std::chrono::duration_cast<milliseconds>(time).count()) + " ms";
}

std::string vanishedText(const host::Event &event) {
    const std::string device = event.pcDevice == nullptr ? "the device" : event.pcDevice;
    return device + (event.enKind == host::EventKind::kComVanished ? " is gone" : " is back");
}

} // namespace

std::string hexText(const decode::Bytes &bytes) {
    std::string text;
    char byte[8];
    for (const uint8_t value : bytes) {
        std::snprintf(byte, sizeof byte, "%s%02X", text.empty() ? "" : " ", value);
        text += byte;
    }
    return text;
}

std::string errorText(unsigned code) {
    switch (code) {
    case 0x01:
        return "wrong length (01)";
    case 0x02:
        return "syntax error (02)";
    case 0x03:
        return "command buffer full (03)";
    case 0x04:
        return "cancelled (04)";
    case 0x05:
        return "no such socket (05)";
    case 0x41:
        return "not executable now (41)";
    default:
        return "error " + hexText({static_cast<uint8_t>(code)});
    }
}

std::string Sent::meaning() const {
    return decode::Describe(decode::Direction::ToCamera, bytes);
}

std::string Sent::outcome() const {
    const std::string time = ", " + milli(endedAt - sentAt) + (late ? ", after the library's wait" : "");
    const std::string where = ", socket " + std::to_string(socket);
    switch (state) {
    case State::queued:
        return "still queued";
    case State::notQueued:
        return "not queued: the queue is full";
    case State::sent:
        return "sent, no result yet";
    case State::completed:
        return "completed" + where + time;
    case State::refused:
        return "refused: " + errorText(error) + where + time;
    case State::timedOut:
        return "no result within 2 s";
    case State::notWritten:
        return "not sent: the line did not take it";
    }
    return "";
}

std::string Asked::meaning() const {
    return decode::Describe(decode::Direction::ToCamera, bytes);
}

Follower::Follower() {
    m_observer = host::AddObserver(onEvent, this);
}

Follower::~Follower() {
    host::RemoveObserver(m_observer);
}

void Follower::begin() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.clear();
    m_current = nullptr;
    m_sent.clear();
    m_asked.clear();
    m_asking = false;
}

bool Follower::isAllOver(bool motion) const {
    const Clock::time_point now = Clock::now();
    const Clock::duration limit = motion ? Clock::duration(MOTION_LIMIT) : Clock::duration(COMMAND_LIMIT);
    return std::all_of(m_sent.begin(), m_sent.end(), [&](const Sent &sent) {
        const bool mayComeYet =
            sent.state == Sent::State::sent || (motion && sent.state == Sent::State::timedOut);
        return mayComeYet ? now - sent.sentAt > limit : sent.isOver();
    });
}

void Follower::wait(bool motion, const std::function<bool()> &goOn) {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!isAllOver(motion)) {
        m_changed.wait_for(lock, LOOK_EVERY);
        lock.unlock();
        const bool more = goOn();
        (void)host::WaitDrained(milliseconds(0)); // lets the host notice a time that is over
        lock.lock();
        if (!more)
            break;
    }
    for (Sent &sent : m_sent)
        if (sent.state == Sent::State::sent && Clock::now() - sent.sentAt > COMMAND_LIMIT)
            sent.state = Sent::State::timedOut;
}

std::vector<Sent> Follower::sent() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_sent.begin(), m_sent.end()};
}

std::vector<Asked> Follower::asked() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_asked.begin(), m_asked.end()};
}

std::vector<std::string> Follower::takeNotes() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> notes;
    notes.swap(m_notes);
    return notes;
}

void Follower::note(const std::string &text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    addNote(text);
}

void Follower::onNote(std::function<void()> told) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_told = std::move(told);
}

void Follower::addNote(const std::string &text) {
    m_notes.push_back(text);
    if (m_told)
        m_told();
}

void Follower::onEvent(const host::Event &event, void *context) {
    static_cast<Follower *>(context)->take(event);
}

void Follower::take(const host::Event &event) {
    const Clock::time_point time{std::chrono::nanoseconds(event.ullTimeNs)};
    const std::lock_guard<std::mutex> lock(m_mutex);
    switch (event.enKind) {
    case host::EventKind::kQueuePut:
        onPut(event);
        break;
    case host::EventKind::kQueueTake:
        onTake(event);
        break;
    case host::EventKind::kQueueDrop:
        if (event.ulQueueId == VISCA_INQUIRY_RESULT_QUEUE_ID && !m_answers.empty())
            m_answers.pop_front();
        break;
    case host::EventKind::kComSending:
        onSending(event, time);
        break;
    case host::EventKind::kComSent:
        onSent(event);
        break;
    case host::EventKind::kComVanished:
    case host::EventKind::kComBack:
        addNote(vanishedText(event));
        break;
    default:
        break;
    }
    m_changed.notify_all();
}

void Follower::onPut(const host::Event &event) {
    const Clock::time_point time{std::chrono::nanoseconds(event.ullTimeNs)};
    if (event.ulQueueId == VISCA_CMD_RESULT_QUEUE_ID)
        return onResult(bytesOf(event), time);
    if (event.ulQueueId == VISCA_INQUIRY_RESULT_QUEUE_ID)
        return onAnswerPut(event, time);
    Sent sent;
    sent.bytes = bytesOf(event);
    sent.state = event.iResult == 0 ? Sent::State::queued : Sent::State::notQueued;
    m_sent.push_back(sent);
    if (event.iResult == 0)
        m_queue.push_back(&m_sent.back());
}

void Follower::onTake(const host::Event &event) {
    const Clock::time_point time{std::chrono::nanoseconds(event.ullTimeNs)};
    if (event.ulQueueId == VISCA_INQUIRY_RESULT_QUEUE_ID)
        return onAnswerTaken(time);
    if (event.ulQueueId != VISCA_CMD_QUEUE_ID)
        return;
    if (m_current != nullptr) // the library has stopped waiting for it
        endCurrent(m_current->state == Sent::State::sent ? Sent::State::timedOut : Sent::State::notWritten,
                   time);
    m_sender = std::this_thread::get_id();
    if (m_queue.empty() || m_queue.front()->bytes != bytesOf(event))
        return; // of a command that is followed no further
    m_current = m_queue.front();
    m_queue.pop_front();
}

void Follower::endCurrent(Sent::State state, Clock::time_point time) {
    m_current->state = state;
    m_current->endedAt = time;
    m_current = nullptr;
}

// The oldest command that the library has given up.
Sent *Follower::lateOne() {
    const auto found = std::find_if(m_sent.begin(), m_sent.end(),
                                    [](const Sent &sent) { return sent.state == Sent::State::timedOut; });
    return found == m_sent.end() ? nullptr : &*found;
}

void Follower::onResult(const decode::Bytes &bytes, Clock::time_point time) {
    if (m_current != nullptr && m_current->state == Sent::State::sent &&
        time - m_current->sentAt > COMMAND_LIMIT)
        endCurrent(Sent::State::timedOut, time);
    const bool current = m_current != nullptr && m_current->state == Sent::State::sent;
    Sent *sent = current ? m_current : lateOne();
    if (sent == nullptr) {
        const std::string question =
            m_asking ? "; it refuses the inquiry, which waits for 6 s all the same" : "";
        if (m_asking && !m_asked.empty())
            m_asked.back().refusedAsCommand = true;
        addNote("a result came that no command waits for: " + hexText(bytes) + question);
        return;
    }
    if (bytes.size() < 3)
        return;
    sent->socket = bytes[1] & 0x0FU;
    sent->error = isError(bytes) ? bytes[2] : 0;
    sent->state = isError(bytes) ? Sent::State::refused : Sent::State::completed;
    sent->late = !current;
    sent->endedAt = time;
    if (current)
        m_current = nullptr;
}

// The first one that nobody waits for begins a shift; those that follow belong to it.
void Follower::onAnswerPut(const host::Event &event, Clock::time_point time) {
    if (event.iResult != 0)
        return;
    m_answers.push_back({bytesOf(event), m_lastQuestion, time});
    if (!event.bUnasked || m_inShift)
        return;
    m_inShift = true;
    addNote("an answer came with no inquiry open: " + hexText(bytesOf(event)) +
            (m_lastQuestion.empty() ? "" : ", after \"" + m_lastQuestion + "\"") +
            "; answers are shifted now: the next inquiry takes it for its own, every later one the answer of "
            "the one before, until \"answers drop\" or an answer is lost");
}

void Follower::onAnswerTaken(Clock::time_point time) {
    if (m_answers.empty())
        return;
    const Waiting answer = m_answers.front();
    m_answers.pop_front();
    if (!m_asking || m_asked.empty())
        return;
    Asked &asked = m_asked.back();
    asked.answer = answer.bytes;
    asked.endedAt = time;
    asked.shifted = answer.since < asked.sentAt;
    asked.answerOf = asked.shifted ? answer.question : "";
    m_asking = false;
}

void Follower::onSending(const host::Event &event, Clock::time_point time) {
    const decode::Bytes bytes = bytesOf(event);
    if (m_current != nullptr && m_current->state == Sent::State::queued &&
        m_sender == std::this_thread::get_id()) {
        m_current->state = Sent::State::sent;
        m_current->sentAt = time;
        return;
    }
    if (bytes.size() < 2 || bytes[1] != INQUIRY_MARK)
        return;
    if (m_inShift && m_answers.empty()) {
        m_inShift = false;
        addNote("answers are in step again");
    }
    Asked asked;
    asked.bytes = bytes;
    asked.sentAt = time;
    m_asked.push_back(asked);
    m_asking = true;
    m_lastQuestion = asked.meaning();
}

void Follower::onSent(const host::Event &event) {
    const bool written = event.iResult >= 0 && static_cast<uint32_t>(event.iResult) == event.ulLength;
    if (!written && m_current != nullptr && m_sender == std::this_thread::get_id())
        endCurrent(Sent::State::notWritten, Clock::now());
}

} // namespace tool::ctl
