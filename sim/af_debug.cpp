#include "sim/af_debug.h"

#include <algorithm>
#include <iterator>

namespace sim {

namespace {

constexpr uint8_t MARK[] = {0x81, 0x66, 0x66, 0x66};
constexpr size_t TEXT = 5;
constexpr size_t LONGEST_ANSWER = 127; // hosts keep so many characters

bool isPrintable(uint8_t byte) {
    return byte >= ' ' && byte <= '~';
}

} // namespace

bool isAfDebug(const Bytes &begun) {
    return begun.size() >= std::size(MARK) && std::equal(std::begin(MARK), std::end(MARK), begun.begin());
}

std::optional<size_t> afDebugSize(const Bytes &begun) {
    if (begun.size() < TEXT || !isAfDebug(begun))
        return std::nullopt;
    return TEXT + begun[TEXT - 1];
}

Bytes afDebugAnswer(const Bytes &packet) {
    Bytes answer = {MARK[1], 0, 'o', 'k', ' '};
    std::copy_if(packet.begin() + TEXT, packet.end(), std::back_inserter(answer), isPrintable);
    answer.resize(std::min(answer.size(), 2 + LONGEST_ANSWER));
    answer[1] = static_cast<uint8_t>(answer.size() - 2);
    return answer;
}

} // namespace sim
