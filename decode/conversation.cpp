#include <utility>

#include "decode/pattern.h"
#include "decode/table.h"
#include "decode/words.h"

// Two queues of open questions run side by side. A command waits for its acknowledgement, which gives it a
// socket, and then for that socket's completion; an inquiry waits for 90 50. The camera serves each kind in
// order. What never got its reply is forgotten when the host itself gives up, or else one lost byte would put
// every later reply to the wrong question.

namespace decode {
namespace {

constexpr Microseconds kCommandPatience{2000000};
constexpr Microseconds kInquiryPatience{6000000};
constexpr std::size_t kMostOpen = 16;
constexpr unsigned kMostStale = 256;
constexpr unsigned kLastSocket = 2;

constexpr std::uint8_t kSyntaxError = 0x02;
constexpr std::uint8_t kBufferFull = 0x03;
constexpr std::uint8_t kCancelled = 0x04;
constexpr std::uint8_t kNothingToCancel = 0x05;
constexpr std::uint8_t kNotExecutable = 0x41;

void Surprise(Meaning &meaning, const std::string &why) {
    meaning.text += why;
    meaning.surprise = true;
}

bool IsForFirstCamera(const Bytes &bytes) {
    return !bytes.empty() && (bytes[0] == 0x81 || bytes[0] == 0x71 || bytes[0] == 0x88);
}

/// The answer row of this form that fits best, or null.
const Row *FindAnswer(const Row &inquiry, Form form, const Bytes &bytes) {
    const Row *best = nullptr;
    for (const Row *answer : AnswersOf(inquiry))
        if (answer->form == form && Matches(answer->pattern, bytes.data(), bytes.size(), nullptr) &&
            (best == nullptr || IsMorePrecise(*answer, *best)))
            best = answer;
    return best;
}

bool FitsAnyAnswer(const Row *inquiry, const Bytes &bytes) {
    if (inquiry == nullptr)
        return false;
    for (const Row *answer : AnswersOf(*inquiry))
        if (Matches(answer->pattern, bytes.data(), bytes.size(), nullptr))
            return true;
    return false;
}

std::string AnswerText(const Row &answer, const Row &inquiry, const Bytes &question, const Bytes &bytes,
                       const std::string &segment) {
    Captures packet, asked;
    Matches(answer.pattern, bytes.data(), bytes.size(), &packet);
    Matches(inquiry.pattern, question.data(), question.size(), &asked);
    Values values;
    values.packet = &packet;
    values.question = &asked;
    values.segment = segment;
    return FillIn(answer.words, values);
}

std::string DataText(const Bytes &bytes) {
    return bytes.size() <= 3 ? "(no data)" : HexText(bytes.data() + 2, bytes.size() - 3);
}

} // namespace

Meaning Conversation::Next(Direction direction, Microseconds time, const std::uint8_t *bytes,
                           std::size_t size) {
    return Next(direction, time, size == 0 ? Bytes() : Bytes(bytes, bytes + size));
}

Meaning Conversation::Next(Direction direction, Microseconds time, const Bytes &bytes) {
    Meaning meaning = Explain(direction, bytes.data(), bytes.size());
    const long number = next_++;
    if (direction == Direction::ToCamera)
        Sent(meaning, {number, time, bytes, meaning.row, meaning.text, false, 0});
    else if (meaning.kind == Kind::Acknowledgement)
        Acknowledged(meaning, bytes[1] & 0x0FU);
    else if (meaning.kind == Kind::Completion)
        Completed(meaning, bytes[1] & 0x0FU);
    else if (meaning.kind == Kind::Error)
        Refused(meaning, bytes);
    else if (meaning.kind == Kind::Answer)
        Answered(meaning, time, bytes);
    else if (meaning.kind == Kind::Notice)
        ForgetCommands();
    return meaning;
}

void Conversation::Sent(Meaning &meaning, Open open) {
    if (!IsForFirstCamera(open.bytes) || meaning.row == nullptr)
        return;
    if (meaning.kind == Kind::Inquiry || !AnswersOf(*meaning.row).empty())
        OpenInquiry(meaning, std::move(open));
    else if (meaning.kind == Kind::Command)
        OpenCommand(meaning, std::move(open));
}

void Conversation::OpenCommand(Meaning &meaning, Open open) {
    while (!commands_.empty() &&
           (open.time - commands_.front().time > kCommandPatience || commands_.size() == kMostOpen)) {
        Surprise(meaning, "; no reply came to " + commands_.front().text);
        commands_.pop_front();
    }
    commands_.push_back(std::move(open));
}

void Conversation::OpenInquiry(Meaning &meaning, Open open) {
    while (!inquiries_.empty() &&
           (open.time - inquiries_.front().time > kInquiryPatience || inquiries_.size() == kMostOpen)) {
        Surprise(meaning, "; no answer came to " + inquiries_.front().text);
        lost_ = std::move(inquiries_.front());
        inquiries_.pop_front();
    }
    // A question that is asked again was given up: the baud-rate probe does so every half second.
    if (!inquiries_.empty() && inquiries_.back().bytes == open.bytes)
        inquiries_.pop_back();
    if (stale_ > 0) {
        --stale_;
        open.served = true;
        Surprise(meaning, "; the host takes an older answer for it");
    }
    if (meaning.kind == Kind::Control) // clears the interface
        ForgetCommands();
    NumberSegment(open);
    inquiries_.push_back(std::move(open));
}

void Conversation::Acknowledged(Meaning &meaning, unsigned socket) {
    if (socket == 0 || socket > kLastSocket)
        Surprise(meaning, ", a socket that no camera has");
    if (commands_.empty()) {
        Surprise(meaning, ", but no command is open");
        return;
    }
    if (sockets_[socket])
        Surprise(meaning, "; no completion came to " + sockets_[socket]->text);
    meaning.answers = commands_.front().number;
    sockets_[socket] = std::move(commands_.front());
    commands_.pop_front();
}

void Conversation::Completed(Meaning &meaning, unsigned socket) {
    std::optional<Open> done;
    if (sockets_[socket])
        done.swap(sockets_[socket]);
    if (done) {
        meaning.text += ": " + done->text;
        meaning.answers = done->number;
        return;
    }
    if (commands_.empty()) {
        Surprise(meaning, ", but no command has this socket");
        return;
    }
    meaning.answers = commands_.front().number;
    Surprise(meaning, ": " + commands_.front().text + ", which was not acknowledged");
    commands_.pop_front();
}

bool Conversation::CommandComesFirst(unsigned socket, std::uint8_t error) const {
    if (socket != 0 || error == kBufferFull || inquiries_.empty())
        return true;
    if (error == kNotExecutable || commands_.empty())
        return false;
    return commands_.front().number < inquiries_.front().number;
}

std::optional<Conversation::Open> Conversation::TakeCommand(unsigned socket, std::uint8_t error) {
    std::optional<Open> open;
    // An execution that ends early has a socket; a refusal comes in place of the acknowledgement.
    const bool executing = error == kCancelled || commands_.empty();
    if (executing) {
        if (socket != 0)
            open.swap(sockets_[socket]);
        return open;
    }
    open = std::move(commands_.front());
    commands_.pop_front();
    return open;
}

void Conversation::Refused(Meaning &meaning, const Bytes &bytes) {
    const unsigned socket = bytes[1] & 0x0FU;
    const std::uint8_t error = bytes[2];
    const bool to_inquiry = socket == 0 && error != kSyntaxError && error != kBufferFull;
    if (error == kNothingToCancel)
        return;
    if (CommandComesFirst(socket, error)) {
        if (const std::optional<Open> command = TakeCommand(socket, error)) {
            RefusedCommand(meaning, *command, to_inquiry);
            return;
        }
    }
    if (!inquiries_.empty()) {
        const Open inquiry = std::move(inquiries_.front());
        inquiries_.pop_front();
        RefusedInquiry(meaning, inquiry, to_inquiry);
        return;
    }
    if (const std::optional<Open> command = TakeCommand(socket, error)) {
        RefusedCommand(meaning, *command, to_inquiry);
        return;
    }
    Surprise(meaning, ", but nothing is open");
    if (to_inquiry)
        LeaveForNextInquiry(meaning, "");
}

void Conversation::RefusedCommand(Meaning &meaning, const Open &open, bool to_inquiry) {
    meaning.text += ": " + open.text;
    meaning.answers = open.number;
    if (to_inquiry && inquiries_.empty())
        LeaveForNextInquiry(meaning, "");
}

void Conversation::RefusedInquiry(Meaning &meaning, const Open &open, bool to_inquiry) {
    meaning.text += ": " + open.text;
    meaning.answers = open.number;
    if (!to_inquiry)
        Surprise(meaning, "; the host takes it for a command's result and waits on for the answer");
    else if (open.served)
        LeaveForNextInquiry(meaning, "");
}

/// The oldest open inquiry that the answer fits, or else the oldest of all. Those before it will not be
/// answered any more.
std::optional<Conversation::Open> Conversation::TakeInquiry(const Bytes &answer) {
    if (inquiries_.empty())
        return std::nullopt;
    std::size_t index = 0;
    while (index < inquiries_.size() && !FitsAnyAnswer(inquiries_[index].row, answer))
        ++index;
    if (index == inquiries_.size())
        index = 0;
    std::optional<Open> open = std::move(inquiries_[index]);
    inquiries_.erase(inquiries_.begin(), inquiries_.begin() + static_cast<std::ptrdiff_t>(index) + 1);
    return open;
}

void Conversation::Answered(Meaning &meaning, Microseconds time, const Bytes &bytes) {
    std::optional<Open> open = TakeInquiry(bytes);
    if (!open) {
        AnsweredUnasked(meaning, bytes);
        return;
    }
    // Where it does not fit the question but fits the one before, which got no answer, it is that one's, and
    // late.
    if (lost_ && !FitsAnyAnswer(open->row, bytes) && FitsAnyAnswer(lost_->row, bytes)) {
        Render(meaning, *lost_, bytes);
        lost_.reset();
        Surprise(meaning, ", late; the host takes it for the answer to " + open->text);
        open->served = true;
        inquiries_.push_front(std::move(*open));
        return;
    }
    Render(meaning, *open, bytes);
    answer_text_ = meaning.text;
    if (open->served)
        LeaveForNextInquiry(meaning, "");
    else if (time - open->time > kInquiryPatience)
        LeaveForNextInquiry(meaning, ", late");
    answered_ = std::move(open);
    answer_ = bytes;
    lost_.reset();
}

void Conversation::AnsweredUnasked(Meaning &meaning, const Bytes &bytes) {
    if (lost_ && FitsAnyAnswer(lost_->row, bytes)) {
        Render(meaning, *lost_, bytes);
        lost_.reset();
        LeaveForNextInquiry(meaning, ", late");
        return;
    }
    if (answered_ && bytes == answer_)
        meaning.text = "answered again: " + answer_text_;
    Surprise(meaning, ", but no inquiry is open");
    LeaveForNextInquiry(meaning, "");
}

void Conversation::Render(Meaning &meaning, const Open &open, const Bytes &bytes) {
    meaning.answers = open.number;
    const Form form = open.row == nullptr ? Form::Plain : FormOf(open);
    const Row *answer = open.row == nullptr ? nullptr : FindAnswer(*open.row, form, bytes);
    if (answer == nullptr) {
        meaning.text = "answer to " + open.text + ": " + DataText(bytes);
        if (open.row != nullptr && !open.row->fallback)
            Surprise(meaning, ", not of the form expected");
        return;
    }
    meaning.row = answer;
    meaning.family = answer->family;
    meaning.text = AnswerText(*answer, *open.row, open.bytes, bytes, Learn(open, form, bytes));
    if (form == Form::Single && !ability_)
        if (const Row *count = FindAnswer(*open.row, Form::Count, bytes))
            meaning.text += ", or " + AnswerText(*count, *open.row, open.bytes, bytes, "");
}

void Conversation::LeaveForNextInquiry(Meaning &meaning, const char *why) {
    stale_ += stale_ < kMostStale ? 1 : 0;
    Surprise(meaning, std::string(why) + "; the host's next inquiry takes it");
}

void Conversation::ForgetCommands() {
    commands_.clear();
    for (std::optional<Open> &socket : sockets_)
        socket.reset();
}

} // namespace decode
