// A line of hex text has up to four parts, each but the bytes left out at will: a time ("12.5 ms" of a trace,
// or that of the day), the direction, the bytes, and words for people. A dump's line has an offset in front
// instead, and its packets run on from line to line.
#include <algorithm>

#include "decode/input_parser.h"
#include "decode/text.h"
#include "decode/utc.h"

namespace decode {
namespace {

constexpr char kBlanks[] = " \t";
constexpr char kBetweenBytes[] = " \t,:;-{}()[]\"'";
constexpr std::size_t kMostWhole = 12; // digits of a time in milliseconds

struct DirectionWord {
    const char *word;
    Direction direction;
};
constexpr DirectionWord kDirectionWords[] = {
    {">", Direction::ToCamera},          {"->", Direction::ToCamera},
    {"-->", Direction::ToCamera},        {"=>", Direction::ToCamera},
    {">>", Direction::ToCamera},         {"tx", Direction::ToCamera},
    {"send", Direction::ToCamera},       {"sent", Direction::ToCamera},
    {"out", Direction::ToCamera},        {"to", Direction::ToCamera},
    {"write", Direction::ToCamera},      {"->camera", Direction::ToCamera},
    {"to-camera", Direction::ToCamera},  {"<", Direction::FromCamera},
    {"<-", Direction::FromCamera},       {"<--", Direction::FromCamera},
    {"<=", Direction::FromCamera},       {"<<", Direction::FromCamera},
    {"rx", Direction::FromCamera},       {"recv", Direction::FromCamera},
    {"received", Direction::FromCamera}, {"in", Direction::FromCamera},
    {"from", Direction::FromCamera},     {"read", Direction::FromCamera},
    {"<-camera", Direction::FromCamera}, {"from-camera", Direction::FromCamera},
};

std::optional<Direction> DirectionOf(std::string word) {
    if (!word.empty() && word.back() == ':')
        word.pop_back();
    for (char &c : word)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    for (const DirectionWord &known : kDirectionWords)
        if (word == known.word)
            return known.direction;
    return std::nullopt;
}

/// Takes the first word off.
std::string TakeWord(std::string &text) {
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    const std::string word = text.substr(begin, end - begin);
    text.erase(0, end);
    return word;
}

/// "->81 09" and "tx:81 09" have the word for the direction directly in front of the bytes.
std::optional<Direction> TakeDirection(std::string &text) {
    std::string rest = text;
    if (const std::optional<Direction> direction = DirectionOf(TakeWord(rest))) {
        text = rest;
        return direction;
    }
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    std::size_t end = std::min(text.find_first_not_of("<>-=", begin), text.size());
    if (end == begin)
        end = std::min(text.find(':', begin), text.size() - 1) + 1;
    const std::optional<Direction> direction = DirectionOf(text.substr(begin, end - begin));
    if (direction)
        text.erase(0, end);
    return direction;
}

bool IsHexNumber(const std::string &word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) { return HexDigit(c) >= 0; });
}

/// "12.5 ms" of a trace.
std::optional<Microseconds> TakeTime(std::string &text) {
    std::string rest = text;
    const std::string number = TakeWord(rest);
    if (TakeWord(rest) != "ms")
        return std::nullopt;
    const std::size_t point = number.find('.');
    std::string fraction = point == std::string::npos ? "0" : number.substr(point + 1);
    fraction.resize(3, '0');
    const std::optional<long long> whole = WholeNumber(number.substr(0, point));
    const std::optional<long long> micros = WholeNumber(fraction);
    if (!whole || !micros || number.substr(0, point).size() > kMostWhole)
        return std::nullopt;
    text = rest;
    return Microseconds(*whole * 1000 + *micros);
}

