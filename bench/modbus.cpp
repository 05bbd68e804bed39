#include "bench/modbus.h"

#ifdef VISCACAM_BENCH_MODBUS

#    include <cstdint>
#    include <stdexcept>
#    include <string>
#    include <thread>

#    include <modbus/modbus.h>
#    include <unistd.h>

#    include "bench/line.h"

namespace bench {

namespace {

constexpr int UNIT = 1;
constexpr uint16_t VALUE = 0x1234;

uint16_t checksum(const uint8_t *bytes, size_t size) {
    unsigned sum = 0xFFFF;
    for (size_t i = 0; i < size; ++i) {
        sum ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1) != 0 ? sum >> 1 ^ 0xA001 : sum >> 1;
    }
    return static_cast<uint16_t>(sum);
}

// Question: unit, function, register and count of two bytes each, checksum. Answer: unit, function, number of
// bytes, the bytes, checksum with its low byte first.
void answerAll(int master) {
    uint8_t question[8];
    uint8_t answer[] = {0, 0, 2, VALUE >> 8, VALUE & 0xFF, 0, 0};
    size_t size = 0;
    for (;;) {
        const ssize_t count = read(master, question + size, sizeof question - size);
        if (count <= 0)
            return;
        size = (size + static_cast<size_t>(count)) % sizeof question;
        if (size != 0)
            continue;
        answer[0] = question[0];
        answer[1] = question[1];
        const uint16_t sum = checksum(answer, 5);
        answer[5] = sum & 0xFF;
        answer[6] = static_cast<uint8_t>(sum >> 8);
        if (write(master, answer, sizeof answer) != static_cast<ssize_t>(sizeof answer))
            return;
    }
}

} // namespace

std::function<void()> registerReader() {
    std::string path;
    const int master = newTerminal(path);
    modbus_t *modbus = modbus_new_rtu(path.c_str(), 9600, 'N', 8, 1);
    if (modbus == nullptr || modbus_set_slave(modbus, UNIT) != 0 || modbus_connect(modbus) != 0 ||
        modbus_set_response_timeout(modbus, 6, 0) != 0)
        throw std::runtime_error("libmodbus does not open the line");
    std::thread(answerAll, master).detach();
    return [modbus] {
        uint16_t value = 0;
        if (modbus_read_registers(modbus, 0, 1, &value) != 1 || value != VALUE)
            throw std::runtime_error("libmodbus read no register");
    };
}

} // namespace bench

#else

namespace bench {

std::function<void()> registerReader() {
    return {};
}

} // namespace bench

#endif
