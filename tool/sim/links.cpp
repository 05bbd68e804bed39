#include "tool/sim/links.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr int MOST_OF_A_NAME = 1000;

// Whether nobody but this user can make or rename files there.
bool isOurs(const std::string &folder) {
    struct stat found = {};
    return lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid() &&
           (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Somebody else could have made a folder of this name in /tmp before us, and so lead hosts to any device.
void makeFolder(const std::string &folder) {
    if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
        throw std::runtime_error("cannot make the folder " + folder + ": " + std::strerror(errno));
    if (!isOurs(folder))
        throw std::runtime_error(folder + " is no folder that belongs to this user alone");
}

// A lock that this process holds already counts as somebody else's: it is another camera's.
int tryLock(const std::string &path) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (fd < 0)
        throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
    if (flock(fd, LOCK_EX | LOCK_NB) == 0)
        return fd;
    close(fd);
    return -1;
}

} // namespace

std::string linkFolder() {
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/' && isOurs(runtime))
        return std::string(runtime) + "/viscacam";
    return "/tmp/viscacam-" + std::to_string(geteuid());
}

Links::~Links() {
    for (const int lock : m_locks)
        close(lock);
}

std::string Links::take(const std::string &name) {
    const std::string folder = linkFolder();
    makeFolder(folder);
    for (int i = 1; i < MOST_OF_A_NAME; ++i) {
        const std::string numbered = i == 1 ? name : name + "-" + std::to_string(i);
        const int lock = tryLock(folder + "/." + numbered + ".lock");
        if (lock < 0)
            continue;
        m_locks.push_back(lock);
        return folder + "/" + numbered;
    }
    throw std::runtime_error("all names like " + name + " are taken in " + folder);
}

} // namespace tool
