#include "decode/table.h"
#include "decode/words.h"

// A Kova module sends a long version in segments: the first inquiry is answered with their number, and each
// repetition of the same inquiry with the next one. Older modules answer the program version in one reply;
// the capability word tells which.

namespace decode {
namespace {

constexpr std::uint32_t kSegmentedVersions = 0x04;
constexpr std::size_t kMostDigits = 196;

bool HasForm(const Row &inquiry, Form form) {
    for (const Row *answer : AnswersOf(inquiry))
        if (answer->form == form)
            return true;
    return false;
}

bool IsCapabilityInquiry(const Bytes &bytes) {
    return bytes == Bytes{0x81, 0x09, 0x04, 0xAB, 0xFF};
}

/// The low nibbles of `count` bytes from `first`, most significant first.
std::uint32_t LowNibbles(const Bytes &bytes, std::size_t first, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = first; i < first + count && i < bytes.size(); ++i)
        value = value << 4 | (bytes[i] & 0x0FU);
    return value;
}

} // namespace

void Conversation::NumberSegment(Open &open) {
    if (open.row == nullptr || !HasForm(*open.row, Form::Count))
        return;
    Segments &segments = segments_[open.row];
    open.segment = segments.asked < segments.count ? ++segments.asked : 0;
}

Form Conversation::FormOf(const Open &inquiry) const {
    if (!HasForm(*inquiry.row, Form::Count))
        return Form::Plain;
    if (inquiry.segment > 0)
        return Form::Segment;
    const bool segmented = ability_ && (*ability_ & kSegmentedVersions) != 0;
    return segmented || !HasForm(*inquiry.row, Form::Single) ? Form::Count : Form::Single;
}

std::string Conversation::Learn(const Open &inquiry, Form form, const Bytes &answer) {
    if (IsCapabilityInquiry(inquiry.bytes))
        ability_ = LowNibbles(answer, 3, 8);
    if (form == Form::Segment)
        return LearnSegment(inquiry, answer);
    if (form == Form::Count) {
        segments_[inquiry.row] = Segments();
        segments_[inquiry.row].count = LowNibbles(answer, 2, 4);
    }
    return "";
}

std::string Conversation::LearnSegment(const Open &inquiry, const Bytes &answer) {
    Segments &segments = segments_[inquiry.row];
    ++segments.received;
    for (std::size_t i = 2; i + 1 < answer.size() && segments.digits.size() < kMostDigits; ++i)
        segments.digits.push_back(answer[i] & 0x0FU);
    const std::string which =
        ", segment " + std::to_string(inquiry.segment) + " of " + std::to_string(segments.count);
    if (inquiry.segment < segments.count)
        return which;
    return segments.received < segments.count ? which + ", incomplete"
                                              : " " + VersionFromDigits(segments.digits) + which;
}

} // namespace decode
