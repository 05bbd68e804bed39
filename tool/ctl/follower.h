#ifndef VISCACAM_TOOL_CTL_FOLLOWER_H
#define VISCACAM_TOOL_CTL_FOLLOWER_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "decode/decode.h"
#include "host/host.h"

namespace tool::ctl {

using Clock = std::chrono::steady_clock;

/* A command packet, and what became of it. */
struct Sent {
    enum class State {
        queued,
        notQueued, /* the host's queue is full */
        sent,      /* on its way, no result yet */
        completed,
        refused,   /* by the camera */
        timedOut,  /* the library does not wait any longer */
        notWritten /* the line did not take it, or it was dropped */
    };
    decode::Bytes bytes;
    State state = State::queued;
    unsigned socket = 0; /* of the result */
    unsigned error = 0;  /* of a refusal: its code */
    bool late = false;   /* the result came when the library did not wait any longer */
    Clock::time_point sentAt{};
    Clock::time_point endedAt{};

    bool isOver() const { return state != State::queued && state != State::sent; }
    bool isGood() const { return state == State::completed; }
    std::string meaning() const; /* "zoom tele, speed 6" */
    std::string outcome() const; /* "completed, socket 1, 57 ms" */
};

/* An inquiry, and its answer. */
struct Asked {
    decode::Bytes bytes;
    std::optional<decode::Bytes> answer; /* what the library took for it, refusals too */
    bool shifted = false;                /* that was there before the question */
    bool refusedAsCommand = false; /* 60 02 or 60 03, which the library takes for the result of a command */
    std::string answerOf;          /* of a shifted answer: the question that it belongs to, if known */
    Clock::time_point sentAt{};
    Clock::time_point endedAt{};

    std::string meaning() const;
};

/* What the camera means by an error code: "not executable (41)". */
std::string errorText(unsigned code);
std::string hexText(const decode::Bytes &bytes);

/*
 * Follows commands and inquiries through the host: which were queued, sent, completed, refused. Any thread.
 */
class Follower {
  public:
    Follower();
    ~Follower();
    Follower(const Follower &) = delete;
    Follower &operator=(const Follower &) = delete;

    /* Forget what was before. Commands that are still under way are followed no further. */
    void begin();
    /* Wait until all commands since begin() are over. With motion also for results that come after the
     * library has stopped waiting. Between looks it calls goOn, which ends the wait by returning false. */
    void wait(bool motion, const std::function<bool()> &goOn);
    std::vector<Sent> sent() const;
    std::vector<Asked> asked() const;

    /* What happened unasked, in words, since the last call. */
    std::vector<std::string> takeNotes();
    void note(const std::string &text);
    /* Called for each new note, on any thread. */
    void onNote(std::function<void()> told);

  private:
    struct Waiting { /* an answer in the host's queue */
        decode::Bytes bytes;
        std::string question;
        Clock::time_point since;
    };
    static void onEvent(const host::Event &event, void *context);
    void take(const host::Event &event);
    void onPut(const host::Event &event);
    void onTake(const host::Event &event);
    void onResult(const decode::Bytes &bytes, Clock::time_point time);
    void onAnswerPut(const host::Event &event, Clock::time_point time);
    void onAnswerTaken(Clock::time_point time);
    void onSending(const host::Event &event, Clock::time_point time);
    void onSent(const host::Event &event);
    void endCurrent(Sent::State state, Clock::time_point time);
    Sent *lateOne();
    bool isAllOver(bool motion) const;
    void addNote(const std::string &text);

    int32_t m_observer = -1;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Sent> m_sent; /* a deque: what stands in it stays where it is */
    std::deque<Sent *> m_queue;
    Sent *m_current = nullptr; /* with the library's sender */
    std::thread::id m_sender;
    std::deque<Asked> m_asked;
    bool m_asking = false;
    std::deque<Waiting> m_answers;
    std::string m_lastQuestion;
    bool m_inShift = false;
    std::vector<std::string> m_notes;
    std::function<void()> m_told;
};

} // namespace tool::ctl

#endif
