/**
 * @file recording_host.h
 * The host of the unit tests: defines every service of viscacam_host.h, writes each call into one ordered
 * journal, and fails, answers or stays silent as the test tells it.
 *
 *     Host().Reset();
 *     Host().AnswerInquiry("90 50 04 00 00 00 FF");
 *     ... call the library ...
 *     EXPECT_THAT(Host().Sent(), ElementsAre("81 09 04 47 FF"));
 *
 * Everything may be called from any thread. wrapped_libc.h has the same for the libc calls of the library and
 * writes into the same journal; unit_test.h has the fixture that resets both.
 */
#ifndef VISCACAM_UNIT_RECORDING_HOST_H
#define VISCACAM_UNIT_RECORDING_HOST_H

#include "viscacam.h"
#include "viscacam_host.h"

#include <climits>
#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <mutex>
#include <pthread.h>
#include <string>
#include <string_view>
#include <vector>

namespace unit {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

std::string Hex(const Bytes &bytes);   /**< "81 01 04 07 26 FF" */
Bytes FromHex(std::string_view text);  /**< the inverse; blanks do not matter */
ViscaPkt Packet(std::string_view hex); /**< a record that holds these bytes, the rest zero */

/** What was called. Names the events of the journal and the places where a fault can be put. */
enum class Call {
    Put,
    Take,
    IsEmpty,
    ReadFd, // queues
    Open,
    SetParam,
    Flush,
    Send, // serial service
    Log,
    CamLog, // general log, camera log
    ModuleType,
    SubType,
    Manuinfo,
    Caller,
    System,
    Register, // system services
    Sleep,
    Select,
    Read,
    Write,
    Fcntl, // libc; Read, Write, Fcntl on the port only
    Lock,
    Unlock,
    ThreadCreate,
    ThreadDetach,
};

struct LogLine {
    uint32_t level = 0;
    bool well_formed = false; /**< the whole prefix is exactly as it should be */
    std::string tag, file, function, message, whole, format;
    int line = 0;
};

/** One call. `text` says it in one line; the forms are listed at RecordingHost::Story. */
struct Event {
    Call call{};
    std::string text;
    Bytes bytes;        /**< Put, Take: all 20 bytes; Send, Read, Write: the bytes */
    uint32_t type = 0;  /**< first argument of the queue services and of DRV_SetComParam */
    uint32_t queue = 0; /**< queue number; Open: port number; Register: thread id */
    uint32_t length = 0;
    int fd = -1;
    uint64_t micros = 0; /**< Sleep: how long; Select: the time-out asked for */
    std::string thread;  /**< Register: name that the calling thread had */
    LogLine log;
};

constexpr unsigned kForEver = UINT_MAX;

/** A call that fails: the `first`-th since Reset and the next `times` - 1. */
struct Fault {
    unsigned first = 1;
    unsigned times = 1;
    int32_t result = 1; /**< what the call returns */
    int error = 0;      /**< errno */
};

/** A mutex that the wrapped pthread_mutex_lock does not see. */
class SupportMutex {
  public:
    void lock();
    void unlock();
    pthread_mutex_t *native() { return &m_mutex; }

  private:
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
};

class RecordingHost {
  public:
    RecordingHost();

    /** Empty journal and queues, no faults, no answers, a fresh port, module type 0x02000001. */
    void Reset();

    /// @name What the host answers
    /// @{
    void SetModuleType(uint32_t type);
    void SetSubType(uint32_t type);
    void SetCaller(uint32_t caller);
    void SetDeviceModel(const std::string &model);
    void SetCapacity(uint32_t queue, size_t elements); /**< 256 at Reset */

    /** The next inquiry that is not answered yet finds this reply on queue 3 as soon as it is written. */
    void AnswerInquiry(std::string_view reply);
    /** Every inquiry for which AnswerInquiry has nothing left gets this one. */
    void AnswerEveryInquiry(std::string_view reply);
    /** Called after each DRV_ComSend that was not failed, on its thread. */
    void OnSend(std::function<void(const Bytes &)> hook);

    /** Called after each event, on its thread and outside every lock: for what happens in the middle of a
     * call. */
    void OnRecord(std::function<void(const Event &)> hook);

    /** Let calls fail. Without a fault: Select, Read, Write, Fcntl -1 with EIO; Lock, Unlock EINVAL;
     * ThreadCreate EAGAIN; Send -1; every other service 1. With result 0, IsEmpty tells Fault::error as flag
     * and ReadFd as descriptor.
     */
    void Fail(Call call, unsigned first = 1, unsigned times = 1);
    void Fail(Call call, Fault fault);
    /** The next call and the `times` - 1 after it: for Lock and Unlock, which others call too. */
    void FailNext(Call call, unsigned times = 1) { Fail(call, Calls(call) + 1, times); }
    void Heal(); /**< no call fails any more */
    /** For the services: true, and what to return, when this call has to fail. Counts the call. */
    bool Fails(Call call, Fault *fault);
    unsigned Calls(Call call); /**< calls so far, failed ones too */
    /// @}

