#include "tool/demo/families.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tool/complain.h"
#include "tool/console.h"
#include "tool/exit_status.h"
#include "tool/signals.h"

extern char **environ; // the C library's

namespace tool {

namespace {

const char THIS_PROGRAM[] = "/proc/self/exe";
const char *const ONE_OF_EACH[] = {"sony1", "kova2"};

std::vector<std::string> argumentsFor(const char *camera, const DemoOptions &options) {
    std::vector<std::string> arguments = {"viscacam", "demo",
                                          "--camera", camera,
                                          "--baud",   std::to_string(options.baud),
                                          "--seed",   std::to_string(options.seed)};
    for (const std::string &fault : options.faults)
        arguments.insert(arguments.end(), {"--fault", fault});
    return arguments;
}

/* The signals that this process takes from here on, those about its children too. */
struct Signals {
    sigset_t ending;
    sigset_t awaited;
    sigset_t before; // the mask that a child is given
};

Signals takeSignals() {
    Signals signals = {};
    pthread_sigmask(SIG_BLOCK, nullptr, &signals.before);
    signals.ending = holdSignals();
    signals.awaited = signals.ending;
    sigaddset(&signals.awaited, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &signals.awaited, nullptr);
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL; // a parent may have left it ignored, and then nobody could be waited for
    sigaction(SIGCHLD, &standard, nullptr);
    return signals;
}

// The child's process id; negative when the system refused, which is complained about.
pid_t start(const std::vector<std::string> &arguments, const Signals &signals) {
    std::vector<char *> words;
    for (const std::string &argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setsigmask(&attributes, &signals.before);
    pid_t child = -1;
    const int error = posix_spawn(&child, THIS_PROGRAM, nullptr, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error == 0)
        return child;
    complain(std::string("cannot start itself: ") + std::strerror(error));
    return -1;
}

struct Outcome {
    int status; // what this process would end with
    bool interrupted;
};

// A terminal has sent its signal to the child as well; a second one would end it without stopping the lens.
bool concernsThisProcessAlone(const siginfo_t &signal) {
    return signal.si_code <= 0; // sent by a process
}

Outcome await(pid_t child, const Signals &signals) {
    bool interrupted = false;
    for (;;) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child)
            return {WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_REFUSED, interrupted};
        siginfo_t signal = {};
        if (sigwaitinfo(&signals.awaited, &signal) <= 0 || signal.si_signo == SIGCHLD)
            continue;
        interrupted = true;
        if (concernsThisProcessAlone(signal))
            kill(child, signal.si_signo);
    }
}

} // namespace

int runDemoOfBothFamilies(const DemoOptions &options) {
    const Signals signals = takeSignals();
    int all = EXIT_DONE;
    bool first = true;
    for (const char *camera : ONE_OF_EACH) {
        if (!first && !writeAll(STDOUT_FILENO, "\n"))
            return EXIT_REFUSED;
        first = false;
        const pid_t child = start(argumentsFor(camera, options), signals);
        if (child < 0)
            return EXIT_REFUSED;
        const Outcome outcome = await(child, signals);
        if (outcome.interrupted || outcome.status == EXIT_USAGE)
            return outcome.interrupted ? EXIT_REFUSED : EXIT_USAGE;
        all = outcome.status == EXIT_DONE ? all : EXIT_REFUSED;
    }
    return all;
}

} // namespace tool
