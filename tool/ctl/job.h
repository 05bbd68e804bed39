#ifndef VISCACAM_TOOL_CTL_JOB_H
#define VISCACAM_TOOL_CTL_JOB_H

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "tool/ctl/follower.h"
#include "tool/ctl/interrupt.h"
#include "tool/ctl/result.h"
#include "tool/ctl/screen.h"
#include "tool/drives.h"

namespace tool::ctl {

/* What all commands of a process share. Made once and never destroyed: the library's threads use it. */
struct Bench {
    Bench(Trace *trace, bool json) : screen(trace, json) {}
    Screen screen;
    Drives drives; /* for everything but the drives of the focus, which may go on beside one of the zoom */
    Drives focusDrives; /* for those */
    Follower follower;
    Interrupt interrupt;
    std::atomic<uint32_t> moduleType{0}; /* 0: no camera yet */
    std::atomic<bool> upgrading{false};
    bool zoomRuns = false; /* a drive without a time was begun and not stopped */
    bool focusRuns = false;
};

/* What can be driven. */
enum class Axis { zoom, focus };

/* "quit" was typed. */
struct Quit {};

/* A command while it is carried out: what its function works with. One thread. */
class Job {
  public:
    Job(Bench &bench, Result &result) : m_bench(bench), m_result(result) {}

    uint32_t moduleType() const { return m_bench.moduleType; }
    Bench &bench() { return m_bench; }

    /* Give the library a command. Throws Refused when it does not take it. */
    template <typename Call>
    void order(Call call) {
        accept(m_bench.drives.queue(call));
    }
    /* Begin a drive of the lens. With a time it is stopped when that is over, or at a Ctrl-C, which then is
     * thrown. */
    void drive(Axis axis, Drives::Command command, Drives::Command brake, std::chrono::milliseconds time);
    /* Stop an axis, whoever drives it. */
    void stop(Axis axis, Drives::Command brake);

    /* What came of a question. */
    struct Answered {
        std::string trouble; /* empty: it was answered */
        bool lost = false;   /* nobody answered */
        bool shifted = false;
        Clock::duration roundTrip{0};
    };
    Answered tryToAsk(const std::function<uint32_t()> &inquiry);
    /*
     * Ask the camera. Returns false when there is no answer that can be trusted; what then failed is part of
     * the result. what: "the zoom position".
     */
    bool ask(const std::function<uint32_t()> &inquiry, const std::string &what);

    /* Carry out what takes its time, on a thread of its own, and tell how it goes on. Returns its result. */
    uint32_t perform(const std::string &doing, const std::function<uint32_t()> &work,
                     const std::function<std::string()> &progress = nullptr);

    /* Wait. Throws Interrupted at a Ctrl-C. */
    void sleep(std::chrono::milliseconds time);

    /* The command has learnt something. shown: for people. */
    void number(const std::string &name, int64_t value, const std::string &shown = "");
    void position(const std::string &name, uint32_t value);
    void flag(const std::string &name, bool value, const char *yes = "on", const char *no = "off");
    void decimal(const std::string &name, double value);
    void text(const std::string &name, const std::string &value);
    void line(const std::string &text) { m_result.lines.push_back(text); }
    /* The command has failed, but goes on. */
    void fail(const std::string &why);

    /* A line of the library's log that says nothing new. */
    void mute(const std::string &logText) { m_muted.push_back(logText); }

    /* Wait until all that was ordered is over, and take it into the result. With motion until the lens has
     * arrived; a Ctrl-C then stops the zoom and is thrown. */
    void follow(bool motion);
    /* Take the notes so far into the result. */
    void collectNotes();

  private:
    void accept(uint32_t result);
    void wait(bool motion);
    Drives &drivesOf(Axis axis);
    bool &runs(Axis axis);
    std::string troubleWith(const Asked &asked, uint32_t result) const;

    Bench &m_bench;
    Result &m_result;
    std::vector<std::string> m_muted;
    std::optional<Axis> m_begun; /* to be driven without a time */
};

} // namespace tool::ctl

#endif
