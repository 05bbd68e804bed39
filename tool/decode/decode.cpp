#include "tool/decode/decode.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "tool/complain.h"
#include "tool/console.h"
#include "tool/exit_status.h"

namespace tool {

namespace {

/* A file that is read, or standard input. */
class Source {
  public:
    explicit Source(const std::string &path)
        : m_own(!path.empty() && path != "-"),
          m_fd(m_own ? open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY) : STDIN_FILENO) {}
    ~Source() {
        if (m_own && m_fd >= 0)
            close(m_fd);
    }
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    bool isOpen() const { return m_fd >= 0; }
    ssize_t read(char *buffer, size_t size) const {
        ssize_t count = 0;
        do
            count = ::read(m_fd, buffer, size);
        while (count < 0 && errno == EINTR);
        return count;
    }

  private:
    const bool m_own;
    const int m_fd;
};

int cannotRead(const std::string &path) {
    complain("cannot read " + (path.empty() || path == "-" ? "standard input" : path) + ": " +
             std::strerror(errno));
    return EXIT_USAGE;
}

// False when nobody reads the output any more.
bool print(TrafficPrinter &printer, const decode::InputReader &reader,
           const std::vector<decode::InputItem> &items) {
    printer.setStart(reader.Start());
    std::string text;
    for (const decode::InputItem &item : items)
        text += printer.line(item);
    return writeAll(STDOUT_FILENO, text);
}

} // namespace

int runDecode(const DecodeOptions &options, const TrafficLook &look) {
    const Source source(options.file);
    if (!source.isOpen())
        return cannotRead(options.file);
    decode::InputReader reader(options.form, options.direction);
    TrafficPrinter printer(look);
    char buffer[65536];
    ssize_t count = 0;
    while ((count = source.read(buffer, sizeof buffer)) > 0) {
        std::vector<decode::InputItem> items;
        reader.Feed(buffer, static_cast<size_t>(count), items);
        if (!print(printer, reader, items))
            return EXIT_REFUSED;
    }
    if (count < 0)
        return cannotRead(options.file);
    std::vector<decode::InputItem> items;
    reader.Finish(items);
    const bool printed = print(printer, reader, items);
    return printed && !printer.hasMalformed() ? EXIT_DONE : EXIT_REFUSED;
}

} // namespace tool
