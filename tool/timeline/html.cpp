#include "tool/timeline/html.h"

#include <nlohmann/json.hpp>

namespace tool {

extern const char TIMELINE_PAGE[]; // page.html, made part of the program by the build

namespace {

const char DATA_MARK[] = "/*DATA*/null";

nlohmann::json jsonOf(const Timeline &timeline) {
    nlohmann::json page = {{"title", timeline.title},
                           {"started", timeline.started},
                           {"baud", timeline.baud},
                           {"length", timeline.length},
                           {"packets", nlohmann::json::array()},
                           {"exchanges", nlohmann::json::array()},
                           {"remarks", nlohmann::json::array()}};
    for (const TimelinePacket &packet : timeline.packets)
        page["packets"].push_back(
            {packet.begin, packet.end, packet.direction == decode::Direction::ToCamera ? 0 : 1,
             decode::NameOf(packet.kind), packet.bytes, packet.text, packet.surprise ? 1 : 0});
    for (const TimelineExchange &exchange : timeline.exchanges)
        page["exchanges"].push_back({exchange.command ? 0 : 1, exchange.begin, exchange.end,
                                     exchange.acknowledged, nameOf(exchange.outcome), exchange.packet,
                                     exchange.last});
    for (const TimelineRemark &remark : timeline.remarks)
        page["remarks"].push_back({remark.time, remark.text});
    return page;
}

// Inside a script element "</script" would end it, whatever it stands in.
std::string safeInScript(std::string text) {
    for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at))
        text.replace(at, 1, "\\u003c");
    return text;
}

} // namespace

std::string htmlOf(const Timeline &timeline) {
    std::string page = TIMELINE_PAGE;
    const std::string data =
        safeInScript(jsonOf(timeline).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    return page.replace(page.find(DATA_MARK), sizeof DATA_MARK - 1, data);
}

} // namespace tool
