#include "sim/kova_log.h"

#include "sim/block.h"

#include <cstdio>
#include <stdexcept>

namespace sim {

namespace {

constexpr unsigned SECOND_GENERATION_BAUD = 115200;
constexpr size_t BLOCK = 128;
constexpr unsigned LINES = 40;

constexpr const char *SUBJECTS[] = {"system", "serial", "focus"};
constexpr const char *EVENTS[] = {"started",     "stopped",   "frame lost",  "settings stored",
                                  "clock moved", "temp high", "queue empty", "watchdog fed"};

Outcome exportLog(Block &block, const Args &args) {
    block.log().send(args.number(0, 2), block.kova().clock);
    return nothing();
}

Outcome saveLog(Block &block, const Args &) {
    block.log().save();
    return nothing();
}

std::string fileName(unsigned select, const char *subject) {
    char name[64];
    std::snprintf(name, sizeof name, "kova-log-%02x-%s.txt", select, subject);
    return name;
}

std::string logText(const char *subject, Random &dice) {
    std::string text;
    uint64_t milliseconds = 0;
    for (unsigned line = 0; line < LINES; ++line) {
        milliseconds += 1 + dice.below(5000);
        char written[64];
        std::snprintf(written, sizeof written, "%9.3f %s: %s [%04X]\n",
                      static_cast<double>(milliseconds) / 1000, subject,
                      EVENTS[dice.below(std::size(EVENTS))], static_cast<unsigned>(dice.below(0x10000)));
        text += written;
    }
    return text;
}

// XMODEM knows no length; tar takes NUL behind its end, and no other padding.
void padToBlocks(const std::string &path) {
    const Bytes bytes = readFile(path);
    std::string padded(bytes.begin(), bytes.end());
    padded.resize((padded.size() + BLOCK - 1) / BLOCK * BLOCK);
    writeFile(path, padded);
}

} // namespace

unsigned logExportBaud(const Traits &traits) {
    return isSecondKova(traits) ? SECOND_GENERATION_BAUD : 0;
}

std::vector<Row> kovaLogRows() {
    return {
        {"01 04 A7 0p 0q", exportLog},
        {"01 04 B6", saveLog},
    };
}

void KovaLog::send(unsigned select, uint32_t time) {
    ++m_exports;
    try {
        m_folder.emplace();
        m_transfer.send(archive(*m_folder, select, time), m_exportBaud,
                        [this](Transfer::End) { m_folder.reset(); });
    } catch (const std::runtime_error &error) {
        m_world.remark(std::string("log export failed: ") + error.what());
        m_folder.reset();
    }
}

std::string KovaLog::archive(const TempFolder &folder, unsigned select, uint32_t time) const {
    const std::string path = folder.file("kova.tgz");
    // Nothing of this machine may be in it: the same seed gives the same archive.
    std::vector<std::string> tar = {"tar",
                                    "czf",
                                    path,
                                    "-C",
                                    folder.file(""),
                                    "--format=ustar",
                                    "--owner=0",
                                    "--group=0",
                                    "--mode=0644",
                                    "--mtime=@" + std::to_string(time)};
    Random dice(m_world.options.seed + select);
    for (const char *subject : SUBJECTS) {
        tar.push_back(fileName(select, subject));
        writeFile(folder.file(tar.back()), logText(subject, dice));
    }
    if (!runToEnd(tar))
        throw std::runtime_error("tar does not make the archive");
    padToBlocks(path);
    return path;
}

void KovaLog::describe(KovaState &state) const {
    state.logExports = m_exports;
    state.logSaves = m_saves;
}

} // namespace sim
