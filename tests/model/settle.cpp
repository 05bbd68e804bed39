#include "tests/model/settle.h"

#include <thread>

#include "host/host.h"
#include "viscacam.h"

namespace model {

namespace {

bool Asked(uint8_t category, uint8_t item, uint32_t lengthOfAnswer) {
    ViscaPkt question = {{0x81, 0x09, category, item}, 4};
    ViscaPkt answer = {};
    return ViscaInquiry(&question, &answer) == 0 && answer.ulLength == lengthOfAnswer;
}

// Answers that nobody waits for any more may fill seconds of the line, and a question for each of them would
// keep it filled.
void LetAnswersPass() {
    constexpr std::chrono::milliseconds QUIET{50};
    do {
        (void)host::EmptyQueue(VISCA_INQUIRY_RESULT_QUEUE_ID);
        std::this_thread::sleep_for(QUIET);
    } while (host::QueueDepth(VISCA_INQUIRY_RESULT_QUEUE_ID) > 0);
}

bool AskVersion() {
    return Asked(0x00, 0x02, 10);
}

bool AskPower() {
    return Asked(0x04, 0x00, 4);
}

} // namespace

bool Await(const std::function<bool()> &holds, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < end) {
        if (holds()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return holds();
}

void EndTornPacket() {
    constexpr uint8_t END = 0xFF;
    (void)ViscaCamComSend(1, &END);
}

bool Answers() {
    LetAnswersPass();
    return AskVersion();
}

// The two kinds of answer differ in length, so a shift by one shows.
bool IsInStep() {
    LetAnswersPass();
    return AskVersion() && AskPower() && AskVersion();
}

} // namespace model
