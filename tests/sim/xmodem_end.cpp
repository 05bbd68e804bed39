#include "xmodem_end.h"

#include "sim/child.h"
#include "sim/temp_folder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

bool runXmodem(const HostEnd &host, const std::vector<std::string> &command) {
    sim::Child child(command);
    const auto deadline = sim::Clock::now() + HostEnd::PATIENCE;
    while (!child.over() && sim::Clock::now() < deadline) {
        pollfd ends[] = {{host.descriptor(), POLLIN, 0}, {child.descriptor(), POLLIN, 0}};
        poll(ends, 2, 100);
        uint8_t buffer[4096];
        const ssize_t count = ends[0].revents & POLLIN ? read(host.descriptor(), buffer, sizeof buffer) : 0;
        if (count > 0)
            child.write(sim::Bytes(buffer, buffer + count));
        const sim::Bytes said = child.read();
        if (write(host.descriptor(), said.data(), said.size()) != static_cast<ssize_t>(said.size()))
            return false;
    }
    return child.over() && child.succeeded();
}

bool sendFile(const HostEnd &host, const sim::Bytes &content, bool longBlocks) {
    const sim::TempFolder folder;
    sim::writeFile(folder.file("out"), std::string(content.begin(), content.end()));
    return runXmodem(host, {"sx", longBlocks ? "-qbk" : "-qb", folder.file("out")});
}

sim::Bytes receiveFile(const HostEnd &host) {
    const sim::TempFolder folder;
    const bool done = runXmodem(host, {"rx", "-qbc", folder.file("in")});
    return done ? sim::readFile(folder.file("in")) : sim::Bytes();
}

sim::Bytes pattern(size_t size) {
    sim::Bytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(0x30 + i % 199);
    return bytes;
}

sim::Bytes bytesOf(const std::string &text) {
    return sim::Bytes(text.begin(), text.end());
}

TempHere::TempHere() : m_path(fs::temp_directory_path() / "viscacam-test-XXXXXX") {
    const char *before = std::getenv("TMPDIR");
    m_before = before != nullptr ? before : "";
    if (mkdtemp(m_path.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    setenv("TMPDIR", m_path.c_str(), 1);
}

TempHere::~TempHere() {
    if (m_before.empty())
        unsetenv("TMPDIR");
    else
        setenv("TMPDIR", m_before.c_str(), 1);
    fs::remove_all(m_path);
}

bool TempHere::isEmpty() const {
    return fs::is_empty(m_path);
}

size_t openDescriptors() {
    const fs::directory_iterator entries("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

bool hasNoChild() {
    return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
}
