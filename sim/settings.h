#ifndef VISCACAM_SIM_SETTINGS_H
#define VISCACAM_SIM_SETTINGS_H

#include "sim/command_table.h"

#include <map>
#include <string>

namespace sim {

/* The volatile settings of a camera by name: back at their defaults after every power-up and reset. */
class Settings {
  public:
    void add(const std::string &name, int initial) { m_values[name] = m_initial[name] = initial; }
    void set(const std::string &name, int value) { m_values.at(name) = value; }
    int get(const std::string &name) const { return m_values.at(name); }
    void restore() { m_values = m_initial; }
    const std::map<std::string, int> &all() const { return m_values; }

  private:
    std::map<std::string, int> m_initial;
    std::map<std::string, int> m_values;
};

/* Handlers for rows that only store or tell a setting. */

/* Store all nibbles of the pattern as one number; outside least to most the packet is a syntax error. */
Handler assigns(const std::string &name, int least, int most);
/* Answer the setting as one byte. */
Handler tells(const std::string &name);
/* Answer the setting as nibbles. */
Handler tellsNibbles(const std::string &name, size_t count);

} // namespace sim

#endif
