#ifndef VISCACAM_TOOL_SIM_LINKS_H
#define VISCACAM_TOOL_SIM_LINKS_H

#include <string>
#include <vector>

namespace tool {

/*
 * Where simulated cameras are found when nobody says otherwise: $XDG_RUNTIME_DIR/viscacam, or
 * /tmp/viscacam-UID where that variable leads nowhere. The folder belongs to the user alone.
 */
std::string linkFolder();

/*
 * Names of device links that stay the same from run to run: sony1 is FOLDER/sony1, unless another camera of
 * this machine's user has that name now; then it is sony1-2, and so on. A name is held by a lock on
 * FOLDER/.NAME.lock, so it is free again however its holder ended.
 */
class Links {
  public:
    Links() = default;
    ~Links(); /* gives the names back */
    Links(const Links &) = delete;
    Links &operator=(const Links &) = delete;

    /* Hold a name like this one. Returns the path of its link. Throws std::runtime_error. */
    std::string take(const std::string &name);

  private:
    std::vector<int> m_locks;
};

} // namespace tool

#endif
