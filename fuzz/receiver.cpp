// The receiver and its routing. The input is how the line behaves, then what the camera says:
//
//   0  callbacks that are set: 1 zoom, 2 focus, 4 image parameters
//   1  so many bytes between silences of 1.5 s; 0: no silence
//   2  so many bytes a read gives at most; 0: all that there are
//   3  elements that each result queue holds; 0: all that it can
//   4  at this read another owner takes the line, until the pass is over; 0: never
//   5  the stream
//
// Each pass is foretold from the rules of the line, by a model that shares nothing with the receiver, and
// compared.
#include "fuzz/allocations.h"
#include "fuzz/law.h"
#include "fuzz/world.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr uint64_t SILENCE = 3 * fuzz::SECOND / 2;
constexpr size_t LONGEST = 512;
constexpr uint32_t NOWHERE = 2; // no queue of ours
constexpr size_t AF_TEXT_MAX = 127;

struct Manner {
    uint8_t callbacks;
    size_t between_silences;
    size_t read_limit;
    size_t capacity;
    unsigned long taken_at;
};

/** What a pass does. */
struct Pass {
    unsigned long bytes = 0, reads = 0;
    unsigned long lines = 0, dumps = 0;
    uint32_t queue = NOWHERE;
    ViscaPkt packet = {};
    int zoom = -1, focus = -1; // what the callback was told
    unsigned reconfig = 0;
    bool af_answer = false;
    char af_text[AF_TEXT_MAX + 1] = {};
};

/** Foretells passes, byte by byte. */
class Model {
  public:
    Model(const Manner &manner, fuzz::Span stream) : m_manner(manner), m_stream(stream) {}

    bool AtEnd() const { return m_at == m_stream.size; }

    Pass Next() {
        m_pass = Pass();
        m_taken = false;
        while (!m_taken && !AtEnd()) {
            const uint8_t byte = Read();
            if (byte == 0x90) {
                Collect();
                return m_pass;
            }
            if (byte == 0x66) {
                AfAnswer();
                return m_pass;
            }
            ++m_pass.lines; // an unexpected byte
            if (byte == 0xFF)
                return m_pass;
        }
        if (!m_taken)
            ReadAtEnd();
        return m_pass;
    }

  private:
    bool SilentHere() const {
        return AtEnd() || (m_manner.between_silences > 0 && m_at % m_manner.between_silences == 0);
    }
    void CountRead() {
        ++m_pass.reads;
        if (++m_reads == m_manner.taken_at)
            m_taken = true;
    }
    uint8_t Read() {
        CountRead();
        ++m_pass.bytes;
        return m_stream.bytes[m_at++];
    }
    void ReadAtEnd() {
        CountRead();
        ++m_pass.lines; // a read error
    }

    void Collect() {
        ViscaPkt &packet = m_pass.packet;
        packet.aucData[0] = 0x90;
        packet.ulLength = 1;
        bool ended = false;
        while (!ended && packet.ulLength < 16 && !m_taken && !SilentHere()) {
            packet.aucData[packet.ulLength] = Read();
            ended = packet.aucData[packet.ulLength++] == 0xFF;
        }
        ++m_pass.dumps;
        if (m_taken && !ended && packet.ulLength < 16)
            return;
        if (ended && packet.ulLength >= 3)
            Route();
        else
            Reject();
    }

    void Reject() {
        ++m_pass.dumps;
        ++m_pass.lines;
    }

    void Route() {
        const uint8_t *bytes = m_pass.packet.aucData;
        const unsigned type = bytes[1] / 16, socket = bytes[1] % 16;
        if (type == 0)
            Report();
        else if (type == 5)
            Put(socket == 0 ? VISCA_INQUIRY_RESULT_QUEUE_ID : VISCA_CMD_RESULT_QUEUE_ID);
        else if (type == 6)
            Put(socket == 0 && bytes[2] != 2 && bytes[2] != 3 ? VISCA_INQUIRY_RESULT_QUEUE_ID
                                                              : VISCA_CMD_RESULT_QUEUE_ID);
        else if (type != 4)
            Reject();
    }

    void Put(uint32_t queue) {
        m_pass.queue = queue;
        if (m_put[queue] == m_manner.capacity)
            ++m_pass.lines;
        else
            ++m_put[queue];
    }

    void Report() {
        const ViscaPkt &packet = m_pass.packet;
        if (packet.aucData[1] != 0x07) {
            ++m_pass.lines;
            ++m_pass.dumps;
            return;
        }
        const unsigned code = packet.ulLength > 3 ? packet.aucData[3] : 0;
        const int active = packet.ulLength > 4 && packet.aucData[4] % 16 != 0 ? 1 : 0;
        if (code == 0xAE && (m_manner.callbacks & 1) != 0)
            m_pass.zoom = active;
        else if (code == 0xAF && (m_manner.callbacks & 2) != 0)
            m_pass.focus = active;
        else if (code == 0xEF && (m_manner.callbacks & 4) != 0)
            m_pass.reconfig = 1;
        else if (code != 0xAE && code != 0xAF && code != 0xEF)
            ++m_pass.lines;
    }

    void AfAnswer() {
        ++m_pass.lines; // the text, or that it was cut off
        if (m_taken || SilentHere())
            return;
        const size_t length = Read();
        char text[256] = {};
        size_t received = 0;
        while (received < length) {
            if (m_taken || SilentHere())
                return;
            received += ReadPiece(text + received, length - received);
        }
        text[AF_TEXT_MAX] = '\0';
        m_pass.af_answer = true;
        strcpy(m_pass.af_text, text);
    }

