#include "tool/demo/package.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

const char FOLDER[] = "/tmp/update";
const char VERSION_FILE[] = "/tmp/update/QDM_VERSION";
const char PROGRAM_FILE[] = "/tmp/update/QDM_program.bin";
const char *const OTHER_FILES[] = {"/tmp/update/QDM_uimage.bin", "/tmp/update/update.patch"};

const char OURS[] = "Package of the viscacam demo"; // the version file's first line
const char STAMP[] = "QDMV100R001B01";
const char STAMP_SECOND[] = "QDMV200R001B02";

constexpr size_t PROGRAM_SIZE = 12 * 1024; // three seconds at 38400 bit/s

std::runtime_error cannotWrite(const std::string &path) {
    return std::runtime_error("cannot write " + path + ": " + std::strerror(errno));
}

bool isThere(const char *path) {
    return access(path, F_OK) == 0;
}

std::string firstLine(const char *path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

// A demo that was killed has left its package behind; anybody else's is not ours to replace.
void makeSureItIsOurs() {
    const bool leftBehind = firstLine(VERSION_FILE) == OURS;
    bool foreign = isThere(VERSION_FILE) && !leftBehind;
    foreign = foreign || (isThere(PROGRAM_FILE) && !leftBehind);
    foreign = foreign || std::any_of(std::begin(OTHER_FILES), std::end(OTHER_FILES), isThere);
    if (foreign)
        throw std::runtime_error(std::string("there is an upgrade package in ") + FOLDER +
                                 " already; move it away first");
}

uint32_t crc32(const std::string &bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const char c : bytes) {
        crc ^= static_cast<uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (0xEDB88320 & (0U - (crc & 1)));
    }
    return ~crc;
}

// Something that looks like a program to nobody but a simulated module.
std::string programImage(const std::string &version) {
    std::string body(PROGRAM_SIZE, '\0');
    uint32_t value = 1;
    for (char &c : body) {
        value = value * 1664525 + 1013904223;
        c = static_cast<char>(value >> 24);
    }
    std::array<char, 128> head = {};
    std::snprintf(head.data(), head.size(), "viscacam-image program %s %zu %08X\n", version.c_str(),
                  body.size(), crc32(body));
    return head.data() + body;
}

// The library finds the versions by their distance from VER_NEW, and their end by a blank.
std::string versionFile(const DemoPackage::Versions &versions) {
    return std::string(OURS) + "\nuImage  VER_NEW: " + versions.uimage +
           " \nprogram VER_NEW:" + (versions.secondKova ? STAMP_SECOND : STAMP) + versions.program + " \n";
}

} // namespace

DemoPackage::DemoPackage(const Versions &versions) {
    makeSureItIsOurs();
    m_folderMade = mkdir(FOLDER, 0755) == 0;
    if (!m_folderMade && errno != EEXIST)
        throw cannotWrite(FOLDER);
    try {
        write(VERSION_FILE, versionFile(versions));
        write(PROGRAM_FILE, programImage(versions.program));
    } catch (...) {
        remove();
        throw;
    }
}

DemoPackage::~DemoPackage() {
    remove();
}

void DemoPackage::write(const std::string &path, const std::string &content) {
    m_written.push_back(path);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!(file << content) || !file.flush())
        throw cannotWrite(path);
}

void DemoPackage::remove() {
    for (const std::string &path : m_written)
        (void)unlink(path.c_str());
    if (m_folderMade)
        (void)rmdir(FOLDER);
}

std::string nextVersion(std::string version) {
    if (version.size() < 2)
        return version + "1";
    char &units = version[version.size() - 1];
    char &tens = version[version.size() - 2];
    if (units < '9') {
        ++units;
        return version;
    }
    units = '0';
    tens = tens < '9' ? static_cast<char>(tens + 1) : '0';
    return version;
}

} // namespace tool
