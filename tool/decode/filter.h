#ifndef VISCACAM_TOOL_DECODE_FILTER_H
#define VISCACAM_TOOL_DECODE_FILTER_H

#include <set>
#include <string>
#include <vector>

namespace tool {

/* What is shown, by what things are called: a packet is of its kind, and may be malformed or a surprise. */
class TrafficFilter {
  public:
    /* Only things with one of these names; none: all. */
    void only(const std::vector<std::string> &names);
    /* Nothing that has one of these names, also not when "only" names another of its names. */
    void without(const std::vector<std::string> &names);

    /* Whether something with these names is shown. */
    bool passes(const std::vector<std::string> &names) const;

  private:
    std::set<std::string> m_only;
    std::set<std::string> m_without;
};

/* "commands" and "command" are "command", "acks" is "acknowledgement"; empty for what is no kind. */
std::string kindNamed(const std::string &text);

/* All, as they are listed for a person. */
std::string kindNames();

} // namespace tool

#endif
