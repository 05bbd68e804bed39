#include "tool/demo/stage.h"

#include <cstdio>
#include <future>
#include <memory>
#include <thread>

#include "host/host.h"
#include "viscacam.h"

namespace tool {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr unsigned SWITCH_ON = 2;
constexpr unsigned SWITCH_OFF = 3;

constexpr seconds DRAIN_LIMIT{4}; // a command's result is awaited for 2 s, after the one in front of it
constexpr seconds PROCEDURE_LIMIT{40};
constexpr milliseconds LOOK_EVERY{100};

std::string inHex(int digits, unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", digits, value);
    return text;
}

} // namespace

std::string hexWord(unsigned value) {
    return inHex(4, value);
}
std::string hexByte(unsigned value) {
    return inHex(2, value);
}
std::string hexLong(unsigned value) {
    return inHex(8, value);
}
std::string switchWord(unsigned value) {
    if (value == SWITCH_ON)
        return "on";
    return value == SWITCH_OFF ? "off" : std::to_string(value);
}

void Stage::drive(Drives::Command command, Drives::Command stop, Clock::duration time) {
    accept(m_drives.start(command, stop));
    std::this_thread::sleep_for(time);
    accept(m_drives.stop());
    follow();
}

// On a thread of its own: the library waits without end for a camera that does not come back.
uint32_t Stage::procedure(const std::function<uint32_t()> &call) {
    auto task = std::make_shared<std::packaged_task<uint32_t()>>(
        [&drives = m_drives, call] { return drives.perform(call); });
    std::future<uint32_t> result = task->get_future();
    std::thread([task] { (*task)(); }).detach();
    const Clock::time_point end = Clock::now() + PROCEDURE_LIMIT;
    while (result.wait_for(LOOK_EVERY) != std::future_status::ready) {
        if (!host::IsPortPresent(PORT_NUMBER))
            throw StoryOver("the device at the port is gone");
        if (Clock::now() > end)
            throw StoryOver("the camera does not come back; it may be off");
    }
    follow();
    m_forgiven = host::GetCounters().ullInquiryTimeouts;
    return result.get();
}

void Stage::accept(uint32_t result) const {
    if (result != VISCA_SUCCESS)
        throw StoryOver("the library did not take a command");
}

void Stage::follow() {
    (void)host::WaitDrained(DRAIN_LIMIT);
}

void Stage::checkAnswering() const {
    if (!host::IsPortPresent(PORT_NUMBER))
        throw StoryOver("the device at the port is gone");
    if (host::GetCounters().ullInquiryTimeouts > m_forgiven)
        throw StoryOver("the camera stopped answering");
}

void Stage::checkRead(uint32_t result, const std::string &what) const {
    checkAnswering();
    if (result != VISCA_SUCCESS)
        throw StoryOver(what + " could not be read");
}

Belief Stage::look(const Item &item) {
    const Belief belief = m_witness.look(item);
    checkAnswering();
    return belief;
}

void Stage::compare(const std::string &asked, const Belief &belief, unsigned expected, Words words) {
    checkAnswering();
    if (!belief.asked)
        m_table.addNotAskedBack(asked);
    else
        m_table.add(asked, belief.value ? words(*belief.value) : "does not tell", belief.value == expected);
}

void Stage::compare(const std::string &asked, const Item &item, unsigned expected, Words words) {
    compare(asked, m_witness.look(item), expected, words);
}

} // namespace tool
