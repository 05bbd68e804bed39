/* Eight threads queue commands at once: is everything that arrives what they put, in each caller's order? */
#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include "bench/allocations.h"
#include "bench/groups.h"
#include "bench/services.h"
#include "viscacam.h"

namespace bench {

namespace {

constexpr unsigned CALLERS = 8;
constexpr unsigned PACKETS = 20000; // a caller's; they are numbered with 16 bits
constexpr uint32_t SIZE = 15;       // without terminator

unsigned g_next[CALLERS];
unsigned g_good = 0;
unsigned g_wrong = 0;

// Behind the header every byte names the caller, four of them the number: parts of two packets are no packet.
ViscaPkt packetOf(unsigned caller, unsigned number) {
    ViscaPkt packet = {{0x81, 0x01}, SIZE};
    for (unsigned i = 2; i < SIZE; ++i)
        packet.aucData[i] = static_cast<uint8_t>(caller << 4 | (number >> i % 4 * 4 & 0x0F));
    return packet;
}

// The queue shows one element at a time.
void look(const void *element) {
    ViscaPkt packet;
    std::memcpy(&packet, element, sizeof packet);
    const unsigned caller = packet.aucData[2] >> 4 & (CALLERS - 1);
    ViscaPkt expected = packetOf(caller, g_next[caller]++);
    expected.aucData[SIZE] = 0xFF;
    expected.ulLength = SIZE + 1;
    ++(std::memcmp(&packet, &expected, sizeof packet) == 0 ? g_good : g_wrong);
}

Numbers allAtOnce() {
    commandQueue().sink(look);
    ViscaSetCamCanCtrl(1);
    std::atomic<bool> begun{false};
    std::vector<std::thread> threads;
    for (unsigned caller = 0; caller < CALLERS; ++caller)
        threads.emplace_back([caller, &begun] {
            while (!begun)
                std::this_thread::yield();
            for (unsigned number = 0; number < PACKETS; ++number) {
                ViscaPkt packet = packetOf(caller, number);
                (void)ViscaEnQueueCmd(&packet);
            }
        });
    const uint64_t before = allocations();
    begun = true;
    for (std::thread &thread : threads)
        thread.join();
    const uint64_t allocated = allocations() - before;
    const unsigned missing = CALLERS * PACKETS - g_good;
    return {static_cast<double>(std::max(missing, g_wrong)), static_cast<double>(allocated)};
}

} // namespace

void callerFigures(unsigned runs, std::vector<Row> &rows) {
    Row packets = {"packets lost, torn or out of order, eight callers at once", "none allowed", "packets"};
    Row memory = {"heap allocations meanwhile", "none allowed", "calls"};
    for (unsigned run = 0; run < runs; ++run) {
        const Numbers numbers = inChild(allAtOnce);
        packets.values.push_back(numbers[0]);
        memory.values.push_back(numbers[1]);
    }
    rows.insert(rows.end(), {packets, memory});
}

} // namespace bench
