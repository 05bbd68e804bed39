#ifndef VISCACAM_TOOL_DRIVES_H
#define VISCACAM_TOOL_DRIVES_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tool {

/*
 * The commands of a program that may be interrupted. A drive moves the lens until a stop is sent, so it is
 * remembered which one runs: whoever ends the program sends the stop first. A procedure switches the camera
 * off and on again, so it is not left in the middle. Any thread.
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
        std::unique_lock<std::mutex> lock(m_mutex);
        parkIfOver(lock);
        return call();
    }
    /* Run a procedure, which may take its time; one at a time, and no drive beside it. Returns its result. */
    template <typename Call>
    uint32_t perform(Call call) {
        const Procedure running(*this);
        return call();
    }

    enum class End {
        clean,            /* nothing moves because of us any more, as far as can be told */
        stopNotConfirmed, /* the lens may still move */
        inProcedure,      /* the camera may be off */
    };
    struct Limits {
        std::chrono::milliseconds stop;
        std::chrono::milliseconds procedure;
    };
    /*
     * No command is queued and no procedure begun from now on: a thread that wants to waits for the end of
     * the process. Waits for the end of the procedure that runs; stops the drive that runs and waits until
     * the stop has gone out and was answered.
     */
    End finish(const Limits &limits);

  private:
    struct Procedure {
        explicit Procedure(Drives &of) : drives(of) { drives.beginProcedure(); }
        ~Procedure() { drives.endProcedure(); }
        Procedure(const Procedure &) = delete;
        Procedure &operator=(const Procedure &) = delete;
        Drives &drives;
    };

    void parkIfOver(std::unique_lock<std::mutex> &lock) const;
    void beginProcedure();
    void endProcedure();

    std::mutex m_finishing; /* held while the stop is under way */
    std::mutex m_mutex;
    std::condition_variable m_procedureEnded;
    Command m_brake = nullptr; /* of the drive that runs */
    bool m_inProcedure = false;
    bool m_over = false;
};

} // namespace tool

#endif
