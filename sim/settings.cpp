#include "sim/settings.h"

#include "sim/block.h"

#include <algorithm>

namespace sim {

namespace {

using Test = std::function<bool(int)>;

Handler assignsWhere(const std::string &name, const Test &isValue, const Condition &executable) {
    return [=](Block &block, const Args &args) {
        const auto value = static_cast<int>(args.number(0, args.count()));
        if (!isValue(value))
            return refused(SYNTAX_ERROR);
        if (!executable(block))
            return refused(NOT_EXECUTABLE);
        block.settings().set(name, value);
        return done();
    };
}

} // namespace

void Settings::restore() {
    for (const auto &[name, initial] : m_initial)
        m_values.at(name) = initial;
}

void Settings::applyPending() {
    for (const auto &[name, value] : m_pending)
        m_values.at(name) = value;
    m_pending.clear();
}

bool always(Block &) {
    return true;
}

Handler assigns(const std::string &name, int least, int most, Condition executable) {
    return assignsWhere(
        name, [=](int value) { return value >= least && value <= most; }, executable);
}

Handler assignsOneOf(const std::string &name, const std::vector<int> &codes, Condition executable) {
    return assignsWhere(
        name, [=](int value) { return std::find(codes.begin(), codes.end(), value) != codes.end(); },
        executable);
}

Handler assignsPair(const std::string &first, const std::string &second, size_t nibbles, int least, int most,
                    Order order) {
    return [=](Block &block, const Args &args) {
        const auto one = static_cast<int>(args.number(0, nibbles));
        const auto other = static_cast<int>(args.number(nibbles, nibbles));
        const bool inRange = one >= least && one <= most && other >= least && other <= most;
        if (!inRange || (order == Order::rising && other < one))
            return refused(SYNTAX_ERROR);
        block.settings().set(first, one);
        block.settings().set(second, other);
        return done();
    };
}

Handler tells(const std::string &name) {
    return [=](Block &block, const Args &) {
        return answer({static_cast<uint8_t>(block.settings().get(name))});
    };
}

Handler tellsNibbles(const std::string &name, size_t count) {
    return [=](Block &block, const Args &) {
        return answerNibbles(static_cast<unsigned>(block.settings().get(name)), count);
    };
}

Handler tellsPair(const std::string &first, const std::string &second, size_t nibbles) {
    return [=](Block &block, const Args &) {
        Outcome outcome = answerNibbles(static_cast<unsigned>(block.settings().get(first)), nibbles);
        const Outcome other = answerNibbles(static_cast<unsigned>(block.settings().get(second)), nibbles);
        outcome.data.insert(outcome.data.end(), other.data.begin(), other.data.end());
        return outcome;
    };
}

} // namespace sim
