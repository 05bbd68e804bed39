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

std::string nameOf(const std::string &path) {
    return path.empty() || path == "-" ? "standard input" : path;
}

int cannotRead(const std::string &path) {
    complain("cannot read " + nameOf(path) + ": " + std::strerror(errno));
    return EXIT_USAGE;
}

/* Shows what it is fed. */
class Decoder {
  public:
    Decoder(const DecodeOptions &options, const TrafficLook &look)
        : m_reader(options.form, options.direction), m_printer(look) {}

    /* False when nobody reads the output any more. */
    bool feed(const char *data, size_t size) {
        std::vector<decode::InputItem> items;
        m_reader.Feed(data, size, items);
        return print(items);
    }
    /* Returns the exit status. */
    int finish(const std::string &path) {
        std::vector<decode::InputItem> items;
        m_reader.Finish(items);
        const bool printed = print(items);
        if (!m_any)
            complain("there was nothing to decode in " + nameOf(path));
        return printed && !m_printer.hasMalformed() ? EXIT_DONE : EXIT_REFUSED;
    }

  private:
    bool print(const std::vector<decode::InputItem> &items) {
        m_any = m_any || !items.empty();
        m_printer.setStart(m_reader.Start());
        std::string text;
        for (const decode::InputItem &item : items)
            text += m_printer.line(item);
        return writeAll(STDOUT_FILENO, text);
    }

    decode::InputReader m_reader;
    TrafficPrinter m_printer;
    bool m_any = false;
};

int decodeFile(const std::string &path, const DecodeOptions &options, const TrafficLook &look) {
    const Source source(path);
    if (!source.isOpen())
        return cannotRead(path);
    Decoder decoder(options, look);
    char buffer[65536];
    ssize_t count = 0;
    while ((count = source.read(buffer, sizeof buffer)) > 0)
        if (!decoder.feed(buffer, static_cast<size_t>(count)))
            return EXIT_REFUSED;
    return count < 0 ? cannotRead(path) : decoder.finish(path);
}

int decodeBytes(DecodeOptions options, const TrafficLook &look) {
    std::string text;
    for (const std::string &byte : options.input)
        text += byte + " ";
    options.form = decode::InputForm::Hex;
    Decoder decoder(options, look);
    return decoder.feed(text.data(), text.size()) ? decoder.finish("") : EXIT_REFUSED;
}

// Empty for a byte as it is typed: two hex digits that are no file's name.
std::string whyNoByte(const std::string &word) {
    if (word.size() != 2 || word.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return "\"" + word + "\" is no byte in hex";
    return access(word.c_str(), F_OK) == 0 ? "\"" + word + "\" is a file" : "";
}

std::string whyNoBytes(const std::vector<std::string> &words) {
    for (const std::string &word : words)
        if (const std::string why = whyNoByte(word); !why.empty())
            return why;
    return "";
}

} // namespace

int runDecode(const DecodeOptions &options, const TrafficLook &look) {
    if (options.input.empty())
        return decodeFile("", options, look);
    const std::string why = whyNoBytes(options.input);
    if (why.empty())
        return decodeBytes(options, look);
    if (options.input.size() == 1)
        return decodeFile(options.input[0], options, look);
    complain("give one file, or bytes as two hex digits each; " + why);
    return EXIT_USAGE;
}

} // namespace tool
