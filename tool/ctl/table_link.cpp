/* The link itself: packets, the queue, the port, its flags. */
#include "host/host.h"
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "viscacam.h"
#include "viscacam_host.h"

namespace tool::ctl {

namespace {

constexpr uint8_t COMMAND_MARK = 0x01;
constexpr uint8_t INQUIRY_MARK = 0x09;
constexpr uint8_t KOVA_HEADER = 0x71;
constexpr uint8_t TERMINATOR = 0xFF;
constexpr std::chrono::milliseconds LAST_ANSWER{200};
constexpr size_t MOST_BYTES = 15; // the terminator is the sixteenth

decode::Bytes bytesOf(const Arguments &arguments) {
    decode::Bytes bytes;
    for (const Value &value : arguments.list())
        bytes.push_back(static_cast<uint8_t>(value.number));
    return bytes;
}

ViscaPkt packetOf(const decode::Bytes &bytes) {
    ViscaPkt packet = {};
    if (bytes[0] == KOVA_HEADER)
        ViscaInitPkt4Kova(&packet);
    else
        ViscaInitPkt(&packet);
    packet.aucData[0] = bytes[0]; // another camera's, if that is what was typed
    for (size_t i = 1; i < bytes.size(); ++i)
        ViscaAppendByte(bytes[i], &packet);
    return packet;
}

// What an answer means depends on its question.
std::string meaningOf(const decode::Bytes &question, const decode::Bytes &answer) {
    decode::Conversation conversation;
    conversation.Next(decode::Direction::ToCamera, decode::Microseconds(0), question);
    return conversation.Next(decode::Direction::FromCamera, decode::Microseconds(1), answer).text;
}

void inquireRaw(Job &job, ViscaPkt packet) {
    ViscaPkt reply = {};
    if (!job.ask([&] { return ViscaInquiry(&packet, &reply); }, "the inquiry"))
        return;
    const decode::Bytes question(packet.aucData, packet.aucData + std::min(packet.ulLength, 16U));
    const decode::Bytes answer(reply.aucData, reply.aucData + std::min(reply.ulLength, 16U));
    job.text("answer", hexText(answer));
    job.text("meaning", answer.empty() ? "" : meaningOf(question, answer));
}

// Neither a command nor an inquiry: written as it is, past the queue, and not followed.
void sendPlain(Job &job, decode::Bytes bytes) {
    if (bytes.empty() || bytes.back() != TERMINATOR)
        bytes.push_back(TERMINATOR);
    job.order([&] { return ViscaCamComSend(static_cast<uint32_t>(bytes.size()), bytes.data()); });
    job.line("sent as it is: " + hexText(bytes) + "; what comes of it is not followed");
}

void sendRaw(Job &job, const Arguments &arguments) {
    decode::Bytes bytes = bytesOf(arguments);
    if (bytes.size() > 1 && bytes.back() == TERMINATOR)
        bytes.pop_back();
    if (bytes.size() < 2 || bytes.size() > MOST_BYTES)
        throw Refused("a packet has 2 to 15 bytes and its terminator");
    if (bytes[1] == INQUIRY_MARK)
        return inquireRaw(job, packetOf(bytes));
    if (bytes[1] != COMMAND_MARK)
        return sendPlain(job, bytes);
    ViscaPkt packet = packetOf(bytes);
    job.order([&] { return ViscaEnQueueCmd(&packet); });
}

void showFlags(Job &job) {
    job.flag("can-control", ViscaIsCamCanCtrl() == 1, "yes", "no");
    job.flag("updating", ViscaIsUpdatingCam() == 1, "yes", "no");
    job.flag("exporting-log", ViscaIsExportLog() == 1, "yes", "no");
    job.flag("busy", ViscaIsCamComBusy() == 1, "yes", "no");
}

void showLink(Job &job, const Arguments &) {
    const host::Counters counters = host::GetCounters();
    job.text("device", host::PortPath(0));
    job.number("descriptor", ViscaGetCamComFd());
    showFlags(job);
    job.number("commands-sent", static_cast<int64_t>(counters.ullCommandsSent));
    job.number("completed", static_cast<int64_t>(counters.ullCompletions));
    job.number("refused", static_cast<int64_t>(counters.ullErrors));
    job.number("command-timeouts", static_cast<int64_t>(counters.ullCommandTimeouts));
    job.number("inquiries", static_cast<int64_t>(counters.ullInquiriesSent));
    job.number("inquiry-timeouts", static_cast<int64_t>(counters.ullInquiryTimeouts));
    job.number("unasked-answers", static_cast<int64_t>(counters.ullUnaskedAnswers));
    job.number("junk-bytes", static_cast<int64_t>(counters.ullJunkBytes));
    job.number("bad-replies", static_cast<int64_t>(counters.ullBadReplies));
}

void setFlag(Job &job, const Arguments &arguments) {
    constexpr int64_t CONTROL = 0;
    constexpr int64_t UPDATING = 1;
    const uint32_t on = arguments.word("switch");
    if (arguments.number("flag") == CONTROL)
        ViscaSetCamCanCtrl(on);
    else if (arguments.number("flag") == UPDATING)
        ViscaMarkUpdatingCam(on);
    else
        ViscaMarkExportLog(on);
    showFlags(job);
}

void waitForQueue(Job &job, const Arguments &arguments) {
    const auto seconds = static_cast<uint32_t>((arguments.number("time", 10000) + 999) / 1000);
    const uint32_t late =
        job.perform("waiting for the queue", [seconds] { return ViscaWaitCmdQueueEmpty(seconds); });
    if (late != VISCA_SUCCESS)
        throw Refused("the queue did not become empty in " + std::to_string(seconds) + " s");
    job.text("queue", "empty");
}

std::vector<Row> packetRows() {
    return {
        {"raw",
         {list("byte", Domain::byte())},
         "a packet of your own; FF may be left out",
         {"raw 81 01 04 07 00", "raw 71 09 0F 81", "raw 88 30 01"},
         sendRaw,
         {"ViscaInitPkt", "ViscaAppendByte", "ViscaEnQueueCmd", "ViscaInitPkt4Kova", "ViscaInquiry",
          "ViscaCamComSend"}},
        {"answers drop",
         {},
         "throw away answers that came too late: ends a shift",
         {"answers drop"},
         [](Job &job, const Arguments &) {
             job.sleep(LAST_ANSWER); // in a shift the answer to the last question is under way
             job.number("dropped", host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID));
         },
         {}},
    };
}

std::vector<Row> stateRows() {
    return {
        {"queue show",
         {},
         "whether commands still wait",
         {"queue show"},
         [](Job &job, const Arguments &) {
             job.flag("empty", VISCA_IsMsgQueueEmpty() == 1, "yes", "no");
             job.number("waiting", host::QueueDepth(VISCA_CMD_QUEUE_ID));
             job.number("answers-too-late", host::QueueDepth(VISCA_INQUIRY_RESULT_QUEUE_ID));
         },
         {"VISCA_IsMsgQueueEmpty"}},
        {"queue wait",
         {optional("time", Domain::time(std::chrono::seconds(1), std::chrono::minutes(10)))},
         "wait until none does, 10 s at most",
         {"queue wait 5s"},
         waitForQueue,
         {"ViscaWaitCmdQueueEmpty"}},
        {"link show",
         {},
         "port, flags and counters",
         {"link show"},
         showLink,
         {"ViscaGetCamComFd", "ViscaIsCamCanCtrl", "ViscaIsUpdatingCam", "ViscaIsExportLog",
          "ViscaIsCamComBusy"}},
        {"link flush",
         {},
         "throw away what waits in the driver",
         {"link flush"},
         [](Job &job, const Arguments &) {
             job.order([] { return ViscaCamComFlush(VISCA_FLUSH_BOTH); });
             job.line("flushed");
         },
         {"ViscaCamComFlush"}},
        {"link flag",
         {needed("flag", Domain::choice({{"can-control", 0}, {"updating", 1}, {"exporting-log", 2}})),
          needed("switch", Domain::onOff())},
         "set a flag of the link by hand",
         {"link flag can-control on", "link flag updating off", "link flag exporting-log off"},
         setFlag,
         {"ViscaSetCamCanCtrl", "ViscaMarkUpdatingCam", "ViscaMarkExportLog", "ViscaIsCamCanCtrl",
          "ViscaIsUpdatingCam", "ViscaIsExportLog", "ViscaIsCamComBusy"}},
    };
}

} // namespace

Subject linkCommands() {
    Subject subject = {"Link", packetRows()};
    const std::vector<Row> rows = stateRows();
    subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