/// ".789" behind a second. A comma also separates bytes: a fraction's has three or six digits behind it.
Microseconds TakeFraction(const std::string &text, std::size_t &at) {
    if (at >= text.size() || (text[at] != '.' && text[at] != ','))
        return Microseconds(0);
    const std::size_t end = std::min(text.find_first_not_of("0123456789", at + 1), text.size());
    std::string digits = text.substr(at + 1, end - at - 1);
    if (digits.empty() || (text[at] == ',' && digits.size() != 3 && digits.size() != 6))
        return Microseconds(0);
    digits.resize(6, '0');
    at = end;
    return Microseconds(WholeNumber(digits).value_or(0));
}

/// Whether a time may end here, which moves behind what ends it. What a colon or a dash joins is all bytes.
bool TakeEndOfTime(const std::string &text, char bracket, std::size_t &at) {
    const auto isOf = [&](const char *characters, std::size_t where) {
        return where < text.size() && std::string(characters).find(text[where]) != std::string::npos;
    };
    if (bracket != '\0' && (at >= text.size() || text[at++] != bracket))
        return false;
    const bool mark = isOf(",;", at) || (isOf(":", at) && isOf(kBlanks, at + 1));
    const bool arrow = isOf("<>=", at) || (isOf("-", at) && isOf("->", at + 1));
    if (bracket == '\0' && !mark && !arrow && !isOf(kBlanks, at))
        return false;
    at += mark ? 1 : 0;
    return text.find_first_not_of(kBlanks, at) != std::string::npos;
}

/// The time of the day that a terminal program puts in front: "12:34:56.789", "[12:34:56]", behind a date or
/// not.
std::optional<Microseconds> TakeTimeOfDay(std::string &text) {
    std::size_t at = std::min(text.find_first_not_of(kBlanks), text.size());
    const char bracket = HasForm(text, at, "[") ? ']' : HasForm(text, at, "(") ? ')' : '\0';
    at += bracket != '\0' ? 1 : 0;
    if (HasForm(text, at, "dddd-dd-dd ") || HasForm(text, at, "dddd-dd-ddT"))
        at += 11;
    const std::size_t hours = HasForm(text, at, "dd:dd:dd") ? 2 : 1;
    if (hours == 1 && !HasForm(text, at, "d:dd:dd"))
        return std::nullopt;
    const auto number = [&](std::size_t offset, std::size_t size) {
        return static_cast<int>(WholeNumber(text.substr(at + offset, size)).value_or(0));
    };
    const std::optional<Microseconds> time =
        TimeOf(1970, 1, 1, number(0, hours), number(hours + 1, 2), number(hours + 4, 2), 0);
    at += hours + 6;
    const Microseconds fraction = TakeFraction(text, at);
    if (!time || !TakeEndOfTime(text, bracket, at))
        return std::nullopt;
    text.erase(0, at);
    return *time + fraction;
}

std::string WithoutComment(std::string text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool begins = text[i] == '#' || text[i] == ';' || text.compare(i, 2, "//") == 0;
        if (begins && (i == 0 || text[i - 1] == ' ' || text[i - 1] == '\t'))
            return text.substr(0, i);
    }
    return text;
}

/// One word as bytes: "81", "0x81", "81h", "8109FF", "\x81\x09"; a single digit is a byte too.
bool ParseWord(std::string word, Bytes &bytes) {
    if (word.size() > 1 && (word.back() == 'h' || word.back() == 'H'))
        word.pop_back();
    const bool marked = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    if (marked)
        word.erase(0, 2);
    if (word.size() == 1)
        word.insert(0, "0");
    return AppendHex(word, bytes);
}

/// False with the word that is no byte.
bool ParseBytes(std::string text, Bytes &bytes, std::string &wrong) {
    for (std::size_t at = 0; (at = text.find("\\x", at)) != std::string::npos;)
        text.replace(at, 2, "  ");
    for (char &c : text)
        if (std::string(kBetweenBytes).find(c) != std::string::npos)
            c = ' ';
    for (const std::string &word : WordsOf(text)) {
        if (ParseWord(word, bytes))
            continue;
        wrong = word;
        return false;
    }
    return true;
}

struct HexLine {
    std::optional<Microseconds> time;
    std::optional<Microseconds> time_of_day;
    std::optional<Direction> direction;
    bool dump = false;
    Bytes bytes;
    std::string wrong; // the word that is no byte
};

