// The version file of an upgrade package. The input is the file.
#include "fuzz/law.h"
#include "fuzz/world.h"

#include <cstring>
#include <string>

namespace {

constexpr size_t LINE_MAX_CHARS = 254;
constexpr size_t TEXT_MAX = 99;
constexpr char UNTOUCHED = '\xA5';

/** The last of the first `lines` lines, a line being at most 254 characters, up to its first NUL. */
std::string LastLine(const std::string &file, unsigned lines) {
    std::string line;
    size_t at = 0;
    for (unsigned i = 0; i < lines && at < file.size(); ++i) {
        const size_t newline = file.find('\n', at);
        const size_t end = newline == std::string::npos ? file.size() : newline + 1;
        line = file.substr(at, std::min(end - at, LINE_MAX_CHARS));
        at += line.size();
        line = line.c_str();
    }
    return line;
}

/** Whether there is a version, and which. */
bool Foretell(const std::string &file, unsigned lines, size_t offset, std::string *version) {
    const std::string line = LastLine(file, lines);
    const size_t mark = line.find("VER_NEW");
    if (mark == std::string::npos)
        return false;
    const std::string behind = line.size() > mark + offset ? line.substr(mark + offset) : "";
    *version = behind.substr(0, std::min(behind.find_first_of(" \n"), TEXT_MAX));
    return true;
}

void Compare(uint32_t (*read)(char *), const std::string &file, unsigned lines, size_t offset) {
    struct {
        char text[TEXT_MAX + 1];
        char guard;
    } buffer;
    memset(&buffer, UNTOUCHED, sizeof(buffer));
    const uint32_t result = read(buffer.text);
    LAW(buffer.guard == UNTOUCHED);
    std::string version;
    if (!Foretell(file, lines, offset, &version)) {
        LAW(result == VISCA_FAILURE && buffer.text[0] == UNTOUCHED);
        return;
    }
    LAW(result == VISCA_SUCCESS);
    LAW(memchr(buffer.text, 0, sizeof(buffer.text)) != nullptr && version == buffer.text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string content(bytes, bytes + size);
    fuzz::MemoryFile file;
    file.path = "/tmp/update/QDM_VERSION";
    file.content = {bytes, size};
    const fuzz::Run run;
    fuzz::PlaceFile(&file);
    Compare(KovaGetNewKovaUimageVer, content, 2, 9);
    Compare(KovaGetNewKovaProgramVer, content, 3, 22);
    LAW(file.opened == 2 && file.handle == nullptr);
    LAW(fuzz::LogLines() <= 12);
    return 0;
}
