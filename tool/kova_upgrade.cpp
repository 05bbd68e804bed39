#include "tool/kova_upgrade.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "viscacam.h"

namespace tool {

namespace {

const char PACKAGE[] = "/tmp/update";
constexpr size_t VERSION_ROOM = 100; // what the library needs for a version text

// How much of a version the library compares.
constexpr size_t UIMAGE_COMPARED = 10;
constexpr size_t PROGRAM_COMPARED = 20;

using ReadVersion = uint32_t (*)(char *text);

std::string versionFrom(ReadVersion read, const std::string &what) {
    char text[VERSION_ROOM] = "";
    if (read(text) != VISCA_SUCCESS)
        throw std::runtime_error(what + " could not be read");
    return text;
}

UpgradeFile fileOfPackage(const std::string &name, const std::string &file, bool sent,
                          const std::string &why) {
    UpgradeFile found = {name, std::string(PACKAGE) + "/" + file, sent, why, false};
    struct stat facts = {};
    found.present = access(found.path.c_str(), R_OK) == 0 && stat(found.path.c_str(), &facts) == 0;
    found.size = found.present ? static_cast<uint64_t>(facts.st_size) : 0;
    return found;
}

UpgradeFile compared(const std::string &name, const std::string &file, const std::string &module,
                     const std::string &package, size_t length) {
    const bool differ = module.compare(0, length, package, 0, length) != 0;
    std::string why = "module " + module + ", package " + package;
    if (!differ && module != package)
        why += ": the same in the first " + std::to_string(length) + " characters";
    return fileOfPackage(name, file, differ, why);
}

// The library's callback takes no argument of the caller's.
std::function<void(bool)> whenDone;

void tellResult(uint32_t result) {
    whenDone(result == 0);
}

} // namespace

uint64_t UpgradePlan::bytesToSend() const {
    uint64_t bytes = 0;
    for (const UpgradeFile &file : files)
        bytes += file.sent ? file.size : 0;
    return bytes;
}

const UpgradeFile *UpgradePlan::missing() const {
    for (const UpgradeFile &file : files)
        if (file.sent && !file.present)
            return &file;
    return nullptr;
}

std::vector<std::string> UpgradePlan::lines() const {
    std::vector<std::string> lines;
    for (const UpgradeFile &file : files) {
        std::string line = file.name + ": " + (file.sent ? "sent, " : "not sent; ");
        if (file.sent)
            line += file.present ? std::to_string(file.size) + " bytes; " : file.path + " is missing; ";
        lines.push_back(line + file.why);
    }
    return lines;
}

UpgradePlan planUpgrade() {
    const UpgradeFile patch =
        fileOfPackage("patch", "update.patch", true, "a patch goes alone, whatever the versions");
    if (patch.present)
        return {{patch}};
    const std::string newUimage = versionFrom(KovaGetNewKovaUimageVer, "the package's uImage version");
    const std::string newProgram = versionFrom(KovaGetNewKovaProgramVer, "the package's program version");
    const std::string uimage = versionFrom(KovaGetCurKovaUimageVer, "the module's uImage version");
    const std::string program = versionFrom(KovaGetCurKovaProgramVer, "the module's program version");
    return {{compared("uImage", "QDM_uimage.bin", uimage, newUimage, UIMAGE_COMPARED),
             compared("program", "QDM_program.bin", program, newProgram, PROGRAM_COMPARED)}};
}

bool startUpgrade(std::function<void(bool)> done) {
    whenDone = std::move(done);
    // A word that is not 0 means that an upgrade was started, for as long as the process lives.
    __atomic_store_n(&gulUpdateFileforKova, 0, __ATOMIC_RELAXED);
    ViscaMarkUpdatingCam(0); // still raised when the last one could not write its first packet
    return KOVA_UpdateKova(tellResult) == VISCA_SUCCESS;
}

} // namespace tool
