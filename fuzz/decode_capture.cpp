// The decoder's own form of captures. The input is a text; its bytes also make records that are written and
// read again.
#include "decode/capture.h"
#include "fuzz/input.h"
#include "fuzz/law.h"

namespace {

using decode::Capture;
using decode::CaptureReader;
using decode::CaptureRecord;
using decode::Direction;
using decode::Microseconds;

constexpr long long LAST_UTC = 253402300799; // the last second of the year 9999
constexpr long long SECOND = 1000000;

bool IsLine(const std::string &text) {
    return text.find('\n') == std::string::npos;
}

void CheckRecord(const CaptureRecord &record, Microseconds earliest) {
    LAW(record.time >= earliest && record.time.count() >= 0);
    if (record.sort == CaptureRecord::Sort::Data)
        LAW(!record.bytes.empty() && record.remark.empty());
    else
        LAW(record.bytes.empty() && IsLine(record.remark));
}

void CheckError(const std::string &error) {
    LAW(error.compare(0, 5, "line ") == 0 && error.size() > 8 && IsLine(error));
}

std::string Write(const Capture &capture) {
    std::string text = decode::CaptureText(capture.head);
    for (const CaptureRecord &record : capture.records) {
        const std::string line = decode::CaptureText(record);
        LAW(!line.empty() && line.back() == '\n' && IsLine(line.substr(0, line.size() - 1)));
        text += line;
    }
    return text;
}

void CheckSame(const CaptureRecord &a, const CaptureRecord &b) {
    LAW(a.sort == b.sort && a.time == b.time && a.bytes == b.bytes && a.remark == b.remark);
    LAW(a.sort != CaptureRecord::Sort::Data || a.direction == b.direction);
}

void CheckSame(const Capture &a, const Capture &b) {
    LAW(a.head.started == b.head.started && a.head.port == b.head.port && a.head.baud == b.head.baud);
    LAW(a.records.size() == b.records.size());
    for (size_t i = 0; i < a.records.size(); ++i)
        CheckSame(a.records[i], b.records[i]);
}

Capture ReadBack(const std::string &text) {
    Capture capture;
    std::string error;
    LAW(decode::IsCapture(text));
    LAW(decode::ReadCapture(text, capture, error));
    return capture;
}

/** What was read can be written, and is then read as the same; what was written so is written the same again.
 */
void CheckReadable(const std::string &text) {
    Capture capture;
    std::string error;
    const bool right = decode::ReadCapture(text, capture, error);
    Microseconds latest{0};
    for (const CaptureRecord &record : capture.records) {
        CheckRecord(record, latest);
        (void)decode::BaudOf(record);
        latest = record.time;
    }
    if (!right) {
        CheckError(error);
        return;
    }
    LAW(decode::IsCapture(text));
    const std::string written = Write(capture);
    const Capture again = ReadBack(written);
    LAW(Write(again) == written);
    for (CaptureRecord &record : capture.records) {
        for (char &c : record.remark)
            c = static_cast<unsigned char>(c) < ' ' || static_cast<unsigned char>(c) > '~' ? '?' : c;
    }
    LAW(capture.records.size() == again.records.size());
    for (size_t i = 0; i < capture.records.size(); ++i)
        CheckSame(capture.records[i], again.records[i]);
}

/** Line by line, going on behind wrong lines. */
void CheckLines(const std::string &text) {
    CaptureReader reader;
    Microseconds latest{0};
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        CaptureRecord record;
        const CaptureReader::Result result = reader.Line(text.substr(at, end - at), record);
        at = end;
        if (result == CaptureReader::Result::Wrong)
            CheckError(reader.Error());
        if (result != CaptureReader::Result::Record)
            continue;
        CheckRecord(record, latest);
        latest = record.time;
    }
}

/** Records made of the input's bytes survive being written and read. */
void CheckWritable(fuzz::Input input) {
    constexpr unsigned rates[] = {0, 9600, 19200, 38400};
    Capture capture;
    capture.head.baud = rates[input.Byte() % 4];
    capture.head.started = Microseconds(input.Word() * SECOND + input.Word() % SECOND);
    Microseconds time{0};
    while (!input.Empty()) {
        CaptureRecord record;
        const uint8_t sort = input.Byte();
        time += Microseconds(1 + input.Byte() * 4099);
        record.time = time;
        const fuzz::Span bytes = input.Take(1 + sort / 4 % 32);
        if (bytes.size == 0)
            break;
        if (sort % 4 != 3) {
            record.direction = sort % 2 == 0 ? Direction::ToCamera : Direction::FromCamera;
            record.bytes.assign(bytes.bytes, bytes.bytes + bytes.size);
        } else {
            record.sort = CaptureRecord::Sort::Remark;
            for (size_t i = 0; i < bytes.size; ++i)
                record.remark += static_cast<char>('!' + bytes.bytes[i] % 90);
        }
        capture.records.push_back(record);
    }
    CheckSame(capture, ReadBack(Write(capture)));
}

void CheckUtc(fuzz::Input input) {
    const unsigned long long word = static_cast<unsigned long long>(input.Word()) << 32 | input.Word();
    const Microseconds time(
        static_cast<long long>(word % static_cast<unsigned long long>(LAST_UTC * SECOND)));
    const auto back = decode::ParseUtc(decode::UtcText(time));
    LAW(back.has_value() && *back == time);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string text(bytes, bytes + size);
    CheckReadable(text);
    CheckLines(text);
    CheckReadable("# viscacam capture 1\n" + text);
    const auto utc = decode::ParseUtc(text);
    if (utc)
        LAW(decode::ParseUtc(decode::UtcText(*utc)) == utc);
    CheckWritable(fuzz::Input(bytes, size));
    CheckUtc(fuzz::Input(bytes, size));
    return 0;
}
