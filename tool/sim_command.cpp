#include "tool/sim_command.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <stdexcept>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "sim/sim.h"
#include "tool/complain.h"
#include "tool/demo_trace.h"
#include "tool/exit_status.h"
#include "tool/module_types.h"
#include "tool/signals.h"
#include "tool/sim_dialog.h"
#include "tool/trace.h"

namespace tool {

namespace {

constexpr size_t LONGEST_LINE = 4096;

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string valueText(const sim::FaultType &fault) {
    if (fault.value.empty())
        return "";
    return " [" + fault.value + (fault.initial.empty() ? "" : ", " + fault.initial + " if not given") + "]";
}

int list() {
    std::string text = "cameras:\n";
    for (const sim::CameraType &camera : sim::knownCameras())
        text += "  " + shown(camera) + "\n";
    text += "faults, as NAME[=VALUE][#COUNT][@START[..END]]:\n";
    for (const sim::FaultType &fault : sim::knownFaults())
        text += "  " + padded(fault.name, 16) + fault.effect + valueText(fault) + "\n";
    return writeAll(STDOUT_FILENO, text) ? EXIT_DONE : EXIT_REFUSED;
}

sim::Options optionsOf(const SimOptions &options, Trace &trace) {
    sim::Options camera;
    camera.camera = options.camera;
    camera.baud = options.baud;
    camera.paced = !options.fullSpeed;
    camera.vertical = !options.fullSpeed;
    camera.latency = options.latency ? sim::Latency::realLine() : sim::Latency::none();
    camera.bootTime = std::chrono::milliseconds(options.bootMs);
    camera.seed = options.seed;
    camera.link = options.link;
    camera.faults = options.faults;
    if (options.trace)
        camera.trace = cameraTrace(trace);
    return camera;
}

// "sony1 (0x02000001) listening at 9600 bit/s on /dev/pts/5, link /tmp/camera"
std::string greeting(const SimOptions &options, const std::string &path) {
    const sim::CameraType &type = sim::findCamera(options.camera);
    std::array<char, PATH_MAX> device = {};
    const bool resolved = realpath(path.c_str(), device.data()) != nullptr;
    return shown(type) + " listening at " + std::to_string(options.baud) + " bit/s on " +
           (resolved ? device.data() : path) + (options.link.empty() ? "" : ", link " + options.link);
}

/* Lines of standard input, as they come. */
class Input {
  public:
    /* Read what is there; complete lines are handed to the function. False at the end of input. */
    template <typename OnLine>
    bool read(OnLine onLine) {
        char bytes[512];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0)
            return count < 0 && (errno == EINTR || errno == EAGAIN);
        m_text.append(bytes, static_cast<size_t>(count));
        for (size_t end = m_text.find('\n'); end != std::string::npos; end = m_text.find('\n')) {
            onLine(m_text.substr(0, end));
            m_text.erase(0, end + 1);
        }
        if (m_text.size() > LONGEST_LINE)
            m_text.clear();
        return true;
    }

  private:
    std::string m_text;
};

// Until a signal, "quit", or the end of input where that was asked for.
void serve(sim::Camera &camera, Trace &trace, int signalFd, bool untilEof) {
    Input input;
    bool quit = false;
    pollfd sources[] = {{signalFd, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    while (!quit && sources[0].revents == 0) {
        poll(sources, 2, -1);
        if (sources[1].revents == 0)
            continue;
        const bool more = input.read([&](const std::string &line) {
            const DialogReply reply = obey(camera, line);
            quit = quit || reply.quit;
            if (!reply.text.empty())
                trace.line(reply.text);
        });
        if (!more) {
            sources[1].fd = -1; // poll() passes over it
            quit = quit || untilEof;
        }
    }
}

} // namespace

int runSim(const SimOptions &options) {
    if (options.list)
        return list();
    const sigset_t signals = holdSignals();
    const int signalFd = signalfd(-1, &signals, SFD_CLOEXEC);
    Trace trace;
    try {
        sim::Camera camera(optionsOf(options, trace));
        trace.line(greeting(options, camera.path()));
        serve(camera, trace, signalFd, options.untilEof);
    } catch (const std::invalid_argument &wrong) {
        complain(wrong.what());
        return EXIT_USAGE;
    } catch (const std::runtime_error &refused) {
        complain(refused.what());
        return EXIT_REFUSED;
    }
    return EXIT_DONE;
}

} // namespace tool
