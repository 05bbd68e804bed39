/**
 * @file behaviour_test.h
 * Fixture of the tests of a Kova module at work. A procedure is written down as its steps, each with the
 * reply that it gets and with what is logged when it fails; Follows() then lets it run through, and once more
 * for every way in which each of its steps can fail.
 *
 *     Follows(Steps{Put("00 03", {"ERROR KOVA_X: SonySetPower(BOOL_FALSE) fail exit"}), Pause(1000),
 *                   Ask("00", "90 50 02 FF", {"ERROR KOVA_X: ..."})},
 *             [] { return KOVA_X(); });
 *
 * Packets are written without their frame: Put("00 03") is 81 01 04 00 03 FF on the command queue, Ask("00")
 * is 81 09 04 00 FF on the line. A story leaves out the lines of the link and the DEBUG lines.
 */
#ifndef VISCACAM_UNIT_KOVA_BEHAVIOUR_TEST_H
#define VISCACAM_UNIT_KOVA_BEHAVIOUR_TEST_H

#include "tests/unit/unit_test.h"

#include <functional>

namespace unit {

constexpr uint32_t kKova = 0x02012001, kKovaGen2 = 0x02012A01;
constexpr uint32_t kKovaTypes[] = {0x02012000, 0x02012005, 0x02012200, 0x02012A02, 0x02012FFF};
/** Sony blocks and the neighbours of the Kova range. */
constexpr uint32_t kOtherTypes[] = {0x02000001, 0x02000005, 0x02000002, 0x02011FFF, 0x02013000, 0x12012001};

struct Step {
    std::string event;
    std::string reply;  /**< Ask: what the camera answers; empty: nothing */
    bool fails = false; /**< it can fail, and ends the procedure then */
    Lines complaint;    /**< WARN and ERROR lines of the failure */
};
using Steps = std::vector<Step>;
using Action = std::function<uint32_t()>;

Step Put(const std::string &payload);
Step Put(const std::string &payload, Lines complaint);
Step Ask(const std::string &payload, const std::string &reply);
Step Ask(const std::string &payload, const std::string &reply, Lines complaint);
Step Pause(uint64_t milliseconds);
Step Says(const std::string &line); /**< "INFO SonyWaitPowerOn: Now Power On" */
Lines Events(const Steps &steps);
Lines Packets(const Lines &payloads); /**< "00 03" -> "81 01 04 00 03 FF" */
Steps operator+(Steps first, const Steps &second);

/** What the host is told of the Kova module, whatever the test before left behind. */
class KovaTest : public UnitTest {
  public:
    /** A fresh host with this module; nothing is remembered of image settings, no ability, no callback. */
    static void Attach(uint32_t type);
    /** What happened since: packets, pauses, lines of the log. Pauses back to back are one. */
    static Lines Story();
    /** The answers to the next inquiries, in their order; an empty one is silence. */
    static void Answers(const Lines &replies);
    static void Answer(const std::string &reply) { Answers({reply}); }
    /** Refuse the n-th command from now. */
    static void RefusePut(unsigned n) { Host().Fail(Call::Put, Host().Calls(Call::Put) + n); }
    /** The action goes through these steps and succeeds; each step that can fail ends it with 1. `prepare`
     * comes before each run. */
    static void Follows(const Steps &steps, const Action &action, const std::function<void()> &prepare);
    /** DEBUG and other lines of these functions. */
    static Lines LogOf(const std::string &function);

  protected:
    KovaTest();
};

/** The image detection starts once in a process: say that it has, or ask. */
void UseUpDetection();
bool IsDetectionUsedUp();
void MarkDetectionUsedUp();

/** Text for printf formats with a pointer in them. */
std::string Address(const void *pointer);

/** While set, answers instead of the link: for replies that our receiver never hands through. */
extern std::function<uint32_t(ViscaPkt *reply)> g_inquiry;
/** While set, changes the manufacturing information before the library sees it. */
extern std::function<void(ManuInfo *info)> g_manuinfo;

} // namespace unit

#endif