    /// @name Queues, from outside (not in the journal)
    /// @{
    void Preload(uint32_t queue, std::string_view hex);
    void Preload(uint32_t queue, const ViscaPkt &packet);
    size_t QueueLength(uint32_t queue);
    int QueueFd(uint32_t queue);
    /// @}

    /// @name The port: one end of a socket pair; the test holds the camera's end
    /// @{
    int PortFd();
    void Feed(std::string_view hex); /**< the camera sends */
    void Feed(const Bytes &bytes);
    void HangUp();   /**< reads find the end of the line once everything is read */
    size_t Unread(); /**< bytes fed and not read yet */
    /** What the camera sends when the probe 81 09 04 00 FF is written at this rate. */
    void AnswerProbe(uint32_t rate, std::string_view reply);
    void PortWritten(const Bytes &bytes); /**< for the wrapped write(): a camera may answer */
    /// @}

    /// @name The journal
    /// @{
    void Record(Event event);
    void Forget(); /**< empty the journal, keep everything else */
    std::vector<Event> Events();
    std::vector<Event> Events(Call call);
    /**
     * The texts of the calls named, in their order:
     *  "put 0: 81 01 04 00 02 FF"      "take 1: 90 51 FF"      "take 1: none"    "isempty 0: 1"   "readfd 3"
     *  "open 0"   "setparam 0: 1 3 9600 8 1 0 0"   "flush 2"   "send 81 09 04 00 FF"
     *  "WARN ViscaEnQueueCmd: text\n"  (level, function, message; "7/INFO" where level and tag differ)
     *  "cam 7/INFO ViscaPrintPkt: text\n"    "system LINE"     "register 4 NAME"
     *  "sleep 100000"  (microseconds)  "select queue 1 2000000: time-out" (or ready, error, nothing)
     *  "write ..."  "read 90"  "read: none"  "fcntl getfl"  "fcntl setfl nonblock"  "fcntl setfl block"
     *  "lock"  "unlock"  "thread create"  "thread detach"
     */
    Lines Story(std::initializer_list<Call> calls);
    Lines Log();       /**< Story({Call::Log}) */
    Lines CameraLog(); /**< messages of the camera log, without the level and function */
    Lines Commands();  /**< bytes of every packet put on queue 0, as hex */
    Lines Results();   /**< the same for queue 1 */
    Lines Answers();   /**< and queue 3 */
    Lines Sent();      /**< what DRV_ComSend got, one a call */
    bool Logged(uint32_t level, std::string_view function, std::string_view message);
    size_t CountLogged(uint32_t level, std::string_view function, std::string_view message);
    /** Every rule that holds for each call whatever the test: prefix, level and tag, final newline, queue
     * type 3, elements of 20 bytes. Empty when all is well. */
    Lines Complaints();
    /// @}

    // What the service functions call.
    uint32_t DoPut(uint32_t type, uint32_t queue, const void *data, uint32_t length);
    uint32_t DoTake(uint32_t queue, void **element);
    uint32_t DoIsEmpty(uint32_t type, uint32_t queue, uint32_t *flag);
    uint32_t DoReadFd(uint32_t type, uint32_t queue, int32_t *fd);
    uint32_t DoOpen(uint32_t port, int32_t *fd);
    uint32_t DoSetParam(uint32_t type, const DrvComParam &param);
    uint32_t DoFlush(int32_t fd, uint32_t mode);
    int32_t DoSend(int32_t fd, uint32_t length, const uint8_t *data);
    uint32_t DoManuinfo(ManuInfo *info);
    uint32_t DoSystem(const char *command);
    uint32_t DoAsk(Call call);

  private:
    struct Queue {
        std::deque<ViscaPkt> elements;
        ViscaPkt taken{};
        size_t capacity = 256;
        int fd = -1;
    };
    static constexpr uint32_t kQueues = 4;

    bool PutLocked(uint32_t queue, const ViscaPkt &packet);
    void AnswerSent(const Bytes &bytes);
    void OpenPort();
    Lines PacketsPut(uint32_t queue);

    SupportMutex m_mutex;
    Queue m_queues[kQueues];
    std::vector<Event> m_events;
    std::map<Call, unsigned> m_calls;
    std::map<Call, std::vector<Fault>> m_faults;
    std::deque<ViscaPkt> m_answers;
    std::deque<ViscaPkt> m_every_answer;
    std::function<void(const Bytes &)> m_on_send;
    std::function<void(const Event &)> m_on_record;
    std::map<uint32_t, Bytes> m_probe_answers;
    uint32_t m_rate = 0;
    uint32_t m_module_type = 0, m_sub_type = 0, m_caller = 0;
    std::string m_device_model;
    int m_port = -1, m_camera = -1;
};

/** The one host of the process. */
RecordingHost &Host();

} // namespace unit

#endif
