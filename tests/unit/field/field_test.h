/**
 * @file field_test.h
 * Fixture of the tests of field service: one story of everything that a transfer does, with the moments at
 * which a flag of the link changes, and versions and files as the test tells them.
 *
 *     EXPECT_EQ((Lines{"updating 1", "send 81 01 04 AA ...", "sleep 100000", ..., "callback 0"}), Story());
 */
#ifndef VISCACAM_UNIT_FIELD_FIELD_TEST_H
#define VISCACAM_UNIT_FIELD_FIELD_TEST_H

#include "tests/unit/unit_test.h"

#include <functional>

namespace unit {

constexpr uint32_t kKova = 0x02012001, kKovaGen2 = 0x02012A01;
constexpr char kPatchFile[] = "/tmp/update/update.patch", kVersionFile[] = "/tmp/update/QDM_VERSION",
               kAfFile[] = "/tmp/testaf.txt", kWeightFile[] = "/tmp/weight.txt";

/** A fixed file of the machine, missing at first. One that stands there already is put aside meanwhile. */
class TestFile {
  public:
    explicit TestFile(std::string path);
    ~TestFile();
    TestFile(const TestFile &) = delete;
    TestFile &operator=(const TestFile &) = delete;
    void Write(const std::string &content) const { Put(content, "w"); }
    void Append(const std::string &content) const { Put(content, "a"); }
    void Remove() const;

  private:
    void Put(const std::string &content, const char *mode) const;
    std::string m_path, m_folder; /**< the folder is empty unless it was made here */
    bool m_kept;
};

/** What one of the version readers does. */
struct VersionAnswer {
    bool real = true; /**< the library's own reader */
    uint32_t result = 0;
    std::string text = {};
};
struct Versions {
    VersionAnswer new_uimage, new_program, cur_uimage, cur_program;
};
extern Versions g_versions;

/** Parts of a story one behind the other. */
Lines Join(std::initializer_list<Lines> parts);
/** The camera log's line of a packet that was sent. */
std::string Dump(const std::string &hex);
/** The lines of the queue that is waited for: empty at the first look, or after so many pauses. */
Lines Drained(unsigned pauses = 0);
/** A packet is written, and printed. */
Lines Sends(const std::string &hex);

class FieldTest : public UnitTest {
  protected:
    FieldTest() { Restart(); }
    ~FieldTest() override;

    /** A fresh host with this module, flags down, nothing upgraded yet, an empty story. */
    static void Restart(uint32_t type = kKova);
    /**
     * What happened since Restart or Forget: log lines without their newline, packets, shell lines, pauses,
     * flushes, threads, module types; "updating N" and "export N" where a flag was found changed; "callback
     * N".
     */
    static Lines Story();
    static void ForgetStory();
    static void Note(const std::string &line);
    /** Done at the first event whose text begins like this, inside the call that caused it. */
    static void During(const std::string &start, std::function<void()> action);
    /** The queue holds a command, which the sender takes during this pause, counted from Restart; 0: never.
     */
    static void KeepQueueBusyUntilPause(unsigned pause);
    static bool HasLine(const std::string &line);
    static size_t CountStarting(const std::string &start);

    /** The upgrade callback. */
    static void CallBack(uint32_t result);
};

} // namespace unit

#endif
