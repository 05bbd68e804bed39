#include "tool/ctl/runner.h"

#include "tool/console.h"

namespace tool::ctl {

namespace {

void print(Screen &screen, const Result &result) {
    const std::string where = result.source.empty() ? "" : result.source + ": ";
    if (screen.json()) {
        screen.line(jsonOf(result));
    } else {
        for (const std::string &line : linesOf(result))
            screen.line(line);
    }
    for (const std::string &note : result.notes)
        screen.note(note);
    if (!result.ok())
        screen.note(where + result.command + ": " + result.error);
}

bool saysNothing(const Result &result) {
    return result.ok() && result.sent.empty() && result.fields.empty() && result.lines.empty();
}

void carryOut(Job &job, const Call &call) {
    const bool motion = (call.row->traits & MOTION) != 0;
    try {
        call.row->run(job, call.arguments);
    } catch (const Refused &refused) {
        job.fail(refused.what());
    } catch (const Interrupted &) {
        job.follow(false); // the stop
        throw;
    }
    job.follow(motion);
}

} // namespace

bool runCommand(Bench &bench, const Call &call, const std::string &source) {
    Result result;
    result.command = call.text;
    result.source = source;
    bench.follower.begin();
    Job job(bench, result);
    try {
        carryOut(job, call);
    } catch (const Interrupted &) {
        job.collectNotes();
        job.fail("interrupted");
        print(bench.screen, result);
        throw;
    }
    job.collectNotes();
    if (saysNothing(result) && (call.row->traits & MAY_SEND_NOTHING) != 0)
        result.lines.push_back("nothing sent: the camera has this already, or this module does not know it");
    print(bench.screen, result);
    return result.ok();
}

void printNotes(Bench &bench) {
    for (const std::string &note : bench.follower.takeNotes())
        bench.screen.note(note);
}

} // namespace tool::ctl
