#include "tool/ctl/job.h"

#include <algorithm>
#include <future>
#include <memory>
#include <thread>

#include "tool/ctl/values.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds TELL_EVERY{200};
constexpr milliseconds LINGER{50}; // an answer too many comes right behind the one that was asked for
constexpr std::chrono::seconds PATIENCE{1}; // before a wait is worth a word

bool isRefusal(const decode::Bytes &answer) {
    return answer.size() >= 3 && (answer[1] & 0xF0U) == 0x60;
}

std::string elapsed(Clock::time_point since) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - since);
    return std::to_string(seconds.count()) + " s";
}

} // namespace

void Job::accept(uint32_t result) {
    if (result != VISCA_SUCCESS)
        throw Refused("the library did not take it");
}

Drives &Job::drivesOf(Axis axis) {
    return axis == Axis::zoom ? m_bench.drives : m_bench.focusDrives;
}

bool &Job::runs(Axis axis) {
    return axis == Axis::zoom ? m_bench.zoomRuns : m_bench.focusRuns;
}

void Job::drive(Axis axis, Drives::Command command, Drives::Command brake, milliseconds time) {
    accept(drivesOf(axis).start(command, brake));
    runs(axis) = true;
    if (time.count() == 0) {
        m_begun = axis;
        return;
    }
    bool interrupted = false;
    {
        const Interrupt::Scope breakable(m_bench.interrupt);
        interrupted = m_bench.interrupt.wait(time);
    }
    stop(axis, brake);
    if (interrupted)
        throw Interrupted();
}

// Also when this process drives nothing: another one may.
void Job::stop(Axis axis, Drives::Command brake) {
    if (runs(axis))
        accept(drivesOf(axis).stop());
    else
        order(brake);
    runs(axis) = false;
}

std::string Job::troubleWith(const Asked &asked, uint32_t result) const {
    if (asked.refusedAsCommand)
        return "refused with 60 02 or 60 03, which the library takes for the result of a command";
    if (!asked.answer)
        return result == VISCA_SUCCESS ? "no answer within 6 s" : "not asked: the line did not take it";
    const std::string shifted =
        "shifted: this is an earlier answer" + (asked.answerOf.empty() ? "" : " (" + asked.answerOf + ")");
    if (asked.shifted)
        return shifted;
    if (isRefusal(*asked.answer))
        return "refused: " + errorText((*asked.answer)[2]);
    return "";
}

Job::Answered Job::tryToAsk(const std::function<uint32_t()> &inquiry) {
    const size_t before = m_bench.follower.asked().size();
    const uint32_t result = inquiry();
    const std::vector<Asked> asked = m_bench.follower.asked();
    Answered answered;
    for (size_t i = before; i < asked.size() && answered.trouble.empty(); ++i) {
        answered.trouble = troubleWith(asked[i], result);
        answered.lost = !asked[i].answer;
        answered.shifted = asked[i].shifted;
        answered.roundTrip = asked[i].endedAt - asked[i].sentAt;
    }
    if (answered.trouble.empty() && result != VISCA_SUCCESS)
        answered.trouble = "the library could not read it";
    return answered;
}

bool Job::ask(const std::function<uint32_t()> &inquiry, const std::string &what) {
    const Answered answered = tryToAsk(inquiry);
    if (!answered.trouble.empty())
        fail(what + ": " + answered.trouble);
    return answered.trouble.empty();
}

uint32_t Job::perform(const std::string &doing, const std::function<uint32_t()> &work,
                      const std::function<std::string()> &progress) {
    const auto task = std::make_shared<std::packaged_task<uint32_t()>>(
        [&drives = m_bench.drives, work] { return drives.perform(work); });
    std::future<uint32_t> result = task->get_future();
    std::thread([task] { (*task)(); }).detach();
    const Clock::time_point since = Clock::now();
    while (result.wait_for(TELL_EVERY) != std::future_status::ready)
        m_bench.screen.progress(doing + ": " + (progress ? progress() : elapsed(since)));
    m_bench.screen.endProgress();
    return result.get();
}

void Job::sleep(milliseconds time) {
    const Interrupt::Scope breakable(m_bench.interrupt);
    if (m_bench.interrupt.wait(time))
        throw Interrupted();
}

void Job::number(const std::string &name, int64_t value, const std::string &shown) {
    m_result.fields.push_back({name, value, shown.empty() ? std::to_string(value) : shown});
}

void Job::position(const std::string &name, uint32_t value) {
    number(name, value, inHex(value));
}

void Job::decimal(const std::string &name, double value) {
    m_result.fields.push_back({name, value, std::to_string(value)});
}

void Job::flag(const std::string &name, bool value, const char *yes, const char *no) {
    m_result.fields.push_back({name, value, value ? yes : no});
}

void Job::text(const std::string &name, const std::string &value) {
    m_result.fields.push_back({name, value, value});
}

void Job::fail(const std::string &why) {
    m_result.error += (m_result.error.empty() ? "" : "; ") + why;
}

void Job::wait(bool motion) {
    const Interrupt::Scope breakable(m_bench.interrupt);
    const Clock::time_point since = Clock::now();
    bool interrupted = false;
    m_bench.follower.wait(motion, [&] {
        if (Clock::now() - since > PATIENCE)
            m_bench.screen.progress("waiting for the camera: " + elapsed(since));
        interrupted = m_bench.interrupt.take();
        return !interrupted;
    });
    m_bench.screen.endProgress();
    if (!interrupted)
        return;
    if (motion)
        order(VISCA_ZoomStop);
    m_bench.follower.wait(false, [] { return true; });
    throw Interrupted();
}

void Job::follow(bool motion) {
    try {
        wait(motion);
    } catch (const Interrupted &) {
        m_result.sent = m_bench.follower.sent();
        throw;
    }
    if (!m_bench.follower.asked().empty())
        std::this_thread::sleep_for(LINGER);
    m_result.sent = m_bench.follower.sent();
    const auto bad = std::find_if(m_result.sent.begin(), m_result.sent.end(),
                                  [](const Sent &sent) { return !sent.isGood(); });
    if (bad == m_result.sent.end())
        return;
    fail(bad->outcome());
    if (m_begun && bad->state == Sent::State::refused)
        runs(*m_begun) = false;
}

void Job::collectNotes() {
    for (const std::string &note : m_bench.follower.takeNotes()) {
        const bool muted = std::any_of(m_muted.begin(), m_muted.end(), [&](const std::string &text) {
            return note.find(text) != std::string::npos;
        });
        if (!muted)
            m_result.notes.push_back(note);
    }
}

} // namespace tool::ctl
