#include "tool/ctl/ctl.h"

#include <iostream>

#include <unistd.h>

#include "tool/complain.h"
#include "tool/ctl/grammar.h"
#include "tool/ctl/script.h"
#include "tool/ctl/session.h"
#include "tool/ctl/shell.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/signals.h"

namespace tool {

namespace {

using namespace ctl;

constexpr char STANDARD_INPUT[] = "-";

/* Where the commands come from. */
enum class Source { commandLine, file, standardInput, person };

struct Work {
    Source source;
    std::vector<Step> steps; /* those that are known before anything is started */
};

uint32_t moduleTypeOf(const CtlOptions &options) {
    if (!options.sim.empty())
        return findModuleType(options.sim).code;
    return options.port.empty() ? 0 : findModuleType(options.type).code;
}

Work workOf(const CtlOptions &options) {
    const uint32_t moduleType = moduleTypeOf(options);
    if (!options.words.empty()) {
        Step step;
        for (const Words &words : commandsOf(options.words))
            step.calls.push_back(parseCommand(words, moduleType));
        return {Source::commandLine, {step}};
    }
    if (!options.file.empty() && options.file != STANDARD_INPUT)
        return {Source::file, readFile(options.file, moduleType)};
    const bool person =
        options.file.empty() && !options.json && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
    return {person ? Source::person : Source::standardInput, {}};
}

bool needsCamera(const Work &work) {
    if (work.source == Source::person || work.source == Source::standardInput)
        return true;
    for (const Step &step : work.steps)
        for (const Call &call : step.calls)
            if ((call.row->traits & WITHOUT_CAMERA) == 0)
                return true;
    return false;
}

void carryOutSteps(Script &script, const std::vector<Step> &steps) {
    for (const Step &step : steps)
        if (!script.carryOut(step))
            return;
}

// Returns the exit status.
int carryOut(Session &session, const Work &work, const CtlOptions &options) {
    if (work.source == Source::person)
        return runShell(session, options.sim.empty() ? findModuleType(options.type).name : options.sim);
    Script script(session.bench, options.keepGoing);
    try {
        if (work.source == Source::standardInput)
            script.carryOutLines(std::cin, "standard input");
        else
            carryOutSteps(script, work.steps);
    } catch (const UsageError &wrong) {
        script.refuse(wrong);
    } catch (const Interrupted &) {
        stopDrives(session.bench);
        return EXIT_REFUSED;
    } catch (const Quit &) {}
    return script.status();
}

[[noreturn]] void runSession(const Work &work, const CtlOptions &options) {
    const sigset_t signals = holdSignals();
    Session &session = *new Session(options);
    watchSignals(session, signals);
    int status = EXIT_DONE;
    try {
        if (needsCamera(work))
            openCamera(session, options);
        status = carryOut(session, work, options);
    } catch (const std::invalid_argument &wrong) {
        session.bench.screen.note(wrong.what());
        status = EXIT_USAGE;
    } catch (const std::exception &refused) {
        session.bench.screen.note(refused.what());
        status = EXIT_REFUSED;
    }
    endSession(session, status);
}

} // namespace

int runCtl(const CtlOptions &options) {
    Work work;
    try {
        work = workOf(options);
    } catch (const UsageError &wrong) {
        complain(wrong.what());
        return EXIT_USAGE;
    }
    if (needsCamera(work) && options.port.empty() && options.sim.empty()) {
        complain("say which camera: --port DEVICE, or --sim CAMERA for a simulated one");
        return EXIT_USAGE;
    }
    runSession(work, options);
}

} // namespace tool
