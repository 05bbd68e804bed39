// What every packet between a host and a zoom camera means, in words.
//
// The knowledge is one table of packet patterns (Table()). Everything here follows from it: a packet alone is
// put into words by Describe(); a Conversation remembers what was asked and so can say what an answer holds
// and which command a completion ends; a Splitter cuts a stream of bytes into packets and noise.
//
// No function here throws on account of what it is fed, reads beyond the bytes that it is given, or writes
// anywhere but into its result. The free functions may be called from any thread; an object belongs to one
// thread at a time.
#ifndef VISCACAM_DECODE_DECODE_H
#define VISCACAM_DECODE_DECODE_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace decode {

using Bytes = std::vector<std::uint8_t>;
using Microseconds = std::chrono::microseconds;

enum class Direction { ToCamera, FromCamera };

/// Which cameras know a packet: Sony zoom blocks, Kova modules, or both.
enum class Family { Both, Sony, Kova };

enum class Kind {
    Command,         ///< does something; acknowledged, then completed or refused
    Inquiry,         ///< asks for a value; answered, not acknowledged
    Control,         ///< acts on the link itself: cancel, clear, set address
    Answer,          ///< the value that an inquiry asked for
    Acknowledgement, ///< a command was taken and has a socket
    Completion,      ///< a command is done
    Error,           ///< a command or an inquiry was refused
    Report,          ///< sent by a Kova module unasked
    Notice,          ///< sent by the camera on the link's account
    Debug,           ///< auto-focus debug text, either way
    Other,           ///< framed like a packet, but of no known type
    Noise            ///< not a packet
};

/// Of the answers to one inquiry, which one a row is. Kova versions come in one reply (Single), or a reply
/// with the number of segments (Count) and then one reply for each repetition of the inquiry (Segment).
enum class Form { Plain, Single, Count, Segment };

/// One row of the table. All texts are static.
struct Row {
    Kind kind;
    Family family;
    Direction direction;
    /// The packet as the camera's manual writes it, a token a byte: digits and upper-case letters are fixed,
    /// each lower-case letter is one nibble of a parameter, '.' is a nibble without meaning; "+t" is a run of
    /// one or more bytes, "*t" of any number. Example: "81 01 04 07 2p FF".
    const char *pattern;
    const char *name; ///< what a reference calls the packet: "zoom tele at speed"
    /// What a trace says: text with "{letters:format}" where a value goes; the letters are those of the
    /// pattern (of an answer also those of its inquiry), most significant first. Example: "zoom tele, speed
    /// {p}".
    const char *words;
    const char *parameters; ///< "letters: meaning; letters: meaning", in the order of the pattern; empty when
                            ///< there are none
    Form form;
    bool fallback; ///< catches packets that have no row of their own
};

/// Rows of one subject. Each answer stands below its inquiry: the rows of Kind::Answer that follow an inquiry
/// (or a control) directly are its answers. Where two rows fit the same bytes, the one with more fixed
/// nibbles applies, and a row without a run of bytes before one with it.
struct Subject {
    const char *title;
    const Row *rows;
    std::size_t count;
};

/// The whole table, in the order of a reference. Lives as long as the program.
const std::vector<Subject> &Table();

/// The answers of an inquiry; empty when `row` is of another kind. `row` must be one of the table.
std::vector<const Row *> AnswersOf(const Row &row);

/// One parameter of a row: its letters in the pattern, the name of its format ("" is decimal) and what it is.
struct Parameter {
    std::string letters;
    std::string format;
    std::string meaning;
};
std::vector<Parameter> ParametersOf(const Row &row);

/// A value that has a name, such as white balance 5, "manual".
struct NamedValue {
    std::uint32_t value;
    const char *name;
};
/// The named values of a format; empty for one that has none, or an unknown format.
std::vector<NamedValue> ValuesOf(const std::string &format);

/// One word for each, in lower case, as used in filters and JSON: "command", "kova", "to-camera".
const char *NameOf(Kind kind);
const char *NameOf(Family family);
const char *NameOf(Direction direction);

/// What a packet means.
struct Meaning {
    Kind kind = Kind::Noise;
    Family family = Family::Both;
    const Row *row = nullptr; ///< the row that applies; of an answer in a Conversation the answer's row; null
                              ///< when none does
    bool known = false;       ///< false for noise, and for packets that only a fallback row fits
    bool surprise =
        false; ///< does not belong where it came, or shows that something was lost; `text` says what
    long answers =
        -1; ///< in a Conversation: number of the packet (from 0) that this one acknowledges, ends or answers
    std::string text; ///< one line, never empty
};

/// Explains one packet by itself. What an answer holds cannot be told without its question: its text is
/// "answer" and the data. `bytes` may be anything, also no packet at all.
Meaning Explain(Direction direction, const std::uint8_t *bytes, std::size_t size);

/// The text of Explain().
std::string Describe(Direction direction, const std::uint8_t *bytes, std::size_t size);
std::string Describe(Direction direction, const Bytes &bytes);

/// Explains packets in the order in which they passed, so that answers depend on the question.
///
/// Besides the camera it follows a host that works as ours does: it waits 6 s for an answer and 2 s for the
/// end of a command, takes 60 02 and 60 03 for the result of a command, and keeps an answer that nobody waits
/// for until the next inquiry takes it as its own. The surprises are named in these terms.
class Conversation {
  public:
    /// Explains the next packet or piece of noise. `time` is counted from any start, and does not run
    /// backwards.
    Meaning Next(Direction direction, Microseconds time, const std::uint8_t *bytes, std::size_t size);
    Meaning Next(Direction direction, Microseconds time, const Bytes &bytes);

