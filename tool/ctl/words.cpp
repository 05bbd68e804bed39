#include "tool/ctl/words.h"

namespace tool::ctl {

namespace {

/* Cuts a line; afterwards the state at its end can be asked. */
class Cutter {
  public:
    explicit Cutter(const std::string &line) {
        for (const char c : line) {
            if (m_comment)
                break;
            take(c);
        }
    }

    bool inQuotes() const { return m_quote != '\0'; }
    bool inComment() const { return m_comment; }
    bool inWord() const { return m_inWord; }
    const std::string &word() const { return m_word; }
    std::vector<Words> &commands() { return m_commands; }

    void endWord() {
        if (m_inWord)
            m_commands.back().push_back(m_word);
        m_inWord = false;
        m_word.clear();
    }

  private:
    void take(char c) {
        if (m_quote != '\0')
            takeQuoted(c);
        else if (c == '\'' || c == '"')
            beginQuote(c);
        else if (c == '#' && !m_inWord)
            m_comment = true;
        else if (c == ';')
            endCommand();
        else if (c == ' ' || c == '\t' || c == '\r')
            endWord();
        else
            append(c);
    }
    void takeQuoted(char c) {
        if (c == m_quote)
            m_quote = '\0';
        else
            m_word += c;
    }
    void beginQuote(char c) {
        m_quote = c;
        m_inWord = true;
    }
    void append(char c) {
        m_word += c;
        m_inWord = true;
    }
    void endCommand() {
        endWord();
        m_commands.emplace_back();
    }

    std::vector<Words> m_commands{Words()};
    std::string m_word;
    char m_quote = '\0';
    bool m_inWord = false;
    bool m_comment = false;
};

std::vector<Words> withoutEmpty(const std::vector<Words> &commands) {
    std::vector<Words> kept;
    for (const Words &command : commands)
        if (!command.empty())
            kept.push_back(command);
    return kept;
}

bool needsQuotes(const std::string &word) {
    return word.empty() || word[0] == '#' || word.find_first_of(" \t;'\"") != std::string::npos;
}

std::string quoted(const std::string &word) {
    const char quote = word.find('\'') == std::string::npos ? '\'' : '"';
    return quote + word + quote;
}

} // namespace

std::vector<Words> commandsOf(const std::string &line) {
    Cutter cutter(line);
    if (cutter.inQuotes())
        throw UsageError("a quote has no end");
    cutter.endWord();
    return withoutEmpty(cutter.commands());
}

std::vector<Words> commandsOf(const Words &arguments) {
    if (arguments.size() == 1)
        return commandsOf(arguments.front());
    std::vector<Words> commands{Words()};
    for (std::string word : arguments) {
        const bool ends = !word.empty() && word.back() == ';';
        if (ends)
            word.pop_back();
        if (!ends || !word.empty())
            commands.back().push_back(word);
        if (ends)
            commands.emplace_back();
    }
    return withoutEmpty(commands);
}

Unfinished unfinishedCommandOf(const std::string &line) {
    Cutter cutter(line);
    if (cutter.inComment())
        return {{}, "", true};
    return {cutter.commands().back(), cutter.inWord() ? cutter.word() : "", false};
}

std::string joined(const Words &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + (needsQuotes(word) ? quoted(word) : word);
    return text;
}

std::string listed(const Words &words, const char *last) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0)
            text += i + 1 == words.size() ? std::string(" ") + last + " " : ", ";
        text += words[i];
    }
    return text;
}

} // namespace tool::ctl
