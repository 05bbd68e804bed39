#ifndef VISCACAM_TOOL_DEMO_PACKAGE_H
#define VISCACAM_TOOL_DEMO_PACKAGE_H

#include <string>
#include <vector>

namespace tool {

/*
 * An upgrade package for a simulated module, under /tmp/update, where the library looks for one: the version
 * file, and a program image that says which version it is. The files are removed at its end; a folder that
 * was there stays. A package that somebody else has put there is left alone.
 */
class DemoPackage {
  public:
    struct Versions {
        std::string uimage;
        std::string program;
        bool secondKova; /* of the module that it is for */
    };
    /* Throws std::runtime_error when a package is there, or a file cannot be written. */
    explicit DemoPackage(const Versions &versions);
    ~DemoPackage();
    DemoPackage(const DemoPackage &) = delete;
    DemoPackage &operator=(const DemoPackage &) = delete;

  private:
    void write(const std::string &path, const std::string &content);
    void remove();

    std::vector<std::string> m_written;
    bool m_folderMade = false;
};

/* The version after this one: its last two digits counted up, "B02D014SP05" gives "B02D014SP06". */
std::string nextVersion(std::string version);

} // namespace tool

#endif
