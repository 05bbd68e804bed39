// What every row of the table says, written down by hand.
#include <gtest/gtest.h>

#include <set>

#include "tests/decode/hex.h"

using namespace decode;

namespace {

struct Sent {
    const char *packet;
    const char *text;
};

struct Answered {
    const char *inquiry;
    const char *answer;
    const char *text;
};

constexpr Sent kSent[] = {
    // Power, registers and identity
    {"81 01 04 00 02 FF", "power on"},
    {"81 01 04 00 03 FF", "standby"},
    {"81 01 04 19 01 FF", "lens initialise"},
    {"81 01 04 19 03 FF", "camera reset"},
    {"81 01 04 24 72 00 06 FF", "write register 0x72 (monitor mode) = 0x06"},
    {"81 01 04 24 51 00 05 FF", "write register 0x51 (zoom cut 1) = 0x05"},
    {"81 01 04 24 13 0A 0B FF", "write register 0x13 = 0xAB"},
    {"81 09 04 24 73 FF", "register 0x73 (output enable) inquiry"},
    {"81 01 04 61 02 FF", "mirror on"},
    {"81 01 04 61 05 FF", "mirror unknown 0x05"},
    {"81 01 04 66 03 FF", "flip off"},
    // Zoom and focus
    {"81 01 04 07 00 FF", "zoom stop"},
    {"81 01 04 07 02 FF", "zoom tele"},
    {"81 01 04 07 03 FF", "zoom wide"},
    {"81 01 04 07 26 FF", "zoom tele, speed 6"},
    {"81 01 04 07 35 FF", "zoom wide, speed 5"},
    {"81 01 04 47 04 00 00 00 FF", "zoom to 0x4000"},
    {"81 01 04 47 01 02 03 04 0A 0B 0C 0D FF", "zoom to 0x1234, focus to 0xABCD"},
    {"81 01 04 06 03 FF", "digital zoom off"},
    {"81 01 04 06 02 FF", "digital zoom on"},
    {"81 01 04 08 00 FF", "focus stop"},
    {"81 01 04 08 02 FF", "focus far"},
    {"81 01 04 08 03 FF", "focus near"},
    {"81 01 04 08 20 FF", "focus far, speed 0"},
    {"81 01 04 08 37 FF", "focus near, speed 7"},
    {"81 01 04 48 01 00 00 00 FF", "focus to 0x1000"},
    {"81 01 04 BA FF", "zoom and focus reset"},
    {"81 01 04 38 02 FF", "focus mode auto"},
    {"81 01 04 38 03 FF", "focus mode manual"},
    {"81 01 04 38 04 FF", "focus mode 0x04"},
    {"81 01 04 38 10 FF", "focus mode toggle"},
    {"81 01 04 18 01 FF", "one-push focus"},
    {"81 01 04 18 02 FF", "focus to infinity"},
    {"81 01 04 57 02 FF", "auto focus mode zoom trigger"},
    {"81 01 04 28 0C 00 00 00 FF", "focus near limit 0xC000 (1 m)"},
    {"81 01 04 28 0D 00 00 00 FF", "focus near limit 0xD000"},
    {"81 01 04 11 01 FF", "infrared correction infrared light"},
    // Exposure
    {"81 01 04 39 0A FF", "exposure shutter priority"},
    {"81 01 04 39 0D FF", "exposure Kova mode 0x0D"},
    {"81 01 04 0A 02 FF", "shutter up"},
    {"81 01 04 4A 00 00 00 06 FF", "shutter 0x06 (1/60 s, PAL 1/50)"},
    {"81 01 04 4A 00 00 01 05 FF", "shutter 0x15 (1/10000 s)"},
    {"81 01 04 0B 03 FF", "iris down"},
    {"81 01 04 4B 00 00 00 0E FF", "iris 0x0E (F2.8, 960-line block F2.4)"},
    {"81 01 04 0C 00 FF", "gain reset"},
    {"81 01 04 4C 00 00 00 05 FF", "gain 0x05 (8 dB, Kova 5 %)"},
    {"81 01 04 4C 00 00 06 04 FF", "gain 0x64 (Kova 100 %)"},
    {"81 01 04 5A 02 FF", "automatic slow shutter on"},
    {"81 01 04 3E 02 FF", "exposure compensation on"},
    {"81 01 04 0E 02 FF", "exposure compensation up"},
    {"81 01 04 4E 00 00 00 09 FF", "exposure compensation 0x09 (+2)"},
    {"81 01 04 4E 00 00 00 00 FF", "exposure compensation 0x00 (-7)"},
    {"81 01 04 59 02 FF", "metering spot"},
    {"81 01 04 29 00 08 00 0F FF", "metering spot at 8, 15"},
    {"81 01 04 33 03 FF", "backlight compensation off"},
    {"81 01 04 3D 06 FF", "wide dynamic range on (mode 6)"},
    // Picture
    {"81 01 04 35 05 FF", "white balance manual"},
    {"81 01 04 35 04 FF", "white balance ATW"},
    {"81 01 04 35 09 FF", "white balance unknown 0x09"},
    {"81 01 04 10 05 FF", "one-push white balance"},
    {"81 01 04 03 02 FF", "red gain up"},
    {"81 01 04 43 00 00 07 0F FF", "red gain 0x7F"},
    {"81 01 04 04 03 FF", "blue gain down"},
    {"81 01 04 44 00 00 0F 0E FF", "blue gain 0xFE"},
    {"81 01 04 49 00 00 00 04 FF", "saturation 4"},
    {"81 01 04 02 00 FF", "sharpness reset"},
    {"81 01 04 42 00 00 00 0F FF", "sharpness 15"},
    {"81 01 04 53 05 FF", "noise reduction 5"},
    {"81 01 04 37 02 03 FF", "defog on, level 3"},
    {"81 01 04 37 03 00 FF", "defog off"},
    {"81 01 04 01 02 FF", "ICR on (black and white)"},
    {"81 01 04 51 03 FF", "automatic ICR off"},
    {"81 01 04 CF 05 01 01 0B FF", "image tuning 0x51 = 0x1B"},
    // Kova module
    {"81 09 04 B4 01 FF", "sensor board inquiry"},
    {"81 01 04 AA 00 00 00 00 00 04 00 00 FF", "start upgrade, files 0x00000400 (patch)"},
    {"81 01 04 AA 00 00 00 00 00 00 00 03 FF", "start upgrade, files 0x00000003 (uImage, program)"},
    {"81 01 04 A7 03 04 FF", "start log export 0x34"},
    {"81 01 04 B6 FF", "save log"},
    {"81 01 04 A4 06 05 05 03 0F 01 00 00 FF", "set clock to 1700000000 (2023-11-14 22:13:20 UTC)"},
    {"81 01 04 A4 00 00 00 00 00 00 00 00 FF", "set clock to 0 (1970-01-01 00:00:00 UTC)"},
    {"81 01 04 A4 03 08 0B 0C 05 0D 07 0F FF", "set clock to 951868799 (2000-02-29 23:59:59 UTC)"},
    {"81 01 04 A4 0F 0F 0F 0F 0F 0F 0F 0F FF", "set clock to 4294967295 (2106-02-07 06:28:15 UTC)"},
    {"81 01 04 BF 02 FF", "low-delay mode on"},
    {"81 01 04 BD 0F 0F 0F 0E 00 01 02 0C 01 FF", "sensor offset to -2, 300, flag 1"},
    {"81 01 04 B4 04 FF", "IR-cut filter on"},
    {"81 01 04 B4 05 FF", "IR-cut filter off"},
    {"81 01 04 D1 00 00 00 02 FF", "dome type 0x02 (ITC with IR)"},
    {"81 01 04 CD 0F FF", "scene mode 0x0F (scene 0)"},
    {"81 01 04 CD 0D FF", "scene mode 0x0D (scene 80)"},
    {"81 01 04 18 01 06 FF", "one-push focus, type 6"},
    {"81 01 04 18 0A 00 00 06 04 00 00 0C 08 FF", "one-push focus at 100, 200"},
    {"81 01 04 18 0B 00 01 00 02 01 00 02 00 FF", "one-push focus in 1, 2, 256, 512"},
    {"81 01 04 18 0B 01 FF FF", "one-push focus in a rectangle, of wrong length: 01 FF"},
    {"81 01 04 AE 02 FF", "zoom reports on"},
    {"81 01 04 AF 03 FF", "focus reports off"},
    {"81 01 04 CB 01 02 03 04 FF", "shutter 1/4660 s"},
    {"81 01 04 A3 00 00 01 09 02 07 01 00 FF", "shutter range 1/25 to 1/10000 s"},
    {"81 01 04 2C 00 0A 05 0A FF", "gain range 10 to 90 %"},
    {"81 01 04 CA 00 00 01 09 FF", "automatic slow shutter limit 1/25 s"},
    {"81 01 04 2D 00 00 00 09 FF", "wide dynamic range level 9"},
    {"81 01 04 A1 00 00 08 00 FF", "brightness 128"},
    {"81 01 04 A2 00 00 0F 0F FF", "contrast 255"},
    {"81 01 04 54 00 00 01 00 FF", "2D noise reduction 16"},
    {"81 01 04 55 00 00 00 01 FF", "3D noise reduction 1"},
    {"81 01 04 C8 02 FF", "defog mode 2"},
    {"81 01 04 C9 03 FF", "defog sensitivity 3"},
    {"81 66 66 66 04 61 66 31 0A", "AF debug command \"af1\""},
    // The link
    {"81 21 FF", "cancel socket 1"},
    {"81 01 00 01 FF", "clear interface"},
    {"88 01 00 01 FF", "to all cameras: clear interface"},
    {"88 30 01 FF", "set address 1"},
    {"82 01 04 07 00 FF", "to camera 2: zoom stop"},
    {"81 01 04 99 01 FF", "unknown command 04 99 01"},
    {"81 09 04 99 FF", "unknown inquiry 04 99"},
    {"71 09 04 B9 FF", "unknown Kova inquiry 04 B9"},
    {"81 05 01 FF", "unknown packet 05 01"},
    {"71 01 02 FF", "unknown Kova packet 01 02"},
    {"81 01 04 07", "packet without end, 4 bytes"},
    {"81 FF", "packet too short, 2 bytes"},
    {"12 34 FF", "noise, 3 bytes"},
    {"12", "noise, 1 byte"},
    {"", "nothing"},
};

constexpr Sent kReceived[] = {
    {"90 41 FF", "acknowledged, socket 1"},
    {"90 40 FF", "acknowledged"},
    {"90 51 FF", "completed, socket 1"},
    {"90 52 07 FF", "completed, socket 2, with data 07"},
    {"90 50 04 00 00 00 FF", "answer 04 00 00 00"},
    {"90 50 FF", "answer (no data)"},
    {"90 61 01 FF", "message length error, socket 1"},
    {"90 60 02 FF", "syntax error"},
    {"90 61 02 FF", "syntax error, socket 1"},
    {"90 60 03 FF", "command buffer full"},
    {"90 61 04 FF", "cancelled, socket 1"},
    {"90 62 05 FF", "nothing to cancel, socket 2"},
    {"90 61 41 FF", "refused: not executable, socket 1"},
    {"90 60 41 FF", "refused: not executable"},
    {"90 61 7E FF", "error 7E, socket 1"},
    {"90 38 FF", "network change / power-on notice"},
    {"88 30 02 FF", "address set, next is 2"},
    {"90 07 00 AE 01 FF", "zoom moving report"},
    {"90 07 00 AE 00 FF", "zoom stopped report"},
    {"90 07 00 AF 05 FF", "focus moving report"},
    {"90 07 00 EF FF", "image parameters wanted again, report"},
    {"90 07 00 EF 01 02 FF", "image parameters wanted again, report"},
    {"90 07 00 B0 01 FF", "unknown report 0x07 00 B0 01"},
    {"90 71 02 FF", "unexpected reply 71 02"},
    {"66 03 61 62 63", "AF debug answer \"abc\""},
    {"66 02 22 07", "AF debug answer \"\\x22\\x07\""},
    {"A0 41 FF", "from camera 2: acknowledged, socket 1"},
    {"90 FF", "reply too short, 2 bytes"},
    {"90 50 04", "reply without end, 3 bytes"},
    {"00 00 FF", "noise, 3 bytes"},
};

constexpr Answered kAnswered[] = {
    {"81 09 04 00 FF", "90 50 02 FF", "power on"},
    {"81 09 04 00 FF", "90 50 03 FF", "standby"},
    {"81 09 04 24 72 FF", "90 50 01 05 FF", "register 0x72 (monitor mode) = 0x15"},
    {"81 09 00 02 FF", "90 50 00 20 04 67 01 23 02 FF",
     "vendor 0x0020 (SONY), model 0x0467 (sony 7500), version 0x0123, 2 sockets"},
    {"81 09 00 02 FF", "90 50 80 26 B0 00 00 07 02 FF",
     "vendor 0x8026 (TALVERO), model 0xB000 (CAM7K3HD40Z), version 0x0007, 2 sockets"},
    {"81 09 04 61 FF", "90 50 02 FF", "mirror on"},
    {"81 09 04 66 FF", "90 50 03 FF", "flip off"},
    {"81 09 04 47 FF", "90 50 04 00 00 00 FF", "zoom position 0x4000"},
    {"81 09 04 06 FF", "90 50 03 FF", "digital zoom off"},
    {"81 09 04 48 FF", "90 50 01 02 03 04 FF", "focus position 0x1234"},
    {"81 09 04 38 FF", "90 50 02 FF", "focus mode auto"},
    {"81 09 04 57 FF", "90 50 01 FF", "auto focus mode interval"},
    {"81 09 04 28 FF", "90 50 07 00 00 00 FF", "focus near limit 0x7000 (3 m)"},
    {"81 09 04 11 FF", "90 50 00 FF", "infrared correction standard"},
    {"81 09 04 39 FF", "90 50 03 FF", "exposure manual"},
    {"81 09 04 4A FF", "90 50 00 00 00 0F FF", "shutter 0x0F (1/1000 s)"},
    {"81 09 04 4B FF", "90 50 00 00 00 00 FF", "iris 0x00 (closed)"},
    {"81 09 04 4C FF", "90 50 00 00 00 05 FF", "gain 0x05 (8 dB, Kova 5 %)"},
    {"81 09 04 4C FF", "90 50 00 00 00 00 FF", "gain 0x00 (Kova 0 %)"},
    {"81 09 04 5A FF", "90 50 03 FF", "automatic slow shutter off"},
    {"81 09 04 3E FF", "90 50 02 FF", "exposure compensation on"},
    {"81 09 04 4E FF", "90 50 00 00 00 07 FF", "exposure compensation 0x07 (+0)"},
    {"81 09 04 59 FF", "90 50 03 FF", "metering whole picture"},
    {"81 09 04 29 FF", "90 50 00 01 00 02 FF", "metering spot at 1, 2"},
    {"81 09 04 33 FF", "90 50 02 FF", "backlight compensation on"},
    {"81 09 04 3D FF", "90 50 02 FF", "wide dynamic range on"},
    {"81 09 04 35 FF", "90 50 08 FF", "white balance sodium lamp"},
    {"81 09 04 43 FF", "90 50 00 00 0C 04 FF", "red gain 0xC4"},
    {"81 09 04 44 FF", "90 50 00 00 00 09 FF", "blue gain 0x09"},
    {"81 09 04 49 FF", "90 50 00 00 00 0E FF", "saturation 14"},
    {"81 09 04 42 FF", "90 50 00 00 00 08 FF", "sharpness 8"},
    {"81 09 04 53 FF", "90 50 03 FF", "noise reduction 3"},
    {"81 09 04 37 FF", "90 50 02 01 FF", "defog on, level 1"},
    {"81 09 04 37 FF", "90 50 03 00 FF", "defog off"},
    {"81 09 04 01 FF", "90 50 03 FF", "ICR off (colour)"},
    {"81 09 04 51 FF", "90 50 02 FF", "automatic ICR on"},
    {"81 09 04 AB FF", "90 50 00 01 02 03 04 05 06 07 08 FF", "capability word 0x12345678"},
    {"71 09 04 B1 FF", "90 50 00 01 02 03 FF", "uImage version 1.23"},
    {"71 09 04 B1 FF", "90 50 01 02 03 00 FF", "uImage version 12.3"},
    {"71 09 04 B1 FF", "90 50 00 02 00 00 FF", "uImage version 2.0"},
    {"71 09 04 B2 FF", "90 50 00 0C 01 03 FF",
     "program version D012SP03, or program version, segments: 3091"},
    {"71 09 04 B2 FF", "90 50 01 02 03 04 FF",
     "program version 01020304, or program version, segments: 4660"},
    {"71 09 04 B5 FF", "90 50 00 00 00 02 FF", "extension version, segments: 2"},
    {"81 09 04 B4 03 FF", "90 50 56 31 2E 32 FF", "encoder software version \"V1.2\""},
    {"81 09 04 B4 02 FF", "90 50 03 07 FF", "motor board version 3, type 7"},
    {"81 09 04 68 FF", "90 50 00 00 09 02 FF", "temperature 19 C"},
    {"81 09 04 68 FF", "90 50 00 00 00 00 FF", "temperature -127 C"},
    {"81 09 04 A9 FF", "90 50 00 03 FF", "upgrade state 0x03 (under way)"},
    {"81 09 04 BD FF", "90 50 0F 0F 0F 0E 00 01 02 0C FF", "sensor offset -2, 300"},
    {"81 09 04 CE FF", "90 50 00 01 00 00 FF", "luma 256"},
    {"81 09 04 AD FF", "90 50 00 01 00 02 FF", "focus value 65538"},
    {"81 01 00 01 FF", "90 50 FF", "interface cleared"},
};

constexpr Sent kInquiries[] = {
    {"81 09 04 00 FF", "power inquiry"},
    {"81 09 00 02 FF", "identity inquiry"},
    {"81 09 04 61 FF", "mirror inquiry"},
    {"81 09 04 66 FF", "flip inquiry"},
    {"81 09 04 47 FF", "zoom position inquiry"},
    {"81 09 04 06 FF", "digital zoom inquiry"},
    {"81 09 04 48 FF", "focus position inquiry"},
    {"81 09 04 38 FF", "focus mode inquiry"},
    {"81 09 04 57 FF", "auto focus mode inquiry"},
    {"81 09 04 28 FF", "focus near limit inquiry"},
    {"81 09 04 11 FF", "infrared correction inquiry"},
    {"81 09 04 39 FF", "exposure mode inquiry"},
    {"81 09 04 4A FF", "shutter inquiry"},
    {"81 09 04 4B FF", "iris inquiry"},
    {"81 09 04 4C FF", "gain inquiry"},
    {"81 09 04 5A FF", "automatic slow shutter inquiry"},
    {"81 09 04 3E FF", "exposure compensation switch inquiry"},
    {"81 09 04 4E FF", "exposure compensation inquiry"},
    {"81 09 04 59 FF", "metering inquiry"},
    {"81 09 04 29 FF", "metering spot inquiry"},
    {"81 09 04 33 FF", "backlight compensation inquiry"},
    {"81 09 04 3D FF", "wide dynamic range inquiry"},
    {"81 09 04 35 FF", "white balance inquiry"},
    {"81 09 04 43 FF", "red gain inquiry"},
    {"81 09 04 44 FF", "blue gain inquiry"},
    {"81 09 04 49 FF", "saturation inquiry"},
    {"81 09 04 42 FF", "sharpness inquiry"},
    {"81 09 04 53 FF", "noise reduction inquiry"},
    {"81 09 04 37 FF", "defog inquiry"},
    {"81 09 04 01 FF", "ICR inquiry"},
    {"81 09 04 51 FF", "automatic ICR inquiry"},
    {"81 09 04 AB FF", "capability inquiry"},
    {"71 09 04 B1 FF", "uImage version inquiry"},
    {"71 09 04 B2 FF", "program version inquiry"},
    {"71 09 04 B5 FF", "extension version inquiry"},
    {"81 09 04 B4 03 FF", "encoder software version inquiry"},
    {"81 09 04 68 FF", "temperature inquiry"},
    {"81 09 04 A9 FF", "upgrade state inquiry"},
    {"81 09 04 BD FF", "sensor offset inquiry"},
    {"81 09 04 CE FF", "luma inquiry"},
    {"81 09 04 AD FF", "focus value inquiry"},
};

Meaning AnswerMeaning(const Answered &expected) {
    Conversation conversation;
    conversation.Next(Direction::ToCamera, Microseconds(0), Hex(expected.inquiry));
    return conversation.Next(Direction::FromCamera, Microseconds(20000), Hex(expected.answer));
}

} // namespace

