#include "tool/ctl/grammar.h"

#include <algorithm>
#include <set>

#include "tool/ctl/table.h"
#include "tool/module_types.h"

namespace tool::ctl {

namespace {

using Place = Argument::Place;

constexpr size_t USAGE_COLUMNS = 46;

bool beginsWith(const std::string &text, const std::string &beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

Words wordsOf(const Row &row) {
    return commandsOf(row.words).front();
}

// How many words of the row are the first ones of these.
size_t wordsInCommon(const Words &row, const Words &typed) {
    size_t count = 0;
    while (count < row.size() && count < typed.size() && row[count] == typed[count])
        ++count;
    return count;
}

// The row all of whose words were typed, the longest one.
const Row *findRow(const Words &typed) {
    const Row *best = nullptr;
    size_t most = 0;
    forEachRow([&](const Row &row) {
        const Words words = wordsOf(row);
        if (words.size() > most && wordsInCommon(words, typed) == words.size()) {
            best = &row;
            most = words.size();
        }
    });
    return best;
}

bool isForModule(const Row &row, uint32_t moduleType) {
    return moduleType == 0 || (row.traits & KOVA_ONLY) == 0 || isKova(moduleType);
}

// What may stand behind the words so far, of all rows.
Words nextWords(const Words &typed, uint32_t moduleType) {
    std::set<std::string> next;
    forEachRow([&](const Row &row) {
        const Words words = wordsOf(row);
        if (isForModule(row, moduleType) && words.size() > typed.size() &&
            wordsInCommon(words, typed) == typed.size())
            next.insert(words[typed.size()]);
    });
    return Words(next.begin(), next.end());
}

[[noreturn]] void refuseUnknown(const Words &typed, uint32_t moduleType) {
    size_t known = 0;
    forEachRow([&](const Row &row) { known = std::max(known, wordsInCommon(wordsOf(row), typed)); });
    if (known == 0)
        throw UsageError("no command is called \"" + typed[0] + "\"; \"help\" shows them all");
    const Words begin(typed.begin(), typed.begin() + static_cast<long>(known));
    const std::string what =
        known == typed.size() ? "say more" : "\"" + typed[known] + "\" is not known here";
    throw UsageError(joined(begin) + ": " + what + "; use " + listed(nextWords(begin, moduleType)));
}

const Argument *findNamed(const Row &row, const std::string &name) {
    for (const Argument &argument : row.arguments)
        if (argument.name == name && (argument.place == Place::keyed || argument.place == Place::flag))
            return &argument;
    return nullptr;
}

Words namesOf(const Row &row) {
    Words names;
    for (const Argument &argument : row.arguments) {
        if (argument.place == Place::keyed)
            names.push_back(argument.name + "=");
        if (argument.place == Place::flag)
            names.push_back("--" + argument.name);
    }
    return names;
}

/* Takes the words behind a row's own, one after the other. */
class ArgumentParser {
  public:
    ArgumentParser(const Row &row, uint32_t moduleType) : m_row(row), m_moduleType(moduleType) {}

    void take(const std::string &word) {
        if (m_waiting != nullptr)
            setWaiting(word);
        else if (!takeNamed(word))
            takePlaced(word);
    }

    Arguments finish() {
        if (m_waiting != nullptr)
            fail("--" + m_waiting->name + " needs a value; use " + m_waiting->domain(m_moduleType).allowed());
        for (const Argument &argument : m_row.arguments)
            if (isMissing(argument))
                refuseMissing(argument);
        if ((m_row.traits & NEEDS_A_KEY) != 0 && m_arguments.empty())
            fail("say what to set; use " + listed(namesOf(m_row)));
        return m_arguments;
    }

    /* What the next word may be about, for completion. */
    const Argument *waiting() const { return m_waiting; }
    const Argument *nextPlaced() const {
        size_t place = 0;
        for (const Argument &argument : m_row.arguments) {
            if (argument.place == Place::list)
                return &argument;
            if ((argument.place == Place::needed || argument.place == Place::optional) && place++ == m_placed)
                return &argument;
        }
        return nullptr;
    }

  private:
    [[noreturn]] void fail(const std::string &why) const { throw UsageError(m_row.words + ": " + why); }

    void set(const Argument &argument, const std::string &text) {
        try {
            const Value value = argument.domain(m_moduleType).parse(text);
            if (argument.place == Place::list)
                m_arguments.append(value);
            else
                m_arguments.set(argument.name, value);
        } catch (const UsageError &wrong) {
            fail((argument.name == m_row.words ? "" : argument.name + ": ") + wrong.what());
        }
    }
    void setWaiting(const std::string &word) {
        set(*m_waiting, word);
        m_waiting = nullptr;
    }

    // "name=value", "--name=value", "--name value", "--flag", "flag"
    bool takeNamed(const std::string &word) {
        const bool dashed = beginsWith(word, "--");
        const size_t equals = word.find('=');
        const size_t from = dashed ? 2 : 0;
        const std::string name = word.substr(from, equals == std::string::npos ? equals : equals - from);
        const Argument *argument = findNamed(m_row, name);
        if (argument == nullptr)
            return refuseUnknownName(name, dashed, equals != std::string::npos);
        if (argument->place == Place::flag) {
            if (equals != std::string::npos)
                fail("--" + name + " takes no value");
            m_arguments.set(name, {word, 1});
        } else if (equals != std::string::npos) {
            set(*argument, word.substr(equals + 1));
        } else if (dashed) {
            m_waiting = argument;
        } else {
            fail(name + " needs a value: " + name + "=VALUE; use " +
                 argument->domain(m_moduleType).allowed());
        }
        return true;
    }
    bool refuseUnknownName(const std::string &name, bool dashed, bool hasValue) const {
        const Words names = namesOf(m_row);
        if (dashed || (hasValue && !names.empty()))
            fail("\"" + name + "\" is not known here; use " +
                 (names.empty() ? m_row.usage(m_moduleType, true) : listed(names)));
        return false;
    }

    void takePlaced(const std::string &word) {
        const Argument *argument = nextPlaced();
        if (argument == nullptr)
            fail("\"" + word + "\" is not understood; use " + m_row.usage(m_moduleType, true));
        set(*argument, word);
        ++m_placed;
    }
    bool isMissing(const Argument &argument) const {
        if (argument.place == Place::list)
            return m_arguments.list().empty();
        return (argument.place == Place::needed || argument.together) && !m_arguments.has(argument.name);
    }
    [[noreturn]] void refuseMissing(const Argument &argument) const {
        const std::string allowed = argument.domain(m_moduleType).allowed();
        if (!argument.together)
            fail("a value is missing: " + argument.name + ", " + allowed);
        fail(argument.name + "= is missing, " + allowed + "; " + listed(namesOf(m_row), "and") +
             " are set together");
    }

    const Row &m_row;
    const uint32_t m_moduleType;
    Arguments m_arguments;
    const Argument *m_waiting = nullptr; /* whose value comes next */
    size_t m_placed = 0;
};

Words valuesFor(const Row &row, const Words &before, const std::string &begun, uint32_t moduleType,
                bool &file) {
    ArgumentParser parser(row, moduleType);
    for (const std::string &word : before)
        parser.take(word);
    const size_t equals = begun.find('=');
    if (equals != std::string::npos) {
        const Argument *named = findNamed(row, begun.substr(0, equals));
        Words words;
        if (named != nullptr)
            for (const std::string &value : named->domain(moduleType).completions())
                words.push_back(named->name + "=" + value);
        return words;
    }
    const Argument *argument = parser.waiting() != nullptr ? parser.waiting() : parser.nextPlaced();
    Words words;
    if (argument != nullptr) {
        words = argument->domain(moduleType).completions();
        file = argument->domain(moduleType).isFile();
    }
    if (parser.waiting() == nullptr)
        for (const std::string &name : namesOf(row))
            words.push_back(name);
    return words;
}

std::string padded(std::string text, size_t columns) {
    text.resize(std::max(text.size() + 1, columns), ' ');
    return text;
}

std::string rowLine(const Row &row, uint32_t moduleType) {
    const std::string usage = "  " + row.usage(moduleType, true);
    const bool tooLong = usage.size() >= USAGE_COLUMNS;
    return (tooLong ? usage + "\n" + std::string(USAGE_COLUMNS, ' ') : padded(usage, USAGE_COLUMNS)) +
           row.help + "\n";
}

std::string rowInFull(const Row &row, uint32_t moduleType) {
    std::string text = row.usage(moduleType, true) + "\n    " + row.help + "\n";
    for (const Argument &argument : row.arguments)
        if (argument.place != Place::flag)
            text += "    " + argument.name + ": " + argument.domain(moduleType).allowed() + "\n";
    if ((row.traits & KOVA_ONLY) != 0)
        text += "    Kova modules only\n";
    return text + "    Example: " + row.examples.front() + "\n";
}

} // namespace

Call parseCommand(const Words &words, uint32_t moduleType) {
    const Row *row = findRow(words);
    if (row == nullptr)
        refuseUnknown(words, moduleType);
    const size_t own = wordsOf(*row).size();
    // "zoom up": what follows may be meant as a word, of which there are more than the row's values
    if (words.size() > own && row->arguments.empty() && !nextWords(wordsOf(*row), moduleType).empty())
        refuseUnknown(words, moduleType);
    if (!isForModule(*row, moduleType))
        throw UsageError(row->words + ": only Kova modules have it");
    ArgumentParser parser(*row, moduleType);
    for (size_t i = own; i < words.size(); ++i)
        parser.take(words[i]);
    return {row, parser.finish(), joined(words)};
}

Completion complete(const std::string &line, uint32_t moduleType) {
    const Unfinished unfinished = unfinishedCommandOf(line);
    if (unfinished.comment)
        return {};
    Completion completion = {unfinished.begun, nextWords(unfinished.words, moduleType)};
    const Row *row = findRow(unfinished.words);
    if (row != nullptr) {
        const Words behind(unfinished.words.begin() + static_cast<long>(wordsOf(*row).size()),
                           unfinished.words.end());
        try {
            for (const std::string &word :
                 valuesFor(*row, behind, unfinished.begun, moduleType, completion.file))
                completion.words.push_back(word);
        } catch (const UsageError &) {
            // what stands before is wrong already
        }
    }
    std::set<std::string> fitting;
    for (const std::string &word : completion.words)
        if (beginsWith(word, unfinished.begun))
            fitting.insert(word);
    completion.words.assign(fitting.begin(), fitting.end());
    return completion;
}

std::string overview(uint32_t moduleType) {
    std::string text;
    for (const Subject &subject : subjects()) {
        std::string rows;
        for (const Row &row : subject.rows)
            rows += isForModule(row, moduleType) ? rowLine(row, moduleType) : "";
        if (!rows.empty())
            text += subject.title + "\n" + rows;
    }
    return text;
}

std::string explain(const Words &words, uint32_t moduleType) {
    if (words.empty())
        return overview(moduleType);
    std::string text;
    forEachRow([&](const Row &row) {
        if (wordsInCommon(wordsOf(row), words) == words.size())
            text += rowInFull(row, moduleType);
    });
    if (text.empty())
        throw UsageError("no command is called \"" + joined(words) + "\"; \"help\" shows them all");
    return text;
}

} // namespace tool::ctl
