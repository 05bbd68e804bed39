#ifndef VISCACAM_TOOL_CTL_WORDS_H
#define VISCACAM_TOOL_CTL_WORDS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace tool::ctl {

/* What was typed cannot be meant; the text says what could. */
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Words = std::vector<std::string>;

/*
 * Cut a line into commands, which ';' separates, and those into words, which blanks separate. Single or
 * double quotes hold blanks, ';' and '#' together; '#' at the beginning of a word makes the rest a comment.
 * Empty commands are left out. Throws UsageError for a quote without its end.
 */
std::vector<Words> commandsOf(const std::string &line);

/*
 * The same for words that a shell has cut already: a word ";" or a ';' at the end of a word separates. A
 * single word is taken for a whole line.
 */
std::vector<Words> commandsOf(const Words &arguments);

/* The last command of a line that is still being typed: its complete words, and the one being typed. */
struct Unfinished {
    Words words;
    std::string begun;    /* may be empty */
    bool comment = false; /* nothing counts any more */
};
Unfinished unfinishedCommandOf(const std::string &line);

/* One text of several, with blanks between; a word that needs quotes gets them. */
std::string joined(const Words &words);

/* "a, b or c" */
std::string listed(const Words &words, const char *last = "or");

} // namespace tool::ctl

#endif
