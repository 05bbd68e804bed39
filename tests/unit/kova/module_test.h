/**
 * @file module_test.h
 * Fixture of the tests of what a Kova module tells about itself: a module of the first generation, no ability
 * known, nothing asked yet.
 */
#ifndef VISCACAM_UNIT_KOVA_MODULE_TEST_H
#define VISCACAM_UNIT_KOVA_MODULE_TEST_H

#include "tests/unit/unit_test.h"

#include <algorithm>
#include <functional>

namespace unit {

constexpr uint32_t kKova = 0x02012001, kKovaGen2 = 0x02012A01;
constexpr uint32_t kSegmented = 0x04, kReverseByPower = 0x08, kExtVersion = 0x10;

/** Codes of a version in segments: a letter and its two digits, a separator and its kind. */
constexpr uint8_t kLetter = 10, kSeparator = 11;

/** The module answers an inquiry with an error. */
constexpr char kErrorReply[] = "90 60 41 FF";

/** Memory of a caller, exactly `Size` bytes of it his: what is written outside them shows. */
template <size_t Size>
class CallersBuffer {
  public:
    CallersBuffer() : m_bytes(Size + 2 * kMargin, kMark) {}
    char *data() { return m_bytes.data() + kMargin; }
    /** What stands there as text; all of it where nothing ends it. */
    std::string text() const { return bytes().substr(0, bytes().find('\0')); }
    std::string bytes() const { return {m_bytes.begin() + kMargin, m_bytes.end() - kMargin}; }
    bool untouched() const { return Marked(m_bytes.begin(), m_bytes.end()); }
    /** Nothing was written in front of it or behind it. */
    bool intact() const {
        return Marked(m_bytes.begin(), m_bytes.begin() + kMargin) &&
               Marked(m_bytes.end() - kMargin, m_bytes.end());
    }

  private:
    static constexpr char kMark = '\x5A';
    static constexpr long kMargin = 64;
    using Place = std::vector<char>::const_iterator;
    static bool Marked(Place from, Place to) {
        return std::all_of(from, to, [](char byte) { return byte == kMark; });
    }
    std::vector<char> m_bytes;
};

class ModuleTest : public UnitTest {
  protected:
    ModuleTest() { Attach(kKova); }

    /** Another module, whose capability word was found to be this. */
    static void Attach(uint32_t type, uint32_t ability = 0) {
        Host().SetModuleType(type);
        KovaSetCamAbility(ability);
        Host().Forget();
    }
    /** Lines of level WARN and ERROR. */
    static Lines Complained() {
        Lines lines;
        for (const Event &event : Host().Events(Call::Log)) {
            if (event.log.level <= VISCA_LOG_WARN) {
                lines.push_back(event.text);
            }
        }
        return lines;
    }
    /** An answer that holds these data bytes, ended by FF where there is room for it. */
    static std::string Reply(const Bytes &data) {
        Bytes bytes = {0x90, 0x50};
        bytes.insert(bytes.end(), data.begin(), data.end());
        if (bytes.size() < 16) {
            bytes.push_back(0xFF);
        }
        return Hex(bytes);
    }
    /** `count` zero data bytes, one of which is not. */
    static Bytes OneByte(size_t count, size_t at, unsigned value) {
        Bytes data(count, 0);
        data[at] = static_cast<uint8_t>(value);
        return data;
    }
    /** The first answer of a version in segments: how many there are. */
    static void AnswerCount(unsigned segments) {
        Host().AnswerInquiry(
            Reply({static_cast<uint8_t>(segments >> 12), static_cast<uint8_t>((segments >> 8) & 0x0F),
                   static_cast<uint8_t>((segments >> 4) & 0x0F), static_cast<uint8_t>(segments & 0x0F)}));
    }
    /** That answer and the codes, in segments as long as they get. */
    static void AnswerCodes(const Bytes &codes) {
        const size_t longest = 13;
        AnswerCount(static_cast<unsigned>((codes.size() + longest - 1) / longest));
        for (size_t at = 0; at < codes.size(); at += longest) {
            const size_t end = std::min(codes.size(), at + longest);
            Host().AnswerInquiry(
                Reply({codes.begin() + static_cast<long>(at), codes.begin() + static_cast<long>(end)}));
        }
    }
    static Bytes Repeat(unsigned times, const Bytes &codes, const Bytes &tail = {}) {
        Bytes all;
        for (unsigned i = 0; i < times; ++i) {
            all.insert(all.end(), codes.begin(), codes.end());
        }
        all.insert(all.end(), tail.begin(), tail.end());
        return all;
    }
    const std::string m_time_out = "ERROR ViscaInquiry: Wait VISCA RSP msg tiemout!\n";
};

} // namespace unit

#endif
