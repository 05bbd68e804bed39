#include "tests/unit/field/field_test.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
uint32_t __real_KovaGetNewKovaUimageVer(char *version);
uint32_t __real_KovaGetNewKovaProgramVer(char *version);
uint32_t __real_KovaGetCurKovaUimageVer(char *version);
uint32_t __real_KovaGetCurKovaProgramVer(char *version);
}

namespace unit {

Versions g_versions;

namespace {

using Guard = std::lock_guard<SupportMutex>;

// Events come from several threads, and the journal's own mutex must not be seen by the wrapped one.
struct Journal {
    SupportMutex mutex;
    Lines lines;
    uint32_t updating = 0, exporting = 0;
    std::string during;
    std::function<void()> action;
};

Journal &TheJournal() {
    static auto *journal = new Journal; // outlives parked threads
    return *journal;
}

bool IsKept(const Event &event) {
    switch (event.call) {
    case Call::Log: // the link's own DEBUG lines are its own tests' subject
        return event.log.level < VISCA_LOG_DEBUG || event.log.function.compare(0, 5, "Visca") != 0;
    case Call::CamLog:
    case Call::Send:
    case Call::Put:
    case Call::System:
    case Call::Sleep:
    case Call::Flush:
    case Call::ModuleType:
    case Call::ThreadCreate:
    case Call::ThreadDetach:
        return true;
    default:
        return false;
    }
}

std::string Chomped(std::string line) {
    if (!line.empty() && line.back() == '\n') {
        line.pop_back();
    }
    return line;
}

void NoteLocked(Journal *journal, const std::string *line) {
    const uint32_t updating = ViscaIsUpdatingCam(), exporting = ViscaIsExportLog();
    if (updating != journal->updating) {
        journal->lines.push_back("updating " + std::to_string(updating));
    }
    if (exporting != journal->exporting) {
        journal->lines.push_back("export " + std::to_string(exporting));
    }
    journal->updating = updating;
    journal->exporting = exporting;
    if (line != nullptr) {
        journal->lines.push_back(*line);
    }
}

void Hear(const Event &event) {
    Journal &journal = TheJournal();
    std::function<void()> action;
    {
        Guard guard(journal.mutex);
        const std::string line = Chomped(event.text);
        NoteLocked(&journal, IsKept(event) ? &line : nullptr);
        if (journal.action && line.compare(0, journal.during.size(), journal.during) == 0) {
            action.swap(journal.action);
        }
    }
    if (action) {
        action();
    }
}

uint32_t Answer(const VersionAnswer &answer, uint32_t (*real)(char *), char *version) {
    if (answer.real) {
        return real(version);
    }
    if (answer.result == 0) {
        memcpy(version, answer.text.c_str(), answer.text.size() + 1);
    }
    return answer.result;
}

} // namespace

TestFile::TestFile(std::string path)
    : m_path(std::move(path)), m_folder(m_path.substr(0, m_path.rfind('/'))),
      m_kept(rename(m_path.c_str(), (m_path + ".kept").c_str()) == 0) {
    if (mkdir(m_folder.c_str(), 0777) != 0) {
        m_folder.clear();
    }
}

TestFile::~TestFile() {
    Remove();
    if (m_kept) {
        rename((m_path + ".kept").c_str(), m_path.c_str());
    }
    if (!m_folder.empty()) {
        rmdir(m_folder.c_str());
    }
}

void TestFile::Remove() const {
    unlink(m_path.c_str());
}

void TestFile::Put(const std::string &content, const char *mode) const {
    FILE *file = fopen(m_path.c_str(), mode);
    ASSERT_NE(nullptr, file) << m_path;
    EXPECT_EQ(content.size(), fwrite(content.data(), 1, content.size(), file));
    fclose(file);
}

Lines Join(std::initializer_list<Lines> parts) {
    Lines joined;
    for (const Lines &part : parts) {
        joined.insert(joined.end(), part.begin(), part.end());
    }
    return joined;
}

std::string Dump(const std::string &hex) {
    std::string text = "cam 7/INFO ViscaPrintPkt: send:ViscaPacket: ";
    for (uint8_t byte : FromHex(hex)) {
        char item[8];
        snprintf(item, sizeof item, "0x%02x ", byte);
        text += item;
    }
    return text;
}

Lines Drained(unsigned pauses) {
    Lines lines;
    for (unsigned i = 1; i <= pauses; ++i) {
        char number[8];
        snprintf(number, sizeof number, "%3u", i);
        lines.push_back(std::string("WARN ViscaWaitCmdQueueEmpty: [") + number +
                        "] Wait queue empty, usleep(100,000)");
        lines.push_back("sleep 100000");
    }
    return lines;
}

Lines Sends(const std::string &hex) {
    return {"send " + hex, Dump(hex)};
}

FieldTest::~FieldTest() {
    Host().OnRecord(nullptr);
    gulUpdateFileforKova = 0;
    ViscaMarkUpdatingCam(0);
    ViscaMarkExportLog(0);
}

void FieldTest::Restart(uint32_t type) {
    EXPECT_THAT(Host().Complaints(), IsEmpty());
    Host().Reset();
    Clib().Reset();
    Host().SetModuleType(type);
    VISCA_SetCamModuleType(type);
    ViscaSetCamComFd(Host().PortFd());
    ViscaSetCamCanCtrl(1);
    ViscaMarkUpdatingCam(0);
    ViscaMarkExportLog(0);
    KovaSetCamAbility(0);
    gulUpdateFileforKova = 0;
    g_versions = {};
    During("", nullptr);
    ForgetStory();
    Host().OnRecord(Hear);
}

Lines FieldTest::Story() {
    Journal &journal = TheJournal();
    Guard guard(journal.mutex);
    NoteLocked(&journal, nullptr);
    return journal.lines;
}

void FieldTest::ForgetStory() {
    Host().Forget();
    Journal &journal = TheJournal();
    Guard guard(journal.mutex);
    NoteLocked(&journal, nullptr);
    journal.lines.clear();
}

void FieldTest::Note(const std::string &line) {
    Journal &journal = TheJournal();
    Guard guard(journal.mutex);
    NoteLocked(&journal, &line);
}

void FieldTest::During(const std::string &start, std::function<void()> action) {
    Journal &journal = TheJournal();
    Guard guard(journal.mutex);
    journal.during = start;
    journal.action = std::move(action);
}

void FieldTest::KeepQueueBusyUntilPause(unsigned pause) {
    Host().Preload(VISCA_CMD_QUEUE_ID, "81 01 04 07 00 FF");
    Clib().OnPause([pause](unsigned number) {
        if (number == pause) {
            void *element = nullptr;
            EXPECT_EQ(0U, QUEUE_GetSerialData(VISCA_CMD_QUEUE_ID, &element));
        }
    });
}

bool FieldTest::HasLine(const std::string &line) {
    const Lines story = Story();
    return std::find(story.begin(), story.end(), line) != story.end();
}

size_t FieldTest::CountStarting(const std::string &start) {
    size_t count = 0;
    for (const std::string &line : Story()) {
        count += line.compare(0, start.size(), start) == 0 ? 1 : 0;
    }
    return count;
}

void FieldTest::CallBack(uint32_t result) {
    Note("callback " + std::to_string(result));
}

} // namespace unit

extern "C" {

uint32_t __wrap_KovaGetNewKovaUimageVer(char *version) {
    return unit::Answer(unit::g_versions.new_uimage, __real_KovaGetNewKovaUimageVer, version);
}
uint32_t __wrap_KovaGetNewKovaProgramVer(char *version) {
    return unit::Answer(unit::g_versions.new_program, __real_KovaGetNewKovaProgramVer, version);
}
uint32_t __wrap_KovaGetCurKovaUimageVer(char *version) {
    return unit::Answer(unit::g_versions.cur_uimage, __real_KovaGetCurKovaUimageVer, version);
}
uint32_t __wrap_KovaGetCurKovaProgramVer(char *version) {
    return unit::Answer(unit::g_versions.cur_program, __real_KovaGetCurKovaProgramVer, version);
}

} // extern "C"
