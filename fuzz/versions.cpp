// The versions and other texts that a Kova module tells. The input:
//
//   0  1 the module has program versions in segments, 2 extension versions, 4 second generation, 8 round trip
//   of a text,
//      F0 all set: up to 4095 segments, else up to 255
//   1  which function
//   2  the answers, one an inquiry: low nibble data bytes (0: none comes), 80 an error; then the data
//      of a round trip: data bytes of a segment, then the text
#include "fuzz/allocations.h"
#include "fuzz/law.h"
#include "fuzz/world.h"

#include <cstring>

namespace {

using fuzz::Input;
using fuzz::Span;

constexpr size_t TEXT_MAX = 99;
constexpr size_t CODES_MAX = 196;
constexpr uint8_t UNTOUCHED = 0xA5;

/** A caller's buffer, and what stands behind it. */
struct Buffer {
    char text[TEXT_MAX + 1];
    uint8_t guard[32];

    Buffer() { memset(static_cast<void *>(this), UNTOUCHED, sizeof(*this)); }
    bool IsIntact() const {
        for (const uint8_t byte : guard) {
            if (byte != UNTOUCHED)
                return false;
        }
        return true;
    }
    bool IsUntouched() const {
        for (const char c : text) {
            if (static_cast<uint8_t>(c) != UNTOUCHED)
                return false;
        }
        return true;
    }
};

enum class Sort { None, Error, Data };
struct Answer {
    Sort sort;
    ViscaPkt packet;
};

/** Gives the answers of the input, one after the other. */
class Answers {
  public:
    Answers(Input input, bool many) : m_input(input), m_many(many) {}

    Answer Next() {
        const uint8_t head = m_input.Byte();
        const Span data = m_input.Take(head % 16 <= 13 ? head % 16 : 13);
        Answer answer = {Sort::None, {}};
        if (head % 16 == 0)
            return answer;
        answer.sort = (head & 0x80) != 0 ? Sort::Error : Sort::Data;
        answer.packet = {{0x90, static_cast<uint8_t>(answer.sort == Sort::Error ? 0x60 : 0x50)}, 2};
        for (size_t i = 0; i < data.size; ++i)
            answer.packet.aucData[answer.packet.ulLength++] = data.bytes[i];
        answer.packet.aucData[answer.packet.ulLength++] = 0xFF;
        if (m_told++ == 0 && data.size >= 2) { // 65535 inquiries take too long here
            answer.packet.aucData[2] &= 0xF0;
            answer.packet.aucData[3] &= m_many ? 0xFF : 0xF0;
        }
        return answer;
    }

  private:
    Input m_input;
    bool m_many;
    unsigned long m_told = 0;
};

Answers g_answers(Input(nullptr, 0), false);
unsigned long g_asked;
uint8_t g_commands;

int32_t OnSend(Span bytes) {
    ++g_asked;
    LAW(bytes.size >= 5 && bytes.size <= 6 && bytes.bytes[1] == 0x09 && bytes.bytes[2] == 0x04);
    const Answer answer = g_answers.Next();
    if (answer.sort != Sort::None)
        LAW(fuzz::Preload(VISCA_INQUIRY_RESULT_QUEUE_ID, answer.packet));
    return static_cast<int32_t>(bytes.size);
}

/** A line for a shell may hold a version and nothing that a shell could take for more. */
void OnSystem(const char *command) {
    ++g_commands;
    LAW(strlen(command) < 100 && strncmp(command, "echo ", 5) == 0);
    const char *end = strstr(command, " > /tmp/kova_");
    LAW(end != nullptr);
    for (const char *c = command + 5; c < end; ++c) {
        const bool plain = (*c >= '0' && *c <= '9') || (*c >= 'A' && *c <= 'Z') || (*c >= 'a' && *c <= 'z') ||
                           *c == '.' || *c == '-' || *c == '_';
        const bool ours = *c == ' ' || *c == '"' || *c == ':'; // "Kernel  version: V..."
        LAW(plain || (ours && command[5] == '"'));
    }
}

/* ---- The same, foretold ---- */

struct Foretold {
    bool success = true;
    unsigned long asked = 0;
    char text[TEXT_MAX + 1] = {};
    size_t length = 0;

