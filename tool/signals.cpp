#include "tool/signals.h"

#include <thread>

namespace tool {

namespace {

// A shell starts background jobs with SIGINT ignored, nohup does with SIGHUP: both mean it.
bool isIgnored(int signal) {
    struct sigaction now = {};
    return sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
}

} // namespace

sigset_t holdSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal))
            sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, nullptr);
    return signals;
}

void onSignal(const sigset_t &signals, std::function<void()> action) {
    std::thread([signals, action] {
        int signal = 0;
        while (sigwait(&signals, &signal) != 0) {}
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        action();
    }).detach();
}

} // namespace tool
