#ifndef VISCACAM_TOOL_CTL_COMMAND_H
#define VISCACAM_TOOL_CTL_COMMAND_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tool/ctl/values.h"

namespace tool::ctl {

class Job;

/* Something that is typed behind a command's words. */
struct Argument {
    enum class Place {
        needed,   /* stands there */
        optional, /* may stand there */
        list,     /* one or more, to the end */
        keyed,    /* NAME=VALUE, --NAME VALUE or --NAME=VALUE, anywhere */
        flag,     /* --NAME or NAME, anywhere */
    };
    std::string name;
    Place place;
    std::function<Domain(uint32_t moduleType)> domain;
    bool together = false; /* keyed, but it cannot be left out: the library sets all of them at once */
};

/* How the table writes them down. The domain may depend on the module type. */
using DomainOf = Domain (*)(uint32_t moduleType);
Argument needed(const std::string &name, const Domain &domain);
Argument needed(const std::string &name, DomainOf domain);
Argument optional(const std::string &name, const Domain &domain);
Argument optional(const std::string &name, DomainOf domain);
Argument list(const std::string &name, const Domain &domain);
Argument list(const std::string &name, DomainOf domain);
Argument keyed(const std::string &name, const Domain &domain);
Argument keyed(const std::string &name, DomainOf domain);
Argument together(const std::string &name, const Domain &domain);
Argument flag(const std::string &name);

/* What was typed for them, checked. */
class Arguments {
  public:
    bool has(const std::string &name) const { return m_values.count(name) != 0; }
    /* 0 and empty for what was not typed. */
    int64_t number(const std::string &name, int64_t otherwise = 0) const;
    uint32_t word(const std::string &name, uint32_t otherwise = 0) const;
    std::string text(const std::string &name) const;
    const std::vector<Value> &list() const { return m_list; }
    bool empty() const { return m_values.empty() && m_list.empty(); }

    void set(const std::string &name, const Value &value) { m_values[name] = value; }
    void append(const Value &value) { m_list.push_back(value); }

  private:
    std::map<std::string, Value> m_values;
    std::vector<Value> m_list;
};

/* What else the table says of a command; may be added. */
enum Trait : unsigned {
    KOVA_ONLY = 1U,      /* other modules do not have it */
    WITHOUT_CAMERA = 2U, /* works before a camera is there */
    MOTION = 4U,         /* completes when the lens has arrived, which takes longer than the library waits */
    MAY_SEND_NOTHING = 8U, /* a value that the library remembers is not sent again */
    NEEDS_A_KEY = 16U,     /* without a value there is nothing to set */
};

/* A command: one row of the table. */
struct Row {
    std::string words; /* "zoom in" */
    std::vector<Argument> arguments;
    std::string help;                  /* "drive the zoom towards tele, until \"zoom stop\" or for a time" */
    std::vector<std::string> examples; /* the first is shown in the help */
    /* What it does; throws Refused. */
    void (*run)(Job &job, const Arguments &arguments);
    /* Functions of the library that are called by it, by the examples all of them. */
    Words calls;
    unsigned traits = 0;

    /* "zoom in [TIME]"; brief: many values that may be given are not named. */
    std::string usage(uint32_t moduleType, bool brief = false) const;
};

/* Rows of one subject. */
struct Subject {
    std::string title;
    std::vector<Row> rows;
};

/* A command as it was typed, checked. */
struct Call {
    const Row *row;
    Arguments arguments;
    std::string text;
};

} // namespace tool::ctl

#endif
