// Laws of image control that hold for every value and every order of calls.
#include "tests/unit/image/primitives.h"
#include "tests/unit/image/profiles.h"

#include <algorithm>
#include <map>
#include <rapidcheck.h>
#include <set>

namespace unit {
namespace {

class ImageProperty : public ImageTest {};

rc::Gen<uint32_t> AnyType() {
    return rc::gen::element(kKova, kKovaGen2, kSony1, kSony3, kSony4, kSony5);
}

/** Mostly a value that means something, now and then anything. */
rc::Gen<uint32_t> Word(std::vector<uint32_t> usual) {
    return rc::gen::weightedOneOf<uint32_t>(
        {{9, rc::gen::elementOf(std::move(usual))}, {1, rc::gen::arbitrary<uint32_t>()}});
}

ExposureParam AnyExposure() {
    ExposureParam profile{};
    profile.ulExposureMode = *Word({0, 1, 2, 3, 4, 5, 6, 7, 8, kUnset});
    profile.lExpCompValue = static_cast<int32_t>(*Word({0, 50, 100, kUnset, static_cast<uint32_t>(-100)}));
    profile.ulIris = *Word({99999, 2800, 1900, 140, 100, kUnset});
    profile.ulShutter = *Word({1, 5, 25, 10000, kUnset});
    profile.ulGain = *Word({0, 1, 29, 30, 100, 101, kUnset});
    profile.ulSlowShutter = *Word({25, 100, kUnset});
    profile.ulFastShutter = *Word({10000, 60, kUnset});
    profile.ulMaxGain = *Word({90, 256, kUnset});
    profile.ulMinGain = *Word({10, 0, kUnset});
    profile.bIsAutoSlowShutter = *Word({0, 1, 1, kUnset});
    profile.ulMaxSlowShutter = *Word({12, 25, kUnset});
    profile.ulWdr = *Word({0, 1, 2, 3, kUnset});
    profile.ulWdrLevel = *Word({0, 9, 10, kUnset});
    profile.ulMeteringMode = *Word({0, 1, 2, 3, kUnset});
    profile.TopX = *Word({0, 50, 100});
    profile.BotY = *Word({0, 50, 100});
    profile.ulBlackWhiteMode = *Word({0, 1, 2, 3, kUnset});
    return profile;
}

/** Commands that are sent for every request. */
bool IsAlwaysSent(const std::string &packet) {
    static const std::set<std::string> commands = {"29", "43", "44", "C8", "C9", "37"};
    return commands.count(packet.substr(9, 2)) != 0;
}

bool OnlyAlwaysSent(const Lines &packets) {
    return std::all_of(packets.begin(), packets.end(), IsAlwaysSent);
}

Outcome Apply(const ExposureParam &profile) {
    return ImageTest::Run([&] { return SONY_SetExposure(0, 0, &profile); });
}

TEST_F(ImageProperty, AnExposureProfileAppliedTwiceSendsTheSecondTimeWhatIsAlwaysSent) {
    EXPECT_TRUE(rc::check([] {
        Attach(*AnyType());
        const ExposureParam profile = AnyExposure();
        const Outcome first = Apply(profile);
        const Outcome second = Apply(profile);
        RC_ASSERT(first.result == second.result);
        RC_ASSERT(OnlyAlwaysSent(second.packets));
        RC_ASSERT(Apply(profile) == second);
    }));
}

// Whatever went before, except that a mode that the module lacks confirms nothing: then the gain, the one
// value that such a mode has, is forced by the last change each time.
TEST_F(ImageProperty, AfterAnyOtherProfileTooUnlessTheModuleLacksTheMode) {
    EXPECT_TRUE(rc::check([] {
        Attach(*AnyType());
        Apply(AnyExposure());
        const ExposureParam profile = AnyExposure();
        const Outcome first = Apply(profile);
        const Outcome second = Apply(profile);
        RC_ASSERT(first.result == second.result);
        const bool lacking = std::any_of(second.log.begin(), second.log.end(), [](const std::string &line) {
            return line.find("unSupported ulExposureMode") != std::string::npos;
        });
        RC_ASSERT(std::all_of(second.packets.begin(), second.packets.end(), [&](const std::string &packet) {
            return IsAlwaysSent(packet) || (lacking && packet.substr(9, 2) == "4C");
        }));
        RC_ASSERT(Apply(profile) == second);
    }));
}

TEST_F(ImageProperty, WhiteBalanceAndPictureControlsAppliedTwiceSendWhatIsAlwaysSent) {
    EXPECT_TRUE(rc::check([] {
        Attach(*AnyType());
        const WhiteBalanceParam white = {*Word({0, 1, 2, 3, 5, 6}), *rc::gen::inRange(-200, 200),
                                         *rc::gen::arbitrary<int32_t>()};
        const std::vector<uint32_t> values = {0, 1, 128, 255, 256, kUnset};
        const ImageEnhanceParam enhance = {*Word(values), *Word(values), *Word(values), 0, 0,
                                           *Word(values), *Word(values), *Word(values)};
        for (int round = 0; round < 3; ++round) {
            const Outcome a = Run([&] { return SONY_SetWhiteBalance(0, 0, &white); });
            const Outcome b = Run([&] { return SONY_SetImageEnhance(0, 0, &enhance); });
            RC_ASSERT(a.result == 0U && b.result == 0U);
            RC_ASSERT(round == 0 || (OnlyAlwaysSent(a.packets) && OnlyAlwaysSent(b.packets)));
        }
    }));
}

// --- what is remembered

/** What the camera has, as far as the queue accepted it, and which changes are not confirmed yet. */
struct Believed {
    std::map<std::string, uint32_t> accepted;
    std::set<std::string> changed;

