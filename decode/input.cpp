#include "decode/input.h"

#include "decode/capture.h"
#include "decode/input_parser.h"
#include "decode/text.h"

namespace decode {
namespace {

constexpr std::size_t kMostUndecided = 65536;
constexpr Direction kNoise = Direction::FromCamera;

class CaptureInput : public InputParser {
  public:
    void Line(const std::string &line, std::vector<InputItem> &out) override {
        ++line_;
        CaptureRecord record;
        const CaptureReader::Result result = reader_.Line(line, record);
        if (result == CaptureReader::Result::Wrong)
            out.push_back(WrongOf({line_, latest_}, WithoutNumber(reader_.Error())));
        if (result != CaptureReader::Result::Record)
            return;
        latest_ = record.time;
        if (record.sort == CaptureRecord::Sort::Remark)
            out.push_back(RemarkOf({line_, latest_}, record.remark));
        else
            streams_.Feed(record.direction, {line_, latest_}, record.bytes, out);
    }
    void Finish(std::vector<InputItem> &out) override { streams_.Flush(out); }
    std::optional<InputStart> Start() const override {
        if (!reader_.Head().started)
            return std::nullopt;
        return InputStart{*reader_.Head().started, true};
    }

  private:
    static std::string WithoutNumber(const std::string &error) { return error.substr(error.find(": ") + 2); }

    CaptureReader reader_;
    Streams streams_{kNoise};
    std::size_t line_ = 0;
    Microseconds latest_{0};
};

class RawInput : public InputParser {
  public:
    explicit RawInput(std::optional<Direction> direction) : direction_(direction) {}
    void Line(const std::string &line, std::vector<InputItem> &out) override {
        streams_.Feed(direction_, {}, Bytes(line.begin(), line.end()), out);
    }
    void Finish(std::vector<InputItem> &out) override { streams_.Flush(out); }

  private:
    std::optional<Direction> direction_;
    Streams streams_{kNoise};
};

/// No text has these: control characters beside those that lay it out, and FE and FF.
bool IsRaw(const std::string &text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0xFE ||
            (byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' && byte != '\x1b'))
            return true;
    }
    return false;
}

InputForm FormOfLine(const std::string &line) {
    if (IsCapture(line))
        return InputForm::Capture;
    if (IsLogLine(line))
        return InputForm::Log;
    return IsHexLine(line) ? InputForm::Hex : InputForm::Detect;
}

std::unique_ptr<InputParser> NewParser(InputForm form, std::optional<Direction> direction) {
    switch (form) {
    case InputForm::Log:
        return NewLogInput();
    case InputForm::Capture:
        return NewCaptureInput();
    case InputForm::Raw:
        return NewRawInput(direction);
    default:
        return NewHexInput(direction);
    }
}

} // namespace

void Streams::Feed(std::optional<Direction> direction, const Place &place, const Bytes &bytes,
                   std::vector<InputItem> &out) {
    const Microseconds now = place.time.value_or(Microseconds(0));
    to_camera_.Age(now, out);
    from_camera_.Age(now, out);
    if (!direction)
        mixed_.Feed(place, bytes, out);
    else if (*direction == Direction::ToCamera)
        to_camera_.Feed(place, bytes, out);
    else
        from_camera_.Feed(place, bytes, out);
}

void Streams::Flush(std::vector<InputItem> &out) {
    to_camera_.Flush(out);
    from_camera_.Flush(out);
    mixed_.Flush(out);
}

InputItem RemarkOf(const Place &place, const std::string &text) {
    InputItem item;
    item.sort = InputItem::Sort::Remark;
    item.line = place.line;
    item.time = place.time;
    item.text = Printable(text);
    return item;
}

InputItem WrongOf(const Place &place, const std::string &why) {
    InputItem item = RemarkOf(place, why);
    item.sort = InputItem::Sort::Wrong;
    return item;
}

std::unique_ptr<InputParser> NewCaptureInput() {
    return std::make_unique<CaptureInput>();
}

std::unique_ptr<InputParser> NewRawInput(std::optional<Direction> direction) {
    return std::make_unique<RawInput>(direction);
}

InputReader::InputReader(InputForm form, std::optional<Direction> direction)
    : form_(form), direction_(direction) {
    if (form != InputForm::Detect)
        parser_ = NewParser(form, direction);
}

InputReader::~InputReader() = default;

void InputReader::Feed(const char *data, std::size_t size, std::vector<InputItem> &out) {
    if (size > 0)
        held_.append(data, size);
    if (parser_ == nullptr)
        Detect(false, out);
    if (parser_ != nullptr)
        TakeLines(out);
}

void InputReader::Finish(std::vector<InputItem> &out) {
    if (parser_ == nullptr)
        Detect(true, out);
    if (!held_.empty())
        parser_->Line(held_, out);
    held_.clear();
    parser_->Finish(out);
}

std::optional<InputStart> InputReader::Start() const {
    return parser_ == nullptr ? std::nullopt : parser_->Start();
}

void InputReader::Decide(InputForm form, std::vector<InputItem> &out) {
    form_ = form;
    parser_ = NewParser(form, direction_);
    TakeLines(out);
}

/// Looks at all that was held back, line by line; where nothing tells it is hex, whose reader complains.
void InputReader::Detect(bool ends, std::vector<InputItem> &out) {
    if (IsRaw(held_)) {
        Decide(InputForm::Raw, out);
        return;
    }
    std::size_t at = 0;
    while (at < held_.size()) {
        const std::size_t end = held_.find('\n', at);
        if (end == std::string::npos && !ends)
            break;
        const InputForm form = FormOfLine(held_.substr(at, end == std::string::npos ? end : end - at));
        if (form != InputForm::Detect) {
            Decide(form, out);
            return;
        }
        at = end == std::string::npos ? held_.size() : end + 1;
    }
    if (ends || held_.size() > kMostUndecided)
        Decide(InputForm::Hex, out);
}

void InputReader::TakeLines(std::vector<InputItem> &out) {
    if (form_ == InputForm::Raw) {
        parser_->Line(held_, out);
        held_.clear();
        return;
    }
    std::size_t at = 0;
    for (std::size_t end = held_.find('\n'); end != std::string::npos; end = held_.find('\n', at)) {
        parser_->Line(held_.substr(at, end - at), out);
        at = end + 1;
    }
    held_.erase(0, at);
}

const char *NameOf(InputForm form) {
    switch (form) {
    case InputForm::Hex:
        return "hex";
    case InputForm::Log:
        return "log";
    case InputForm::Capture:
        return "capture";
    case InputForm::Raw:
        return "raw";
    case InputForm::Detect:
        break;
    }
    return "detect";
}

} // namespace decode
