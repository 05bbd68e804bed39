#ifndef VISCACAM_TOOL_CAPTURE_FILE_H
#define VISCACAM_TOOL_CAPTURE_FILE_H

#include <chrono>
#include <mutex>
#include <string>

#include "decode/capture.h"

namespace tool {

/*
 * A capture that is being written, a line at a time, so that it is whole up to the very end of the process.
 * Functions may be called from any thread. A time before that of the last line counts as that one.
 */
class CaptureFile {
  public:
    using Clock = std::chrono::steady_clock;

    /* Begin a new file. start: the time that is 0 in it. Throws std::runtime_error. */
    CaptureFile(const std::string &path, const std::string &port, unsigned baud,
                Clock::time_point start = Clock::now());
    ~CaptureFile();
    CaptureFile(const CaptureFile &) = delete;
    CaptureFile &operator=(const CaptureFile &) = delete;

    /* Bytes that passed at once; none are left out. */
    void bytes(Clock::time_point time, decode::Direction direction, const decode::Bytes &bytes);
    /* See decode/capture.h for remarks that programs understand. */
    void remark(Clock::time_point time, const std::string &text);

  private:
    void write(Clock::time_point time, decode::CaptureRecord record);

    const std::string m_path;
    const Clock::time_point m_start;
    std::mutex m_mutex;
    decode::Microseconds m_latest{0};
    int m_fd;
};

} // namespace tool

#endif
