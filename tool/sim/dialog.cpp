#include "tool/sim/dialog.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace tool {

namespace {

using Json = nlohmann::ordered_json;
using Kind = DialogAnswer::Kind;

std::string helpText();

struct DialogCommand {
    const char *name;
    const char *argument; // what it takes, for help; empty: nothing
    const char *help;
    DialogAnswer (*obey)(Fleet &fleet, size_t camera, const std::string &argument); // null: not a camera's
};

DialogAnswer done(void (sim::Camera::*action)(), sim::Camera &camera) {
    (camera.*action)();
    return {};
}

const DialogCommand COMMANDS[] = {
    {"state", "", "what the camera believes, as one line of JSON",
     [](Fleet &fleet, size_t i, const std::string &) {
         return DialogAnswer{Kind::state, stateLine(fleet, i), ""};
     }},
    {"fault", "NAME=VALUE", "switch a fault on",
     [](Fleet &fleet, size_t i, const std::string &text) {
         fleet.camera(i).setFault(text);
         return DialogAnswer{};
     }},
    {"clear", "NAME", "switch a fault off",
     [](Fleet &fleet, size_t i, const std::string &name) {
         fleet.camera(i).clearFault(name);
         return DialogAnswer{};
     }},
    {"power-cut", "", "take the supply voltage away",
     [](Fleet &fleet, size_t i, const std::string &) {
         return done(&sim::Camera::powerCut, fleet.camera(i));
     }},
    {"power-on", "", "apply the supply voltage",
     [](Fleet &fleet, size_t i, const std::string &) {
         return done(&sim::Camera::powerApply, fleet.camera(i));
     }},
    {"hang-up", "", "pull the adapter",
     [](Fleet &fleet, size_t i, const std::string &) { return done(&sim::Camera::hangUp, fleet.camera(i)); }},
    {"replug", "", "plug the adapter in again",
     [](Fleet &fleet, size_t i, const std::string &) {
         fleet.camera(i).replug();
         return DialogAnswer{Kind::path, fleet.camera(i).path(), ""};
     }},
    {"help", "", "this list", nullptr},
    {"quit", "", "end", nullptr},
};

std::string helpText() {
    std::string text;
    for (const DialogCommand &command : COMMANDS) {
        std::string usage = std::string(command.name) + " " + command.argument;
        usage.resize(18, ' ');
        text += (text.empty() ? "" : "\n") + usage + command.help;
    }
    return text + "\nThe name of a camera in front of a command, or \"all\", says whom it is for.";
}

const DialogCommand *findCommand(const std::string &name) {
    for (const DialogCommand &command : COMMANDS) {
        if (name == command.name)
            return &command;
    }
    return nullptr;
}

std::string trimmed(const std::string &text) {
    const size_t first = text.find_first_not_of(" \t\r");
    const size_t last = text.find_last_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

// Takes the first word off a text.
std::string cutWord(std::string &text) {
    const size_t space = text.find_first_of(" \t");
    const std::string word = text.substr(0, space);
    text = space == std::string::npos ? "" : trimmed(text.substr(space));
    return word;
}

DialogReply wrong(const std::string &why) {
    return {{{Kind::error, why, ""}}};
}

DialogAnswer perform(const DialogCommand &command, Fleet &fleet, size_t camera, const std::string &argument) {
    DialogAnswer answer;
    try {
        answer = command.obey(fleet, camera, argument);
    } catch (const std::exception &refused) {
        answer = {Kind::error, refused.what(), ""};
    }
    answer.camera = fleet.name(camera);
    return answer;
}

// Takes the name of a camera off a line; false when the line names none.
bool cutCamera(const Fleet &fleet, std::string &text, std::optional<size_t> &chosen) {
    std::string rest = text;
    const std::string word = cutWord(rest);
    const std::optional<size_t> named = fleet.find(word);
    if (!named && word != "all")
        return false;
    chosen = named;
    text = rest;
    return true;
}

Json jsonOf(const DialogAnswer &answer, bool named) {
    if (answer.kind == Kind::state)
        return Json::parse(answer.text);
    Json json;
    if (named)
        json["name"] = answer.camera;
    json["ok"] = answer.kind != Kind::error;
    if (answer.kind == Kind::error)
        json["error"] = answer.text;
    else if (answer.kind == Kind::path)
        json["path"] = answer.text;
    else if (answer.kind == Kind::help)
        json["help"] = answer.text;
    return json;
}

std::string textOf(const DialogAnswer &answer) {
    switch (answer.kind) {
    case Kind::done:
        return "ok";
    case Kind::path:
        return "ok: " + answer.text;
    case Kind::error:
        return "error: " + answer.text;
    default:
        return answer.text;
    }
}

} // namespace

std::string stateLine(Fleet &fleet, size_t number) {
    Json json;
    json["name"] = fleet.name(number);
    json["device"] = fleet.device(number);
    const Json state = Json::parse(fleet.camera(number).stateJson());
    for (const auto &[key, value] : state.items())
        json[key] = value;
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

DialogReply obey(Fleet &fleet, const std::string &line, std::optional<size_t> chosen) {
    std::string text = trimmed(line);
    if (text.empty())
        return {};
    const bool addressed = cutCamera(fleet, text, chosen);
    if (addressed && text.empty())
        return wrong("a command is missing behind the camera; \"help\" lists them");
    const std::string name = cutWord(text);
    const DialogCommand *command = findCommand(name);
    if (command == nullptr)
        return wrong("no command is called \"" + name + "\"; \"help\" lists them");
    const bool takesOne = *command->argument != '\0';
    if (takesOne == text.empty())
        return wrong(name +
                     (takesOne ? " needs " + std::string(command->argument) : " takes nothing after it"));
    if (command->obey == nullptr)
        return name == "quit" ? DialogReply{{{}}, false, true} : DialogReply{{{Kind::help, helpText(), ""}}};
    DialogReply reply;
    reply.each = !chosen && fleet.size() > 1;
    for (size_t i = chosen.value_or(0); i < (chosen ? *chosen + 1 : fleet.size()); ++i)
        reply.answers.push_back(perform(*command, fleet, i, text));
    return reply;
}

std::string asText(const DialogReply &reply) {
    std::string text;
    if (reply.quit)
        return text;
    for (const DialogAnswer &answer : reply.answers) {
        const bool named = reply.each && answer.kind != Kind::state;
        text += (text.empty() ? "" : "\n") + (named ? answer.camera + ": " : "") + textOf(answer);
    }
    return text;
}

std::string asJson(const DialogReply &reply) {
    if (reply.answers.empty())
        return "";
    Json json = Json::array();
    for (const DialogAnswer &answer : reply.answers)
        json.push_back(jsonOf(answer, reply.each));
    return (reply.each ? json : json[0]).dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace tool
