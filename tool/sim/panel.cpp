#include "tool/sim/panel.h"

#include <algorithm>
#include <cstdio>

namespace tool {

namespace {

constexpr size_t BAR_WIDTH = 24;
constexpr unsigned ZOOM_END = 0x7AC0; // with digital zoom
constexpr unsigned FOCUS_FAR = 0x1000;
constexpr unsigned FOCUS_NEAR = 0xF000;
constexpr size_t SETTINGS_INDENT = 10;
constexpr size_t MOST_CAMERAS = 8; // in the list
constexpr size_t LEAST_PACKETS = 3;

using Rows = std::vector<Row>;

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

// Whatever comes from a name or a message: no bytes that a terminal would obey.
std::string printable(std::string text) {
    for (char &c : text) {
        if (c < ' ' || c > '~')
            c = '?';
    }
    return text;
}

std::string hex(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", value);
    return text;
}

std::string bar(unsigned value, unsigned first, unsigned last) {
    const unsigned within = std::clamp(value, first, last) - first;
    const size_t at = static_cast<size_t>(within) * (BAR_WIDTH - 1) / (last - first);
    std::string text(BAR_WIDTH, '-');
    text[at] = '#';
    return "[" + text + "]";
}

Style styleOfPower(sim::Power power) {
    switch (power) {
    case sim::Power::on:
        return Style::good;
    case sim::Power::off:
        return Style::bad;
    default:
        return Style::warning;
    }
}

Row rule(const std::string &title, size_t columns) {
    std::string text = "-- " + title + " ";
    text.resize(std::max(text.size(), columns), '-');
    return {{text, Style::dim}};
}

Row label(const std::string &name) {
    return {{padded(name, SETTINGS_INDENT), Style::dim}};
}

// Adds items to rows, beginning a new row where the next one would pass the edge.
void wrap(Rows &rows, const std::string &name, const Row &items, size_t columns) {
    Row row = label(name);
    size_t width = SETTINGS_INDENT;
    for (const Span &item : items) {
        if (width > SETTINGS_INDENT && width + item.text.size() > columns) {
            rows.push_back(row);
            row = label("");
            width = SETTINGS_INDENT;
        }
        row.push_back({item.text + "  ", item.style});
        width += item.text.size() + 2;
    }
    if (row.size() > 1)
        rows.push_back(row);
}

void addCameras(Rows &rows, const Panel &panel) {
    if (panel.cameras.size() < 2)
        return;
    const size_t count = std::min(panel.cameras.size(), MOST_CAMERAS);
    const size_t first =
        std::min(panel.chosen >= count ? panel.chosen - count + 1 : 0, panel.cameras.size() - count);
    for (size_t i = first; i < first + count; ++i) {
        const PanelEntry &entry = panel.cameras[i];
        const bool chosen = i == panel.chosen;
        rows.push_back({{chosen ? "> " : "  "},
                        {padded(entry.name, 12), chosen ? Style::heading : Style::plain},
                        {padded(sim::powerName(entry.state.power), 9), styleOfPower(entry.state.power)},
                        {padded(std::to_string(entry.state.packetsSeen) + " packets", 16)},
                        {printable(entry.device)}});
    }
}

void addHead(Rows &rows, const PanelEntry &entry) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(entry.state.type));
    rows.push_back({{entry.name, Style::heading},
                    {std::string("  ") + code + "  "},
                    {sim::powerName(entry.state.power), styleOfPower(entry.state.power)},
                    {"  " + std::to_string(entry.state.baud) + " bit/s  "},
                    entry.state.pluggedIn ? Span{printable(entry.device)} : Span{"unplugged", Style::bad}});
}

void addLens(Rows &rows, const sim::State &state) {
    const Style zoom = state.zoomMoving ? Style::heading : Style::plain;
    const Style focus = state.focusMoving ? Style::heading : Style::plain;
    Row lens = label("lens");
    lens.push_back({"zoom  " + hex(state.zoom) + " " + bar(state.zoom, 0, ZOOM_END), zoom});
    rows.push_back(lens);
    lens = label("");
    lens.push_back({"focus " + hex(state.focus) + " " + bar(state.focus, FOCUS_FAR, FOCUS_NEAR), focus});
    lens.push_back({state.setting("focusMode") == 2 ? " auto" : " manual"});
    rows.push_back(lens);
}

