// What a simulated camera makes of the bytes that a host sends. The input:
//
//   0  which camera
//   1  1 bytes take their time, 2 the vertical clock runs, 4 replies take their time, 8 it starts in standby,
//      10 it boots, 20 the host sends at another rate
//   2  steps: tens of milliseconds that pass before, counted bytes
#include "fuzz/desk.h"
#include "fuzz/law.h"

#include <climits>
#include <cstring>

namespace {

using fuzz::Desk;
using fuzz::Input;
using fuzz::Span;
using sim::Direction;
using std::chrono::milliseconds;

constexpr milliseconds LONG_ENOUGH{300000}; // for the slowest lens and the longest boot
constexpr size_t LONGEST = 512;

sim::Options OptionsOf(uint8_t number, uint8_t manner) {
    const std::vector<sim::CameraType> &cameras = sim::knownCameras();
    sim::Options options = sim::Options::fast(cameras[number % cameras.size()].name);
    options.paced = (manner & 1) != 0;
    options.vertical = (manner & 2) != 0;
    if ((manner & 4) != 0)
        options.latency = sim::Latency::realLine();
    if ((manner & 8) != 0)
        options.start = sim::Power::standby;
    if ((manner & 0x10) != 0)
        options.start = sim::Power::booting;
    return options;
}

/** 66, length, text. */
bool IsAfDebug(const sim::Bytes &bytes) {
    return bytes.size() >= 2 && bytes[0] == 0x66 && bytes.size() == 2U + bytes[1] && bytes[1] < 0x80;
}

bool IsReply(const sim::Bytes &bytes) {
    if (bytes.size() < 3 || bytes.size() > 16 || bytes.back() != 0xFF)
        return false;
    if (memchr(bytes.data(), 0xFF, bytes.size() - 1) != nullptr)
        return false;
    return bytes[0] == 0x90 || bytes == sim::Bytes{0x88, 0x30, 0x02, 0xFF};
}

/** Follows what the camera says. */
class Listener {
  public:
    void Hear(const std::vector<sim::TraceEvent> &diary) {
        for (const sim::TraceEvent &event : diary) {
            LAW(event.time >= m_latest || event.direction != Direction::toHost);
            if (event.direction == Direction::toHost)
                Reply(event);
            LAW(event.text.empty() || fuzz::IsLine(event.text));
        }
    }
    const sim::Bytes &Said() const { return m_said; }

  private:
    void Reply(const sim::TraceEvent &event) {
        const sim::Bytes &bytes = event.bytes;
        LAW(IsReply(bytes) || IsAfDebug(bytes));
        m_latest = event.time;
        m_said.insert(m_said.end(), bytes.begin(), bytes.end());
        if (IsAfDebug(bytes))
            return;
        const unsigned type = bytes[1] / 16, socket = bytes[1] % 16;
        if (type == 4 || (type == 5 && socket != 0 && bytes.size() == 3))
            LAW(socket == 1 || socket == 2);
        if (type == 4)
            ++m_accepted;
        if (type == 5 && bytes.size() == 3 && socket != 0)
            LAW(++m_completed <= m_accepted);
    }

    sim::Clock::time_point m_latest{};
    sim::Bytes m_said;
    unsigned long m_accepted = 0, m_completed = 0;
};

/** Every byte belongs to one packet, to the junk, or to the packet that is not over. */
void CheckFramer(Span bytes, uint8_t header) {
    sim::Framer framer(header, header != 0);
    size_t inside = 0, packets = 0;
    for (size_t i = 0; i < bytes.size; ++i) {
        const auto packet = framer.push(bytes.bytes[i], {}, {});
        if (packet) {
            LAW(packet->bytes.size() ==
                (packet->afDebug ? packet->length : std::min(packet->length, sim::LONGEST_PACKET)));
            LAW(packet->tooLong() || packet->afDebug || packet->bytes.back() == 0xFF);
            LAW(packet->bytes[0] >= 0x80 || (header != 0 && packet->bytes[0] == header));
            packets += packet->length;
            inside = 0;
        } else if (framer.insidePacket()) {
            ++inside;
        }
    }
    LAW(packets + inside + framer.takeJunk().size() == bytes.size);
}

void Run(Desk &desk, Input input, bool deaf) {
    Listener listener;
    unsigned long passes = 0, sent = 0;
    while (!input.Empty()) {
        passes += desk.Pass(milliseconds(10 * input.Byte()), ULONG_MAX);
        const Span bytes = input.Counted();
        sent += bytes.size;
        desk.Send(bytes);
        listener.Hear(desk.Diary());
    }
    fuzz::CheckState(desk.State());
    passes += desk.Pass(LONG_ENOUGH, ULONG_MAX);
    listener.Hear(desk.Diary());
    LAW(passes <= 100 + 40 * (sent + 1)); // each byte and each reply's bytes have their time, and little else
    const sim::State state = desk.State();
    fuzz::CheckState(state);
    LAW(!state.socketBusy[0] && !state.socketBusy[1] && !state.zoomMoving && !state.focusMoving);
    LAW(!desk.Camera().next()); // an idle camera costs nothing
    LAW(state.packetsSeen * 2 + state.noiseBytes <= 2 * sent);
    if (deaf)
        LAW(state.packetsSeen == 0 && state.noiseBytes == sent);
    else
        LAW(listener.Said() == fuzz::TheCable().to_host);
    fuzz::TheCable().host_baud = 9600;
    fuzz::CheckAlive(desk);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    Input input(bytes, std::min(size, LONGEST));
    const uint8_t number = input.Byte();
    const uint8_t manner = input.Byte();
    const sim::Options options = OptionsOf(number, manner);
    const bool deaf = (manner & 0x20) != 0;
    for (const uint8_t header : {0x00, 0x71})
        CheckFramer({bytes, size}, header);
    Desk desk(options);
    if (deaf)
        fuzz::TheCable().host_baud = 19200;
    Run(desk, input, deaf);
    return 0;
}
