/**
 * @file image_test.h
 * Fixture of the image tests: one call in, its result, its commands and its complaints out.
 *
 *     Attach(kKova);
 *     EXPECT_EQ(Sends({"39 0F"}), Run([] { return SonySetExposureMode(0, 1); }));
 *
 * Commands are written without their frame: "39 0F" stands for 81 01 04 39 0F FF. Log lines below WARN (entry
 * lines) are left out of an Outcome; they have a test of their own.
 */
#ifndef VISCACAM_UNIT_IMAGE_TEST_H
#define VISCACAM_UNIT_IMAGE_TEST_H

#include "tests/unit/unit_test.h"

#include <functional>
#include <iosfwd>

namespace unit {

constexpr uint32_t kSony1 = 0x02000001, kSony3 = 0x02000003, kSony4 = 0x02000004, kSony5 = 0x02000005;
constexpr uint32_t kKova = 0x02012001, kKovaGen2 = 0x02012A01;

/** Kova modules, both ends of their range among them. */
constexpr uint32_t kKovaTypes[] = {0x02012000, 0x02012001, 0x02012100, 0x02012200, 0x02012A02, 0x02012FFF};
/** Everything else behaves as a Sony block: the four known ones, unknown ones, the neighbours of the Kova
 * range. */
constexpr uint32_t kBlockTypes[] = {kSony1,     kSony3,     kSony4,     kSony5,    0x02000000,
                                    0x02000002, 0x02011FFF, 0x02013000, 0x12012000};

/** What one call did. */
struct Outcome {
    uint32_t result = 0;
    Lines packets; /**< handed to the queue, refused ones too */
    Lines log;     /**< WARN and ERROR, as "ERROR Function: message\n" */

    Outcome Logs(const std::string &line) const; /**< the same with one more line */
    Outcome Fails() const;                       /**< the same with result 1 */
};
bool operator==(const Outcome &a, const Outcome &b);
std::ostream &operator<<(std::ostream &out, const Outcome &outcome);

std::string Command(const std::string &payload); /**< "39 0F" -> "81 01 04 39 0F FF" */
Lines Commands(const Lines &payloads);
Outcome Sends(const Lines &payloads);
inline Outcome Nothing() {
    return {};
}
/** Sends these, the last of which the queue refuses; `line` is the function's own complaint. */
Outcome IsRefused(const Lines &payloads, const std::string &line);
/** The queue's complaint about a put that failed. */
extern const std::string kQueueRefused;

using Setter = std::function<uint32_t(uint32_t)>;

class ImageTest : public UnitTest {
  public:
    /** The module, with nothing sent yet and nothing held. */
    static void Attach(uint32_t type);
    /** Another module on the line; what is remembered stays. */
    static void Exchange(uint32_t type) { Host().SetModuleType(type); }
    static Outcome Run(const std::function<uint32_t()> &call);
    /** Refuse the n-th command from now, counted from 1, and the `times` - 1 after it. */
    static void RefuseCommand(unsigned n, unsigned times = 1);
    static void Hold(uint32_t flag); /**< the detection phase owns day/night and white balance while 1 */

  protected:
    ImageTest();
};

} // namespace unit

#endif
