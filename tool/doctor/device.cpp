#include "tool/doctor/device.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <glob.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace tool::doctor {

namespace {

const char *const ADAPTERS[] = {"/dev/serial/by-id/*", "/dev/ttyUSB*", "/dev/ttyACM*", "/dev/ttyAMA*"};
constexpr size_t MOST_NAMED = 6;

// Serial devices that there are, as a user would look for them.
std::string adaptersThere() {
    std::string names;
    size_t count = 0;
    for (const char *pattern : ADAPTERS) {
        glob_t found = {};
        if (glob(pattern, 0, nullptr, &found) == 0) {
            for (size_t i = 0; i < found.gl_pathc && count < MOST_NAMED; ++i, ++count)
                names += std::string(names.empty() ? "" : ", ") + found.gl_pathv[i];
        }
        globfree(&found);
    }
    return names;
}

std::string otherAdapters() {
    const std::string names = adaptersThere();
    return names.empty() ? "No USB serial adapter is plugged in here (no /dev/ttyUSB*, no /dev/ttyACM*)."
                         : "Serial devices that there are: " + names + ".";
}

bool missing(const std::string &path, Report &report) {
    struct stat link = {};
    const bool dangling = lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
    report.add("device", Verdict::bad,
               dangling ? path + " is a link to a device that is not there: the adapter is unplugged, or "
                                 "the simulated camera has ended"
                        : path + " is not there");
    report.advise(Topic::device, "Plug the adapter in, see what \"dmesg | tail\" says of it, and name the "
                                 "device that it became. " +
                                     otherAdapters());
    return false;
}

const char *kindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return "a regular file";
    case S_IFDIR:
        return "a directory";
    case S_IFSOCK:
        return "a socket";
    case S_IFIFO:
        return "a pipe";
    default:
        return "a block device";
    }
}

// The kernel's word for the kind of a device. Pseudo-terminals have none, nor has a machine without /sys.
std::string subsystemOf(dev_t device) {
    const std::string path =
        "/sys/dev/char/" + std::to_string(major(device)) + ":" + std::to_string(minor(device)) + "/subsystem";
    char resolved[PATH_MAX];
    const std::string folder = realpath(path.c_str(), resolved) != nullptr ? resolved : "";
    return folder.substr(folder.rfind('/') + 1);
}

bool notSerial(const std::string &what, Report &report) {
    report.add("device", Verdict::bad, what);
    report.advise(Topic::device, "Name a serial device. " + otherAdapters());
    return false;
}

std::string groupName(gid_t id) {
    const group *found = getgrgid(id);
    return found != nullptr ? found->gr_name : std::to_string(id);
}

std::string userName(uid_t id) {
    const passwd *found = getpwuid(id);
    return found != nullptr ? found->pw_name : std::to_string(id);
}

bool isInGroupNow(gid_t id) {
    std::vector<gid_t> groups(static_cast<size_t>(std::max(getgroups(0, nullptr), 0)));
    getgroups(static_cast<int>(groups.size()), groups.data());
    return getegid() == id || std::count(groups.begin(), groups.end(), id) > 0;
}

bool isListedInGroup(gid_t id) {
    const std::string user = userName(geteuid());
    const group *found = getgrgid(id);
    for (char **member = found != nullptr ? found->gr_mem : nullptr; member != nullptr && *member != nullptr;
         ++member) {
        if (user == *member)
            return true;
    }
    return false;
}

std::string modeText(mode_t mode) {
    std::string text = "rw-rw-rw-";
    for (size_t i = 0; i < text.size(); ++i) {
        if ((mode & (0400U >> i)) == 0)
            text[i] = '-';
    }
    return text;
}

std::string permissionAdvice(const struct stat &device) {
    const std::string group = groupName(device.st_gid);
    const std::string user = userName(geteuid());
    if ((device.st_mode & 060) != 060)
        return "Not even the group " + group +
               " may read and write: a udev rule with GROUP=\"dialout\", MODE=\"0660\" for this adapter "
               "mends "
               "it for good.";
    if (isInGroupNow(device.st_gid))
        return "You are in the group " + group +
               " already: something else refuses, such as a container's device list or a security module.";
    if (isListedInGroup(device.st_gid))
        return "You were made a member of the group " + group +
               " after this session began: log out and in again.";
    return "Become a member of the group " + group + " (\"sudo usermod -aG " + group + " " + user +
           "\"), then log out and in again.";
}

} // namespace

bool checkDevice(const std::string &path, Report &report, std::string &real) {
    struct stat device = {};
    if (stat(path.c_str(), &device) != 0 && (errno == ENOENT || errno == ENOTDIR))
        return missing(path, report);
    char resolved[PATH_MAX];
    real = realpath(path.c_str(), resolved) != nullptr ? resolved : path;
    const std::string shown = real == path ? path : path + " (" + real + ")";
    if (stat(path.c_str(), &device) != 0)
        return notSerial(path + " cannot be reached: " + std::strerror(errno), report);
    if (!S_ISCHR(device.st_mode))
        return notSerial(shown + " is " + kindOf(device.st_mode) + ", not a serial device", report);
    const std::string subsystem = subsystemOf(device.st_rdev);
    if (!subsystem.empty() && subsystem != "tty")
        return notSerial(shown + " is a character device, but not a serial one (" + subsystem + ")", report);
    report.add("device", Verdict::good, shown + " is there, a character device");
    return true;
}

// Asked of the file, so that nothing is opened: opening a port raises its modem lines.
bool checkPermission(const std::string &real, Report &report) {
    struct stat device = {};
    stat(real.c_str(), &device);
    const std::string owner =
        userName(device.st_uid) + ":" + groupName(device.st_gid) + " " + modeText(device.st_mode);
    if (eaccess(real.c_str(), R_OK | W_OK) == 0) {
        report.add("permission", Verdict::good,
                   "may be read and written by " + userName(geteuid()) + " (" + owner + ")");
        return true;
    }
    report.add("permission", Verdict::bad,
               userName(geteuid()) + " may not read and write it (" + owner + "): " + std::strerror(errno));
    report.advise(Topic::device, permissionAdvice(device));
    return false;
}

} // namespace tool::doctor
