#ifndef VISCACAM_TOOL_CTL_RESULT_H
#define VISCACAM_TOOL_CTL_RESULT_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "tool/ctl/follower.h"

namespace tool::ctl {

/* The camera, the library or the system said no; the text says what. */
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* Something that a command has learnt: under a name, for programs and for people. */
struct Field {
    std::string name;
    std::variant<std::string, int64_t, double, bool> value;
    std::string shown;
};

/* What came of a command. */
struct Result {
    std::string command;
    std::string source; /* "FILE:12", empty when it was not read from one */
    std::string error;  /* empty: done */
    std::vector<Field> fields;
    std::vector<std::string> lines; /* for people only */
    std::vector<Sent> sent;
    std::vector<std::string> notes;

    bool ok() const { return error.empty(); }
};

/* One object on one line, without its newline. */
std::string jsonOf(const Result &result);
/* {"name": value, ...} */
std::string jsonOf(const std::vector<Field> &fields);

/* Lines for people, notes and error left out. */
std::vector<std::string> linesOf(const Result &result);

} // namespace tool::ctl

#endif
