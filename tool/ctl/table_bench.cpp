/* What belongs to the bench rather than to the camera. */
#include <set>
#include <sstream>

#include "host/host.h"
#include "tool/ctl/grammar.h"
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "tool/ctl/watch.h"

namespace tool::ctl {

namespace {

using std::chrono::milliseconds;

constexpr int64_t WATCH_EVERY_MS = 1000;

void runWatch(Job &job, const Arguments &arguments) {
    WatchOptions options;
    for (const Value &thing : arguments.list())
        options.things.push_back(thing.text);
    options.every = milliseconds(arguments.number("every", WATCH_EVERY_MS));
    options.count = arguments.number("count");
    watch(job, options);
}

Domain firstWords(uint32_t) {
    std::set<std::string> words;
    forEachRow([&](const Row &row) { words.insert(row.words.substr(0, row.words.find(' '))); });
    return Domain::text("a command", Words(words.begin(), words.end()));
}

void help(Job &job, const Arguments &arguments) {
    Words words;
    for (const char *place : {"command", "word", "last-word"})
        if (arguments.has(place))
            words.push_back(arguments.text(place));
    const std::string text = explain(words, job.moduleType());
    if (job.bench().screen.json())
        return job.text("help", text);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        job.line(line);
}

void changeBoard(Job &job, const Arguments &arguments) {
    host::Board board = host::GetBoard();
    board.ulProductSubType = arguments.word("subtype", board.ulProductSubType);
    board.ulCaller = arguments.word("caller", board.ulCaller);
    if (arguments.has("model"))
        board.strDeviceModel = arguments.text("model");
    host::SetBoard(board);
    job.number("type", board.ulCamModType, inHex(board.ulCamModType, 8));
    job.number("subtype", board.ulProductSubType, inHex(board.ulProductSubType));
    job.number("caller", board.ulCaller);
    job.text("model", board.strDeviceModel);
}

} // namespace

Subject benchCommands() {
    const Domain word = Domain::text("a word of the command");
    return {
        "Bench",
        {
            {"watch",
             {list("thing", watchableThings),
              keyed("every", Domain::time(milliseconds(10), std::chrono::hours(1))),
              keyed("count", Domain::number(1, 1000000000))},
             "ask every second, or as told, and count losses",
             {"watch zoom focus gain --every 200ms --count 5"},
             runWatch,
             {"VISCA_GetZoomPos", "VISCA_GetFocusPos", "VISCA_GetGain"}},
            {"wait",
             {needed("time", Domain::time(milliseconds(1), std::chrono::hours(24)))},
             "do nothing for a time",
             {"wait 500ms"},
             [](Job &job, const Arguments &arguments) { job.sleep(milliseconds(arguments.number("time"))); },
             {}},
            {"board",
             {keyed("subtype", Domain::hex(0, 0xFFFFFFFF)), keyed("model", Domain::text("a name")),
              keyed("caller", Domain::number(0, 255))},
             "what the library is told of the board it runs on",
             {"board subtype=0x1001"},
             changeBoard,
             {},
             WITHOUT_CAMERA},
            {"help",
             {optional("command", firstWords), optional("word", word), optional("last-word", word)},
             "all commands, or all about some",
             {"help zoom"},
             help,
             {},
             WITHOUT_CAMERA},
            {"exit", {}, "end", {"exit"}, [](Job &, const Arguments &) { throw Quit(); }, {}, WITHOUT_CAMERA},
            {"quit", {}, "end", {"quit"}, [](Job &, const Arguments &) { throw Quit(); }, {}, WITHOUT_CAMERA},
        }};
}

} // namespace tool::ctl
