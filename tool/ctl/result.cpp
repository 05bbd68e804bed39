#include "tool/ctl/result.h"

#include <nlohmann/json.hpp>

namespace tool::ctl {

namespace {

using Json = nlohmann::ordered_json;

const char *stateName(const Sent &sent) {
    switch (sent.state) {
    case Sent::State::completed:
        return "completed";
    case Sent::State::refused:
        return "refused";
    case Sent::State::timedOut:
        return "timed-out";
    case Sent::State::notQueued:
        return "not-queued";
    case Sent::State::notWritten:
        return "not-written";
    case Sent::State::queued:
    case Sent::State::sent:
        break;
    }
    return "open";
}

Json jsonOfSent(const Sent &sent) {
    Json json = {{"bytes", hexText(sent.bytes)}, {"meaning", sent.meaning()}, {"result", stateName(sent)}};
    if (sent.state != Sent::State::completed && sent.state != Sent::State::refused)
        return json;
    json["socket"] = sent.socket;
    if (sent.state == Sent::State::refused)
        json["error"] = errorText(sent.error);
    json["ms"] =
        std::chrono::duration_cast<std::chrono::microseconds>(sent.endedAt - sent.sentAt).count() / 1000.0;
    return json;
}

Json jsonOfFields(const std::vector<Field> &fields) {
    Json json = Json::object();
    for (const Field &field : fields)
        std::visit([&](const auto &value) { json[field.name] = value; }, field.value);
    return json;
}

// What a camera sent as text may be anything but text.
std::string dumped(const Json &json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

std::string jsonOf(const std::vector<Field> &fields) {
    return dumped(jsonOfFields(fields));
}

std::string jsonOf(const Result &result) {
    Json json = {{"command", result.command}, {"ok", result.ok()}};
    if (!result.source.empty())
        json["source"] = result.source;
    if (!result.ok())
        json["error"] = result.error;
    if (!result.fields.empty())
        json["values"] = jsonOfFields(result.fields);
    for (const Sent &sent : result.sent)
        json["sent"].push_back(jsonOfSent(sent));
    if (!result.notes.empty())
        json["notes"] = result.notes;
    return dumped(json);
}

std::vector<std::string> linesOf(const Result &result) {
    std::vector<std::string> lines;
    for (const Sent &sent : result.sent)
        lines.push_back(sent.meaning() + ": " + sent.outcome());
    size_t widest = 0;
    for (const Field &field : result.fields)
        widest = std::max(widest, field.name.size());
    for (const Field &field : result.fields)
        lines.push_back(field.name + std::string(widest - field.name.size() + 2, ' ') + field.shown);
    lines.insert(lines.end(), result.lines.begin(), result.lines.end());
    return lines;
}

} // namespace tool::ctl
