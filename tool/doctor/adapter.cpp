#include "tool/doctor/adapter.h"

#include <climits>
#include <cstdlib>
#include <fstream>

#include <linux/serial.h>
#include <sys/ioctl.h>

namespace tool::doctor {

namespace {

constexpr int NOTICEABLE_MS = 2;

std::string firstLine(const std::string &path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

std::string resolved(const std::string &path) {
    char real[PATH_MAX];
    return realpath(path.c_str(), real) != nullptr ? real : "";
}

// The product's name stands at the USB device, some levels above the port.
std::string productAbove(std::string folder, const std::string &end) {
    while (folder.size() > end.size()) {
        const std::string product = firstLine(folder + "/product");
        if (!product.empty())
            return product;
        folder.resize(folder.rfind('/'));
    }
    return "";
}

std::string nameOf(const Adapter &adapter) {
    if (adapter.product.empty())
        return "driver " + adapter.driver;
    return adapter.product + ", driver " + adapter.driver;
}

} // namespace

Adapter lookUpAdapter(const std::string &name, const std::string &sysfs) {
    const std::string device = sysfs + "/class/tty/" + name + "/device";
    const std::string driver = resolved(device + "/driver");
    Adapter adapter;
    adapter.driver = driver.substr(driver.rfind('/') + 1);
    adapter.product = productAbove(resolved(device), resolved(sysfs));
    const std::string latency = firstLine(device + "/latency_timer");
    if (!latency.empty())
        adapter.latencyMs = std::atoi(latency.c_str());
    return adapter;
}

std::optional<bool> lowLatencyFlag(int fd) {
    serial_struct serial = {};
    if (ioctl(fd, TIOCGSERIAL, &serial) != 0)
        return std::nullopt;
    return (serial.flags & ASYNC_LOW_LATENCY) != 0;
}

void judgeAdapter(const Adapter &adapter, std::optional<bool> lowLatency, Report &report) {
    if (adapter.driver.empty()) {
        report.add("adapter", Verdict::good,
                   "a pseudo-terminal, or hardware that the kernel tells nothing of");
        return;
    }
    report.add("adapter", Verdict::good, nameOf(adapter));
    if (!adapter.latencyMs)
        return;
    const std::string timer = std::to_string(*adapter.latencyMs) + " ms";
    if (lowLatency.value_or(false)) {
        report.add("latency", Verdict::good, "the driver's low-latency flag is set");
        return;
    }
    if (*adapter.latencyMs < NOTICEABLE_MS) {
        report.add("latency", Verdict::good, "received bytes are handed over within " + timer);
        return;
    }
    report.add("latency", Verdict::note,
               "the adapter holds received bytes back for up to " + timer +
                   "; programs that do not ask for low latency when they open the port wait that much longer "
                   "for each answer");
    report.advise(Topic::afterwards,
                  "For shorter round trips: \"setserial DEVICE low_latency\", or a udev rule with "
                  "ATTR{latency_timer}=\"1\". The reference host asks for it by itself.");
}

} // namespace tool::doctor
