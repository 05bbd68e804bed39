#include "tool/replay/player.h"

#include <cstdio>

namespace tool {

namespace {

using decode::CaptureRecord;
using decode::Direction;

constexpr size_t LOOK_AHEAD = 16; // packets of the host that a capture may be ahead of it

std::string words(const decode::Bytes &bytes, unsigned baud) {
    std::string text;
    char byte[4];
    for (const uint8_t value : bytes) {
        std::snprintf(byte, sizeof byte, "%02X ", static_cast<unsigned>(value));
        text += byte;
    }
    text += "(" + decode::Describe(Direction::ToCamera, bytes) + ")";
    return baud == 0 ? text : text + " at " + std::to_string(baud) + " bit/s";
}

std::string at(decode::Microseconds time) {
    char text[48];
    std::snprintf(text, sizeof text, " at %.6f s", static_cast<double>(time.count()) / 1e6);
    return text;
}

} // namespace

Player::Player(const decode::Capture &capture, bool fullSpeed,
               std::function<void(const std::string &)> complain)
    : m_steps(stepsOf(capture)), m_fullSpeed(fullSpeed), m_complain(std::move(complain)) {}

// The host's bytes as packets, each where its last byte passed; the camera's as they came.
std::vector<Player::Step> Player::stepsOf(const decode::Capture &capture) {
    std::vector<Step> steps;
    decode::Splitter splitter(Direction::ToCamera);
    std::vector<decode::Piece> pieces;
    unsigned baud = capture.head.baud;
    const auto takeOver = [&] {
        for (const decode::Piece &piece : pieces)
            steps.push_back({Direction::ToCamera, piece.end, baud, piece.bytes});
        pieces.clear();
    };
    for (const CaptureRecord &record : capture.records) {
        if (record.sort == CaptureRecord::Sort::Remark) {
            baud = decode::BaudOf(record).value_or(baud);
        } else if (record.direction == Direction::FromCamera) {
            steps.push_back({Direction::FromCamera, record.time, baud, record.bytes});
        } else {
            splitter.Feed(record.time, record.bytes.data(), record.bytes.size(), pieces);
            takeOver();
        }
    }
    splitter.Flush(pieces);
    takeOver();
    return steps;
}

void Player::begin(Clock::time_point now) {
    if (m_begun)
        return;
    m_begun = true;
    m_base = now;
}

void Player::take(Clock::time_point now, unsigned baud, const decode::Bytes &bytes) {
    begin(now);
    std::vector<decode::Piece> pieces;
    const auto since = std::chrono::duration_cast<decode::Microseconds>(now.time_since_epoch());
    m_splitter.Feed(since, bytes.data(), bytes.size(), pieces);
    for (const decode::Piece &piece : pieces)
        m_heard.push_back({Direction::ToCamera, since, baud, piece.bytes});
    match(now);
}

std::optional<Player::Clock::time_point> Player::due() const {
    if (!m_begun || isOver() || m_steps[m_next].direction == Direction::ToCamera)
        return std::nullopt;
    return m_fullSpeed ? m_base : m_base + (m_steps[m_next].time - m_recorded);
}

decode::Bytes Player::next(Clock::time_point now) {
    const std::optional<Clock::time_point> when = due();
    if (!when || *when > now)
        return {};
    const decode::Bytes bytes = m_steps[m_next].bytes;
    ++m_next;
    match(now);
    return bytes;
}

// As far as the host's turn it is.
void Player::match(Clock::time_point now) {
    while (!m_heard.empty() && (isOver() || m_steps[m_next].direction == Direction::ToCamera)) {
        const Step packet = m_heard.front();
        m_heard.pop_front();
        if (!isOver() && isSame(m_steps[m_next], packet))
            passed(m_next, now);
        else
            mismatch(packet, now);
    }
}

void Player::mismatch(const Step &packet, Clock::time_point now) {
    const std::string sent = "the host sent " + words(packet.bytes, packet.baud);
    if (isOver()) {
        say(sent + " when the capture was over");
        return;
    }
    const Step &expected = m_steps[m_next];
    const std::string both =
        sent + ", the capture has " + words(expected.bytes, expected.baud) + at(expected.time);
    const std::optional<size_t> ahead = findAhead(packet);
    say(ahead ? both + "; it goes on" + at(m_steps[*ahead].time) : both + "; it gets no answer");
    if (ahead)
        passed(*ahead, now);
}

bool Player::isSame(const Step &expected, const Step &packet) const {
    return expected.bytes == packet.bytes &&
           (expected.baud == 0 || packet.baud == 0 || expected.baud == packet.baud);
}

std::optional<size_t> Player::findAhead(const Step &packet) const {
    size_t seen = 0;
    for (size_t i = m_next; i < m_steps.size() && seen <= LOOK_AHEAD; ++i) {
        if (m_steps[i].direction != Direction::ToCamera)
            continue;
        ++seen;
        if (isSame(m_steps[i], packet))
            return i;
    }
    return std::nullopt;
}

void Player::passed(size_t step, Clock::time_point now) {
    m_base = now;
    m_recorded = m_steps[step].time;
    m_next = step + 1;
}

void Player::say(const std::string &text) {
    ++m_mismatches;
    m_complain(text);
}

size_t Player::packets() const {
    size_t count = 0;
    for (const Step &step : m_steps)
        count += step.direction == Direction::ToCamera ? 1 : 0;
    return count;
}

} // namespace tool
