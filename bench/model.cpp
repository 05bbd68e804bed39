#include "bench/model.h"

#include <cstring>
#include <ctime>
#include <stdexcept>
#include <thread>

#include <sys/select.h>
#include <unistd.h>

#include "bench/line.h"

namespace bench {

namespace {

const uint8_t QUESTION[] = {0x81, 0x09, 0x04, 0x47, 0xFF};
const uint8_t COMMAND[Queue::ELEMENT] = {0x81, 0x01, 0x04, 0x07, 0x00, 0xFF};
constexpr size_t COMMAND_SIZE = 6;

void await(int fd, int seconds) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    timeval limit = {seconds, 0};
    (void)select(fd + 1, &readable, nullptr, nullptr, &limit);
}

void put(int fd, const uint8_t *bytes, size_t size) {
    if (write(fd, bytes, size) != static_cast<ssize_t>(size))
        throw std::runtime_error("the line takes no bytes");
}

} // namespace

Model::Model(const std::string &device) : m_port(openLine(device)) {
    std::thread([this] { receive(); }).detach();
    std::thread([this] { send(); }).detach();
}

void Model::ask() {
    put(m_port, QUESTION, sizeof QUESTION);
    await(m_answers.readFd(), 6);
    (void)m_answers.take();
}

void Model::command() {
    (void)m_commands.put(COMMAND);
}

// The gap wait takes the time when it begins, as a limit of one second needs it.
void Model::collect(uint8_t *reply, uint32_t *length) const {
    do {
        timespec begun = {};
        clock_gettime(CLOCK_MONOTONIC, &begun);
        await(m_port, 1);
        if (read(m_port, reply + *length, 1) != 1)
            return;
        ++*length;
    } while (reply[*length - 1] != 0xFF && *length < 16);
}

void Model::receive() {
    for (;;) {
        await(m_port, 6);
        uint8_t reply[Queue::ELEMENT] = {};
        uint32_t length = 1;
        if (read(m_port, reply, 1) != 1)
            return;
        collect(reply, &length);
        const uint8_t kind = reply[1] & 0xF0;
        if (kind == 0x50)
            (void)((reply[1] & 0x0F) == 0 ? m_answers : m_results).put(reply);
    }
}

void Model::send() {
    for (;;) {
        await(m_commands.readFd(), 6);
        const void *element = m_commands.take();
        if (element == nullptr)
            continue;
        uint8_t packet[Queue::ELEMENT];
        std::memcpy(packet, element, sizeof packet);
        put(m_port, packet, COMMAND_SIZE);
        await(m_results.readFd(), 2);
        (void)m_results.take();
    }
}

} // namespace bench