/// "00000010: 8109 ..  text" and "00000010  81 09 ..  |text|"; also seven digits, as octal dumps have.
bool TakeOffset(std::string &text) {
    std::string rest = text;
    std::string word = TakeWord(rest);
    const bool colon = !word.empty() && word.back() == ':';
    if (colon)
        word.pop_back();
    if (!IsHexNumber(word) || word.size() < 7 || word.size() > 8 || WithoutEnd(rest).empty())
        return false;
    const bool wide = rest.compare(0, 2, "  ") == 0;
    if (!colon && !wide && word.size() != 7)
        return false;
    text = rest.substr(0, colon ? rest.find("  ", 1) : rest.find('|'));
    return true;
}

/// A trace has its words behind the bytes, two blanks away.
void CutWords(std::string &text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    const std::size_t end = begin == std::string::npos ? begin : text.find("  ", begin);
    if (end != std::string::npos)
        text.erase(end);
}

HexLine TakeApart(const std::string &line) {
    HexLine found;
    std::string text = WithoutEnd(line);
    found.dump = TakeOffset(text);
    if (!found.dump) {
        found.time_of_day = TakeTimeOfDay(text);
        found.time = TakeTime(text);
        if (found.time)
            found.direction = TakeDirection(text);
        if (found.time && found.direction)
            CutWords(text);
        text = WithoutComment(text);
        if (!found.direction)
            found.direction = TakeDirection(text);
        if (!found.time_of_day)
            found.time_of_day = TakeTimeOfDay(text);
    }
    if (!ParseBytes(text, found.bytes, found.wrong))
        found.bytes.clear();
    return found;
}

class HexInput : public InputParser {
  public:
    explicit HexInput(std::optional<Direction> direction) : direction_(direction) {}

    void Line(const std::string &line, std::vector<InputItem> &out) override {
        ++line_;
        if (in_dump_ && IsLastOffset(line))
            return;
        HexLine found = TakeApart(line);
        if (!found.dump)
            streams_.Flush(out);
        in_dump_ = found.dump;
        if (found.time_of_day)
            found.time = SinceFirst(*found.time_of_day);
        if (found.time && (!latest_ || *found.time > *latest_))
            latest_ = found.time;
        const Place place{line_, latest_};
        if (!found.wrong.empty())
            out.push_back(
                WrongOf(place, "\"" + Printable(found.wrong.substr(0, 24)) + "\" is no byte in hex"));
        else if (!found.bytes.empty())
            streams_.Feed(found.direction ? found.direction : direction_, place, found.bytes, out);
        if (!found.dump)
            streams_.Flush(out);
    }
    void Finish(std::vector<InputItem> &out) override { streams_.Flush(out); }

  private:
    /// A dump ends in the offset behind its last byte.
    static bool IsLastOffset(const std::string &line) {
        const std::string text = WithoutEnd(line);
        return IsHexNumber(text) && (text.size() == 7 || text.size() == 8);
    }

    /// A step back of more than half a day is midnight.
    Microseconds SinceFirst(Microseconds time_of_day) {
        if (!first_time_)
            first_time_ = last_time_ = time_of_day;
        if (time_of_day + std::chrono::hours(12) < last_time_)
            days_ += std::chrono::hours(24);
        last_time_ = time_of_day;
        return days_ + time_of_day - *first_time_;
    }

    std::optional<Direction> direction_;
    Streams streams_{Direction::FromCamera};
    std::size_t line_ = 0;
    std::optional<Microseconds> latest_;
    std::optional<Microseconds> first_time_; // of the day
    Microseconds last_time_{0};
    Microseconds days_{0};
    bool in_dump_ = false;
};

} // namespace

bool IsHexLine(const std::string &line) {
    const HexLine found = TakeApart(line);
    return found.wrong.empty() && !found.bytes.empty();
}

std::unique_ptr<InputParser> NewHexInput(std::optional<Direction> direction) {
    return std::make_unique<HexInput>(direction);
}

} // namespace decode
