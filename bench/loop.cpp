#include "bench/loop.h"

#include <cstdint>
#include <stdexcept>

#include <poll.h>
#include <unistd.h>

#include "bench/line.h"

namespace bench {

namespace {

const uint8_t QUESTION[] = {0x81, 0x09, 0x04, 0x47, 0xFF};
constexpr int LIMIT_MS = 6000;

} // namespace

Loop::Loop(const std::string &device) : m_port(openLine(device)) {}

void Loop::ask() const {
    if (write(m_port, QUESTION, sizeof QUESTION) != static_cast<ssize_t>(sizeof QUESTION))
        throw std::runtime_error("the line takes no bytes");
    uint8_t answer[64] = {};
    ssize_t count = 0;
    do {
        pollfd port = {m_port, POLLIN, 0};
        if (poll(&port, 1, LIMIT_MS) != 1 || (count = read(m_port, answer, sizeof answer)) <= 0)
            throw std::runtime_error("no answer");
    } while (answer[count - 1] != 0xFF);
}

} // namespace bench
