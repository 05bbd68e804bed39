#ifndef VISCACAM_TOOL_KOVA_UPGRADE_H
#define VISCACAM_TOOL_KOVA_UPGRADE_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tool {

/* A file of the package under /tmp/update, and whether an upgrade sends it. */
struct UpgradeFile {
    std::string name; /* "uImage", "program", "patch" */
    std::string path;
    bool sent;
    std::string why;   /* "module 1.23, package 1.24" */
    bool present;      /* it can be read */
    uint64_t size = 0; /* bytes, of one that is present */
};

/* What an upgrade would send now, in the order in which it does. */
struct UpgradePlan {
    std::vector<UpgradeFile> files;

    uint64_t bytesToSend() const;
    /* A file that would be sent but is not there; null when all are. */
    const UpgradeFile *missing() const;
    /* A line a file: "program  sent, 12288 bytes: module B02D014SP05, package B02D015". */
    std::vector<std::string> lines() const;
};

/*
 * Find out what an upgrade would send: a patch alone when there is one, else the files whose versions differ
 * from the module's. Asks the module for its versions, up to 6 s for each inquiry that is not answered.
 * Throws std::runtime_error with what could not be read. Not from the library's threads.
 */
UpgradePlan planUpgrade();

/*
 * Clear what an earlier upgrade left behind and start one; it runs on a thread of the library. done is called
 * once on that thread, with whether the module has succeeded; not when false is returned: a version could not
 * be read. One at a time. Asks the module for its versions first, as planUpgrade().
 */
bool startUpgrade(std::function<void(bool)> done);

} // namespace tool

#endif
