#include "tool/doctor/doctor.h"

#include <optional>

#include <sys/signalfd.h>
#include <unistd.h>

#include "tool/complain.h"
#include "tool/console.h"
#include "tool/doctor/adapter.h"
#include "tool/doctor/device.h"
#include "tool/doctor/examination.h"
#include "tool/doctor/holders.h"
#include "tool/doctor/line.h"
#include "tool/doctor/report.h"
#include "tool/doctor/search.h"
#include "tool/exit_status.h"
#include "tool/signals.h"

namespace tool {

namespace {

using namespace doctor;

void examineLine(const std::string &device, Milliseconds limit, int signalFd, Report &report) {
    const Adapter adapter = lookUpAdapter(device.substr(device.rfind('/') + 1));
    Line line(device, signalFd);
    judgeAdapter(adapter, lowLatencyFlag(line.fd()), report);
    const std::optional<Heard> camera = findCamera(line, limit, report);
    if (camera)
        examine(line, *camera, limit, report);
}

// Each step only where the one before leaves something to learn.
void examineAll(const DoctorOptions &options, int signalFd, Report &report) {
    std::string device;
    if (!checkDevice(options.device, report, device) || !checkPermission(device, report) ||
        !checkHolders(device, report))
        return;
    try {
        examineLine(device, Milliseconds(options.timeoutMs), signalFd, report);
    } catch (const LineTrouble &trouble) {
        report.add("device", Verdict::bad, trouble.what());
        report.advise(Topic::device,
                      "Name another device, or end what uses this one (\"sudo fuser -v " + options.device +
                          "\" tells); if it has gone, look at the adapter's plug and its power.");
    }
}

} // namespace

int runDoctor(const DoctorOptions &options) {
    const sigset_t signals = holdSignals();
    const int signalFd = signalfd(-1, &signals, SFD_CLOEXEC);
    const bool colours = stdoutHasColours();
    Report report(options.device, [&](const Finding &finding) {
        if (!options.json)
            (void)writeAll(STDOUT_FILENO, Report::asLine(finding, colours));
    });
    try {
        examineAll(options, signalFd, report);
    } catch (const Interrupted &) {
        complain("interrupted; the device has its settings back");
        return EXIT_REFUSED;
    }
    const std::string end = options.json ? asJson(report) + "\n" : report.closing(colours);
    return writeAll(STDOUT_FILENO, end) && report.healthy() ? EXIT_DONE : EXIT_REFUSED;
}

} // namespace tool
