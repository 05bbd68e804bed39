// Laws of the receiver that hold for every stream of bytes.
#include "tests/unit/unit_test.h"

#include <rapidcheck.h>

namespace unit {
namespace {

// Bytes as a disturbed line gives them: mostly those that mean something. The AF debug mark (0x66) is left
// out, since what follows it belongs to another reader.
rc::Gen<Bytes> LineNoise() {
    const auto byte = rc::gen::weightedOneOf<uint8_t>(
        {{3, rc::gen::just<uint8_t>(0x90)},
         {2, rc::gen::just<uint8_t>(0xFF)},
         {3, rc::gen::element<uint8_t>(0x41, 0x50, 0x51, 0x60, 0x61, 0x02, 0x03)},
         {4, rc::gen::suchThat(rc::gen::arbitrary<uint8_t>(), [](uint8_t value) { return value != 0x66; })}});
    return rc::gen::container<Bytes>(byte);
}

// The queue that a whole reply belongs to, as digit; empty when it is dropped.
std::string Destination(const Bytes &reply) {
    const unsigned type = reply[1] >> 4, socket = reply[1] & 0x0FU;
    if (type == 5) {
        return socket == 0 ? "3" : "1";
    }
    if (type == 6) {
        return socket == 0 && reply[2] != 0x02 && reply[2] != 0x03 ? "3" : "1";
    }
    return "";
}

// What has to be put for a stream, cut by the rule alone: from a 0x90 to the next 0xFF, sixteen bytes at
// most.
Lines Expected(const Bytes &stream) {
    Lines puts;
    size_t at = 0;
    while (at < stream.size()) {
        if (stream[at] != 0x90) {
            ++at;
            continue;
        }
        Bytes reply = {stream[at++]};
        while (reply.size() < 16 && reply.back() != 0xFF && at < stream.size()) {
            reply.push_back(stream[at++]);
        }
        if (reply.size() >= 3 && reply.back() == 0xFF && !Destination(reply).empty()) {
            puts.push_back("put " + Destination(reply) + ": " + Hex(reply));
        }
    }
    return puts;
}

class ReceiverProperty : public UnitTest {
  protected:
    static void DealWithEverything() {
        while (Host().Unread() > 0) {
            ViscaDealOneAck();
        }
    }
};

TEST_F(ReceiverProperty, EveryStreamIsCutAndRoutedByTheRuleAndAGoodReplyAfterATerminatorArrives) {
    EXPECT_TRUE(rc::check([] {
        Bytes stream = *LineNoise();
        const Bytes good = FromHex("FF 90 50 04 FF");
        stream.insert(stream.end(), good.begin(), good.end());
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
        Host().Feed(stream);
        DealWithEverything();
        const Lines puts = Host().Story({Call::Put});
        RC_ASSERT(puts == Expected(stream));
        RC_ASSERT(puts.back() == "put 3: 90 50 04 FF");
    }));
}

TEST_F(ReceiverProperty, NoRecordHoldsMoreThanSixteenBytesAndEveryOneIsWhole) {
    EXPECT_TRUE(rc::check([] {
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
        Host().Feed(*LineNoise());
        Host().Feed("FF");
        DealWithEverything();
        for (const Event &put : Host().Events(Call::Put)) {
            const unsigned count = put.bytes[16];
            RC_ASSERT(count >= 3U && count <= 16U);
            RC_ASSERT(put.bytes[0] == 0x90 && put.bytes[count - 1] == 0xFF);
        }
        RC_ASSERT(Host().Complaints().empty());
    }));
}

TEST_F(ReceiverProperty, AStreamThatBreaksOffAnywhereLeavesNothingBehind) {
    EXPECT_TRUE(rc::check([] {
        Host().Reset();
        ViscaSetCamComFd(Host().PortFd());
        Host().Feed(*LineNoise());
        Host().HangUp();
        DealWithEverything();
        RC_ASSERT(Host().Unread() == 0U);
        RC_ASSERT(Host().Complaints().empty());
    }));
}

} // namespace
} // namespace unit
