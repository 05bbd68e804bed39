#include "sim/faults.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace sim {

namespace {

enum class Value { none, probability, number, whole, word };

constexpr double REQUIRED = -1; // no value of its own: the user must give one

struct Row {
    Fault fault;
    const char *name;
    Value kind;
    double least;
    double most;
    double initial;
    const char *unit;
    const char *effect;
};

constexpr double DAY = 86400;

const Row ROWS[] = {
    {Fault::dropTx, "drop-tx", Value::probability, 0, 1, REQUIRED, "probability",
     "bytes are lost on the way to the camera"},
    {Fault::dropRx, "drop-rx", Value::probability, 0, 1, REQUIRED, "probability",
     "bytes of replies are lost"},
    {Fault::dropFf, "drop-ff", Value::probability, 0, 1, REQUIRED, "probability",
     "replies lose their terminator"},
    {Fault::dup, "dup", Value::probability, 0, 1, REQUIRED, "probability", "bytes of replies are doubled"},
    {Fault::flip, "flip", Value::probability, 0, 1, REQUIRED, "probability",
     "bytes of replies have one bit changed"},
    {Fault::split, "split", Value::number, 1, 10000, REQUIRED, "milliseconds",
     "every reply has a gap inside"},
    {Fault::merge, "merge", Value::number, 1, 10000, 50, "milliseconds",
     "replies are held for this long, then come in one read"},
    {Fault::noise, "noise", Value::probability, 0, 1, REQUIRED, "probability",
     "in front of a reply come 1 to 8 bytes of noise: random, zeros or 0xFF"},
    {Fault::mute, "mute", Value::number, 0, DAY, 0, "seconds, 0 for until cleared",
     "the camera neither hears nor speaks"},
    {Fault::boot, "boot", Value::number, 0, DAY, REQUIRED, "seconds",
     "the camera has no supply for this long, then it boots"},
    {Fault::noAck, "no-ack", Value::probability, 0, 1, 1, "probability", "acknowledgements are left out"},
    {Fault::noCompletion, "no-completion", Value::probability, 0, 1, 1, "probability",
     "completions are left out"},
    {Fault::late, "late", Value::number, 0, DAY, 2.5, "seconds", "completions come this much later"},
    {Fault::reorder, "reorder", Value::probability, 0, 1, 1, "probability",
     "completion comes before acknowledgement"},
    {Fault::wrongSocket, "wrong-socket", Value::whole, 0, 15, 3, "socket", "completions name this socket"},
    {Fault::address, "address", Value::whole, 1, 7, 2, "address",
     "replies come from the camera of this address"},
    {Fault::error, "error", Value::whole, 0, 255, REQUIRED, "error code",
     "commands and inquiries are answered by this error"},
    {Fault::errorUnasked, "error-unasked", Value::whole, 0, 255, REQUIRED, "error code",
     "this error is sent once, unasked"},
    {Fault::busy, "busy", Value::none, 0, 0, 0, "", "every third command finds the buffer full"},
    {Fault::lateAnswer, "late-answer", Value::number, 0, DAY, 6.5, "seconds",
     "inquiries are answered this much later"},
    {Fault::dupAnswer, "dup-answer", Value::probability, 0, 1, 1, "probability",
     "inquiries are answered twice"},
    {Fault::powerCut, "power-cut", Value::whole, 1, 1e6, 1, "which command from now",
     "the supply fails for 0.2 s between acknowledgement and completion of this command"},
    {Fault::standby, "standby", Value::none, 0, 0, 0, "", "the camera goes to standby by itself"},
    {Fault::rate, "rate", Value::whole, 1200, 115200, REQUIRED, "bit/s",
     "the camera listens at another rate"},
    {Fault::hangUp, "hang-up", Value::none, 0, 0, 0, "", "the adapter is pulled"},
    {Fault::replug, "replug", Value::number, 0, DAY, 1, "seconds",
     "the adapter is pulled, and plugged in again after this time"},
    {Fault::flood, "flood", Value::none, 0, 0, 0, "",
     "acknowledgements that nobody asked for, at line speed"},
    {Fault::length, "length", Value::whole, 1, 1048576, REQUIRED, "bytes",
     "in front of a reply comes a packet of this length without terminator"},
    {Fault::stall, "stall", Value::number, 0, DAY, 0, "seconds, 0 for until cleared",
     "the camera stops reading its line"},
    {Fault::report, "report", Value::word, 0, 0, 0, "random",
     "reports that nobody asked for, of every low nibble and length, on half of the line's time"},
    {Fault::transferAbort, "transfer-abort", Value::whole, 1, 1e6, 2, "block",
     "a Kova module cancels a transfer at the end of this block of it"},
    {Fault::transferChecksum, "transfer-checksum", Value::probability, 0, 1, REQUIRED, "probability",
     "blocks of a Kova module's transfers have a wrong checksum"},
    {Fault::upgradeStuck, "upgrade-stuck", Value::none, 0, 0, 0, "",
     "a Kova module that flashes does not come to an end"},
    {Fault::upgradeState, "upgrade-state", Value::whole, 0, 255, 9, "state",
     "a Kova module that is asked for its upgrade state tells this one"},
};

const Row &rowOf(Fault fault) {
    for (const Row &row : ROWS) {
        if (row.fault == fault)
            return row;
    }
    throw std::logic_error("a fault without a row");
}

std::string shown(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

std::string meaning(const Row &row) {
    if (row.kind == Value::none)
        return "no value";
    if (row.kind == Value::word)
        return std::string("the word ") + row.unit;
    return std::string(row.unit) + ", " + shown(row.least) + " to " + shown(row.most);
}

std::string initialText(const Row &row) {
    if (row.kind == Value::word)
        return row.unit;
    return row.kind != Value::none && row.initial >= 0 ? shown(row.initial) : "";
}

std::string allNames() {
    std::string names;
    for (const Row &row : ROWS)
        names += std::string(names.empty() ? "" : ", ") + row.name;
    return names;
}

// A number that fills the whole text: decimal, or hexadecimal with 0x.
double number(const std::string &text, const std::string &what, double least, double most) {
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(value >= least && value <= most))
        throw std::invalid_argument(what + " \"" + text + "\" is no number from " + shown(least) + " to " +
                                    shown(most));
    return value;
}

double wholeNumber(const std::string &text, const std::string &what, double least, double most) {
    const double value = number(text, what, least, most);
    if (value != std::floor(value))
        throw std::invalid_argument(what + " \"" + text + "\" is no whole number");
    return value;
}

// Cuts the part behind the mark off the text; nothing if the mark is not there.
std::optional<std::string> cutBehind(std::string &text, const char *mark) {
    const size_t at = text.find(mark);
    if (at == std::string::npos)
        return std::nullopt;
    std::string behind = text.substr(at + std::string(mark).size());
    text.resize(at);
    return behind;
}

void parseTimes(FaultOrder &order, std::string text) {
    const std::optional<std::string> end = cutBehind(text, "..");
    order.start = number(text, "start time", 0, DAY);
    if (end)
        order.end = number(*end, "end time", order.start, DAY);
}

double parseValue(const Row &row, const std::optional<std::string> &text) {
    const std::string allowed = std::string(row.name) + " takes " + meaning(row);
    if (!text && row.initial < 0)
        throw std::invalid_argument("fault " + allowed + "; none is given");
    if (!text)
        return row.initial;
    if (row.kind == Value::word && *text == row.unit)
        return row.initial;
    if (row.kind == Value::none || row.kind == Value::word)
        throw std::invalid_argument("fault " + allowed);
    const std::string what = "fault " + allowed + ":";
    return row.kind == Value::whole ? wholeNumber(*text, what, row.least, row.most)
                                    : number(*text, what, row.least, row.most);
}

} // namespace