    bool Skips(const Primitive &primitive, uint32_t value) const {
        const auto found = accepted.find(primitive.name);
        return found != accepted.end() && found->second == value && changed.count(primitive.governor) == 0;
    }
    void Forget() {
        accepted.clear();
        changed.erase("SonySetExposureMode");
        changed.erase("SonySetBlackWhiteMode");
    }
};

TEST_F(ImageProperty, WhatWasAcceptedLastIsWhatIsRememberedUnderAnyRefusals) {
    EXPECT_TRUE(rc::check([] {
        const uint32_t type = *AnyType();
        Attach(type);
        Believed believed;
        const int steps = *rc::gen::inRange(1, 60);
        for (int step = 0; step < steps; ++step) {
            if (*rc::gen::inRange(0, 40) == 0) {
                SonyInitVar4IMG();
                believed.Forget();
            }
            const Primitive &primitive = Primitives()[*rc::gen::inRange<size_t>(0, Primitives().size())];
            const bool second = *rc::gen::arbitrary<bool>();
            const uint32_t value = primitive.Value(second);
            const Lines &payloads = primitive.Payloads(type, second);
            const unsigned refused = *rc::gen::inRange(0U, 6U); // the n-th command, if there are so many
            const bool skips = payloads.empty() || believed.Skips(primitive, value);
            if (skips) {
                RC_ASSERT(Run([&] { return primitive.set(value); }) == Nothing());
                if (!payloads.empty()) {
                    believed.changed.erase(primitive.name);
                }
                continue;
            }
            const bool last_refused = refused == payloads.size();
            const bool compensation_on = primitive.name == "SonySetExpComp" && refused == 1;
            const bool night_broken_off = primitive.name == "SonySetBlackWhiteMode" && refused == 1;
            if (refused > 0 && refused <= payloads.size()) {
                RefuseCommand(refused);
            }
            const Outcome outcome = Run([&] { return primitive.set(value); });
            RC_ASSERT(outcome.result == (last_refused || night_broken_off ? 1U : 0U));
            RC_ASSERT(outcome.packets ==
                      (night_broken_off ? Commands({payloads.front()}) : Commands(payloads)));
            RC_ASSERT(outcome.log.empty() == (!last_refused && !night_broken_off && !compensation_on));
            if (outcome.result == 0) {
                believed.accepted[primitive.name] = value;
                believed.changed.insert(primitive.name);
            }
        }
    }));
}

TEST_F(ImageProperty, OffsetsThatAreReadBackAreThoseThatWereAcceptedLast) {
    EXPECT_TRUE(rc::check([] {
        Attach(*AnyType());
        int32_t red = -1, blue = -1;
        for (int step = 0; step < 10; ++step) {
            const int16_t new_red = *rc::gen::inRange<int16_t>(-140, 140);
            const int16_t new_blue = *rc::gen::inRange<int16_t>(-140, 140);
            const unsigned refused = *rc::gen::inRange(0U, 5U);
            if (refused == 1 || refused == 2) {
                RefuseCommand(refused);
            }
            const uint32_t result = SonySetManualWB(0, new_red, new_blue);
            RC_ASSERT(result == (refused == 1 || refused == 2 ? 1U : 0U));
            if (result == 0) {
                red = new_red < -127 || new_red > 127 ? 127 : new_red;
                blue = new_blue < -127 || new_blue > 127 ? 127 : new_blue;
            }
            WhiteBalanceParam read{};
            SONY_GetWhiteBalance(0, 0, &read);
            RC_ASSERT(read.lRedOffset == red && read.lBlueOffset == blue);
        }
    }));
}

// --- nibbles

/** The value of `count` nibbles from byte `first` of a packet; each has to be a nibble. */
uint32_t Decode(const std::string &packet, size_t first, size_t count) {
    const Bytes bytes = FromHex(packet);
    RC_ASSERT(bytes.size() >= first + count + 1);
    RC_ASSERT(bytes.back() == 0xFF);
    uint32_t value = 0;
    for (size_t i = first; i < first + count; ++i) {
        RC_ASSERT(bytes[i] <= 0x0F);
        value = value * 16 + bytes[i];
    }
    return value;
}

struct NibbleForm {
    const char *name;
    uint32_t (*set)(uint32_t value);
    uint32_t below;      /**< values from 0 up to here travel as they are */
    size_t first, count; /**< where in the last packet */
};

const NibbleForm kNibbleForms[] = {
    {"shutter", [](uint32_t v) { return SonyImgSetShutter(0, v); }, 0x10000, 4, 4},
    {"gain", [](uint32_t v) { return SonyImgSetGain(0, v); }, 101, 6, 2},
    {"range, lower bound", [](uint32_t v) { return SonyImgSetShutterScope(0, v, 0xFFFF); }, 0x10000, 4, 4},
    {"range, upper bound", [](uint32_t v) { return SonyImgSetShutterScope(0, v, 0); }, 0x10000, 8, 4},
    {"gain range, lower bound", [](uint32_t v) { return SonyImgSetGainScope(0, v, 5); }, 0x100, 4, 2},
    {"gain range, upper bound", [](uint32_t v) { return SonyImgSetGainScope(0, 5, v); }, 0x100, 6, 2},
    {"slow shutter limit", [](uint32_t v) { return SonyImgSetAutoSlowShutterLimit(0, v); }, 0x100, 6, 2},
    {"brightness", [](uint32_t v) { return SonySetVideoBrightness(0, v); }, 0x100, 6, 2},
    {"contrast", [](uint32_t v) { return SonySetVideoContrast(0, v); }, 0x100, 6, 2},
    {"saturation", [](uint32_t v) { return SonySetVideoSaturation(0, v); }, 0x100, 6, 2},
    {"2D noise", [](uint32_t v) { return SonySetDenoise2D(0, v); }, 0x100, 6, 2},
    {"3D noise", [](uint32_t v) { return SonySetDenoise3D(0, v); }, 0x100, 6, 2},
    {"level", [](uint32_t v) { return SonyImgSetWDRLevel(0, v); }, 10, 4, 4},
    {"tuning item", [](uint32_t v) { return SonyProcIQDebugMsg(v, 0); }, 0x100, 4, 2},
    {"tuning value", [](uint32_t v) { return SonyProcIQDebugMsg(0, v); }, 0x100, 6, 2},
    {"red",
     [](uint32_t v) { return SonySetManualWB(0, static_cast<int16_t>(static_cast<int32_t>(v) - 127), 0); },
     0xFF, 6, 2},
};

TEST_F(ImageProperty, WhatTravelsInNibblesArrivesAsItWas) {
    for (const NibbleForm &form : kNibbleForms) {
        EXPECT_TRUE(rc::check(form.name, [&] {
            Attach(kKova);
            const uint32_t value = *rc::gen::inRange(0U, form.below);
            const Lines packets = Run([&] { return form.set(value); }).packets;
            RC_ASSERT(Decode(packets.front(), form.first, form.count) == value);
        }));
    }
}

TEST_F(ImageProperty, NoPacketIsEverLongerThanSixteenBytesOrBrokenOff) {
    EXPECT_TRUE(rc::check([] {
        Attach(*AnyType());
        const Primitive &primitive = Primitives()[*rc::gen::inRange<size_t>(0, Primitives().size())];
        const uint32_t value = *rc::gen::arbitrary<uint32_t>();
        for (const std::string &packet : Run([&] { return primitive.set(value); }).packets) {
            const Bytes bytes = FromHex(packet);
            RC_ASSERT(bytes.size() >= 6U && bytes.size() <= 16U);
            RC_ASSERT(bytes[0] == 0x81 && bytes[1] == 0x01 && bytes[2] == 0x04);
            RC_ASSERT(std::count(bytes.begin(), bytes.end(), 0xFF) == 1 && bytes.back() == 0xFF);
        }
    }));
}

// --- formulas over their whole domains and far beyond

/** A value of 0 to 1000, or one near the ends of the word. */
rc::Gen<uint32_t> Extreme() {
    return rc::gen::oneOf(rc::gen::inRange(0U, 1001U), rc::gen::inRange(0xFFFFFF00U, 0xFFFFFFFFU),
                          rc::gen::inRange(0x7FFFFF00U, 0x80000100U));
}

TEST_F(ImageProperty, CompensationMovesOneStepEveryFourteenUnits) {
    EXPECT_TRUE(rc::check([] {
        Attach(*AnyType());
        SonySetExpComp(0, 123456);
        const int32_t value = *rc::gen::inRange(-86, 1000);
        const uint32_t low = Decode(Run([&] { return SonySetExpComp(0, value); }).packets.at(1), 6, 2);
        const uint32_t high = Decode(Run([&] { return SonySetExpComp(0, value + 14); }).packets.at(1), 6, 2);
        RC_ASSERT(high == (low + 1) % 256);
    }));
}

TEST_F(ImageProperty, PictureValuesAreNeverAFailureAndStayWithinTheirCodes) {
    EXPECT_TRUE(rc::check([] {
        const uint32_t type = *AnyType();
        Attach(type);
        const uint32_t value = *Extreme();
        const Outcome saturation = Run([&] { return SonySetVideoSaturation(0, value); });
        const Outcome sharpness = Run([&] { return SonySetVideoSharpness(0, value); });
        const Outcome noise = Run([&] { return SonySetDenoise3D(0, value); });
        RC_ASSERT(saturation.result == 0U && sharpness.result == 0U && noise.result == 0U);
        RC_ASSERT(Decode(saturation.packets.at(0), 6, 2) <= (IsKovaType(type) ? 255U : 14U));
        RC_ASSERT(Decode(sharpness.packets.at(0), 6, 2) <= 15U);
        RC_ASSERT(IsKovaType(type) || Decode(noise.packets.at(0), 4, 1) <= 5U);
        RC_ASSERT(sharpness.log.empty() == (value <= 255U));
        RC_ASSERT(noise.log.empty() == (value <= 255U));
    }));
}

TEST_F(ImageProperty, MoreIsNeverLessWithinTheRange) {
    EXPECT_TRUE(rc::check([] {
        const uint32_t low = *rc::gen::inRange(0U, 256U), high = *rc::gen::inRange(low, 256U);
        for (auto set : {SonySetVideoSaturation, SonySetVideoSharpness, SonySetDenoise3D}) {
            uint32_t code[2];
            for (int i = 0; i < 2; ++i) {
                Attach(kSony1);
                const std::string packet = Run([&] { return set(0, i == 0 ? low : high); }).packets.at(0);
                code[i] = Decode(packet, packet.size() > 20 ? 6 : 4, packet.size() > 20 ? 2 : 1);
            }
            RC_ASSERT(code[0] <= code[1]);
        }
    }));
}

} // namespace
} // namespace unit
