#include "tool/sim_dialog.h"

#include <stdexcept>

namespace tool {

namespace {

std::string helpText();

struct DialogCommand {
    const char *name;
    const char *argument; // what it takes, for help; empty: nothing
    const char *help;
    std::string (*obey)(sim::Camera &camera, const std::string &argument);
};

std::string ok(void (sim::Camera::*action)(), sim::Camera &camera) {
    (camera.*action)();
    return "ok";
}

const DialogCommand COMMANDS[] = {
    {"state", "", "what the camera believes, as one line of JSON",
     [](sim::Camera &camera, const std::string &) { return camera.stateJson(); }},
    {"fault", "NAME=VALUE", "switch a fault on",
     [](sim::Camera &camera, const std::string &text) {
         camera.setFault(text);
         return std::string("ok");
     }},
    {"clear", "NAME", "switch a fault off",
     [](sim::Camera &camera, const std::string &name) {
         camera.clearFault(name);
         return std::string("ok");
     }},
    {"power-cut", "", "take the supply voltage away",
     [](sim::Camera &camera, const std::string &) { return ok(&sim::Camera::powerCut, camera); }},
    {"power-on", "", "apply the supply voltage",
     [](sim::Camera &camera, const std::string &) { return ok(&sim::Camera::powerApply, camera); }},
    {"hang-up", "", "pull the adapter",
     [](sim::Camera &camera, const std::string &) { return ok(&sim::Camera::hangUp, camera); }},
    {"replug", "", "plug the adapter in again",
     [](sim::Camera &camera, const std::string &) {
         camera.replug();
         return "ok: " + camera.path();
     }},
    {"help", "", "this list", [](sim::Camera &, const std::string &) { return helpText(); }},
    {"quit", "", "end", nullptr},
};

std::string helpText() {
    std::string text;
    for (const DialogCommand &command : COMMANDS) {
        std::string usage = std::string(command.name) + " " + command.argument;
        usage.resize(18, ' ');
        text += (text.empty() ? "" : "\n") + usage + command.help;
    }
    return text;
}

const DialogCommand *find(const std::string &name) {
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

std::string perform(const DialogCommand &command, sim::Camera &camera, const std::string &argument) {
    const bool takesOne = *command.argument != '\0';
    if (takesOne == argument.empty())
        return std::string("error: ") + command.name +
               (takesOne ? std::string(" needs ") + command.argument : " takes nothing after it");
    try {
        return command.obey(camera, argument);
    } catch (const std::exception &wrong) {
        return std::string("error: ") + wrong.what();
    }
}

} // namespace

DialogReply obey(sim::Camera &camera, const std::string &line) {
    const std::string text = trimmed(line);
    if (text.empty())
        return {};
    const size_t space = text.find_first_of(" \t");
    const std::string name = text.substr(0, space);
    const std::string argument = space == std::string::npos ? "" : trimmed(text.substr(space));
    const DialogCommand *command = find(name);
    if (command == nullptr)
        return {"error: no command is called \"" + name + "\"; \"help\" lists them"};
    if (command->obey == nullptr)
        return {"", true};
    return {perform(*command, camera, argument)};
}

} // namespace tool
