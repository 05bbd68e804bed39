#include <cmath>
#include <nlohmann/json.hpp>

#include "tool/doctor/report.h"

namespace tool::doctor {

namespace {

using Json = nlohmann::ordered_json;

double rounded(double ms) {
    return std::round(ms * 10) / 10;
}

} // namespace

std::string asJson(const Report &report) {
    Json json;
    json["device"] = report.device();
    json["healthy"] = report.healthy();
    json["rate"] = report.rate ? Json(*report.rate) : Json();
    if (report.roundTrips) {
        json["roundTrip"] = {{"asked", report.roundTrips->asked},
                             {"lost", report.roundTrips->lost},
                             {"minMs", rounded(report.roundTrips->leastMs)},
                             {"medianMs", rounded(report.roundTrips->medianMs)},
                             {"maxMs", rounded(report.roundTrips->mostMs)}};
    }
    json["versions"] = report.versions;
    json["findings"] = Json::array();
    for (const Finding &finding : report.findings())
        json["findings"].push_back(
            {{"check", finding.check}, {"verdict", nameOf(finding.verdict)}, {"text", finding.text}});
    json["advice"] = report.advice();
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace tool::doctor
