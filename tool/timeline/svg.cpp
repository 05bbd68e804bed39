#include "tool/timeline/svg.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace tool {

namespace {

using decode::Direction;
using decode::Kind;

constexpr double LEFT = 86;    // names of the lanes
constexpr double WIDTH = 1400; // of the time axis
constexpr double RIGHT = 24;
constexpr double TOP = 76;
constexpr double ROW_HEIGHT = 178;
constexpr double AXIS = 14; // within a row: where its lanes begin
constexpr double HOST_LANE = 22;
constexpr double CAMERA_LANE = 58;
constexpr double COMMAND_LANE = 94;
constexpr double INQUIRY_LANE = 122;
constexpr double LANE_HEIGHT = 28;
constexpr double BAR_HEIGHT = 20;
constexpr double CHARACTER = 5.6;   // of a 10 px text, about
constexpr double WISHED_ROOM = 110; // px for an exchange
constexpr double MOST_ROWS = 60;
constexpr double MICROSECONDS = 1e6;

__attribute__((format(printf, 1, 2))) std::string format(const char *pattern, ...) {
    char text[64];
    va_list values;
    va_start(values, pattern);
    std::vsnprintf(text, sizeof text, pattern, values);
    va_end(values);
    return text;
}

std::string px(double value) {
    return format("%.1f", value);
}

std::string escaped(const std::string &text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '&':
            safe += "&amp;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += static_cast<unsigned char>(c) < ' ' ? '?' : c;
        }
    }
    return safe;
}

const char *classOf(const TimelinePacket &packet) {
    switch (packet.kind) {
    case Kind::Command:
    case Kind::Control:
        return "command";
    case Kind::Inquiry:
        return "inquiry";
    case Kind::Answer:
        return "answer";
    case Kind::Error:
        return "error";
    case Kind::Noise:
    case Kind::Other:
        return "noise";
    case Kind::Report:
    case Kind::Notice:
    case Kind::Debug:
        return "report";
    case Kind::Acknowledgement:
    case Kind::Completion:
        break;
    }
    return "result";
}

const char *classOf(const TimelineExchange &exchange) {
    switch (exchange.outcome) {
    case TimelineExchange::Outcome::refused:
        return "error";
    case TimelineExchange::Outcome::noAnswer:
        return "lost";
    case TimelineExchange::Outcome::open:
        return "noise";
    case TimelineExchange::Outcome::done:
        break;
    }
    return exchange.command ? "command" : "inquiry";
}

