#include "tests/unit/image/image_test.h"

#include "visca_sony_ctrl/image/settings_cache.h"

#include <ostream>

namespace unit {

const std::string kQueueRefused = "ERROR ViscaEnQueueCmd: Visca QueueCmdCushion fail\n";

namespace {

// The dome type goes out in front of a profile of the second generation; it is not the subject here.
bool IsDomeType(const std::string &packet) {
    return packet.compare(0, 11, "81 01 04 D1") == 0;
}

std::string OneLine(const Lines &lines) {
    std::string text;
    for (const std::string &line : lines) {
        text += "\n    " + line.substr(0, line.find('\n'));
    }
    return text.empty() ? " none" : text;
}

} // namespace

Outcome Outcome::Logs(const std::string &line) const {
    Outcome outcome = *this;
    outcome.log.push_back(line);
    return outcome;
}

Outcome Outcome::Fails() const {
    Outcome outcome = *this;
    outcome.result = 1;
    return outcome;
}

bool operator==(const Outcome &a, const Outcome &b) {
    return a.result == b.result && a.packets == b.packets && a.log == b.log;
}

std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
    return out << "result " << outcome.result << "\n  packets:" << OneLine(outcome.packets)
               << "\n  log:" << OneLine(outcome.log);
}

std::string Command(const std::string &payload) {
    return "81 01 04 " + payload + " FF";
}

Lines Commands(const Lines &payloads) {
    Lines packets;
    for (const std::string &payload : payloads) {
        packets.push_back(Command(payload));
    }
    return packets;
}

Outcome Sends(const Lines &payloads) {
    return {0, Commands(payloads), {}};
}

Outcome IsRefused(const Lines &payloads, const std::string &line) {
    return {1, Commands(payloads), {kQueueRefused, line}};
}

ImageTest::ImageTest() {
    Host().SetCapacity(VISCA_CMD_QUEUE_ID, 1U << 20);
    Attach(kSony1);
}

void ImageTest::Attach(uint32_t type) {
    Host().SetModuleType(type);
    viscacam::g_stImageCache = {};
    gstImgDetectParam = {-1, -1, -1, -1};
    SonyInitVar4IMG();
    Host().Forget();
}

Outcome ImageTest::Run(const std::function<uint32_t()> &call) {
    Host().Forget();
    Outcome outcome;
    outcome.result = call();
    for (const std::string &packet : Host().Commands()) {
        if (!IsDomeType(packet)) {
            outcome.packets.push_back(packet);
        }
    }
    for (const Event &event : Host().Events(Call::Log)) {
        if (event.log.level <= VISCA_LOG_WARN) {
            outcome.log.push_back(event.text);
        }
    }
    EXPECT_EQ(Lines(), Host().Complaints());
    return outcome;
}

void ImageTest::RefuseCommand(unsigned n, unsigned times) {
    Host().Fail(Call::Put, Host().Calls(Call::Put) + n, times);
}

void ImageTest::Hold(uint32_t flag) {
    viscacam::g_stImageCache.bDetectImgHold = flag;
}

} // namespace unit
