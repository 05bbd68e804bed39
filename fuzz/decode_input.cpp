// Traffic in every form that an engineer may have. The input:
//
//   0  the form: 'd' to be found out, 'h' hex, 'l' log, 'c' capture, 'r' raw
//   1  the direction of bytes that do not say: '-' not given, '>' to the camera, '<' from the camera
//   2  a letter: 'a' is 0; it is read in pieces of so many bytes, 'a' all at once
//   3  the traffic
#include "decode/capture.h"
#include "decode/input.h"
#include "fuzz/input.h"
#include "fuzz/law.h"

#include <cstdio>

namespace {

using decode::Bytes;
using decode::Direction;
using decode::InputForm;
using decode::InputItem;
using decode::InputReader;
using decode::Microseconds;
using decode::Piece;

constexpr size_t LONGEST_PIECE = 257;

struct Manner {
    InputForm form;
    std::optional<Direction> direction;
    size_t step;
};

Manner MannerOf(fuzz::Input &input) {
    constexpr InputForm forms[] = {InputForm::Detect, InputForm::Hex, InputForm::Log, InputForm::Capture,
                                   InputForm::Raw};
    const std::string letters = "dhlcr";
    Manner manner{};
    manner.form = forms[std::min(letters.find(static_cast<char>(input.Byte())), size_t{5}) % 5];
    const uint8_t direction = input.Byte();
    if (direction == '>')
        manner.direction = Direction::ToCamera;
    if (direction == '<')
        manner.direction = Direction::FromCamera;
    manner.step = (input.Byte() + 256U - 'a') % 256;
    return manner;
}

struct Result {
    InputForm form;
    std::vector<InputItem> items;
    std::optional<Microseconds> start;
};

Result Read(const std::string &text, const Manner &manner, size_t step) {
    InputReader reader(manner.form, manner.direction);
    Result result;
    for (size_t at = 0; at < text.size(); at += step)
        reader.Feed(text.data() + at, std::min(step, text.size() - at), result.items);
    reader.Finish(result.items);
    result.form = reader.Form();
    if (reader.Start())
        result.start = reader.Start()->since_1970;
    return result;
}

bool IsPrintable(const std::string &text) {
    for (const char c : text) {
        if (c < ' ' || c > '~')
            return false;
    }
    return true;
}

void CheckSame(const InputItem &a, const InputItem &b) {
    LAW(a.sort == b.sort && a.line == b.line && a.time == b.time && a.text == b.text);
    LAW(a.piece.sort == b.piece.sort && a.piece.direction == b.piece.direction);
    LAW(a.piece.offset == b.piece.offset && a.piece.time == b.piece.time && a.piece.end == b.piece.end);
    LAW(a.piece.bytes == b.piece.bytes);
}

void CheckSame(const Result &a, const Result &b) {
    LAW(a.form == b.form && a.start == b.start && a.items.size() == b.items.size());
    for (size_t i = 0; i < a.items.size(); ++i)
        CheckSame(a.items[i], b.items[i]);
}

/** Reading it in pieces makes no difference, unless less is known when the form has to be found out. */
void CheckPieceByPiece(const Result &whole, const Result &pieces, const Manner &manner) {
    if (manner.form != InputForm::Detect || whole.form == pieces.form)
        CheckSame(whole, pieces);
}

/** A packet written as a line is read as this packet. */
void CheckAsLine(const Piece &piece) {
    if (piece.sort != Piece::Sort::Packet)
        return;
    std::string line = piece.direction == Direction::ToCamera ? ">" : "<";
    for (const uint8_t byte : piece.bytes) {
        char text[8];
        (void)snprintf(text, sizeof(text), " %02X", byte);
        line += text;
    }
    const Result again = Read(line + "\n", {InputForm::Hex, {}, 0}, line.size() + 1);
    LAW(again.items.size() == 1 && again.items[0].sort == InputItem::Sort::Piece);
    LAW(again.items[0].piece.direction == piece.direction && again.items[0].piece.bytes == piece.bytes);
    LAW(again.items[0].piece.sort == Piece::Sort::Packet);
}

/** Pieces of a direction, and remarks, are in order; a piece comes when it ends and tells when it began. */
size_t OrderOf(const InputItem &item) {
    if (item.sort != InputItem::Sort::Piece)
        return 0;
    return item.piece.direction == Direction::ToCamera ? 1 : 2;
}

void CheckItems(const Result &result) {
    Microseconds latest[3] = {};
    for (const InputItem &item : result.items) {
        LAW(result.form == InputForm::Raw ? item.line == 0 : item.line > 0);
        if (item.time) {
            LAW(*item.time >= latest[OrderOf(item)]);
            latest[OrderOf(item)] = *item.time;
        }
        if (item.sort == InputItem::Sort::Piece) {
            LAW(!item.piece.bytes.empty() && item.piece.bytes.size() <= LONGEST_PIECE);
            CheckAsLine(item.piece);
        } else {
            LAW(IsPrintable(item.text) && (item.sort == InputItem::Sort::Remark || !item.text.empty()));
        }
    }
}

Bytes All(const Result &result, std::optional<Direction> direction) {
    Bytes all;
    for (const InputItem &item : result.items) {
        if (item.sort != InputItem::Sort::Piece || (direction && item.piece.direction != *direction))
            continue;
        LAW(item.piece.offset == all.size());
        all.insert(all.end(), item.piece.bytes.begin(), item.piece.bytes.end());
    }
    return all;
}

/** Nothing is lost of raw bytes. */
void CheckRaw(const Result &result, const std::string &text) {
    LAW(All(result, {}) == Bytes(text.begin(), text.end()));
    for (const InputItem &item : result.items)
        LAW(item.sort == InputItem::Sort::Piece && !item.time);
}

/** Nor of a capture. */
void CheckCapture(const Result &result, const std::string &text) {
    decode::Capture capture;
    std::string error;
    if (!decode::ReadCapture(text, capture, error))
        return;
    for (const Direction direction : {Direction::ToCamera, Direction::FromCamera}) {
        Bytes all;
        for (const decode::CaptureRecord &record : capture.records) {
            if (record.direction == direction)
                all.insert(all.end(), record.bytes.begin(), record.bytes.end());
        }
        LAW(All(result, direction) == all);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fuzz::Input input(bytes, size);
    const Manner manner = MannerOf(input);
    const fuzz::Span rest = input.Rest();
    const std::string text(rest.bytes, rest.bytes + rest.size);
    const Result result = Read(text, manner, text.size() + 1);
    LAW(manner.form == InputForm::Detect || result.form == manner.form);
    if (manner.step > 0)
        CheckPieceByPiece(result, Read(text, manner, manner.step), manner);
    CheckItems(result);
    if (result.form == InputForm::Raw)
        CheckRaw(result, text);
    if (result.form == InputForm::Capture)
        CheckCapture(result, text);
    return 0;
}
