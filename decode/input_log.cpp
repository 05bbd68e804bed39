// A line of the library's log is
//
//     2026-11-20 19:02:37 123456 packet.cpp          @fun:ViscaPrintPkt                 line:115
//     --[INFO]MESSAGE
//
// and a packet's message "send:ViscaPacket: 0x81 0x09 " or "recv:...". A byte that begins no packet has a
// line of its own, "unexpected byte[0x0]". What the library rejects it prints twice.
#include "decode/input_parser.h"
#include "decode/text.h"
#include "decode/utc.h"

namespace decode {
namespace {

constexpr char kTimeForm[] = "dddd-dd-dd dd:dd:dd dddddd ";
constexpr char kDump[] = "ViscaPacket:";
constexpr char kUnexpected[] = "unexpected byte[0x";
constexpr std::uint8_t kReportMark = 0x07;

std::optional<Microseconds> TimeOfLine(const std::string &line, std::size_t before) {
    for (std::size_t at = 0; at < before; ++at) {
        if (!HasForm(line, at, kTimeForm))
            continue;
        const auto number = [&](std::size_t offset, std::size_t size) {
            return static_cast<int>(WholeNumber(line.substr(at + offset, size)).value_or(0));
        };
        return TimeOf(number(0, 4), number(5, 2), number(8, 2), number(11, 2), number(14, 2), number(17, 2),
                      number(20, 6));
    }
    return std::nullopt;
}

/// A line taken apart; `level` is empty when it is none of the library's.
struct LogLine {
    std::optional<Microseconds> time;
    std::string level;
    std::string message;
};

LogLine TakeApart(const std::string &line) {
    LogLine found;
    const std::size_t function = line.find("@fun:");
    const std::size_t tag = function == std::string::npos ? function : line.find("--[", function);
    const std::size_t end = tag == std::string::npos ? tag : line.find(']', tag);
    if (end == std::string::npos)
        return found;
    found.time = TimeOfLine(line, function);
    found.level = line.substr(tag + 3, end - tag - 3);
    found.message = WithoutEnd(line.substr(end + 1));
    return found;
}

/// Bytes of a dump; false when something else is among them.
bool ParseDump(const std::string &text, Bytes &bytes) {
    for (const std::string &word : WordsOf(text))
        if (word.size() != 4 || word.compare(0, 2, "0x") != 0 || !AppendHex(word.substr(2), bytes))
            return false;
    return true;
}

/// What the library routes; all else it prints a second time, beside its complaint.
bool IsPrintedOnce(const Bytes &bytes) {
    if (bytes.size() < 3 || bytes.back() != 0xFF)
        return false;
    const unsigned kind = bytes[1] >> 4U;
    return kind == 0 ? (bytes[1] & 0x0FU) == kReportMark : kind >= 0x4 && kind <= 0x6;
}

class LogInput : public InputParser {
  public:
    void Line(const std::string &line, std::vector<InputItem> &out) override {
        ++line_;
        LogLine found = TakeApart(line);
        SetTime(found.time);
        const std::size_t dump = line.find(kDump);
        if (dump != std::string::npos)
            Dump(line, dump, out);
        else if (found.message.compare(0, sizeof kUnexpected - 1, kUnexpected) == 0)
            Unexpected(found.message.substr(sizeof kUnexpected - 1), out);
        else if (found.level == "ERROR" || found.level == "WARN" || found.level == "INFO")
            out.push_back(RemarkOf(Here(), found.level + " " + found.message));
    }
    void Finish(std::vector<InputItem> &out) override { streams_.Flush(out); }
    std::optional<InputStart> Start() const override {
        return start_ ? std::optional<InputStart>(InputStart{*start_, false}) : std::nullopt;
    }

  private:
    Place Here() const { return {line_, latest_}; }

    /// A line without a time has that of the line above; several threads log, and clocks are set back.
    void SetTime(std::optional<Microseconds> time) {
        if (!time)
            return;
        if (!start_)
            start_ = time;
        const Microseconds since = *time - *start_;
        if (!latest_ || since > *latest_)
            latest_ = since;
    }

    void Dump(const std::string &line, std::size_t at, std::vector<InputItem> &out) {
        const bool sent = at >= 5 && line.compare(at - 5, 5, "send:") == 0;
        Bytes bytes;
        if (!ParseDump(WithoutEnd(line.substr(at + sizeof kDump - 1)), bytes)) {
            out.push_back(WrongOf(Here(), "its bytes are not written as the library does"));
            return;
        }
        if (!sent && !rejected_.empty() && bytes == rejected_) {
            rejected_.clear();
            return;
        }
        if (!sent)
            rejected_ = IsPrintedOnce(bytes) ? Bytes() : bytes;
        streams_.Flush(out); // the noise before it
        streams_.Feed(sent ? Direction::ToCamera : Direction::FromCamera, Here(), bytes, out);
        streams_.Flush(out);
    }

    void Unexpected(const std::string &text, std::vector<InputItem> &out) {
        const std::string digits = text.substr(0, text.find(']'));
        Bytes bytes;
        if (AppendHex(digits.size() == 1 ? "0" + digits : digits, bytes))
            streams_.Feed(Direction::FromCamera, Here(), bytes, out);
    }

    Streams streams_{Direction::FromCamera};
    std::size_t line_ = 0;
    std::optional<Microseconds> start_;
    std::optional<Microseconds> latest_;
    Bytes rejected_; // printed once so far
};

} // namespace

bool IsLogLine(const std::string &line) {
    return !TakeApart(line).level.empty() || line.find(kDump) != std::string::npos;
}

std::unique_ptr<InputParser> NewLogInput() {
    return std::make_unique<LogInput>();
}

} // namespace decode