TEST(Words, WhatAHostSendsIsPutAsExpected) {
    for (const Sent &expected : kSent)
        EXPECT_EQ(Describe(Direction::ToCamera, Hex(expected.packet)), expected.text) << expected.packet;
}

TEST(Words, InquiriesAreNamed) {
    for (const Sent &expected : kInquiries)
        EXPECT_EQ(Describe(Direction::ToCamera, Hex(expected.packet)), expected.text) << expected.packet;
}

TEST(Words, WhatACameraSendsIsPutAsExpected) {
    for (const Sent &expected : kReceived)
        EXPECT_EQ(Describe(Direction::FromCamera, Hex(expected.packet)), expected.text) << expected.packet;
}

TEST(Words, AnswersAreReadByTheirQuestion) {
    for (const Answered &expected : kAnswered) {
        const Meaning meaning = AnswerMeaning(expected);
        EXPECT_EQ(meaning.text, expected.text) << expected.inquiry << " / " << expected.answer;
        EXPECT_EQ(meaning.answers, 0) << expected.answer;
        EXPECT_FALSE(meaning.surprise) << expected.answer;
    }
}

// The segments of a version have conversation tests of their own.
TEST(Words, EveryRowOfTheTableHasAnExpectation) {
    std::set<const Row *> seen;
    for (const Sent &expected : kSent)
        seen.insert(
            Explain(Direction::ToCamera, Hex(expected.packet).data(), Hex(expected.packet).size()).row);
    for (const Sent &expected : kInquiries)
        seen.insert(
            Explain(Direction::ToCamera, Hex(expected.packet).data(), Hex(expected.packet).size()).row);
    for (const Sent &expected : kReceived)
        seen.insert(
            Explain(Direction::FromCamera, Hex(expected.packet).data(), Hex(expected.packet).size()).row);
    for (const Answered &expected : kAnswered)
        seen.insert(AnswerMeaning(expected).row);
    for (const Subject &subject : Table())
        for (std::size_t i = 0; i < subject.count; ++i)
            if (subject.rows[i].form == Form::Plain) {
                EXPECT_EQ(seen.count(&subject.rows[i]), 1U)
                    << subject.rows[i].pattern << " " << subject.rows[i].name;
            }
}

TEST(Words, NamesOfKindsFamiliesAndDirectionsAreSingleWords) {
    EXPECT_STREQ(NameOf(Kind::Command), "command");
    EXPECT_STREQ(NameOf(Kind::Report), "report");
    EXPECT_STREQ(NameOf(Kind::Noise), "noise");
    EXPECT_STREQ(NameOf(Family::Kova), "kova");
    EXPECT_STREQ(NameOf(Direction::FromCamera), "from-camera");
}

TEST(Words, WhatIsKnownIsToldFromWhatIsNot) {
    const auto known = [](Direction direction, const char *hex) {
        return Explain(direction, Hex(hex).data(), Hex(hex).size()).known;
    };
    EXPECT_TRUE(known(Direction::ToCamera, "81 01 04 07 26 FF"));
    EXPECT_TRUE(known(Direction::FromCamera, "90 50 02 FF"));
    EXPECT_FALSE(known(Direction::ToCamera, "81 01 04 99 FF"));
    EXPECT_FALSE(known(Direction::FromCamera, "90 50 02"));
    EXPECT_FALSE(known(Direction::FromCamera, "A0 41 FF"));
}
