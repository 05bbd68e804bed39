#include <memory>

#include "tool/console.h"
#include "tool/decode/decode.h"
#include "tool/decode/look_options.h"
#include "tool/subcommand.h"

namespace tool {

namespace {

CLI::Validator knownKind() {
    return CLI::Validator(
        [](const std::string &text) -> std::string {
            return kindNamed(text).empty() ? "no kind is called \"" + text + "\"; known are " + kindNames()
                                           : "";
        },
        "");
}

decode::InputForm formNamed(const std::string &text) {
    for (const decode::InputForm form :
         {decode::InputForm::Hex, decode::InputForm::Log, decode::InputForm::Capture})
        if (text == decode::NameOf(form))
            return form;
    return decode::InputForm::Raw;
}

void setStamp(TrafficLook &look, const std::string &text) {
    look.stamp = text == "absolute" ? Stamp::absolute : text == "delta" ? Stamp::delta : Stamp::zero;
}

} // namespace

decode::Direction directionNamed(const std::string &text) {
    return text == decode::NameOf(decode::Direction::ToCamera) ? decode::Direction::ToCamera
                                                               : decode::Direction::FromCamera;
}

void addLook(CLI::App &command, const std::shared_ptr<TrafficLook> &look) {
    look->colours = stdoutHasColours();
    command
        .add_option_function<std::string>(
            "--time", [look](const std::string &text) { setStamp(*look, text); },
            "absolute, delta (since the line above) or zero (default)")
        ->type_name("KIND")
        ->check(CLI::IsMember({"absolute", "delta", "zero"}).description(""));
    const auto addKinds = [&](const char *name, const char *help,
                              void (TrafficFilter::*set)(const std::vector<std::string> &)) {
        command
            .add_option_function<std::vector<std::string>>(
                name, [look, set](const std::vector<std::string> &kinds) { (look->filter.*set)(kinds); },
                help)
            ->type_name("KINDS")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->check(knownKind());
    };
    addKinds("--only", "show these kinds, separated by commas", &TrafficFilter::only);
    addKinds("--without", "do not show these", &TrafficFilter::without);
    command.add_flag("--json", look->json, "one object a line");
}

Subcommand addDecode(CLI::App &app) {
    const auto options = std::make_shared<DecodeOptions>();
    const auto look = std::make_shared<TrafficLook>();
    CLI::App *command = app.add_subcommand("decode", "Put packets into words");
    command->add_option("FILE|BYTE", options->input,
                        "to read (default: standard input), or bytes: 81 09 04 00 FF");
    command
        ->add_option_function<std::string>(
            "--from", [options](const std::string &text) { options->form = formNamed(text); },
            "form of the input: hex, log, capture or raw (default: seen from it)")
        ->type_name("FORM")
        ->check(CLI::IsMember({"hex", "log", "capture", "raw"}).description(""));
    command
        ->add_option_function<std::string>(
            "--direction", [options](const std::string &text) { options->direction = directionNamed(text); },
            "of bytes that do not say: to-camera or from-camera (default: seen)")
        ->type_name("WAY")
        ->check(CLI::IsMember({"to-camera", "from-camera"}).description(""));
    addLook(*command, look);
    command->footer(
        "Kinds: " + kindNames().substr(0, kindNames().find(" errors")) + "\n" +
        kindNames().substr(kindNames().find("errors")) +
        ".\nReads hex in the usual spellings (a time, and \">\" or \"rx\" for the direction, may "
        "stand in front),\nthe library's log, captures of \"viscacam tap\", and bytes as they were on "
        "the line.\nExit status: 0, 1 when anything was malformed, 2 for wrong usage.\n\n"
        "Example: viscacam decode camera.log --without inquiries,answers --time delta");
    return {command, [options, look] { return runDecode(*options, *look); }};
}

} // namespace tool
