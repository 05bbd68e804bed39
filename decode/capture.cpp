#include "decode/capture.h"

#include <cstdio>

#include "decode/text.h"
#include "decode/words.h"

namespace decode {
namespace {

constexpr char kFormat[] = "# viscacam capture ";
constexpr char kVersion[] = "1";
constexpr std::size_t kFractionDigits = 6;
constexpr std::size_t kMostSecondDigits = 9; // thirty years
constexpr unsigned kMostBaud = 100000000;

const char *MarkOf(const CaptureRecord &record) {
    if (record.sort == CaptureRecord::Sort::Remark)
        return " ! ";
    return record.direction == Direction::ToCamera ? " > " : " < ";
}

std::string TimeText(Microseconds time) {
    char text[40];
    const long long count = time.count() < 0 ? 0 : static_cast<long long>(time.count());
    std::snprintf(text, sizeof text, "%lld.%06lld", count / 1000000, count % 1000000);
    return text;
}

/// Whether `text` begins with `start`; then it is taken off.
bool TakeStart(std::string &text, const std::string &start) {
    if (text.compare(0, start.size(), start) != 0)
        return false;
    text.erase(0, start.size());
    return true;
}

std::optional<unsigned> BaudFrom(const std::string &text) {
    const std::optional<long long> number = WholeNumber(text);
    if (!number || *number == 0 || *number > kMostBaud)
        return std::nullopt;
    return static_cast<unsigned>(*number);
}

/// "12.5" as microseconds.
std::optional<Microseconds> ParseSeconds(const std::string &text) {
    const std::size_t point = text.find('.');
    const std::string whole = text.substr(0, point);
    std::string fraction = point == std::string::npos ? "0" : text.substr(point + 1);
    if (fraction.size() > kFractionDigits || whole.size() > kMostSecondDigits)
        return std::nullopt;
    const std::optional<long long> seconds = WholeNumber(whole);
    fraction.resize(WholeNumber(fraction) ? kFractionDigits : 0, '0');
    const std::optional<long long> micros = WholeNumber(fraction);
    if (!seconds || !micros)
        return std::nullopt;
    return Microseconds(*seconds * 1000000 + *micros);
}

/// "81 09 FF": two digits a byte, blanks between. False when it is anything else, or nothing.
bool ParseBytes(const std::string &text, Bytes &bytes) {
    for (const std::string &word : WordsOf(text)) {
        if (word.size() != 2 || !AppendHex(word, bytes))
            return false;
    }
    return !bytes.empty();
}

} // namespace

std::string CaptureText(const CaptureHead &head) {
    std::string text = std::string(kFormat) + kVersion + "\n";
    if (head.started)
        text += "# started " + UtcText(*head.started) + "\n";
    if (!head.port.empty())
        text += "# port " + Printable(head.port) + "\n";
    if (head.baud != 0)
        text += "# baud " + std::to_string(head.baud) + "\n";
    return text;
}

std::string CaptureText(const CaptureRecord &record) {
    const bool remark = record.sort == CaptureRecord::Sort::Remark;
    if (!remark && record.bytes.empty())
        return "";
    return TimeText(record.time) + MarkOf(record) +
           (remark ? Printable(record.remark) : HexText(record.bytes.data(), record.bytes.size())) + "\n";
}

bool IsCapture(const std::string &text) {
    return text.compare(0, sizeof kFormat - 1, kFormat) == 0;
}

CaptureReader::Result CaptureReader::Wrong(const std::string &why) {
    error_ = "line " + std::to_string(line_) + ": " + why;
    return Result::Wrong;
}

CaptureReader::Result CaptureReader::Line(const std::string &line, CaptureRecord &record) {
    ++line_;
    std::string text = WithoutEnd(line);
    if (!named_) {
        if (line_ > 1 || !TakeStart(text, kFormat))
            return Wrong(std::string("no capture: the first line is not \"") + kFormat + kVersion + "\"");
        if (text != kVersion)
            return Wrong("this is version " + Printable(text) + " of the format; only " + kVersion +
                         " is known");
        named_ = true;
        return Result::Nothing;
    }
    if (WordsOf(text).empty())
        return Result::Nothing;
    return text[0] == '#' ? Comment(text) : Entry(text, record);
}

CaptureReader::Result CaptureReader::Comment(const std::string &line) {
    std::string text = line;
    if (begun_)
        return Result::Nothing;
    if (TakeStart(text, "# started ")) {
        head_.started = ParseUtc(text);
        return head_.started ? Result::Nothing : Wrong("\"" + Printable(text) + "\" is no time in UTC");
    }
    if (TakeStart(text, "# port ")) {
        head_.port = text;
    } else if (TakeStart(text, "# baud ")) {
        const std::optional<unsigned> baud = BaudFrom(text);
        if (!baud)
            return Wrong("\"" + Printable(text) + "\" is no rate");
        head_.baud = *baud;
    }
    return Result::Nothing;
}

CaptureReader::Result CaptureReader::Entry(const std::string &line, CaptureRecord &record) {
    const std::size_t blank = line.find(' ');
    const std::optional<Microseconds> time = ParseSeconds(line.substr(0, blank));
    if (!time)
        return Wrong("it does not begin with a time in seconds");
    if (*time < latest_)
        return Wrong("its time is before that of the line above");
    const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
    const char mark = rest.empty() ? '\0' : rest[0];
    if ((mark != '>' && mark != '<' && mark != '!') || (rest.size() > 1 && rest[1] != ' '))
        return Wrong("behind the time stands none of > < !");
    CaptureRecord found;
    found.time = *time;
    found.direction = mark == '<' ? Direction::FromCamera : Direction::ToCamera;
    if (mark == '!') {
        found.sort = CaptureRecord::Sort::Remark;
        found.remark = rest.size() > 2 ? rest.substr(2) : "";
    } else if (!ParseBytes(rest.substr(1), found.bytes)) {
        return Wrong("its bytes are not pairs of hex digits");
    }
    latest_ = *time;
    begun_ = true;
    record = std::move(found);
    return Result::Record;
}

bool ReadCapture(const std::string &text, Capture &capture, std::string &error) {
    capture = Capture();
    CaptureReader reader;
    std::size_t at = 0;
    do {
        const std::size_t end = text.find('\n', at);
        CaptureRecord record;
        const CaptureReader::Result result =
            reader.Line(text.substr(at, end == std::string::npos ? end : end - at), record);
        capture.head = reader.Head();
        if (result == CaptureReader::Result::Wrong) {
            error = reader.Error();
            return false;
        }
        if (result == CaptureReader::Result::Record)
            capture.records.push_back(std::move(record));
        at = end == std::string::npos ? text.size() : end + 1;
    } while (at < text.size());
    return true;
}

std::optional<unsigned> BaudOf(const CaptureRecord &record) {
    std::string text = record.remark;
    if (record.sort != CaptureRecord::Sort::Remark || !TakeStart(text, "baud "))
        return std::nullopt;
    return BaudFrom(text);
}

} // namespace decode
