#include "tool/ctl/shell.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include <histedit.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "tool/console.h"
#include "tool/ctl/grammar.h"
#include "tool/ctl/runner.h"
#include "tool/ctl/script.h"
#include "tool/exit_status.h"

namespace tool::ctl {

namespace {

namespace fs = std::filesystem;

constexpr int HISTORY_LINES = 1000;
constexpr size_t USUAL_COLUMNS = 80;

// $XDG_STATE_HOME or ~/.local/state; empty when there is no home.
fs::path stateFolder() {
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/')
        return fs::path(state) / "viscacam";
    const char *home = std::getenv("HOME");
    return home != nullptr && *home == '/' ? fs::path(home) / ".local/state/viscacam" : fs::path();
}

void print(const std::string &text) {
    (void)writeAll(STDOUT_FILENO, text);
}

/* The lines of earlier sessions too, in a file of the user's. */
class LineHistory {
  public:
    LineHistory() : m_history(history_init()) {
        HistEvent event;
        history(m_history, &event, H_SETSIZE, HISTORY_LINES);
        history(m_history, &event, H_SETUNIQUE, 1);
        const fs::path folder = stateFolder();
        std::error_code trouble;
        if (folder.empty() || (fs::create_directories(folder, trouble), trouble))
            return;
        m_path = folder / "ctl_history";
        history(m_history, &event, H_LOAD, m_path.c_str());
    }
    ~LineHistory() { history_end(m_history); }
    LineHistory(const LineHistory &) = delete;
    LineHistory &operator=(const LineHistory &) = delete;

    History *get() const { return m_history; }
    void add(const std::string &line) {
        HistEvent event;
        history(m_history, &event, H_ENTER, line.c_str());
        if (!m_path.empty())
            history(m_history, &event, H_SAVE, m_path.c_str());
    }

  private:
    History *m_history;
    std::string m_path;
};

Words filesBeginningWith(const std::string &begun) {
    const size_t slash = begun.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : begun.substr(0, slash + 1);
    Words files;
    std::error_code trouble;
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, trouble), end; !trouble && entry != end;
         entry.increment(trouble)) {
        std::string name = folder + entry->path().filename().string();
        if (entry->is_directory(trouble))
            name += '/';
        if (name.compare(0, begun.size(), begun) == 0)
            files.push_back(name);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string commonBeginning(const Words &words) {
    std::string common = words.front();
    for (const std::string &word : words) {
        const auto differ = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
        common.erase(differ.first, common.end());
    }
    return common;
}

size_t terminalColumns() {
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : USUAL_COLUMNS;
}

std::string inColumns(const Words &words) {
    size_t widest = 0;
    for (const std::string &word : words)
        widest = std::max(widest, word.size() + 2);
    const size_t columns = std::max<size_t>(terminalColumns() / widest, 1);
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        const bool last = i + 1 == words.size() || (i + 1) % columns == 0;
        text += words[i] + (last ? "\n" : std::string(widest - words[i].size(), ' '));
    }
    return text;
}

/* A line editor whose waiting for keys also ends by a Ctrl-C, and shows notes as they come. */
class Editor {
  public:
    Editor(Bench &bench, const std::string &name);
    ~Editor() {
        m_bench.follower.onNote(nullptr);
        el_end(m_editor);
        close(m_noted);
    }
    Editor(const Editor &) = delete;
    Editor &operator=(const Editor &) = delete;

    /* Empty at the end of input. Throws Interrupted. In a Scope. */
    std::optional<std::string> read();

  private:
    static Editor &of(EditLine *editor) {
        void *self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<Editor *>(self);
    }
    static char *prompt(EditLine *editor) { return const_cast<char *>(of(editor).m_prompt.c_str()); }
    static int readKey(EditLine *editor, wchar_t *key) { return of(editor).waitForKey(key); }
    static unsigned char completeWord(EditLine *editor, int) { return of(editor).complete(); }

    int waitForKey(wchar_t *key);
    int takeKey(wchar_t *key);
    void showNotes();
    unsigned char complete();
    unsigned char insert(const std::string &rest);

