#ifndef VISCACAM_TOOL_DOCTOR_ADAPTER_H
#define VISCACAM_TOOL_DOCTOR_ADAPTER_H

#include <optional>
#include <string>

#include "tool/doctor/report.h"

namespace tool::doctor {

/* What the kernel tells of the hardware behind a serial device. Empty texts: it does not tell. */
struct Adapter {
    std::string driver;           /* "ftdi_sio" */
    std::string product;          /* "FT232R USB UART" */
    std::optional<int> latencyMs; /* for how long received bytes may be held back */
};

/* name: of the device without its folder, such as ttyUSB0. sysfs: where the kernel's files are. */
Adapter lookUpAdapter(const std::string &name, const std::string &sysfs = "/sys");

/* The driver's low-latency flag of an open device; nothing when it has none. */
std::optional<bool> lowLatencyFlag(int fd);

/* What is to be said about both. */
void judgeAdapter(const Adapter &adapter, std::optional<bool> lowLatency, Report &report);

} // namespace tool::doctor

#endif
