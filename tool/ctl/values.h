#ifndef VISCACAM_TOOL_CTL_VALUES_H
#define VISCACAM_TOOL_CTL_VALUES_H

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/ctl/words.h"

namespace tool::ctl {

/* A value that a command takes, as it was typed and as a number. */
struct Value {
    std::string text;
    int64_t number = 0; /* of a time: milliseconds; of an F-number: times 100 */
};

/* A value that has a name. */
struct Choice {
    std::string word;
    int64_t value;
};

/* Which values are allowed. */
class Domain {
  public:
    /* A whole number, decimal or hexadecimal with 0x. unit: what it counts, for people. */
    static Domain number(int64_t least, int64_t most, const std::string &unit = "");
    /* The same; its bounds are told in hexadecimal, as the value is usually given. */
    static Domain hex(int64_t least, int64_t most);
    /* A number of a list. */
    static Domain steps(const std::vector<int64_t> &steps, const std::string &unit = "");
    /* A name of a list; a number that one of them stands for is understood as well. */
    static Domain choice(const std::vector<Choice> &choices);
    /* on or off, 1 or 0 */
    static Domain onOff();
    /* "200ms", "2s", "1.5s", "3m" */
    static Domain time(std::chrono::milliseconds least, std::chrono::milliseconds most);
    /* An F-number of a list of hundredths: "2.8" or "F2.8"; "closed" is 99999. */
    static Domain aperture(const std::vector<int64_t> &hundredths);
    /* "1920x1080@25"; sizes empty: any. */
    static Domain norm(const std::vector<int64_t> &rates, const Words &sizes, const Words &usual);
    /* A byte in hexadecimal. */
    static Domain byte();
    /* Anything; usual: what can be typed, for example. */
    static Domain text(const std::string &what, const Words &usual = {});
    static Domain file();
    /* The same, but whoever types one of these names is told why it is not allowed. */
    Domain without(const Words &names, const std::string &why) const;

    /* Throws UsageError; its text says what is allowed. */
    Value parse(const std::string &text) const;
    /* "0 to 0x4000", "on or off" */
    std::string allowed() const;
    /* What can be typed, if that can be listed. */
    Words completions() const;
    bool isFile() const { return m_sort == Sort::file; }

  private:
    enum class Sort { number, steps, choice, time, aperture, norm, byte, text, file };
    explicit Domain(Sort sort) : m_sort(sort) {}
    bool understand(const std::string &text, int64_t &number) const;
    bool understandChoice(const std::string &text, int64_t &number) const;
    bool understandNorm(const std::string &text) const;
    bool isStep(int64_t number) const;
    std::string bound(int64_t number) const;

    Sort m_sort;
    int64_t m_least = 0;
    int64_t m_most = 0;
    bool m_hex = false;
    std::vector<int64_t> m_steps;
    std::vector<Choice> m_choices;
    Words m_words; /* what can be typed, in addition */
    Words m_sizes;
    std::string m_what;
    Words m_missing; /* names that this module does not have */
    std::string m_whyMissing;
};

/* A video norm as it is typed. False when it is none. */
struct Norm {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t rate = 0;
};
bool parseNorm(const std::string &text, Norm &norm);

/* "0x2800", with at least so many digits */
std::string inHex(uint64_t number, int digits = 4);
/* "2 s", "200 ms" */
std::string shownTime(std::chrono::milliseconds time);

} // namespace tool::ctl

#endif
