#include "sim/state_json.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace sim {

namespace {

using Json = nlohmann::ordered_json;

std::string hex(unsigned value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", digits, value);
    return text;
}

Json registersOf(const std::map<unsigned, unsigned> &registers) {
    Json json = Json::object();
    for (const auto &[number, value] : registers)
        json[hex(number, 2)] = hex(value, 2);
    return json;
}

Json socketsOf(const State &state) {
    Json json = Json::array();
    for (int i = 0; i < 2; ++i) {
        if (state.socketBusy[i])
            json.push_back(i + 1);
    }
    return json;
}

Json filesOf(const std::vector<KovaFile> &files) {
    Json json = Json::array();
    for (const KovaFile &file : files)
        json.push_back({{"kind", file.kind}, {"size", file.size}});
    return json;
}

Json kovaOf(const KovaState &kova) {
    Json json;
    json["ability"] = hex(kova.ability, 8);
    json["clock"] = kova.clock;
    json["luma"] = kova.luma;
    json["focusValue"] = kova.focusValue;
    json["upgradeState"] = kova.upgradeState;
    json["upgradeMask"] = hex(kova.upgradeMask, 8);
    json["filesReceived"] = filesOf(kova.filesReceived);
    json["logExports"] = kova.logExports;
    json["logSaves"] = kova.logSaves;
    json["transferring"] = kova.transferring;
    json["transfersCompleted"] = kova.transfersCompleted;
    json["transfersFailed"] = kova.transfersFailed;
    json["transferBlocks"] = kova.transferBlocks;
    return json;
}

const char *focusModeName(int mode) {
    return mode == 2 ? "auto" : mode == 3 ? "manual" : "other";
}

} // namespace

const char *powerName(Power power) {
    switch (power) {
    case Power::off:
        return "off";
    case Power::booting:
        return "booting";
    case Power::on:
        return "on";
    case Power::standby:
        return "standby";
    }
    return "?";
}

std::string toJson(const State &state) {
    Json json;
    json["camera"] = state.camera;
    json["type"] = hex(state.type, 8);
    json["power"] = powerName(state.power);
    json["booting"] = state.power == Power::booting;
    json["pluggedIn"] = state.pluggedIn;
    json["baud"] = state.baud;
    json["zoom"] = state.zoom;
    json["zoomMoving"] = state.zoomMoving;
    json["focus"] = state.focus;
    json["focusMoving"] = state.focusMoving;
    json["focusMode"] = focusModeName(state.setting("focusMode"));
    json["dzoom"] = state.setting("dzoom") == 2;
    json["settings"] = state.settings;
    json["pendingSettings"] = state.pendingSettings;
    if ((state.type & 0xFFFFF000u) == 0x02012000u)
        json["kova"] = kovaOf(state.kova);
    json["registers"] = registersOf(state.registers);
    json["pendingRegisters"] = registersOf(state.pendingRegisters);
    json["sockets"] = socketsOf(state);
    json["seen"] = state.seen;
    json["sent"] = state.sent;
    json["packetsSeen"] = state.packetsSeen;
    json["ignoredPackets"] = state.ignoredPackets;
    json["noiseBytes"] = state.noiseBytes;
    json["lostBytes"] = state.lostBytes;
    json["faults"] = state.faults;
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace sim