    Bench &m_bench;
    const std::string m_prompt;
    LineHistory m_history;
    EditLine *m_editor;
    int m_noted = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    bool m_interrupted = false;
    std::mbstate_t m_decoding = {};
};

Editor::Editor(Bench &bench, const std::string &name)
    : m_bench(bench), m_prompt(name + "> "), m_editor(el_init("viscacam", stdin, stdout, stderr)) {
    if (m_editor == nullptr)
        throw Refused("the terminal cannot be used");
    el_set(m_editor, EL_CLIENTDATA, this);
    el_set(m_editor, EL_PROMPT, prompt);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_HIST, history, m_history.get());
    el_set(m_editor, EL_GETCFN, readKey);
    el_set(m_editor, EL_ADDFN, "viscacam-complete", "complete a command or a value", completeWord);
    el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(m_editor, nullptr);
    el_set(m_editor, EL_BIND, "^I", "viscacam-complete", nullptr);
    m_bench.follower.onNote([this] {
        const uint64_t one = 1;
        (void)!write(m_noted, &one, sizeof one);
    });
}

std::optional<std::string> Editor::read() {
    m_interrupted = false;
    int count = 0;
    const char *typed = el_gets(m_editor, &count);
    if (m_interrupted) {
        print("^C\n");
        throw Interrupted();
    }
    if (typed == nullptr || count <= 0)
        return std::nullopt;
    std::string line(typed, static_cast<size_t>(count));
    while (!line.empty() && line.back() == '\n')
        line.pop_back();
    if (line.find_first_not_of(" \t") != std::string::npos)
        m_history.add(line);
    return line;
}

int Editor::waitForKey(wchar_t *key) {
    for (;;) {
        pollfd sources[] = {
            {STDIN_FILENO, POLLIN, 0}, {m_bench.interrupt.descriptor(), POLLIN, 0}, {m_noted, POLLIN, 0}};
        if (poll(sources, 3, -1) < 0 && errno != EINTR)
            return -1;
        if (sources[1].revents != 0 && m_bench.interrupt.take()) {
            m_interrupted = true;
            errno = EINTR;
            return -1;
        }
        if (sources[2].revents != 0)
            showNotes();
        if (sources[0].revents != 0)
            return takeKey(key);
    }
}

// A character may have several bytes; what is none is left out.
int Editor::takeKey(wchar_t *key) {
    for (;;) {
        char byte = 0;
        const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
        if (count <= 0)
            return static_cast<int>(count);
        const size_t used = std::mbrtowc(key, &byte, 1, &m_decoding);
        if (used == static_cast<size_t>(-1))
            m_decoding = {};
        else if (used != static_cast<size_t>(-2))
            return 1;
    }
}

void Editor::showNotes() {
    uint64_t count = 0;
    (void)!::read(m_noted, &count, sizeof count);
    const std::vector<std::string> notes = m_bench.follower.takeNotes();
    if (notes.empty())
        return;
    print("\r\x1b[K");
    for (const std::string &note : notes)
        m_bench.screen.note(note);
    el_set(m_editor, EL_REFRESH);
}

unsigned char Editor::insert(const std::string &rest) {
    return el_insertstr(m_editor, rest.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
}

unsigned char Editor::complete() {
    const LineInfo *line = el_line(m_editor);
    const std::string typed(line->buffer, line->cursor);
    Completion completion = ctl::complete(typed, m_bench.moduleType);
    if (completion.file)
        completion.words = filesBeginningWith(completion.begun);
    if (completion.words.empty())
        return CC_ERROR;
    const std::string common = commonBeginning(completion.words);
    if (completion.words.size() == 1) {
        const bool goesOn = common.back() == '=' || common.back() == '/';
        return insert(common.substr(completion.begun.size()) + (goesOn ? "" : " "));
    }
    if (common.size() > completion.begun.size())
        return insert(common.substr(completion.begun.size()));
    print("\n" + inColumns(completion.words));
    return CC_REDISPLAY;
}

// Returns whether the person has not had enough yet.
bool carryOutLine(Bench &bench, const std::string &line, int &status) {
    Script script(bench, false);
    try {
        script.carryOut(readLine(line, "", bench.moduleType));
        status = script.status();
    } catch (const UsageError &wrong) {
        bench.screen.note(wrong.what());
        status = EXIT_USAGE;
    } catch (const Quit &) {
        return false;
    }
    return true;
}

} // namespace

int runShell(Session &session, const std::string &name) {
    std::setlocale(LC_CTYPE, "");
    Bench &bench = session.bench;
    // Whenever it comes: at the latest the next prompt takes it. A second one before that ends the shell.
    const Interrupt::Scope breakable(bench.interrupt);
    print(session.place + ". \"help\" shows the commands, Tab completes, \"quit\" ends.\n");
    Editor editor(bench, name);
    int status = EXIT_DONE;
    for (;;) {
        try {
            const std::optional<std::string> line = editor.read();
            if (!line)
                print("\n");
            if (!line || !carryOutLine(bench, *line, status))
                return status;
        } catch (const Interrupted &) {
            stopDrives(bench);
        }
    }
}

} // namespace tool::ctl
