#include "tool/decode/printer.h"

#include <algorithm>
#include <cstdio>

#include <nlohmann/json.hpp>

#include "decode/capture.h"
#include "decode/trace.h"
#include "tool/console.h"

namespace tool {

namespace {

using decode::InputItem;
using decode::Microseconds;
using Json = nlohmann::ordered_json;

constexpr size_t MOST_RECENT = 1024;
constexpr size_t BYTE_COLUMNS = 9; // the longest packet of the lens with one position
constexpr size_t NUMBER_COLUMNS = 4;
constexpr size_t TIME_COLUMNS = 12;
constexpr size_t MOST_BYTES = 257; // no piece is longer

std::string milliseconds(Microseconds time, bool sign = false) {
    char text[48];
    const double count = static_cast<double>(time.count()) / 1000.0;
    std::snprintf(text, sizeof text, sign ? "%+.1f ms" : "%.1f ms", count);
    return text;
}

std::string rightAligned(const std::string &text, size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

double seconds(Microseconds time) {
    return static_cast<double>(time.count()) / 1e6;
}

std::string bytesText(const decode::Bytes &bytes) {
    std::string text;
    char byte[8];
    for (const uint8_t value : bytes) {
        std::snprintf(byte, sizeof byte, "%s%02X", text.empty() ? "" : " ", static_cast<unsigned>(value));
        text += byte;
    }
    return text;
}

bool isMalformed(const InputItem &item, const decode::Meaning &meaning) {
    return item.piece.sort != decode::Piece::Sort::Packet || meaning.kind == decode::Kind::Noise;
}

std::string place(const InputItem &item) {
    if (item.line == 0)
        return "offset " + std::to_string(item.byte);
    return "line " + std::to_string(item.line) + ", byte " + std::to_string(item.byte + 1);
}

void addPlace(Json &object, const InputItem &item) {
    if (item.line != 0)
        object["line"] = item.line;
    object[item.line == 0 ? "offset" : "byte"] = item.line == 0 ? item.byte : item.byte + 1;
}

// Not valid UTF-8 would be an exception; there is none, as all texts are printable ASCII.
std::string dumped(const Json &object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace

std::string TrafficPrinter::line(const InputItem &item) {
    return item.sort == InputItem::Sort::Piece ? packetLine(item) : otherLine(item);
}

std::string TrafficPrinter::packetLine(const InputItem &item) {
    // The end of a piece is what puts it in order; a piece ended by silence is noticed late.
    m_latest = std::max(m_latest, item.piece.end);
    Found found{item, m_conversation.Next(item.piece.direction, m_latest, item.piece.bytes), m_next, false,
                std::nullopt};
    found.malformed = isMalformed(item, found.meaning);
    if (item.time)
        found.took = tookSince(found.meaning.answers, item.piece.end);
    remember(item.piece.end);
    m_malformed = m_malformed || found.malformed;
    std::vector<std::string> names = {decode::NameOf(found.meaning.kind)};
    if (found.malformed)
        names.push_back("malformed");
    if (found.meaning.surprise)
        names.push_back("surprise");
    if (!isShown(names))
        return "";
    return m_look.json ? json(found) : text(found);
}

std::string TrafficPrinter::otherLine(const InputItem &item) {
    const bool wrong = item.sort == InputItem::Sort::Wrong;
    m_malformed = m_malformed || wrong;
    if (!isShown({wrong ? "malformed" : "remark"}))
        return "";
    const std::string when = stamp(item);
    if (m_look.json) {
        Json object = when.empty() ? Json::object() : Json::parse("{\"time\":" + when + "}");
        object[wrong ? "wrong" : "remark"] = item.text;
        if (item.line != 0)
            object["line"] = item.line;
        return dumped(object);
    }
    const std::string text = wrong ? "line " + std::to_string(item.line) + ": " + item.text : item.text;
    return std::string(NUMBER_COLUMNS, ' ') + "  " + when +
           styled(text, wrong ? Style::bad : Style::dim, m_look.colours) + "\n";
}

std::optional<Microseconds> TrafficPrinter::tookSince(long number, Microseconds end) const {
    const long first = m_next - static_cast<long>(m_recent.size());
    if (number < first || number >= m_next)
        return std::nullopt;
    return end - m_recent[static_cast<size_t>(number - first)];
}

void TrafficPrinter::remember(Microseconds time) {
    ++m_next;
    m_recent.push_back(time);
    if (m_recent.size() > MOST_RECENT)
        m_recent.pop_front();
}

std::string TrafficPrinter::absolute(Microseconds time) const {
    std::string text = decode::UtcText(m_start->since_1970 + time);
    if (!m_start->utc)
        text.pop_back(); // it is the clock of the place
    return text;
}

/* The time as a column with the gap behind it, or as a value of JSON; empty when it is not known. */
std::string TrafficPrinter::stamp(const InputItem &item) {
    if (!item.time)
        return "";
    if (m_look.stamp == Stamp::absolute && m_start) {
        const std::string text = absolute(*item.time);
        return m_look.json ? "\"" + text + "\"" : text + "  ";
    }
    const bool delta = m_look.stamp == Stamp::delta;
    const Microseconds time = delta ? *item.time - m_shown.value_or(*item.time) : *item.time;
    m_shown = item.time;
    if (m_look.json)
        return Json(seconds(time)).dump();
    return rightAligned(milliseconds(time, delta), TIME_COLUMNS) + "  ";
}

std::string TrafficPrinter::text(const Found &found) {
    const InputItem &item = found.item;
    std::string notes = found.malformed ? place(item) : "";
    if (found.meaning.answers >= 0) {
        notes += (notes.empty() ? "to " : ", to ") + std::to_string(found.meaning.answers + 1);
        notes += found.took ? ", " + milliseconds(*found.took) : "";
    }
    const bool trouble =
        found.malformed || found.meaning.surprise || found.meaning.kind == decode::Kind::Error;
    std::string words = styled(found.meaning.text, trouble ? Style::warning : Style::plain, m_look.colours);
    if (!notes.empty())
        words += "  " + styled("[" + notes + "]", Style::dim, m_look.colours);
    return rightAligned(std::to_string(found.number + 1), NUMBER_COLUMNS) + "  " + stamp(item) +
           decode::PacketText(item.piece.direction, item.piece.bytes.data(), item.piece.bytes.size(), words,
                              BYTE_COLUMNS, MOST_BYTES) +
           "\n";
}

std::string TrafficPrinter::json(const Found &found) {
    const InputItem &item = found.item;
    Json object;
    object["number"] = found.number + 1;
    const std::string when = stamp(item);
    if (!when.empty())
        object["time"] = Json::parse(when);
    object["direction"] = decode::NameOf(item.piece.direction);
    object["kind"] = decode::NameOf(found.meaning.kind);
    object["family"] = decode::NameOf(found.meaning.family);
    object["bytes"] = bytesText(item.piece.bytes);
    object["text"] = found.meaning.text;
    if (found.meaning.row != nullptr)
        object["name"] = found.meaning.row->name;
    if (found.meaning.answers >= 0)
        object["answers"] = found.meaning.answers + 1;
    if (found.took)
        object["took"] = seconds(*found.took);
    if (found.meaning.surprise)
        object["surprise"] = true;
    if (found.malformed)
        object["malformed"] = true;
    addPlace(object, item);
    return dumped(object);
}

} // namespace tool