const std::vector<FaultType> &knownFaults() {
    static const std::vector<FaultType> faults = [] {
        std::vector<FaultType> list;
        for (const Row &row : ROWS) {
            list.push_back({row.name, meaning(row), initialText(row), row.effect});
        }
        return list;
    }();
    return faults;
}

Fault faultByName(const std::string &name) {
    for (const Row &row : ROWS) {
        if (name == row.name)
            return row.fault;
    }
    throw std::invalid_argument("no fault is called \"" + name + "\"; known are " + allNames());
}

std::string faultName(Fault fault) {
    return rowOf(fault).name;
}

FaultOrder parseFault(const std::string &text) {
    std::string rest = text;
    const std::optional<std::string> times = cutBehind(rest, "@");
    const std::optional<std::string> count = cutBehind(rest, "#");
    const std::optional<std::string> value = cutBehind(rest, "=");
    FaultOrder order;
    order.fault = faultByName(rest);
    order.text = text;
    order.value = parseValue(rowOf(order.fault), value);
    if (count)
        order.count = static_cast<unsigned long>(wholeNumber(*count, "count", 1, 1e9));
    if (times)
        parseTimes(order, *times);
    return order;
}

unsigned long Faults::set(const FaultOrder &order) {
    m_entries.insert_or_assign(order.fault, Entry{order, ++m_serials});
    m_dice.insert_or_assign(order.fault, Random(m_seed * 1000003u + static_cast<uint64_t>(order.fault)));
    return m_serials;
}

bool Faults::isCurrent(Fault fault, unsigned long serial) const {
    const auto entry = m_entries.find(fault);
    return entry != m_entries.end() && entry->second.serial == serial;
}

unsigned long Faults::begin(Fault fault) {
    Entry &entry = m_entries.at(fault);
    entry.begun = true;
    return entry.serial;
}

void Faults::remove(Fault fault) {
    m_entries.erase(fault);
}

bool Faults::active(Fault fault) const {
    const auto entry = m_entries.find(fault);
    return entry != m_entries.end() && entry->second.begun;
}

double Faults::value(Fault fault) const {
    const auto entry = m_entries.find(fault);
    return entry != m_entries.end() ? entry->second.order.value : 0;
}

bool Faults::strikes(Fault fault) {
    if (!active(fault))
        return false;
    Entry &entry = m_entries.at(fault);
    if (rowOf(fault).kind == Value::probability && dice(fault).unit() >= entry.order.value)
        return false;
    if (++entry.struck == entry.order.count)
        entry.begun = false; // over: still listed, its last strike may be under way
    return true;
}

Random &Faults::dice(Fault fault) {
    return m_dice.try_emplace(fault, Random(m_seed)).first->second;
}

std::vector<Fault> Faults::present() const {
    std::vector<Fault> faults;
    for (const auto &[fault, entry] : m_entries)
        faults.push_back(fault);
    return faults;
}

std::vector<std::string> Faults::texts() const {
    std::vector<std::string> texts;
    for (const auto &[fault, entry] : m_entries) {
        const bool over = entry.order.count != 0 && entry.struck >= entry.order.count;
        if (!over)
            texts.push_back(entry.order.text);
    }
    return texts;
}

} // namespace sim