// A step of the axis that people count in, so that ticks are some 90 px apart.
double tickStep(double perRow) {
    const double wished = perRow * 90 / WIDTH;
    const double decade = std::pow(10, std::floor(std::log10(wished)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * decade >= wished)
            return factor * decade;
    return 10 * decade;
}

class Picture {
  public:
    explicit Picture(const Timeline &timeline) : m_timeline(timeline), m_perRow(timePerRow()) {
        m_rows = static_cast<int>(std::ceil(static_cast<double>(timeline.length) / m_perRow));
        m_rows = std::max(m_rows, 1);
    }

    std::string text() {
        head();
        for (int row = 0; row < m_rows; ++row)
            ground(row);
        for (const TimelineExchange &exchange : m_timeline.exchanges)
            drawExchange(exchange);
        for (const TimelinePacket &packet : m_timeline.packets)
            drawPacket(packet);
        for (const TimelineRemark &remark : m_timeline.remarks)
            drawRemark(remark);
        return m_text + "</svg>\n";
    }

  private:
    double timePerRow() const {
        const double exchanges = static_cast<double>(std::max<size_t>(m_timeline.exchanges.size(), 4));
        const double wished = exchanges * WISHED_ROOM / WIDTH; // rows
        const double rows = std::min(std::max(std::ceil(wished), 1.0), MOST_ROWS);
        return static_cast<double>(m_timeline.length) / rows;
    }

    int rowOf(int64_t time) const {
        return std::min(static_cast<int>(static_cast<double>(time) / m_perRow), m_rows - 1);
    }
    double x(int64_t time, int row) const {
        const double inRow = static_cast<double>(time) - m_perRow * row;
        return LEFT + std::clamp(inRow / m_perRow, 0.0, 1.0) * WIDTH;
    }
    double y(int row, double lane) const { return TOP + ROW_HEIGHT * row + AXIS + lane; }

    void head() {
        const double width = LEFT + WIDTH + RIGHT;
        const double height = TOP + ROW_HEIGHT * m_rows + 10;
        m_text +=
            "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + px(width) + "\" height=\"" + px(height) +
            "\" viewBox=\"0 0 " + px(width) + " " + px(height) +
            "\" font-family=\"DejaVu Sans, Verdana, sans-serif\">\n<style>\n"
            "text{font-size:10px;fill:#26323a} .title{font-size:16px;font-weight:bold} .soft{fill:#66757f}\n"
            ".command{fill:#b9d3ee} .inquiry{fill:#c3e3c0} .answer{fill:#a5d6a0} .result{fill:#9dbfe3}\n"
            ".error{fill:#f2a49b} .lost{fill:#f7cf85} .noise{fill:#cfd4d8} .report{fill:#d9c6ec}\n"
            "rect.bar{stroke:#52626d;stroke-width:.5} .ground{fill:#f5f7f8} .tick{stroke:#d5dadd}\n"
            ".remark{stroke:#a06a00;stroke-dasharray:3 2} .ack{stroke:#26323a} .busy{fill:#8798a3}\n"
            "</style>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
        put(LEFT, 24, "title", m_timeline.title);
        put(LEFT, 42, "soft", summary());
        legend();
    }

    std::string summary() const {
        size_t commands = 0;
        size_t troubles = 0;
        for (const TimelineExchange &exchange : m_timeline.exchanges) {
            commands += exchange.command ? 1 : 0;
            troubles += exchange.outcome == TimelineExchange::Outcome::refused ||
                                exchange.outcome == TimelineExchange::Outcome::noAnswer
                            ? 1
                            : 0;
        }
        const std::string start = m_timeline.started.empty() ? "" : m_timeline.started + ", ";
        return start + format("%.3f s, ", static_cast<double>(m_timeline.length) / MICROSECONDS) +
               std::to_string(m_timeline.baud) + " bit/s at the start, " + std::to_string(commands) +
               " commands, " + std::to_string(m_timeline.exchanges.size() - commands) + " inquiries, " +
               std::to_string(troubles) + " refused or not answered";
    }

    void legend() {
        const char *const entries[][2] = {
            {"command", "command"}, {"result", "acknowledged, completed"},
            {"inquiry", "inquiry"}, {"answer", "answer"},
            {"error", "refused"},   {"lost", "no answer in time"},
            {"report", "unasked"},  {"noise", "noise, or still open"},
        };
        double at = LEFT;
        for (const auto &entry : entries) {
            box(at, 52, 12, 10, entry[0], "");
            put(at + 16, 61, "soft", entry[1]);
            at += 16 + 16 + CHARACTER * static_cast<double>(std::string(entry[1]).size());
        }
    }

    void ground(int row) {
        const double top = y(row, 0);
        m_text += "<rect class=\"ground\" x=\"" + px(LEFT) + "\" y=\"" + px(top + HOST_LANE - 4) +
                  "\" width=\"" + px(WIDTH) + "\" height=\"" + px(INQUIRY_LANE + LANE_HEIGHT - HOST_LANE) +
                  "\"/>\n";
        const struct {
            double lane;
            const char *name;
        } lanes[] = {{HOST_LANE, "host"},
                     {CAMERA_LANE, "camera"},
                     {COMMAND_LANE, "commands"},
                     {INQUIRY_LANE, "inquiries"}};
        for (const auto &lane : lanes)
            put(10, top + lane.lane + 14, "soft", lane.name);
        const double step = tickStep(m_perRow);
        for (double time = std::ceil(m_perRow * row / step) * step; time <= m_perRow * (row + 1);
             time += step) {
            const double at = LEFT + (time - m_perRow * row) / m_perRow * WIDTH;
            m_text += "<line class=\"tick\" x1=\"" + px(at) + "\" x2=\"" + px(at) + "\" y1=\"" + px(top + 6) +
                      "\" y2=\"" + px(top + INQUIRY_LANE + LANE_HEIGHT - 4) + "\"/>\n";
            put(at + 2, top + 12, "soft",
                step < 1000 ? format("%.1f ms", time / 1000) : format("%.0f ms", time / 1000));
        }
        drawUse(row, Direction::ToCamera, HOST_LANE);
        drawUse(row, Direction::FromCamera, CAMERA_LANE);
    }

    // How much of the line the row used, at its right end.
    void drawUse(int row, Direction direction, double lane) {
        const int64_t from = static_cast<int64_t>(m_perRow * row);
        const int64_t to = static_cast<int64_t>(m_perRow * (row + 1));
        const double use = m_timeline.utilisation(direction, from, to);
        put(10, y(row, lane) + 25, "soft", format("%.0f %% of line", use * 100));
    }

    void drawExchange(const TimelineExchange &exchange) {
        const double lane = exchange.command ? COMMAND_LANE : INQUIRY_LANE;
        const TimelinePacket &first = m_timeline.packets[exchange.packet];
        const std::string words =
            first.text + ": " + nameOf(exchange.outcome) +
            format(" after %.1f ms", static_cast<double>(exchange.end - exchange.begin) / 1000);
        const int lastRow = rowOf(exchange.end);
        for (int row = rowOf(exchange.begin); row <= lastRow; ++row) {
            const double from = x(exchange.begin, row);
            const double to = std::max(x(exchange.end, row), from + 1);
            box(from, y(row, lane), to - from, BAR_HEIGHT, classOf(exchange), words);
            label(from, to, y(row, lane) + 14, first.text);
        }
        if (exchange.acknowledged >= 0) {
            const int row = rowOf(exchange.acknowledged);
            const double at = x(exchange.acknowledged, row);
            m_text += "<line class=\"ack\" x1=\"" + px(at) + "\" x2=\"" + px(at) + "\" y1=\"" +
                      px(y(row, lane)) + "\" y2=\"" + px(y(row, lane) + BAR_HEIGHT) + "\"/>\n";
        }
    }

    void drawPacket(const TimelinePacket &packet) {
        const double lane = packet.direction == Direction::ToCamera ? HOST_LANE : CAMERA_LANE;
        const int row = rowOf(packet.begin);
        const double from = x(packet.begin, row);
        const double to = std::max(x(packet.end, row), from + 1);
        box(from, y(row, lane), to - from, BAR_HEIGHT, classOf(packet), packet.bytes + "\n" + packet.text);
        label(from, to, y(row, lane) + 14, packet.bytes);
    }

    void drawRemark(const TimelineRemark &remark) {
        const int row = rowOf(remark.time);
        const double at = x(remark.time, row);
        m_text += "<line class=\"remark\" x1=\"" + px(at) + "\" x2=\"" + px(at) + "\" y1=\"" +
                  px(y(row, 14)) + "\" y2=\"" + px(y(row, INQUIRY_LANE + LANE_HEIGHT)) + "\"/>\n";
        const double room = CHARACTER * static_cast<double>(remark.text.size());
        put(std::min(at + 3, LEFT + WIDTH + RIGHT - room), y(row, INQUIRY_LANE + LANE_HEIGHT), "soft",
            remark.text);
    }

    // Only where it fits: half a word helps nobody, and the tool tip has it.
    void label(double from, double to, double base, const std::string &words) {
        const size_t room = static_cast<size_t>(std::max(0.0, (to - from - 6) / CHARACTER));
        if (words.size() <= room)
            put(from + 3, base, "", words);
        else if (room >= 8)
            put(from + 3, base, "", words.substr(0, room - 1) + "…");
    }

    void box(double left, double top, double width, double height, const std::string &kind,
             const std::string &tip) {
        m_text += "<rect class=\"bar " + kind + "\" x=\"" + px(left) + "\" y=\"" + px(top) + "\" width=\"" +
                  px(width) + "\" height=\"" + px(height) + "\"" +
                  (tip.empty() ? "/>\n" : "><title>" + escaped(tip) + "</title></rect>\n");
    }

    void put(double left, double base, const std::string &kind, const std::string &words) {
        m_text += "<text x=\"" + px(left) + "\" y=\"" + px(base) + "\"" +
                  (kind.empty() ? "" : " class=\"" + kind + "\"") + ">" + escaped(words) + "</text>\n";
    }

    const Timeline &m_timeline;
    double m_perRow; // microseconds
    int m_rows = 1;
    std::string m_text;
};

} // namespace

std::string svgOf(const Timeline &timeline) {
    return Picture(timeline).text();
}

} // namespace tool
