// The whole link on a fake port: sender, receiver and a caller. The input is what the caller does and the
// camera says, one step after the other; the first byte of a step, modulo 12, says which:
//
//   0  queue a command: counted bytes
//   1  ask an inquiry: counted bytes
//   2  the camera says, now: counted bytes
//   3  the camera says, later: tens of milliseconds, counted bytes
//   4  the camera answers the next packet: tens of milliseconds, counted bytes
//   5  time passes: tens of milliseconds
//   6  flags: 1 no camera can be controlled, 2 an upgrade owns the line, 4 a log export does
//   7  the host fails: 1 the next send is refused, 2 the next send is cut short, 4 the next put is refused
//   8  another module: 0 to 5
//   9  a call of the public layer: number, words
//  10  is the command queue empty?
//  11  a callback queues a command when the module asks for its image parameters: 0 no, else yes
//
// The threads of the library are fibers that live as long as the process; each run ends when all is quiet
// again.
#include "fuzz/allocations.h"
#include "fuzz/law.h"
#include "fuzz/world.h"

#include <cstring>

namespace {

using fuzz::Input;
using fuzz::SECOND;
using fuzz::Span;

constexpr uint64_t RESULT_WAIT = 2 * SECOND;
constexpr uint64_t ANSWER_WAIT = 6 * SECOND;
constexpr uint64_t QUIET =
    21 * SECOND / 10; // after this long a torn reply and a waiting sender have given up
constexpr uint64_t TICK = SECOND / 100;
constexpr size_t CALLER = 0; // fiber
constexpr size_t MOST_REPLIES = 64;
constexpr size_t MOST_STEPS = 200;
constexpr uint32_t MODULES[] = {0x02000001, 0x02000003, 0x02000004, 0x02000005, 0x02012000, 0x02012A01};
constexpr uint8_t END[] = {0xFF}; // brings the receiver back to where a run begins

struct Reply {
    Span bytes;
    uint64_t delay;
};

struct Link {
    uint8_t flags, failures;
    bool callback_queues;
    Reply reply[MOST_REPLIES];
    size_t replies, next_reply;

    bool to_send; // the sender has taken a command that must go out now
    ViscaPkt command;
    bool in_flight;
    uint64_t sent_at;

    const ViscaPkt *queued; // what a put to the command queue must hold; null: what the library made itself
    bool put_failed;

