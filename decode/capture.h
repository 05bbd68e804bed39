// Captures: what went over a line, as text that greps, diffs and replays.
//
//     # viscacam capture 1
//     # started 2026-11-20T19:02:37.123456Z
//     # port /dev/ttyUSB0
//     # baud 9600
//     0.000000 > 81 09 04 00 FF
//     0.027512 < 90 50
//     0.028610 < 02 FF
//     0.100042 ! baud 19200
//
// A line is what was read at once, so a packet may take several lines and a line may hold several packets.
// First its time in seconds since the start, then a mark: > bytes to the camera, < bytes from the camera, ! a
// remark. Times do not run backwards. The first line names the format; "started" (UTC), "port" and "baud" are
// in any order above the first record, and each may be missing. Other lines that begin with #, and empty
// lines, are ignored. Bytes are written in upper case and read in either. A line may end with CR LF.
//
// Remarks have a form where programs rely on them; any other text is for people:
//
//     baud 19200     the line has this rate from now on
//     break          the line was held in the space state
//     gone, back     the device vanished, came back
//     opened, closed the host opened, closed its end
//     lost 12        this many bytes could not be passed on
//
// No function here throws on account of what it is fed. All may be called from any thread; an object belongs
// to one thread at a time.
#ifndef VISCACAM_DECODE_CAPTURE_H
#define VISCACAM_DECODE_CAPTURE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "decode/decode.h"
#include "decode/utc.h"

namespace decode {

/// What stands above the records.
struct CaptureHead {
    std::optional<Microseconds> started; ///< since 1970-01-01 00:00 UTC
    std::string port;                    ///< the device; empty when not known
    unsigned baud = 0;                   ///< bit/s at the start; 0 when not known
};

/// One line: bytes that were read at once, or a remark.
struct CaptureRecord {
    enum class Sort { Data, Remark };
    Sort sort = Sort::Data;
    Microseconds time{0};                      ///< since the start, not negative
    Direction direction = Direction::ToCamera; ///< of bytes
    Bytes bytes;                               ///< of Sort::Data, never empty when read
    std::string remark;                        ///< of Sort::Remark: one line
};

struct Capture {
    CaptureHead head;
    std::vector<CaptureRecord> records; ///< in order of time
};

/// The lines above the records, each with its newline.
std::string CaptureText(const CaptureHead &head);

/// A record as a line with its newline. What does not print in a remark is written as '?'. Bytes that are
/// empty make an empty text.
std::string CaptureText(const CaptureRecord &record);

/// Whether a text begins as a capture does, in any version of the format.
bool IsCapture(const std::string &text);

/// Reads a capture line by line.
class CaptureReader {
  public:
    enum class Result {
        Record,  ///< a record was read
        Nothing, ///< a comment, an empty line, or a line of the head
        Wrong    ///< the line is none of a capture; Error() says why
    };

    /// Takes the next line, with or without its end. `record` is set with Result::Record only. After
    /// Result::Wrong the next lines may still be read; the wrong one counts as not there. Without the
    /// first line that names the format every line is wrong.
    Result Line(const std::string &line, CaptureRecord &record);

    /// What has been read of the head; complete once a record was read.
    const CaptureHead &Head() const { return head_; }

    /// "line 12: ..." of the last Result::Wrong.
    const std::string &Error() const { return error_; }

  private:
    Result Comment(const std::string &line);
    Result Entry(const std::string &line, CaptureRecord &record);
    Result Wrong(const std::string &why);

    CaptureHead head_;
    std::string error_;
    std::size_t line_ = 0;
    bool named_ = false; // the first line was right
    bool begun_ = false; // a record was read
    Microseconds latest_{0};
};

/// Reads a whole capture. False when a line is wrong: `error` then holds "line 12: ..." of the first such
/// line and `capture` what came before it.
bool ReadCapture(const std::string &text, Capture &capture, std::string &error);

/// The rate of a remark "baud 19200"; nothing for any other record.
std::optional<unsigned> BaudOf(const CaptureRecord &record);

} // namespace decode

#endif
