#ifndef VISCACAM_SIM_SETTINGS_H
#define VISCACAM_SIM_SETTINGS_H

#include "sim/command_table.h"

#include <map>
#include <string>

namespace sim {

/* The settings of a camera by name. */
class Settings {
  public:
    /* Volatile: back at its default after every power-up and reset. */
    void add(const std::string &name, int initial) { m_values[name] = m_initial[name] = initial; }
    /* Outlives power cuts. */
    void addKept(const std::string &name, int initial) { m_values[name] = initial; }
    void set(const std::string &name, int value) { m_values.at(name) = value; }
    /* In effect after the next power-on or reset. */
    void setAtPowerOn(const std::string &name, int value) { m_pending[name] = value; }
    int get(const std::string &name) const { return m_values.at(name); }
    void restore();
    void applyPending();
    const std::map<std::string, int> &all() const { return m_values; }
    const std::map<std::string, int> &pending() const { return m_pending; }

  private:
    std::map<std::string, int> m_initial;
    std::map<std::string, int> m_values;
    std::map<std::string, int> m_pending;
};

/*
 * Handlers for rows that only store or tell a setting. A value that is none is a syntax error, whatever the
 * state; a value that is one, but whose time it is not, is not executable.
 */

using Condition = std::function<bool(Block &)>;

bool always(Block &block);

/* Store all nibbles of the pattern as one number, least to most. */
Handler assigns(const std::string &name, int least, int most, Condition executable = always);
/* Store all nibbles of the pattern as one number, one of these. */
Handler assignsOneOf(const std::string &name, const std::vector<int> &codes, Condition executable = always);
enum class Order { any, rising };
/* Store two numbers of so many nibbles each, least to most; rising: the second not below the first. */
Handler assignsPair(const std::string &first, const std::string &second, size_t nibbles, int least, int most,
                    Order order = Order::any);
/* Answer the setting as one byte. */
Handler tells(const std::string &name);
/* Answer the setting as nibbles. */
Handler tellsNibbles(const std::string &name, size_t count);
/* Answer two settings, so many nibbles each. */
Handler tellsPair(const std::string &first, const std::string &second, size_t nibbles);

} // namespace sim

#endif
