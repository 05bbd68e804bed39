#include "tests/unit/kova/behaviour_test.h"

#include "visca_sony_ctrl/image/settings_cache.h"

#include <cstdio>

extern "C" {
uint32_t __real_ViscaInquiry(ViscaPkt *packet, ViscaPkt *reply);
uint32_t __real_COMDRV_GetManuinfo(ManuInfo *info);
}

namespace unit {

std::function<uint32_t(ViscaPkt *reply)> g_inquiry;
std::function<void(ManuInfo *info)> g_manuinfo;

namespace {

bool g_detection_used_up = false;

std::string Chomped(std::string line) {
    if (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    return line;
}

bool IsLink(const std::string &function) {
    return function.compare(0, 5, "Visca") == 0;
}

bool IsAsk(const Step &step) {
    return step.event.compare(0, 4, "send") == 0;
}

unsigned CountUpTo(const Steps &steps, size_t last, bool asks) {
    unsigned count = 0;
    for (size_t i = 0; i <= last; ++i) {
        const bool counts = asks ? IsAsk(steps[i]) : steps[i].event.compare(0, 3, "put") == 0;
        count += counts ? 1 : 0;
    }
    return count;
}

Lines Replies(const Steps &steps) {
    Lines replies;
    for (const Step &step : steps) {
        if (IsAsk(step)) {
            replies.push_back(step.reply);
        }
    }
    return replies;
}

Lines EventsWithFailure(const Steps &steps, size_t failing) {
    Lines events = Events(Steps(steps.begin(), steps.begin() + static_cast<long>(failing) + 1));
    events.insert(events.end(), steps[failing].complaint.begin(), steps[failing].complaint.end());
    return events;
}

} // namespace

Step Put(const std::string &payload) {
    return {"put 0: 81 01 04 " + payload + " FF", "", false, {}};
}
Step Put(const std::string &payload, Lines complaint) {
    return {"put 0: 81 01 04 " + payload + " FF", "", true, std::move(complaint)};
}
Step Ask(const std::string &payload, const std::string &reply) {
    return {"send 81 09 04 " + payload + " FF", reply, false, {}};
}
Step Ask(const std::string &payload, const std::string &reply, Lines complaint) {
    return {"send 81 09 04 " + payload + " FF", reply, true, std::move(complaint)};
}
Step Pause(uint64_t milliseconds) {
    return {"sleep " + std::to_string(milliseconds * 1000), "", false, {}};
}
Step Says(const std::string &line) {
    return {line, "", false, {}};
}

Lines Events(const Steps &steps) {
    Lines events;
    for (const Step &step : steps) {
        events.push_back(step.event);
    }
    return events;
}

Lines Packets(const Lines &payloads) {
    Lines packets;
    for (const std::string &payload : payloads) {
        packets.push_back("81 01 04 " + payload + " FF");
    }
    return packets;
}

Steps operator+(Steps first, const Steps &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string Address(const void *pointer) {
    char text[32];
    snprintf(text, sizeof text, "%p", pointer);
    return text;
}

KovaTest::KovaTest() {
    Attach(kKova);
}

void KovaTest::Attach(uint32_t type) {
    EXPECT_EQ(Lines(), Host().Complaints());
    Host().Reset();
    Clib().Reset();
    Host().SetModuleType(type);
    Host().SetCapacity(VISCA_CMD_QUEUE_ID, 1U << 20);
    ViscaSetCamComFd(Host().PortFd());
    ViscaSetCamCanCtrl(1);
    viscacam::g_stImageCache = {};
    gstImgDetectParam = {};
    SonyInitVar4IMG();
    KovaSetCamAbility(0);
    gpfnReportZoomStatus = gpfnReportFocusStatus = nullptr;
    gpfnReconfigKovaImgParam = nullptr;
    g_inquiry = nullptr;
    g_manuinfo = nullptr;
    Host().Forget();
}

Lines KovaTest::Story() {
    Lines story;
    uint64_t pause = 0;
    for (const Event &event : Host().Events()) {
        if (event.call == Call::Sleep) {
            if (pause != 0) {
                story.pop_back();
            }
            pause += event.micros;
            story.push_back("sleep " + std::to_string(pause));
            continue;
        }
        pause = 0;
        const bool line =
            event.call == Call::Log && event.log.level < VISCA_LOG_DEBUG && !IsLink(event.log.function);
        if (line || event.call == Call::Put || event.call == Call::Send) {
            story.push_back(line ? Chomped(event.text) : event.text);
        }
    }
    return story;
}

void KovaTest::Answers(const Lines &replies) {
    // Shared, as the host calls a copy of the hook each time.
    const auto left = std::make_shared<std::deque<std::string>>(replies.begin(), replies.end());
    Host().OnSend([left](const Bytes &) {
        if (left->empty()) {
            return;
        }
        if (!left->front().empty()) {
            Host().Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, left->front());
        }
        left->pop_front();
    });
}

void KovaTest::Follows(const Steps &steps, const Action &action, const std::function<void()> &prepare) {
    prepare();
    Answers(Replies(steps));
    Host().Forget();
    EXPECT_EQ(0U, action());
    EXPECT_EQ(Events(steps), Story());
    for (size_t i = 0; i < steps.size(); ++i) {
        if (!steps[i].fails) {
            continue;
        }
        SCOPED_TRACE("step " + std::to_string(i + 1) + " fails: " + steps[i].event);
        for (bool refused : {true, false}) { // refused on its way, or answered by an error
            if (!refused && !IsAsk(steps[i])) {
                continue;
            }
            prepare();
            Lines replies = Replies(steps);
            const unsigned number = CountUpTo(steps, i, IsAsk(steps[i]));
            const Call call = IsAsk(steps[i]) ? Call::Send : Call::Put;
            if (refused) {
                Host().Fail(call, Host().Calls(call) + number);
            } else {
                replies[number - 1] = "90 60 41 FF";
            }
            Answers(replies);
            Host().Forget();
            EXPECT_EQ(1U, action());
            EXPECT_EQ(EventsWithFailure(steps, i), Story());
        }
    }
}

Lines KovaTest::LogOf(const std::string &function) {
    Lines lines;
    for (const Event &event : Host().Events(Call::Log)) {
        if (event.log.function == function) {
            lines.push_back(Chomped(event.text));
        }
    }
    return lines;
}

void UseUpDetection() {
    Host().SetCaller(2);
    KovaSetDetectImgParam(kKova);
    Host().SetCaller(0);
    g_detection_used_up = true;
}
bool IsDetectionUsedUp() {
    return g_detection_used_up;
}
void MarkDetectionUsedUp() {
    g_detection_used_up = true;
}

} // namespace unit

extern "C" {

uint32_t __wrap_ViscaInquiry(ViscaPkt *packet, ViscaPkt *reply) {
    return unit::g_inquiry ? unit::g_inquiry(reply) : __real_ViscaInquiry(packet, reply);
}

uint32_t __wrap_COMDRV_GetManuinfo(ManuInfo *info) {
    const uint32_t result = __real_COMDRV_GetManuinfo(info);
    if (unit::g_manuinfo) {
        unit::g_manuinfo(info);
    }
    return result;
}

} // extern "C"
