#include "tool/ctl/script.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "tool/ctl/grammar.h"
#include "tool/ctl/runner.h"
#include "tool/exit_status.h"

namespace tool::ctl {

Step readLine(const std::string &line, const std::string &source, uint32_t moduleType) {
    Step step = {{}, source};
    try {
        for (const Words &words : commandsOf(line))
            step.calls.push_back(parseCommand(words, moduleType));
    } catch (const UsageError &wrong) {
        throw UsageError(source.empty() ? wrong.what() : source + ": " + wrong.what());
    }
    return step;
}

std::vector<Step> readFile(const std::string &path, uint32_t moduleType) {
    std::ifstream file(path);
    if (!file)
        throw Refused("cannot read " + path + ": " + std::strerror(errno));
    std::vector<Step> steps;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number)
        steps.push_back(readLine(line, path + ":" + std::to_string(number), moduleType));
    if (file.bad())
        throw Refused("cannot read " + path);
    return steps;
}

bool Script::carryOut(const Step &step) {
    for (const Call &call : step.calls) {
        if (runCommand(m_bench, call, step.source))
            continue;
        m_status = std::max(m_status, EXIT_REFUSED);
        if (!m_keepGoing)
            return false;
    }
    return true;
}

bool Script::refuse(const UsageError &why) {
    m_bench.screen.note(why.what());
    m_status = EXIT_USAGE;
    return m_keepGoing;
}

void Script::carryOutLines(std::istream &lines, const std::string &name) {
    std::string line;
    bool more = true;
    for (int number = 1; more && std::getline(lines, line); ++number) {
        try {
            more = carryOut(readLine(line, name + ":" + std::to_string(number), m_bench.moduleType));
        } catch (const UsageError &wrong) {
            more = refuse(wrong);
        }
    }
}

} // namespace tool::ctl
