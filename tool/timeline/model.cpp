#include "tool/timeline/model.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>

#include "decode/capture.h"
#include "decode/input.h"

namespace tool {

namespace {

using decode::Direction;
using decode::Kind;

constexpr unsigned USUAL_BAUD = 9600;
constexpr int64_t BITS_PER_BYTE = 10;
constexpr int64_t SECOND = 1000000;
constexpr int64_t RESULT_LIMIT = 2 * SECOND; // how long the library waits
constexpr int64_t ANSWER_LIMIT = 6 * SECOND;
constexpr int64_t MARGIN = 2000; // in front of the first packet

std::string inHex(const decode::Bytes &bytes) {
    static const char DIGITS[] = "0123456789ABCDEF";
    std::string text;
    for (const uint8_t byte : bytes) {
        text += text.empty() ? "" : " ";
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 0x0F];
    }
    return text;
}

std::string clockText(decode::Microseconds since1970, bool utc) {
    const std::time_t seconds = static_cast<std::time_t>(since1970.count() / SECOND);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    char text[40];
    std::strftime(text, sizeof text, utc ? "%Y-%m-%d %H:%M:%S UTC" : "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

class Builder {
  public:
    Builder(Timeline &timeline, unsigned baud) : m_timeline(timeline), m_baud(baud) {}

    void take(const decode::InputItem &item) {
        const bool remark = item.sort == decode::InputItem::Sort::Remark;
        if (remark && item.time)
            takeRemark(item.time->count(), item.text);
        if (item.sort == decode::InputItem::Sort::Piece)
            takePiece(item.piece, item.time.has_value());
    }

    void finish() {
        if (m_timeline.packets.empty())
            throw std::runtime_error("no packet is in it");
        if (!m_timed)
            throw std::runtime_error("it holds no times, and a picture needs them: use a capture or a log");
        giveUp();
        const int64_t first = startOfAll();
        shift(first);
        for (const TimelinePacket &packet : m_timeline.packets)
            m_timeline.length = std::max(m_timeline.length, packet.end);
        for (const TimelineExchange &exchange : m_timeline.exchanges)
            m_timeline.length = std::max(m_timeline.length, exchange.end);
        m_timeline.length += MARGIN;
    }

  private:
    void takeRemark(int64_t time, const std::string &text) {
        m_timeline.remarks.push_back({time, text});
        decode::CaptureRecord record;
        record.sort = decode::CaptureRecord::Sort::Remark;
        record.remark = text;
        if (const std::optional<unsigned> baud = decode::BaudOf(record))
            m_baud = *baud != 0 ? *baud : m_baud;
        m_latest = std::max(m_latest, time);
    }

    // What the host writes leaves it at once and is then on the line; what it reads has been on the line.
    void takePiece(const decode::Piece &piece, bool timed) {
        m_timed = m_timed || timed;
        m_latest = std::max(m_latest, piece.end.count()); // a piece is read when it ends
        const decode::Meaning meaning =
            m_conversation.Next(piece.direction, decode::Microseconds(m_latest), piece.bytes);
        const int64_t onLine =
            static_cast<int64_t>(piece.bytes.size()) * BITS_PER_BYTE * SECOND / static_cast<int64_t>(m_baud);
        const bool out = piece.direction == Direction::ToCamera;
        TimelinePacket packet;
        packet.begin = out ? piece.time.count() : std::min(piece.time.count(), piece.end.count() - onLine);
        packet.end = out ? std::max(piece.end.count(), piece.time.count() + onLine) : piece.end.count();
        packet.direction = piece.direction;
        packet.kind = meaning.kind;
        packet.surprise = meaning.surprise;
        packet.bytes = inHex(piece.bytes);
        packet.text = meaning.text;
        m_timeline.packets.push_back(packet);
        m_exchangeOf.push_back(-1);
        follow(meaning);
    }

    void follow(const decode::Meaning &meaning) {
        const size_t number = m_timeline.packets.size() - 1;
        if (meaning.kind == Kind::Command || meaning.kind == Kind::Inquiry || meaning.kind == Kind::Control) {
            TimelineExchange exchange;
            exchange.command = meaning.kind == Kind::Command;
            exchange.begin = m_timeline.packets[number].begin;
            exchange.packet = number;
            m_exchangeOf[number] = static_cast<long>(m_timeline.exchanges.size());
            m_timeline.exchanges.push_back(exchange);
            return;
        }
        if (meaning.answers < 0 || meaning.answers >= static_cast<long>(m_exchangeOf.size()))
            return;
        const long index = m_exchangeOf[static_cast<size_t>(meaning.answers)];
        if (index >= 0)
            end(m_timeline.exchanges[static_cast<size_t>(index)], meaning.kind, number);
    }

    void end(TimelineExchange &exchange, Kind kind, size_t number) const {
        const int64_t time = m_timeline.packets[number].end;
        if (kind == Kind::Acknowledgement) {
            exchange.acknowledged = time;
            return;
        }
        exchange.end = time;
        exchange.last = static_cast<long>(number);
        exchange.outcome =
            kind == Kind::Error ? TimelineExchange::Outcome::refused : TimelineExchange::Outcome::done;
    }

    // What nobody ended was given up: at the library's limit, or when the host went on before.
    void giveUp() {
        int64_t next[2] = {m_latest, m_latest}; // where the next inquiry, the next command begins
        bool followed[2] = {false, false};
        for (size_t i = m_timeline.exchanges.size(); i-- > 0;) {
            TimelineExchange &exchange = m_timeline.exchanges[i];
            const size_t kind = exchange.command ? 1 : 0;
            if (exchange.last < 0) {
                const int64_t limit = exchange.begin + (exchange.command ? RESULT_LIMIT : ANSWER_LIMIT);
                const bool over = followed[kind] || limit <= m_latest;
                exchange.outcome =
                    over ? TimelineExchange::Outcome::noAnswer : TimelineExchange::Outcome::open;
                exchange.end = std::max(std::min(limit, next[kind]), exchange.begin);
            }
            next[kind] = exchange.begin;
            followed[kind] = true;
        }
    }

    int64_t startOfAll() const {
        int64_t first = m_timeline.packets.front().begin;
        for (const TimelinePacket &packet : m_timeline.packets)
            first = std::min(first, packet.begin);
        if (!m_timeline.remarks.empty())
            first = std::min(first, m_timeline.remarks.front().time);
        return first - MARGIN;
    }

    void shift(int64_t by) {
        for (TimelinePacket &packet : m_timeline.packets) {
            packet.begin -= by;
            packet.end -= by;
        }
        for (TimelineExchange &exchange : m_timeline.exchanges) {
            exchange.begin -= by;
            exchange.end -= by;
            exchange.acknowledged -= exchange.acknowledged >= 0 ? by : 0;
        }
        for (TimelineRemark &remark : m_timeline.remarks)
            remark.time -= by;
    }

    Timeline &m_timeline;
    unsigned m_baud;
    decode::Conversation m_conversation;
    std::vector<long> m_exchangeOf; // by packet
    int64_t m_latest = 0;
    bool m_timed = false;
};

} // namespace

double Timeline::utilisation(decode::Direction direction, int64_t from, int64_t to) const {
    int64_t busy = 0;
    for (const TimelinePacket &packet : packets) {
        const int64_t begin = std::max(packet.begin, from);
        const int64_t end = std::min(packet.end, to);
        busy += packet.direction == direction && end > begin ? end - begin : 0;
    }
    return to > from ? std::min(1.0, static_cast<double>(busy) / static_cast<double>(to - from)) : 0;
}

const char *nameOf(TimelineExchange::Outcome outcome) {
    switch (outcome) {
    case TimelineExchange::Outcome::done:
        return "done";
    case TimelineExchange::Outcome::refused:
        return "refused";
    case TimelineExchange::Outcome::noAnswer:
        return "no answer";
    case TimelineExchange::Outcome::open:
        break;
    }
    return "open";
}

Timeline timelineOf(const std::string &text, const std::string &title) {
    Timeline timeline;
    timeline.title = title;
    decode::InputReader reader;
    std::vector<decode::InputItem> items;
    reader.Feed(text.data(), text.size(), items);
    reader.Finish(items);
    decode::Capture capture;
    std::string error;
    if (decode::IsCapture(text))
        (void)decode::ReadCapture(text, capture, error);
    timeline.baud = capture.head.baud != 0 ? capture.head.baud : USUAL_BAUD;
    if (const std::optional<decode::InputStart> start = reader.Start())
        timeline.started = clockText(start->since_1970, start->utc);
    Builder builder(timeline, timeline.baud);
    for (const decode::InputItem &item : items)
        builder.take(item);
    builder.finish();
    return timeline;
}

} // namespace tool
