// The text by which a fault is switched on, and what a camera with that fault makes of packets. The input is
// the text up to its first newline, then steps: tens of milliseconds that pass before, counted bytes.
#include "fuzz/desk.h"
#include "fuzz/law.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace {

using fuzz::Desk;
using fuzz::Input;
using fuzz::Span;
using std::chrono::milliseconds;

constexpr unsigned long MOST_PASSES = 400; // some faults send without end
constexpr double DAY = 86400;

bool IsPrintable(const std::string &text) {
    for (const char c : text) {
        if (c < ' ' || c > '~')
            return false;
    }
    return true;
}

void CheckOrder(const sim::FaultOrder &order, const std::string &text) {
    LAW(order.text == text &&
        text.compare(0, sim::faultName(order.fault).size(), sim::faultName(order.fault)) == 0);
    LAW(std::isfinite(order.value) && order.value >= 0 && order.value <= 1048576);
    LAW(order.count <= 1000000000);
    LAW(order.start >= 0 && order.start <= DAY);
    LAW(!order.end || (*order.end >= order.start && *order.end <= DAY));
    const sim::FaultOrder again = sim::parseFault(order.text);
    LAW(again.fault == order.fault && again.value == order.value && again.count == order.count);
    LAW(again.start == order.start && again.end == order.end);
}

/** Whether the text is a fault. */
bool Parse(const std::string &text) {
    try {
        CheckOrder(sim::parseFault(text), text);
        return true;
    } catch (const std::invalid_argument &error) {
        LAW(error.what()[0] != '\0');
        LAW(!IsPrintable(text) || fuzz::IsLine(error.what()));
        return false;
    }
}

bool IsNow(const sim::FaultOrder &order) {
    return order.start <= 0;
}

void Run(Desk &desk, Input input) {
    while (!input.Empty()) {
        (void)desk.Pass(milliseconds(10 * input.Byte()), MOST_PASSES);
        desk.Send(input.Counted());
        fuzz::CheckState(desk.State());
    }
    (void)desk.Pass(milliseconds(1000), MOST_PASSES);
    (void)desk.Diary();
}

/** Once the faults are over the camera is as good as new. */
void CheckRecovered(Desk &desk) {
    desk.Camera().clearFaults(desk.Now());
    LAW(desk.State().faults.empty() && desk.State().pluggedIn);
    fuzz::CheckAlive(desk);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const auto *newline = static_cast<const uint8_t *>(size > 0 ? memchr(bytes, '\n', size) : nullptr);
    const size_t length = newline != nullptr ? static_cast<size_t>(newline - bytes) : size;
    const std::string text(bytes, bytes + length);
    if (!Parse(text))
        return 0;
    Desk desk(sim::Options::fast("kova2"));
    desk.Camera().setFault(text, desk.Now());
    const sim::FaultOrder order = sim::parseFault(text);
    LAW(desk.State().faults.size() <= 1);
    LAW(IsNow(order) || desk.State().faults.size() == 1);
    Run(desk, newline != nullptr ? Input(newline + 1, size - length - 1) : Input(nullptr, 0));
    CheckRecovered(desk);
    return 0;
}
