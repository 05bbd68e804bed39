#ifndef VISCACAM_SIM_TEMP_FOLDER_H
#define VISCACAM_SIM_TEMP_FOLDER_H

#include "sim/sim.h"

namespace sim {

/* A folder of our own under $TMPDIR or /tmp, removed at the end with all that is in it. */
class TempFolder {
  public:
    /* Throws std::runtime_error. */
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    /* Path of a file in it. */
    std::string file(const std::string &name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

/* Empty if it cannot be read. */
Bytes readFile(const std::string &path);
void writeFile(const std::string &path, const std::string &content);

} // namespace sim

#endif
