#include "bench/measure.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

bool g_short = false;

double clockSeconds(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

[[noreturn]] void giveNumbers(int fd, const std::function<Numbers()> &measurement) {
    int status = 1;
    try {
        const Numbers numbers = measurement();
        const size_t size = numbers.size() * sizeof(double);
        status = write(fd, numbers.data(), size) == static_cast<ssize_t>(size) ? 0 : 1;
    } catch (const std::exception &trouble) {
        std::fprintf(stderr, "%s\n", trouble.what());
    }
    _exit(status); // the library's threads have no end
}

Numbers takeNumbers(int fd) {
    Numbers numbers;
    double number = 0;
    while (read(fd, &number, sizeof number) == static_cast<ssize_t>(sizeof number))
        numbers.push_back(number);
    return numbers;
}

} // namespace

Numbers inChild(const std::function<Numbers()> &measurement) {
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        giveNumbers(ends[1], measurement);
    }
    close(ends[1]);
    const Numbers numbers = takeNumbers(ends[0]);
    close(ends[0]);
    int status = 1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("a measurement failed");
    return numbers;
}

double median(Numbers numbers) {
    return quantile(std::move(numbers), 0.5);
}

double quantile(Numbers numbers, double share) {
    if (numbers.empty())
        return std::nan("");
    const size_t index =
        std::min(numbers.size() - 1, static_cast<size_t>(share * static_cast<double>(numbers.size())));
    std::nth_element(numbers.begin(), numbers.begin() + static_cast<long>(index), numbers.end());
    return numbers[index];
}

unsigned shorten() {
    g_short = true;
    return 1;
}

unsigned times(unsigned forFigure) {
    return g_short ? std::max(forFigure / 100, 1U) : forFigure;
}

double seconds() {
    return clockSeconds(CLOCK_MONOTONIC);
}

double processorSeconds() {
    return clockSeconds(CLOCK_PROCESS_CPUTIME_ID);
}

void Row::add(double value, double peer) {
    values.push_back(value);
    peers.push_back(peer);
}

double Row::ratio() const {
    Numbers ratios;
    for (size_t i = 0; i < values.size() && i < peers.size(); ++i)
        ratios.push_back(values[i] / peers[i]);
    return median(ratios);
}

bool Row::met() const {
    if (bound == Bound::none)
        return true;
    return bound == Bound::atMost ? ratio() <= target : ratio() >= target;
}

} // namespace bench