  private:
    struct Open {
        long number;
        Microseconds time;
        Bytes bytes;
        const Row *row;
        std::string text;
        bool served;      // the host has taken an older answer for this inquiry
        unsigned segment; // of a version in segments: which one this asks for, 0 for their number
    };
    struct Segments {
        unsigned count = 0;
        unsigned asked = 0;
        unsigned received = 0;
        Bytes digits;
    };

    void Sent(Meaning &meaning, Open open);
    void OpenCommand(Meaning &meaning, Open open);
    void OpenInquiry(Meaning &meaning, Open open);
    void NumberSegment(Open &open);
    void Acknowledged(Meaning &meaning, unsigned socket);
    void Completed(Meaning &meaning, unsigned socket);
    void Refused(Meaning &meaning, const Bytes &bytes);
    void RefusedCommand(Meaning &meaning, const Open &open, bool to_inquiry);
    void RefusedInquiry(Meaning &meaning, const Open &open, bool to_inquiry);
    bool CommandComesFirst(unsigned socket, std::uint8_t error) const;
    std::optional<Open> TakeCommand(unsigned socket, std::uint8_t error);
    std::optional<Open> TakeInquiry(const Bytes &answer);
    void Answered(Meaning &meaning, Microseconds time, const Bytes &bytes);
    void AnsweredUnasked(Meaning &meaning, const Bytes &bytes);
    void Render(Meaning &meaning, const Open &open, const Bytes &bytes);
    Form FormOf(const Open &inquiry) const;
    std::string Learn(const Open &inquiry, Form form, const Bytes &answer);
    std::string LearnSegment(const Open &inquiry, const Bytes &answer);
    void LeaveForNextInquiry(Meaning &meaning, const char *why);
    void ForgetCommands();

    long next_ = 0;
    std::deque<Open> commands_;                   // sent, not acknowledged
    std::array<std::optional<Open>, 16> sockets_; // acknowledged, not completed
    std::deque<Open> inquiries_;                  // asked, not answered
    std::optional<Open> lost_;                    // the last inquiry that the host gave up
    std::optional<Open> answered_;                // the last inquiry that was answered,
    Bytes answer_;                                // and with what
    std::string answer_text_;
    unsigned stale_ = 0;                   // answers that lie at the host, waiting for the wrong inquiry
    std::optional<std::uint32_t> ability_; // capability word of a Kova module
    std::map<const Row *, Segments> segments_;
};

/// A piece of a stream.
struct Piece {
    enum class Sort {
        Packet, ///< complete
        Broken, ///< began as a packet, but has no end, or is too short to be one
        Noise   ///< bytes that belong to no packet, up to and with a terminator
    };
    Sort sort = Sort::Noise;
    Direction direction = Direction::ToCamera;
    std::uint64_t offset = 0; ///< of the first byte, from the start of the stream
    Microseconds time{0};     ///< of the first byte
    Microseconds end{0};      ///< of the last byte
    Bytes bytes;
};

/// A longer silence ends a piece.
constexpr Microseconds kLongestGap{1000000};

/// Whether a packet of this direction can begin with the byte.
bool StartsPacket(Direction direction, std::uint8_t byte);

/// Cuts the bytes of one direction into pieces. To the camera a packet starts with 81 to 88 or 71; from the
/// camera with 90, or with 66 for an AF debug answer (66, length, text). It ends with FF, within 16 bytes. AF
/// debug packets to the camera (81 66 66 66, length, text) end by their length. A silence of more than
/// kLongestGap ends a piece. No piece is longer than 257 bytes; together the pieces are exactly the stream.
class Splitter {
  public:
    explicit Splitter(Direction direction);

    /// Takes bytes that arrived at `time` and appends each piece that they end to `out`. `bytes` may be null
    /// when `size` is 0.
    void Feed(Microseconds time, const std::uint8_t *bytes, std::size_t size, std::vector<Piece> &out);

    /// Ends the piece that is under way, if any: at the end of a stream.
    void Flush(std::vector<Piece> &out);

    /// Whether no piece is under way.
    bool IsIdle() const { return state_ == State::Idle; }

  private:
    enum class State { Idle, Noise, Packet, Debug };

    void Take(Microseconds time, std::uint8_t byte, std::vector<Piece> &out);
    void Begin(Microseconds time, std::uint8_t byte);
    void EndIfComplete(std::vector<Piece> &out);
    void EndDebug(std::vector<Piece> &out);
    void End(Piece::Sort sort, std::vector<Piece> &out);
    bool Starts(std::uint8_t byte) const { return StartsPacket(direction_, byte); }

    Direction direction_;
    State state_ = State::Idle;
    std::uint64_t position_ = 0;
    Piece held_;
};

/// Cuts bytes of both directions that stand in one stream, as when a listener is wired to both lines: what
/// belongs to which follows from the first byte of a packet. Noise is ascribed to the direction given.
class MixedSplitter {
  public:
    explicit MixedSplitter(Direction noise);

    /// As those of Splitter.
    void Feed(Microseconds time, const std::uint8_t *bytes, std::size_t size, std::vector<Piece> &out);
    void Flush(std::vector<Piece> &out);

  private:
    void Take(Microseconds time, std::uint8_t byte, std::vector<Piece> &out);
    void TakeOver(std::vector<Piece> &from, std::vector<Piece> &out);

    Direction noise_;
    Splitter to_camera_;
    Splitter from_camera_;
    Splitter *active_ = nullptr; // the one that holds a piece
    bool in_noise_ = false;
    Microseconds latest_{0};
    std::uint64_t position_ = 0; // of the next piece
};

} // namespace decode

#endif