    void Add(unsigned c) {
        if (length < TEXT_MAX)
            text[length++] = static_cast<char>(c);
    }
    void AddTwo(unsigned value) {
        Add('0' + value / 10);
        Add('0' + value % 10);
    }
};

/** One inquiry; false: refused. */
bool Ask(Answers &answers, ViscaPkt &record, Foretold &foretold) {
    ++foretold.asked;
    const Answer answer = answers.Next();
    if (answer.sort == Sort::Data)
        record = answer.packet;
    return answer.sort != Sort::Error;
}

size_t CollectCodes(Answers &answers, ViscaPkt record, Foretold &foretold, uint8_t *codes) {
    unsigned count = 0;
    for (size_t i = 2; i < 6; ++i)
        count = count * 16 + record.aucData[i] % 16;
    size_t codes_seen = 0;
    for (; count > 0; --count) {
        (void)Ask(answers, record, foretold); // one that fails leaves the record of the one before
        for (size_t i = 2; i < 16 && record.aucData[i] != 0xFF && codes_seen < CODES_MAX; ++i)
            codes[codes_seen++] = record.aucData[i] % 16;
    }
    return codes_seen;
}

Foretold ForetellSegments(Answers answers, bool separators) {
    Foretold foretold;
    ViscaPkt record = {};
    if (!Ask(answers, record, foretold)) {
        foretold.success = false;
        return foretold;
    }
    uint8_t codes[CODES_MAX + 2] = {};
    const size_t count = CollectCodes(answers, record, foretold, codes);
    for (size_t i = 0; i < count && foretold.success;) {
        const unsigned code = codes[i++];
        if (code < 10) {
            foretold.Add('0' + code);
        } else if (code == 10) {
            foretold.Add('A' + 10U * codes[i] + codes[i + 1]);
            i += 2;
        } else if (code == 11 && separators) {
            foretold.Add(codes[i++] == 0 ? '-' : '_');
        } else {
            foretold.success = false;
        }
    }
    return foretold;
}

Foretold ForetellSingle(Answers answers) {
    Foretold foretold;
    ViscaPkt record = {};
    foretold.success = Ask(answers, record, foretold);
    const uint8_t *d = record.aucData + 2;
    if (d[0] != 0) {
        for (size_t i = 0; i < 4; ++i)
            foretold.AddTwo(d[i]);
        return foretold;
    }
    foretold.Add('D');
    foretold.Add('0');
    foretold.AddTwo(d[1]);
    if (d[3] != 0) {
        foretold.Add('S');
        foretold.Add('P');
        foretold.AddTwo(d[3]);
    }
    return foretold;
}

Foretold ForetellUimage(Answers answers) {
    Foretold foretold;
    ViscaPkt record = {};
    foretold.success = Ask(answers, record, foretold);
    const uint8_t *d = record.aucData + 2;
    if (d[0] != 0)
        foretold.Add('0' + d[0]);
    foretold.Add('0' + d[1]);
    foretold.Add('.');
    foretold.Add('0' + d[2]);
    if (d[3] != 0)
        foretold.Add('0' + d[3]);
    return foretold;
}

void Check(uint32_t result, const Buffer &buffer, const Foretold &foretold) {
    LAW(buffer.IsIntact());
    LAW(g_asked == foretold.asked);
    LAW(result == (foretold.success ? VISCA_SUCCESS : VISCA_FAILURE));
    if (foretold.success)
        LAW(memcmp(buffer.text, foretold.text, foretold.length + 1) == 0);
    else
        LAW(buffer.IsUntouched());
}

/* ---- A text on its way through a module and back ---- */

constexpr size_t MOST_SEGMENTS = 256;
uint8_t g_stream[MOST_SEGMENTS * 14 + 16];

size_t Encode(char c, uint8_t *codes) {
    if (c >= '0' && c <= '9') {
        codes[0] = static_cast<uint8_t>(c - '0');
        return 1;
    }
    codes[0] = 10;
    if (c == '-' || c == '_') {
        codes[0] = 11;
        codes[1] = c == '-' ? 0 : 1;
        return 2;
    }
    codes[1] = static_cast<uint8_t>((c - 'A') / 10);
    codes[2] = static_cast<uint8_t>((c - 'A') % 10);
    return 3;
}

/** As answers of the form above. */
Span AsAnswers(const uint8_t *codes, size_t count, size_t step) {
    size_t at = 0;
    const size_t segments = (count + step - 1) / step;
    const uint8_t head[] = {4, 0, 0, static_cast<uint8_t>(segments / 16),
                            static_cast<uint8_t>(segments % 16)};
    memcpy(g_stream, head, sizeof(head));
    at = sizeof(head);
    for (size_t i = 0; i < count; i += step) {
        const size_t size = count - i < step ? count - i : step;
        g_stream[at++] = static_cast<uint8_t>(size);
        memcpy(g_stream + at, codes + i, size);
        at += size;
    }
    return {g_stream, at};
}

void RoundTrip(Input input) {
    constexpr char letters[] = "0123456789-_ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    const size_t step = 1 + input.Byte() % 13;
    uint8_t codes[CODES_MAX + 3];
    size_t count = 0;
    Foretold foretold;
    while (!input.Empty() && foretold.length < TEXT_MAX) {
        const char c = letters[input.Byte() % (sizeof(letters) - 1)];
        const size_t more = Encode(c, codes + count);
        if (count + more > CODES_MAX)
            break;
        count += more;
        foretold.Add(static_cast<unsigned char>(c));
    }
    const Span answers = AsAnswers(codes, count, step);
    g_answers = Answers(Input(answers.bytes, answers.size), false);
    foretold.asked = 1 + (count + step - 1) / step;
    Buffer buffer;
    Check(KovaGetExtVer(buffer.text), buffer, foretold);
}

/* ---- One function ---- */

void AskProgram(bool segmented) {
    const Answers answers = g_answers;
    Buffer buffer;
    const uint32_t result = KovaGetCurKovaProgramVer(buffer.text);
    Check(result, buffer, segmented ? ForetellSegments(answers, false) : ForetellSingle(answers));
}

void AskExtension(bool known) {
    const Answers answers = g_answers;
    Buffer buffer;
    const uint32_t result = KovaGetExtVer(buffer.text);
    if (known)
        Check(result, buffer, ForetellSegments(answers, true));
    else
        LAW(result == VISCA_SUCCESS && g_asked == 0 && strcmp(buffer.text, "UNKNOWN") == 0);
}

void AskStamped(bool segmented, bool second) {
    const Answers answers = g_answers;
    struct {
        char text[14 + TEXT_MAX + 1];
        uint8_t guard;
    } buffer;
    memset(&buffer, UNTOUCHED, sizeof(buffer));
    const uint32_t result = KOVA_GetCamVersion(buffer.text);
    const Foretold foretold = segmented ? ForetellSegments(answers, false) : ForetellSingle(answers);
    LAW(buffer.guard == UNTOUCHED && result == (foretold.success ? VISCA_SUCCESS : VISCA_FAILURE));
    LAW(memcmp(buffer.text, second ? "QDMV200R001B02" : "QDMV100R001B01", 14) == 0);
    LAW(!foretold.success || strcmp(buffer.text + 14, foretold.text) == 0);
}

void AskSoft() {
    Answers answers = g_answers;
    Foretold foretold;
    ViscaPkt record = {};
    foretold.success = Ask(answers, record, foretold);
    char buffer[16 + 1];
    memset(buffer, UNTOUCHED, sizeof(buffer));
    LAW(KOVA_GetSoftVer(buffer) == (foretold.success ? VISCA_SUCCESS : VISCA_FAILURE));
    LAW(static_cast<uint8_t>(buffer[16]) == UNTOUCHED && g_asked == 1);
    if (!foretold.success)
        return;
    char wanted[16] = {};
    for (size_t i = 2; i < 16 && record.aucData[i] != 0xFF; ++i)
        wanted[i - 2] = static_cast<char>(record.aucData[i]);
    LAW(memcmp(buffer, wanted, sizeof(wanted)) == 0);
}

void AskBoardAndTemperature() {
    uint32_t version = 77, type = 77;
    const bool told = KOVA_GetBoardVerType(1, &version, &type) == VISCA_SUCCESS;
    LAW(told ? version <= 0xFF && type <= 0xFF : version == 77 && type == 77);
    int32_t temperature = 1000;
    const bool measured = KOVA_GetTemperature(0, &temperature) == VISCA_SUCCESS;
    LAW(measured ? temperature >= -127 && temperature <= 128 : temperature == 1000);
    const uint32_t before = KovaGetCamAbility();
    if (KovaDetectCamAbility() != VISCA_SUCCESS)
        LAW(KovaGetCamAbility() == before);
}

void AskOne(uint8_t function, bool segmented, bool extension, bool second) {
    switch (function % 7) {
    case 0:
        AskProgram(segmented);
        break;
    case 1:
        AskExtension(extension);
        break;
    case 2: {
        const Answers answers = g_answers;
        Buffer buffer;
        const uint32_t result = KovaGetCurKovaUimageVer(buffer.text);
        Check(result, buffer, ForetellUimage(answers));
        break;
    }
    case 3:
        AskStamped(segmented, second);
        break;
    case 4:
        AskSoft();
        break;
    case 5:
        LAW(KovaDumpVerInfo() == VISCA_SUCCESS && g_commands <= 3);
        break;
    default:
        AskBoardAndTemperature();
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    Input input(bytes, size);
    const uint8_t manner = input.Byte();
    const uint8_t function = input.Byte();
    const bool segmented = (manner & 1) != 0, extension = (manner & 2) != 0, second = (manner & 4) != 0;
    const fuzz::Run run;
    const fuzz::Allocations allocations;
    ViscaSetCamComFd(fuzz::PORT_FD);
    ViscaSetCamCanCtrl(1);
    fuzz::SetModuleType(second ? 0x02012A01 : 0x02012000);
    fuzz::World().send = OnSend;
    fuzz::World().system = OnSystem;
    g_asked = 0;
    g_commands = 0;
    if ((manner & 8) != 0) {
        (void)KovaSetCamAbility(0x10);
        RoundTrip(input);
    } else {
        (void)KovaSetCamAbility((segmented ? 0x04U : 0U) | (extension ? 0x10U : 0U));
        g_answers = Answers(input, manner >= 0xF0);
        AskOne(function, segmented, extension, second);
    }
    LAW(allocations.Count() == 0);
    return 0;
}
