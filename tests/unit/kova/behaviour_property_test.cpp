// Laws of what a Kova module is told and tells: numbers come back as they went.
#include "tests/unit/kova/behaviour_test.h"

#include <rapidcheck.h>

namespace unit {
namespace {

class KovaProperty : public KovaTest {
  protected:
    static Bytes LastPacket() {
        const Event event = Host().Events(Call::Put).back();
        return {event.bytes.begin(), event.bytes.begin() + event.bytes[16]};
    }
    /** Digits of a packet, each in a byte of its own, the highest first. */
    static uint32_t Number(const Bytes &packet, size_t first, size_t digits) {
        uint32_t number = 0;
        for (size_t i = first; i < first + digits; ++i) {
            RC_ASSERT(packet.at(i) <= 0x0F);
            number = number * 16 + packet[i];
        }
        return number;
    }
};

TEST_F(KovaProperty, TheClockArrivesWhole) {
    EXPECT_TRUE(rc::check([](uint32_t seconds) {
        Attach(kKova);
        RC_ASSERT(KOVA_SetTime(seconds) == 0U);
        const Bytes packet = LastPacket();
        RC_ASSERT(packet.size() == 13U);
        RC_ASSERT(Number(packet, 4, 8) == seconds);
    }));
}

// A module that answers with the digits it was told.
TEST_F(KovaProperty, AnOffsetIsReadAsItsLowSixteenBitsWereSet) {
    EXPECT_TRUE(rc::check([] {
        const auto x = static_cast<int32_t>(*rc::gen::arbitrary<uint32_t>());
        const auto y = static_cast<int32_t>(*rc::gen::inRange(-40000, 40000));
        Attach(kKova);
        Answer("90 50 02 FF");
        RC_ASSERT(KOVA_SetSensorOffset(x, y, 0) == 0U);
        const Bytes told = FromHex(Host().Commands().front());
        Bytes reply = {0x90, 0x50};
        reply.insert(reply.end(), told.begin() + 4, told.begin() + 12);
        reply.push_back(0xFF);
        Answer(Hex(reply));
        int32_t read_x = 0, read_y = 0;
        RC_ASSERT(KOVA_GetSensorOffset(&read_x, &read_y) == 0U);
        RC_ASSERT(read_x == static_cast<int16_t>(x));
        RC_ASSERT(read_y == static_cast<int16_t>(y));
    }));
}

TEST_F(KovaProperty, APointAndARectangleArriveWithTheirLowSixteenBits) {
    EXPECT_TRUE(rc::check([](uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        Attach(kKova);
        const uint32_t values[4] = {a, b, c, d};
        RC_ASSERT(KOVA_OnePushTriggerAF(10, values) == 0U);
        const Bytes point = LastPacket();
        RC_ASSERT(Number(point, 5, 4) == (a & 0xFFFFU));
        RC_ASSERT(Number(point, 9, 4) == (b & 0xFFFFU));
        RC_ASSERT(KOVA_OnePushTriggerAF(11, values) == 0U);
        const Bytes rectangle = LastPacket();
        for (size_t i = 0; i < 4; ++i) {
            RC_ASSERT(rectangle.at(5 + 2 * i) * 256U + rectangle.at(6 + 2 * i) == (values[i] & 0xFFFFU));
        }
    }));
}

TEST_F(KovaProperty, AFocusValueIsWhatTheModuleSaidAndItsTextEndsAtTheFirstZeroByte) {
    EXPECT_TRUE(rc::check([] {
        const auto byte = rc::gen::weightedOneOf<uint8_t>(
            {{1, rc::gen::just<uint8_t>(0)}, {3, rc::gen::arbitrary<uint8_t>()}});
        const Bytes value = *rc::gen::container<Bytes>(4, byte);
        const std::string reply = "90 50 " + Hex(value) + " FF";
        Attach(kKova);
        Answers({reply, reply});
        int32_t number = 0;
        RC_ASSERT(KovaGetImageFocusValue(0, &number) == 0U);
        RC_ASSERT(static_cast<uint32_t>(number) ==
                  value[0] * 0x1000000U + value[1] * 0x10000U + value[2] * 0x100U + value[3]);
        DrvMsgInfo message = {0, 34, 0, 0, 0, 4, {9, 9, 9, 9, 9, 9, 9, 9}};
        RC_ASSERT(KOVA_GetImageFocusValue(0, &message) == 0U);
        uint32_t length = 0;
        while (length < 4 && value[3 - length] != 0) {
            RC_ASSERT(message.aucMsgData[length] == value[3 - length]);
            ++length;
        }
        RC_ASSERT(message.ulMsgLen == length + 1);
        RC_ASSERT(message.aucMsgData[length] == 0);
    }));
}

} // namespace
} // namespace unit
