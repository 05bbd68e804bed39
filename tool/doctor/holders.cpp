#include "tool/doctor/holders.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace tool::doctor {

namespace {

constexpr unsigned PTY_MAJOR = 136; // of /dev/pts/0 to 1048575
constexpr unsigned PTMX_MAJOR = 5;
constexpr unsigned PTMX_MINOR = 2;
constexpr size_t MOST_NAMED = 4;

struct Search {
    dev_t device = 0;
    std::vector<std::string> holders; // "minicom (process 4711)"
    bool modemManager = false;
    unsigned hidden = 0; // processes that may not be looked into
};

std::string firstLine(const std::string &path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

std::vector<std::string> entriesOf(const std::string &folder, bool &readable) {
    std::vector<std::string> names;
    DIR *open = opendir(folder.c_str());
    readable = open != nullptr;
    while (const dirent *entry = open != nullptr ? readdir(open) : nullptr) {
        if (entry->d_name[0] != '.')
            names.push_back(entry->d_name);
    }
    if (open != nullptr)
        closedir(open);
    return names;
}

bool isPty(dev_t device) {
    return major(device) == PTY_MAJOR;
}

// The other end of a pseudo-terminal: the kernel tells which one a descriptor of /dev/ptmx leads to.
bool isMasterOf(dev_t device, dev_t file, const std::string &info) {
    if (!isPty(device) || major(file) != PTMX_MAJOR || minor(file) != PTMX_MINOR)
        return false;
    std::ifstream lines(info);
    for (std::string line; std::getline(lines, line);) {
        unsigned index = 0;
        if (std::sscanf(line.c_str(), "tty-index: %u", &index) == 1)
            return index == minor(device);
    }
    return false;
}

// Whoever plays the camera at the other end of a pseudo-terminal may keep this end open as well.
bool holds(const std::string &process, Search &search) {
    bool readable = false;
    bool held = false;
    bool master = false;
    for (const std::string &name : entriesOf(process + "/fd", readable)) {
        struct stat file = {};
        if (stat((process + "/fd/" + name).c_str(), &file) != 0 || !S_ISCHR(file.st_mode))
            continue;
        held = held || file.st_rdev == search.device;
        master = master || isMasterOf(search.device, file.st_rdev, process + "/fdinfo/" + name);
    }
    search.hidden += readable || access(process.c_str(), F_OK) != 0 ? 0U : 1U;
    return held && !master;
}

Search searchProcesses(dev_t device) {
    Search search;
    search.device = device;
    bool readable = false;
    for (const std::string &name : entriesOf("/proc", readable)) {
        const long process = std::strtol(name.c_str(), nullptr, 10);
        if (process <= 0 || process == getpid() || !holds("/proc/" + name, search))
            continue;
        const std::string program = firstLine("/proc/" + name + "/comm");
        search.holders.push_back(program + " (process " + name + ")");
        search.modemManager = search.modemManager || program == "ModemManager";
    }
    return search;
}

std::string listed(const std::vector<std::string> &holders) {
    std::string text;
    for (size_t i = 0; i < holders.size() && i < MOST_NAMED; ++i)
        text += (i == 0 ? "" : ", ") + holders[i];
    if (holders.size() > MOST_NAMED)
        text += " and " + std::to_string(holders.size() - MOST_NAMED) + " more";
    return text;
}

// "ttyS0                -W- (EC   p a)    4:64"
bool isKernelConsole(dev_t device) {
    std::ifstream consoles("/proc/consoles");
    for (std::string line; std::getline(consoles, line);) {
        unsigned consoleMajor = 0;
        unsigned consoleMinor = 0;
        const size_t numbers = line.find_last_of(" \t");
        if (numbers != std::string::npos &&
            std::sscanf(line.c_str() + numbers, " %u:%u", &consoleMajor, &consoleMinor) == 2 &&
            makedev(consoleMajor, consoleMinor) == device)
            return true;
    }
    return false;
}

} // namespace

bool checkHolders(const std::string &real, Report &report) {
    struct stat device = {};
    stat(real.c_str(), &device);
    if (isKernelConsole(device.st_rdev)) {
        report.add("console", Verdict::bad,
                   "the kernel prints its messages on this port; the line was left alone");
        report.advise(Topic::device, "Take the port off the kernel's command line (console=...) and start "
                                     "again: its messages reach the camera as noise. Or name another port.");
        return false;
    }
    const Search search = searchProcesses(device.st_rdev);
    if (!search.holders.empty()) {
        report.add("in use", Verdict::bad, "open in " + listed(search.holders) + "; the line was left alone");
        report.advise(Topic::device, search.modemManager
                                         ? "ModemManager takes the adapter for a modem and writes to it: "
                                           "stop it, or exclude the adapter by a udev rule with "
                                           "ENV{ID_MM_DEVICE_IGNORE}=\"1\"."
                                         : "End the program that has the port open.");
        return false;
    }
    const std::string blind = search.hidden == 0 ? ""
                                                 : "; " + std::to_string(search.hidden) +
                                                       " processes of other users could not be looked into";
    report.add("in use", Verdict::good, "no other program has it open" + blind);
    return true;
}

} // namespace tool::doctor
