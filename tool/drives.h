#ifndef VISCACAM_TOOL_DRIVES_H
#define VISCACAM_TOOL_DRIVES_H

#include <chrono>
#include <cstdint>
#include <mutex>

namespace tool {

/*
 * The commands of a program that may be interrupted. A drive moves the lens until a stop is sent, so it is
 * remembered which one runs: whoever ends the program sends the stop first. Any thread.
 */
class Drives {
  public:
    using Command = uint32_t (*)();

    /* Queue a command that starts a drive; brake is the one that ends it. Returns the command's result. */
    uint32_t start(Command drive, Command brake);
    /* Queue the stop of the drive that runs, if any. Returns the command's result. */
    uint32_t stop();
    /* Queue any other command. */
    template <typename Call>
    uint32_t queue(Call call) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        parkIfOver();
        return call();
    }

    /*
     * No command is queued from now on: a thread that wants to waits for the end of the process. Stops the
     * drive that runs and waits until the stop has gone out and was answered, at most limit. Returns whether
     * nothing moves because of us any more, as far as can be told.
     */
    bool finish(std::chrono::milliseconds limit);

  private:
    void parkIfOver();

    std::mutex m_finishing; /* held while the stop is under way */
    std::mutex m_mutex;
    Command m_brake = nullptr; /* of the drive that runs */
    bool m_over = false;
};

} // namespace tool

#endif
