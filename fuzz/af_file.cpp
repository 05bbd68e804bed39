// The files from which the auto-focus of a Kova module is tuned: commands, and weights. The input:
//
//   0  a letter: 'n' as follows, 'm' the command file is missing at first, 'w' the weight file is missing,
//   'b' both 1  a letter: 'a' is 0; the command file is there with so many bytes, and grows by so many (0:
//   all at once) 2  the weights, up to the first '|' (none: no weights), then the command file
//
// What is sent is foretold from the files, line by line.
#include "fuzz/law.h"
#include "fuzz/world.h"

#include <csetjmp>
#include <cstring>
#include <string>

namespace {

constexpr size_t LINE_MAX_CHARS = 122;
constexpr size_t WEIGHTS_MAX = 114;

fuzz::MemoryFile g_commands, g_weights;
size_t g_whole; // bytes that the command file ends up with
size_t g_step;
size_t g_at; // what the model has read of it
unsigned long g_sent;
jmp_buf g_end;

std::string Text(const std::string &line) {
    return line.c_str(); // up to its first NUL
}

/** The next complete line, from where the model stands. */
bool NextLine(std::string *line) {
    const std::string rest(g_commands.content.bytes + g_at,
                           g_commands.content.bytes + g_commands.content.size);
    const size_t newline = rest.find('\n');
    const size_t length = newline < LINE_MAX_CHARS ? newline + 1 : LINE_MAX_CHARS;
    if (length > rest.size())
        return false;
    *line = Text(rest.substr(0, length));
    g_at += length;
    return true;
}

/** The next text that must be sent; false: none yet. */
bool NextText(std::string *text) {
    while (NextLine(text)) {
        if (text->find("weight") == std::string::npos)
            return true;
        if (g_weights.missing || g_weights.content.size > WEIGHTS_MAX)
            continue;
        const std::string weights(g_weights.content.bytes, g_weights.content.bytes + g_weights.content.size);
        *text = text->substr(0, 6) + ":" + Text(weights);
        return true;
    }
    return false;
}

int32_t OnSend(fuzz::Span bytes) {
    std::string text;
    LAW(NextText(&text));
    std::string packet = "\x81\x66\x66\x66";
    if (!text.empty())
        packet += static_cast<char>(text.size()) + text;
    LAW(bytes.size == packet.size() && memcmp(bytes.bytes, packet.data(), packet.size()) == 0);
    ++g_sent;
    return static_cast<int32_t>(bytes.size);
}

bool AllSent() {
    std::string text;
    return !NextText(&text);
}

/** The library sleeps: it has read what there was. The file appears or grows, or the run is over. */
void OnIdle() {
    if (g_commands.missing) {
        g_commands.missing = false;
        return;
    }
    LAW(AllSent());
    if (g_commands.content.size == g_whole)
        longjmp(g_end, 1); // over frames that own nothing
    const size_t left = g_whole - g_commands.content.size;
    g_commands.content.size += g_step < left ? g_step : left;
}

void Place(fuzz::Input &input) {
    const uint8_t manner = input.Byte();
    g_step = (input.Byte() + 256U - 'a') % 256;
    const fuzz::Span rest = input.Rest();
    const auto *bar =
        static_cast<const uint8_t *>(rest.size > 0 ? memchr(rest.bytes, '|', rest.size) : nullptr);
    const size_t weights = bar != nullptr ? static_cast<size_t>(bar - rest.bytes) : 0;
    const size_t commands_at = bar != nullptr ? weights + 1 : 0;
    g_weights = fuzz::MemoryFile();
    g_weights.path = "/tmp/weight.txt";
    g_weights.content = {rest.bytes, weights};
    g_weights.missing = manner == 'w' || manner == 'b';
    g_whole = rest.size - commands_at;
    if (g_step == 0)
        g_step = g_whole;
    g_commands = fuzz::MemoryFile();
    g_commands.path = "/tmp/testaf.txt";
    g_commands.content = {rest.bytes + commands_at, g_step < g_whole ? g_step : g_whole};
    g_commands.missing = manner == 'm' || manner == 'b';
    g_at = g_commands.missing ? 0 : g_commands.content.size; // old lines are passed over
    fuzz::PlaceFile(&g_commands);
    fuzz::PlaceFile(&g_weights);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    const fuzz::Run run;
    Place(input);
    g_sent = 0;
    ViscaSetCamComFd(fuzz::PORT_FD);
    fuzz::World().send = OnSend;
    fuzz::World().idle = OnIdle;
    if (setjmp(g_end) == 0)
        (void)AF_Debug(nullptr);
    LAW(g_commands.handle != nullptr && g_weights.handle == nullptr);
    (void)fclose(g_commands.handle);
    LAW(fuzz::LogLines() <= 8 + 4 * size);
    return 0;
}