    size_t ReadPiece(char *to, size_t wanted) {
        CountRead();
        size_t piece = 0;
        do {
            to[piece++] = static_cast<char>(m_stream.bytes[m_at++]);
        } while (piece < wanted && piece < m_manner.read_limit && !SilentHere());
        m_pass.bytes += piece;
        return piece;
    }

    Manner m_manner;
    fuzz::Span m_stream;
    size_t m_at = 0;
    unsigned long m_reads = 0;
    bool m_taken = false;
    size_t m_put[4] = {};
    Pass m_pass;
};

Pass g_seen;
Manner g_manner;
unsigned long g_reads;

void OnRead() {
    ++g_seen.reads;
    if (++g_reads == g_manner.taken_at)
        ViscaMarkExportLog(1);
}

bool OnPut(uint32_t queue, const ViscaPkt &packet) {
    LAW(g_seen.queue == NOWHERE); // one reply a pass
    g_seen.queue = queue;
    g_seen.packet = packet;
    return true;
}

__attribute__((format(printf, 2, 0))) void OnLog(uint32_t level, const char *format, va_list arguments) {
    if (level != VISCA_LOG_DEBUG)
        return;
    char line[512];
    (void)vsnprintf(line, sizeof(line), format, arguments);
    constexpr char mark[] = "AF_DEBUG recv ack:";
    const char *text = strstr(line, mark);
    LAW(text != nullptr);
    text += sizeof(mark) - 1;
    const size_t length = strlen(text);
    LAW(length >= 1 && length <= AF_TEXT_MAX + 1 && text[length - 1] == '\n');
    g_seen.af_answer = true;
    memcpy(g_seen.af_text, text, length - 1);
}

void Feed(const Manner &manner, fuzz::Span stream) {
    const size_t step = manner.between_silences > 0 ? manner.between_silences : stream.size;
    uint64_t when = fuzz::Now();
    for (size_t at = 0; at < stream.size; at += step, when += SILENCE)
        fuzz::Feed({stream.bytes + at, stream.size - at < step ? stream.size - at : step}, when);
}

Manner MannerOf(fuzz::Input &input) {
    Manner manner;
    manner.callbacks = input.Byte();
    manner.between_silences = input.Byte();
    manner.read_limit = input.Byte();
    manner.capacity = input.Byte();
    manner.taken_at = input.Byte();
    if (manner.between_silences > 0 && manner.between_silences < 4)
        manner.between_silences = 4; // the port keeps so many pieces and no more
    if (manner.read_limit == 0)
        manner.read_limit = SIZE_MAX;
    if (manner.capacity == 0 || manner.capacity > fuzz::QUEUE_CAPACITY)
        manner.capacity = fuzz::QUEUE_CAPACITY;
    return manner;
}

void SetUp(const Manner &manner) {
    g_manner = manner;
    g_reads = 0;
    fuzz::World().read = OnRead;
    fuzz::World().put = OnPut;
    fuzz::World().log = OnLog;
    fuzz::LimitReads(manner.read_limit);
    fuzz::LimitQueue(VISCA_CMD_RESULT_QUEUE_ID, manner.capacity);
    fuzz::LimitQueue(VISCA_INQUIRY_RESULT_QUEUE_ID, manner.capacity);
    ViscaSetCamComFd(fuzz::PORT_FD);
    gpfnReportZoomStatus = (manner.callbacks & 1) != 0
                               ? +[](uint32_t active) { g_seen.zoom = static_cast<int>(active); }
                               : nullptr;
    gpfnReportFocusStatus = (manner.callbacks & 2) != 0
                                ? +[](uint32_t active) { g_seen.focus = static_cast<int>(active); }
                                : nullptr;
    gpfnReconfigKovaImgParam = (manner.callbacks & 4) != 0 ? +[] { ++g_seen.reconfig; } : nullptr;
}

/** One pass of the receiver. */
Pass Observe() {
    g_seen = Pass();
    const unsigned long bytes = fuzz::BytesRead(), lines = fuzz::LogLines(), dumps = fuzz::Dumps();
    ViscaDealOneAck();
    ViscaMarkExportLog(0);
    g_seen.bytes = fuzz::BytesRead() - bytes;
    g_seen.lines = fuzz::LogLines() - lines;
    g_seen.dumps = fuzz::Dumps() - dumps;
    return g_seen;
}

void Compare(const Pass &seen, const Pass &foretold) {
    LAW(seen.bytes == foretold.bytes);
    LAW(seen.reads == foretold.reads);
    LAW(seen.lines == foretold.lines);
    LAW(seen.dumps == foretold.dumps);
    LAW(seen.queue == foretold.queue);
    LAW(seen.queue == NOWHERE || memcmp(&seen.packet, &foretold.packet, sizeof(ViscaPkt)) == 0);
    LAW(seen.zoom == foretold.zoom && seen.focus == foretold.focus && seen.reconfig == foretold.reconfig);
    LAW(seen.af_answer == foretold.af_answer && strcmp(seen.af_text, foretold.af_text) == 0);
    LAW(seen.lines <= seen.bytes + 1 && seen.dumps <= 2); // what a flood of noise may cost the log
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    const Manner manner = MannerOf(input);
    const fuzz::Span stream = input.Take(LONGEST);
    const fuzz::Run run;
    const fuzz::Allocations allocations;
    SetUp(manner);
    Feed(manner, stream);
    Model model(manner, stream);
    while (!model.AtEnd()) {
        const Pass foretold = model.Next();
        const Pass seen = Observe();
        Compare(seen, foretold);
        LAW(seen.bytes > 0); // no pass goes round without a byte
    }
    LAW(fuzz::Unread() == 0);
    LAW(fuzz::BytesRead() == stream.size);
    LAW(fuzz::Waits() <= 3 * stream.size + 4);
    LAW(allocations.Count() == 0);
    return 0;
}