Row settingsOf(const sim::State &state, const std::set<std::string> &changed) {
    Row items;
    for (const auto &[name, value] : state.settings) {
        const auto pending = state.pendingSettings.find(name);
        const std::string later =
            pending == state.pendingSettings.end() ? "" : "(" + std::to_string(pending->second) + ")";
        items.push_back({name + "=" + std::to_string(value) + later,
                         changed.count(name) != 0 ? Style::heading : Style::plain});
    }
    return items;
}

Row countsOf(const std::map<std::string, unsigned long> &counts) {
    Row items;
    for (const auto &[kind, count] : counts)
        items.push_back({kind + " x" + std::to_string(count),
                         kind.compare(0, 5, "error") == 0 ? Style::warning : Style::plain});
    return items;
}

Row lineCountsOf(const sim::State &state) {
    const auto item = [](const std::string &name, unsigned long count) {
        return Span{name + " " + std::to_string(count), count == 0 ? Style::plain : Style::warning};
    };
    Row items = {{"seen " + std::to_string(state.packetsSeen)},
                 item("ignored", state.ignoredPackets),
                 item("noise", state.noiseBytes),
                 item("lost", state.lostBytes)};
    for (const int i : {0, 1}) {
        if (state.socketBusy[i])
            items.push_back({"socket " + std::to_string(i + 1) + " busy", Style::heading});
    }
    return items;
}

void addState(Rows &rows, const Panel &panel, size_t columns) {
    const sim::State &state = panel.cameras[panel.chosen].state;
    Row faults;
    for (const std::string &fault : state.faults)
        faults.push_back({printable(fault), Style::warning});
    wrap(rows, "faults", faults, columns);
    addLens(rows, state);
    wrap(rows, "packets", lineCountsOf(state), columns);
    wrap(rows, "heard", countsOf(state.seen), columns);
    wrap(rows, "said", countsOf(state.sent), columns);
    wrap(rows, "settings", settingsOf(state, panel.changed), columns); // last, since they may not fit
}

// Wrapped anywhere: what is long is JSON.
Rows answerRows(const std::string &answer, size_t columns, size_t most) {
    Rows rows;
    for (size_t at = 0; at < answer.size() && columns > 0;) {
        const size_t end = std::min(answer.find('\n', at), answer.size());
        const std::string line = answer.substr(at, end - at);
        for (size_t i = 0; i < line.size() || i == 0; i += columns)
            rows.push_back({{printable(line.substr(i, columns))}});
        at = end + 1;
    }
    if (rows.size() > most)
        rows.resize(most);
    return rows;
}

Row promptOf(const Panel &panel, size_t columns) {
    const std::string prompt = panel.cameras[panel.chosen].name + "> ";
    const size_t room = columns > prompt.size() + 1 ? columns - prompt.size() - 1 : 0;
    const size_t hidden = panel.typed.size() - std::min(panel.typed.size(), room);
    return {{prompt, Style::dim}, {panel.typed.substr(hidden)}};
}

} // namespace

std::vector<Row> drawPanel(const Panel &panel, ScreenSize size) {
    const bool several = panel.cameras.size() > 1;
    const Rows answer = answerRows(panel.answer, size.columns, size.rows / 2);
    Rows rows;
    addCameras(rows, panel);
    if (several)
        rows.push_back(rule("Tab: next camera", size.columns));
    addHead(rows, panel.cameras[panel.chosen]);
    addState(rows, panel, size.columns);
    // The state gives way to some packets, the packets to the answer and the line to type on.
    const size_t below = answer.size() + 2; // a rule in front, the prompt behind
    const size_t room = size.rows > below ? size.rows - below : 0;
    rows.resize(std::min(rows.size(), room > LEAST_PACKETS + 1 ? room - LEAST_PACKETS - 1 : 0));
    rows.push_back(rule("packets", size.columns));
    const size_t count = room > rows.size() ? room - rows.size() : 0;
    Rows packets = panel.packets(count);
    packets.resize(count);
    rows.insert(rows.end(), packets.begin(), packets.end());
    rows.push_back(rule("\"help\" lists the commands, Ctrl-C ends", size.columns));
    rows.insert(rows.end(), answer.begin(), answer.end());
    rows.push_back(promptOf(panel, size.columns));
    if (rows.size() > size.rows) // the prompt stays
        rows.erase(rows.begin(), rows.end() - static_cast<std::ptrdiff_t>(size.rows));
    return rows;
}

} // namespace tool