    Span asked; // what an inquiry must send; empty: what the library made itself
    unsigned sends;
    bool answered;
    ViscaPkt answer;
};
Link g_link;

bool IsBusy() {
    return (g_link.flags & 6) != 0;
}

bool SameBytes(Span a, const uint8_t *bytes, size_t size) {
    return a.size == size && memcmp(a.bytes, bytes, size) == 0;
}

/* ---- What the library asks of the host ---- */

void OnTaken(uint32_t queue, const ViscaPkt &packet) {
    if (queue == VISCA_CMD_QUEUE_ID) {
        LAW(fuzz::CurrentFiber() != CALLER);
        LAW(!g_link.to_send); // the one before went out
        LAW(!g_link.in_flight || fuzz::Now() - g_link.sent_at >= RESULT_WAIT);
        g_link.to_send = packet.aucData[1] == 0x01 && packet.ulLength <= 16;
        g_link.command = packet;
    } else if (queue == VISCA_CMD_RESULT_QUEUE_ID) {
        g_link.in_flight = false;
    } else {
        LAW(fuzz::CurrentFiber() == CALLER && !g_link.answered);
        g_link.answered = true;
        g_link.answer = packet;
    }
}

bool IsReply(const ViscaPkt &packet) {
    if (packet.ulLength < 3 || packet.ulLength > 16)
        return false;
    if (packet.aucData[0] != 0x90 || packet.aucData[packet.ulLength - 1] != 0xFF)
        return false;
    for (uint32_t i = 1; i < 16; ++i) {
        const bool beyond = i >= packet.ulLength;
        if ((beyond && packet.aucData[i] != 0) || (i + 1 < packet.ulLength && packet.aucData[i] == 0xFF))
            return false;
    }
    return true;
}

bool OnPut(uint32_t queue, const ViscaPkt &packet) {
    if (queue == VISCA_CMD_QUEUE_ID) {
        const ViscaPkt *wanted = g_link.queued;
        LAW(wanted == nullptr || memcmp(wanted, &packet, sizeof(packet)) == 0);
        LAW(wanted != nullptr || (packet.aucData[0] == 0x81 && packet.aucData[packet.ulLength - 1] == 0xFF));
    } else {
        LAW(fuzz::CurrentFiber() != CALLER && IsReply(packet));
    }
    const bool refused = (g_link.failures & 4) != 0;
    g_link.failures &= static_cast<uint8_t>(~4U);
    if (queue == VISCA_CMD_QUEUE_ID)
        g_link.put_failed = refused || fuzz::QueueLength(queue) == fuzz::QUEUE_CAPACITY;
    return !refused;
}

void CheckSend(Span bytes) {
    LAW(bytes.size <= 16);
    if (fuzz::CurrentFiber() == CALLER) {
        ++g_link.sends;
        LAW(g_link.asked.size == 0 || SameBytes(g_link.asked, bytes.bytes, bytes.size));
        LAW(g_link.asked.size != 0 || bytes.bytes[bytes.size - 1] == 0xFF);
        return;
    }
    LAW(g_link.to_send && SameBytes(bytes, g_link.command.aucData, g_link.command.ulLength));
    LAW(!g_link.in_flight || fuzz::Now() - g_link.sent_at >= RESULT_WAIT);
    LAW(fuzz::QueueLength(VISCA_CMD_RESULT_QUEUE_ID) ==
        0); // no result of an earlier command is left to release it
    g_link.to_send = false;
    g_link.in_flight = true;
    g_link.sent_at = fuzz::Now();
}

int32_t OnSend(Span bytes) {
    CheckSend(bytes);
    if ((g_link.failures & 3) != 0) {
        const bool refused = (g_link.failures & 1) != 0;
        g_link.failures &= 4;
        if (fuzz::CurrentFiber() != CALLER)
            g_link.in_flight = false;
        return refused ? -1 : static_cast<int32_t>(bytes.size) - 1;
    }
    if (g_link.next_reply < g_link.replies) {
        const Reply &reply = g_link.reply[g_link.next_reply++];
        fuzz::Feed(reply.bytes, fuzz::Now() + reply.delay);
    }
    return static_cast<int32_t>(bytes.size);
}

void OnReconfigure() {
    LAW(fuzz::CurrentFiber() != CALLER);
    if (!g_link.callback_queues)
        return;
    ViscaPkt packet = {{0x81, 0x01, 0x04, 0x07, 0x00}, 5};
    const ViscaPkt *const callers = g_link.queued;
    g_link.queued = nullptr;
    (void)ViscaEnQueueCmd(&packet);
    g_link.queued = callers;
}

/* ---- Steps ---- */

ViscaPkt PacketOf(Span bytes) {
    ViscaPkt packet = {};
    for (size_t i = 0; i < bytes.size && i < 16; ++i)
        packet.aucData[i] = bytes.bytes[i];
    packet.ulLength = static_cast<uint32_t>(bytes.size); // also more than the record holds
    return packet;
}

ViscaPkt Terminated(ViscaPkt packet) {
    if (packet.ulLength < 16)
        packet.aucData[packet.ulLength++] = 0xFF;
    return packet;
}

void QueueCommand(Span bytes) {
    ViscaPkt packet = PacketOf(bytes);
    const ViscaPkt wanted = Terminated(packet);
    const size_t waiting = fuzz::QueueLength(VISCA_CMD_QUEUE_ID);
    g_link.queued = &wanted;
    g_link.put_failed = false;
    const uint32_t result = ViscaEnQueueCmd(&packet);
    g_link.queued = nullptr;
    const bool accepted = (g_link.flags & 1) == 0 && !IsBusy() && !g_link.put_failed;
    LAW(result == (accepted ? VISCA_SUCCESS : VISCA_FAILURE));
    LAW(fuzz::QueueLength(VISCA_CMD_QUEUE_ID) == waiting + (accepted ? 1 : 0));
}

void CheckAnswer(uint32_t result, const ViscaPkt &reply, const ViscaPkt &before) {
    const bool good = g_link.answered && g_link.answer.aucData[1] >> 4 == 5;
    LAW(memcmp(&reply, good ? &g_link.answer : &before, sizeof(reply)) == 0);
    if (g_link.answered)
        LAW(result == (good ? VISCA_SUCCESS : VISCA_FAILURE));
}

void Ask(Span bytes) {
    ViscaPkt packet = PacketOf(bytes);
    const ViscaPkt wanted = Terminated(packet);
    const ViscaPkt before = {{0xA5, 0x5A, 0xA5}, 77};
    ViscaPkt reply = before;
    const bool updating = (g_link.flags & 2) != 0 && packet.aucData[3] != 0xA9;
    const bool allowed = (g_link.flags & 5) == 0 && !updating;
    const bool fails = (g_link.failures & 3) != 0;
    g_link.asked = {wanted.aucData, wanted.ulLength < 16 ? wanted.ulLength : 16U};
    g_link.sends = 0;
    g_link.answered = false;
    const uint64_t begin = fuzz::Now();
    const uint32_t result = ViscaInquiry(&packet, &reply);
    g_link.asked = {};
    LAW(g_link.sends == (allowed ? 1U : 0U));
    LAW(fuzz::Now() - begin <= ANSWER_WAIT);
    LAW(allowed || (result == VISCA_FAILURE && fuzz::Now() == begin));
    LAW(!allowed || !fails || (result == VISCA_FAILURE && !g_link.answered));
    LAW(!allowed || fails || g_link.answered ||
        (result == VISCA_SUCCESS && fuzz::Now() - begin == ANSWER_WAIT));
    CheckAnswer(result, reply, before);
    g_link.answered = false;
}

void SetFlags(uint8_t flags) {
    g_link.flags = flags & 7;
    ViscaSetCamCanCtrl((flags & 1) != 0 ? 0 : 1);
    ViscaMarkUpdatingCam((flags & 2) != 0 ? 1 : 0);
    ViscaMarkExportLog((flags & 4) != 0 ? 1 : 0);
}

void SetModule(uint8_t number) {
    const uint32_t type = MODULES[number % (sizeof(MODULES) / sizeof(MODULES[0]))];
    fuzz::SetModuleType(type);
    (void)VISCA_SetCamModuleType(type);
}

/* ---- Calls of the public layer: what is sent is checked where it leaves ---- */

void SetExposure(Input &input) {
    uint32_t word[sizeof(ExposureParam) / 4];
    for (uint32_t &value : word)
        value = input.Byte(); // most have small ranges
    word[4] <<= input.Byte() % 24;
    word[8] <<= input.Byte() % 24;
    ExposureParam exposure;
    memcpy(&exposure, word, sizeof(exposure));
    (void)VISCA_SetExposure(0, 0, &exposure);
}

void SetImageEnhance(Input &input) {
    uint32_t word[sizeof(ImageEnhanceParam) / 4];
    for (uint32_t &value : word)
        value = input.Byte();
    ImageEnhanceParam enhance;
    memcpy(&enhance, word, sizeof(enhance));
    (void)VISCA_SetImageEnhance(0, 0, &enhance);
}

void SetWhiteBalance(Input &input) {
    const WhiteBalanceParam balance = {input.Byte(), static_cast<int8_t>(input.Byte()),
                                       static_cast<int8_t>(input.Byte())};
    (void)VISCA_SetWhiteBalance(0, 0, &balance);
}

void SendMessage(Input &input) {
    constexpr uint32_t commands[] = {30, 2, 31, 34, 0};
    DrvMsgInfo message = {};
    message.ulMsgType = input.Byte() % 3;
    message.ulMsgCmd = commands[input.Byte() % 5];
    message.ulMsgChannel = input.Byte();
    message.ulMsgLen = input.Byte() % 9;
    for (uint8_t &byte : message.aucMsgData)
        byte = input.Byte();
    (void)VISCA_MessageProcess(&message);
}

using Call = void (*)(Input &);
constexpr Call CALLS[] = {
    [](Input &) { (void)VISCA_ZoomIn(); },
    [](Input &) { (void)VISCA_ZoomOut(); },
    [](Input &) { (void)VISCA_ZoomStop(); },
    [](Input &) { (void)VISCA_FocusNear(); },
    [](Input &) { (void)VISCA_FocusFar(); },
    [](Input &) { (void)VISCA_FocusStop(); },
    [](Input &) {
        uint32_t zoom = 0;
        LAW(VISCA_GetZoomPos(&zoom) <= VISCA_NULL_POINTER);
    },
    [](Input &) {
        int16_t focus = 0;
        LAW(VISCA_GetFocusPos(&focus) <= VISCA_NULL_POINTER);
    },
    [](Input &input) { (void)VISCA_SetZoomPos(static_cast<int32_t>(input.Word())); },
    [](Input &input) {
        const auto zoom = static_cast<int32_t>(input.Word());
        (void)VISCA_SetZoomFocusPos(zoom, static_cast<int32_t>(input.Word()));
    },
    [](Input &input) { (void)VISCA_EnableAF(input.Byte()); },
    [](Input &input) { (void)VISCA_SetFocusMode(input.Byte()); },
    [](Input &input) { (void)VISCA_SetAFType(input.Byte()); },
    [](Input &input) { (void)VISCA_SetFocusMinLen(input.Word()); },
    [](Input &input) { (void)VISCA_EnableIrCurve(input.Byte()); },
    [](Input &input) {
        const uint32_t type = input.Byte();
        const uint32_t values[] = {input.Word(), input.Word(), input.Word(), input.Word()};
        (void)VISCA_OnePushAutoFocus(type, values);
    },
    [](Input &) {
        int32_t luma = 0;
        (void)VISCA_KOVA_GetCurLuma(0, &luma);
    },
    [](Input &input) { (void)VISCA_KOVA_SetSceneInfo(input.Byte()); },
    [](Input &input) { (void)VISCA_KOVA_SetIRcut(input.Byte()); },
    [](Input &input) { (void)VISCA_SetBlackWhiteMode(0, input.Byte()); },
    [](Input &) {
        uint32_t gain = 0;
        (void)VISCA_GetGain(0, &gain);
    },
    [](Input &) {
        CameraInfo info;
        memset(&info, 0xA5, sizeof(info));
        if (VISCA_GetCamInfo(0, &info) == VISCA_SUCCESS)
            LAW(memchr(info.szVendor, 0, 32) != nullptr && memchr(info.szModel, 0, 32) != nullptr &&
                memchr(info.szFirmware, 0, 32) != nullptr);
    },
    [](Input &) {
        int32_t temperature = 0;
        if (VISCA_KOVA_GetTemperature(0, &temperature) == VISCA_SUCCESS)
            LAW(temperature >= -127 && temperature <= 128);
    },
    SetExposure,
    SetImageEnhance,
    SetWhiteBalance,
    SendMessage,
};

void DoCall(Input &input) {
    const Call call = CALLS[input.Byte() % (sizeof(CALLS) / sizeof(CALLS[0]))];
    g_link.answered = false;
    const auto taken = fuzz::World().taken;
    fuzz::World().taken = [](uint32_t queue, const ViscaPkt &packet) {
        OnTaken(queue, packet);
        g_link.answered = false; // one call may ask several times
    };
    call(input);
    fuzz::World().taken = taken;
}

void Step(Input &input) {
    switch (input.Byte() % 12) {
    case 0:
        QueueCommand(input.Counted());
        break;
    case 1:
        Ask(input.Counted());
        break;
    case 2:
        fuzz::Feed(input.Counted(), fuzz::Now());
        break;
    case 3: {
        const uint64_t when = fuzz::Now() + input.Byte() * TICK;
        fuzz::Feed(input.Counted(), when);
        break;
    }
    case 4: {
        const uint64_t delay = input.Byte() * TICK;
        const Span bytes = input.Counted();
        if (g_link.replies < MOST_REPLIES)
            g_link.reply[g_link.replies++] = {bytes, delay};
        break;
    }
    case 5:
        (void)fuzz::WaitUntil(fuzz::NO_FD, fuzz::Now() + input.Byte() * TICK);
        break;
    case 6:
        SetFlags(input.Byte());
        break;
    case 7:
        g_link.failures = input.Byte() & 7;
        break;
    case 8:
        SetModule(input.Byte());
        break;
    case 9:
        DoCall(input);
        break;
    case 10:
        LAW(ViscaIsCmdQueueEmpty() == (fuzz::QueueLength(VISCA_CMD_QUEUE_ID) == 0 ? 1U : 0U));
        break;
    default:
        g_link.callback_queues = input.Byte() != 0;
        break;
    }
}

/* ---- A run ---- */

void SetUp() {
    static bool started = false;
    g_link = Link();
    fuzz::World().send = OnSend;
    fuzz::World().put = OnPut;
    fuzz::World().taken = OnTaken;
    gpfnReconfigKovaImgParam = OnReconfigure;
    ViscaSetCamComFd(fuzz::PORT_FD);
    SetModule(0);
    SetFlags(0);
    if (!started) {
        LAW(ViscaStartMsgProc() == VISCA_SUCCESS);
        (void)fuzz::WaitUntil(fuzz::NO_FD, fuzz::Now() + 1); // both reach their first wait
        started = true;
    }
}

/** Until everything queued has gone out, everything said was heard, and both threads wait for more. */
void Drain() {
    SetFlags(0);
    g_link.failures = 0;
    g_link.callback_queues = false;
    for (size_t i = 0; i < 2 * fuzz::QUEUE_CAPACITY + 300; ++i) {
        if (fuzz::QueueLength(VISCA_CMD_QUEUE_ID) == 0 && fuzz::Unread() == 0)
            break;
        (void)fuzz::WaitUntil(fuzz::NO_FD, fuzz::Now() + QUIET);
    }
    LAW(fuzz::QueueLength(VISCA_CMD_QUEUE_ID) == 0 && fuzz::Unread() == 0);
    (void)fuzz::WaitUntil(fuzz::NO_FD, fuzz::Now() + QUIET);
    fuzz::Feed({END, sizeof(END)}, fuzz::Now());
    (void)fuzz::WaitUntil(fuzz::NO_FD, fuzz::Now() + QUIET);
    LAW(fuzz::Unread() == 0 && !g_link.to_send);
    fuzz::EmptyQueue(VISCA_CMD_RESULT_QUEUE_ID);
    fuzz::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const fuzz::Run run;
    const fuzz::Allocations allocations;
    SetUp();
    const uint64_t begin = fuzz::Now();
    Input input(bytes, size);
    for (size_t steps = 0; steps < MOST_STEPS && !input.Empty(); ++steps)
        Step(input);
    Drain();
    const uint64_t seconds = (fuzz::Now() - begin) / SECOND + 1;
    LAW(fuzz::Waits() <= 20 * (size + 1) + 110 * seconds); // every 20 ms while somebody else owns the line
    LAW(fuzz::LogLines() <= 40 * (size + 1) + 2 * seconds);
    LAW(allocations.Count() == 0);
    return 0;
}
