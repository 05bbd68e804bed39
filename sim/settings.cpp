#include "sim/settings.h"

#include "sim/block.h"

namespace sim {

Handler assigns(const std::string &name, int least, int most) {
    return [=](Block &block, const Args &args) {
        const auto value = static_cast<int>(args.number(0, args.count()));
        if (value < least || value > most)
            return refused(SYNTAX_ERROR);
        block.settings().set(name, value);
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

} // namespace sim
