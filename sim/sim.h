#ifndef VISCACAM_SIM_SIM_H
#define VISCACAM_SIM_SIM_H

/*
 * Simulated cameras on a pseudo-terminal.
 *
 * A Camera opens a pty, plays a camera block at its master side and offers the path of the slave side. What
 * opens that path as a serial port talks to a camera: bytes at the line's speed, acknowledgement and
 * completion, two sockets, power and boot time, a lens that takes its time. Faults are switched on by name
 * while it runs. What the camera believes can be read as a State or as one line of JSON, so a test need not
 * trust the bytes alone.
 *
 * What a block does beyond its manual's letter:
 * - A pty starts as a fresh adapter does, raw at 9600 bit/s. Bytes are judged by the rate that is set when
 * they are read; at another rate than the camera's they are noise to it, and what it says then is garbled to
 * the host.
 * - 90 38 FF is sent when supply is applied, not when a standby block is switched on.
 * - Power-on, and reset too, start the boot time as soon as the command is processed; acknowledgement and
 * completion still come. Volatile settings are at their defaults then, the lens at the wide end, in auto
 * focus, with digital zoom on.
 * - Registers 0x72, 0x73 and 0x56 are read with the value in effect; what was written is pending until
 * power-on or reset.
 * - A position outside the range of the axis is a syntax error; a zoom position between the optical and the
 * digital end is not executable while digital zoom is off. A focus position beyond the near limit ends at the
 * limit.
 * - In auto focus, focus drives, stop, absolute focus and infinity are not executable; zoom with focus is,
 * and stays there.
 * - An absolute motion that another command stops or replaces completes at that moment.
 *
 * Threads: every Camera has one thread of its own, asleep in ppoll() unless a byte or a deadline is due; an
 * idle camera wakes up never. All member functions may be called from any thread, and from the trace
 * callback, except where a comment says otherwise. All times are of the monotonic clock.
 *
 * Errors: a wrong name, value or path gives std::invalid_argument, a refused system call std::runtime_error;
 * the text is one line that a user can act on.
 */

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace sim {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<uint8_t>;

/* ---- Which cameras there are ---- */

struct CameraType {
    std::string name; /* as given to Options::camera, e.g. "sony1" */
    uint32_t code;    /* module type, e.g. 0x02000001 */
};

/* All cameras that can be simulated, in the order in which a user is shown them. */
const std::vector<CameraType> &knownCameras();

/*
 * Find a camera by its name ("sony1") or by its type code in C notation ("0x02000001", "33554433").
 * Throws std::invalid_argument with the known names and codes in its text.
 */
const CameraType &findCamera(const std::string &nameOrCode);

/* ---- How a camera runs ---- */

struct Range {
    std::chrono::microseconds least{0};
    std::chrono::microseconds most{
        0}; /* not below least; a value between the two is drawn for every packet */
};

/*
 * Reply latencies, each from the first byte of the packet on the line to the first byte of the reply. A reply
 * also waits for the packet's last byte, for the vertical edge and for the line to be free, so these are
 * lower bounds.
 */
struct Latency {
    Range acknowledge;
    Range complete; /* drive commands and settings; a motion completes when it has arrived */
    Range refuse;
    Range answer; /* inquiries */

    static Latency none(); /* all zero */
    static Latency
    realLine(); /* as seen with a USB adapter at 9600 bit/s: 36..42 ms to the end of the acknowledgement,
                   55..57 ms to that of the completion, 24..36 ms to that of a refusal or an answer */
};

enum class Power {
    off,     /* no supply voltage: hears and says nothing */
    booting, /* supply applied, switched on or reset less than the boot time ago */
    on,
    standby,
};

enum class Direction { toCamera, toHost, remark };

/*
 * One thing that happened on the line or in the camera.
 * toCamera: one packet, or one run of bytes that is none, at the time of its last byte; text says what was
 * wrong, if anything. toHost: one reply as it went out, faults included, at the time of its last byte; text
 * names the faults that changed it. remark: no bytes; text says what happened ("power on", "noise: 6 bytes at
 * 19200, camera listens at 9600", "hang-up", ...).
 */
struct TraceEvent {
    Clock::time_point time;
    Direction direction;
    Bytes bytes;
    std::string text;
};

/* Called in the camera's thread, no lock held, a moment after the state shows the event; must not block for
   long and must not destroy the camera. */
using Trace = std::function<void(const TraceEvent &)>;

struct Options {
    std::string camera = "sony1"; /* see findCamera() */
    unsigned baud = 9600;         /* the only rate that the camera hears: 9600, 19200 or 38400 */
    bool paced = true;        /* bytes take 10 bit times each, both ways; false: full speed of the machine */
    bool vertical = true;     /* one packet is processed per vertical period; false: at once */
    double frameRate = 59.94; /* vertical periods a second, 1 to 1000; 50 for a 25-frame norm */
    Latency latency = Latency::none();
    std::chrono::milliseconds bootTime{3000}; /* after supply, power-on command and reset; 0 to 10 min */
    Power start = Power::booting; /* state when the camera starts; booting announces itself with 90 38 FF */
    bool silentWhileBooting =
        false;              /* true: the power inquiry too is unanswered while booting; false: answered 03 */
    double timeScale = 1.0; /* the camera's time runs this many times faster than real time, 0.01 to 1000:
                               boot, motion, vertical clock, latencies, byte times, times of faults */
    uint64_t seed = 1;      /* of everything random; same seed, faults and traffic: same behaviour */
    std::string link;       /* symbolic link to the slave, kept up to date by replug(); empty: none.
                               An existing link is replaced, any other file is an error */
    std::vector<std::string> faults; /* set before the camera starts; see Camera::setFault() */
    Trace trace;                     /* empty: none */

    /* No pacing, no vertical clock, no latency, already powered on: for tests whose subject is not time. */
    static Options fast(const std::string &camera = "sony1");
};

/* ---- What a camera believes ---- */

struct State {
    std::string camera;
    uint32_t type = 0;
    Power power = Power::off;
    unsigned baud = 0; /* the rate that it listens at */
    bool pluggedIn = true;
    unsigned zoom = 0;  /* 0 to 0x4000, to 0x7AC0 with digital zoom */
    unsigned focus = 0; /* 0x1000 (far) to 0xF000 (near) */
    bool zoomMoving = false;
    bool focusMoving = false;
    bool socketBusy[2] = {false, false}; /* socket 1, socket 2 */
    std::map<std::string, int>
        settings; /* by name, e.g. "focusMode" (2 auto, 3 manual, 4), "dzoom" (2 on, 3 off) */
    std::map<unsigned, unsigned> registers;        /* effective values that are not 0 */
    std::map<unsigned, unsigned> pendingRegisters; /* written, effective after the next power-on or reset */
    /*
     * Packets that the camera has processed, refused ones too, by their first bytes after the header in hex:
     * "01 04 07" zoom drive, "09 04 47" zoom position inquiry, "2y" cancel, "30 01" address set, "01 00 01"
     * IF_Clear, "long" packets of more than 16 bytes, "other" once there are more kinds than anybody needs.
     */
    std::map<std::string, unsigned long> seen;
    /* Replies by kind: "ack", "completion", "answer", "power-up", "error 02", "error 41", ... */
    std::map<std::string, unsigned long> sent;
    unsigned long packetsSeen = 0;    /* all packets that arrived, ignored ones too */
    unsigned long ignoredPackets = 0; /* for another address, or while off, booting or mute */
    unsigned long noiseBytes = 0;     /* bytes at a wrong rate, or between packets */
    unsigned long lostBytes = 0;      /* sent but the host did not read for so long that the line overran */
    unsigned long wakeUps = 0;        /* of the camera's thread: does not rise while nothing happens */
    std::vector<std::string> faults;  /* as set, those that are over left out */

    /* Count of one kind of packet seen, 0 if none: seenCount("01 04 07"). */
    unsigned long seenCount(const std::string &kind) const;
    /* Count of one kind of reply sent, 0 if none: sentCount("error 41"). */
    unsigned long sentCount(const std::string &kind) const;
    /* A setting by its name; throws std::invalid_argument if this camera has none of that name. */
    int setting(const std::string &name) const;
};

const char *powerName(Power power); /* "off", "booting", "on", "standby" */

/* ---- Faults ---- */

struct FaultType {
    std::string name;
    std::string value;   /* what the value means and its range, for a user: "probability 0..1" */
    std::string initial; /* value when none is given; empty: one must be given, or none may be */
    std::string effect;  /* one line */
};

const std::vector<FaultType> &knownFaults();

/* ---- A camera ---- */

class Camera {
  public:
    /* Opens the pty, makes the link and starts the thread: the path can be opened as soon as the constructor
     * returns. */
    explicit Camera(const Options &options);
    /* Ends the thread, closes the pty, removes the link. Not from the trace callback. */
    ~Camera();
    Camera(const Camera &) = delete;
    Camera &operator=(const Camera &) = delete;

    /* What a host opens: the link if there is one, else the slave of the pty (another one after replug()). */
    std::string path() const;

    State state() const;
    /* The state as one line of JSON without a newline. Keys stay stable; new ones may come. */
    std::string stateJson() const;
    /*
     * Wait until the predicate holds for a state, at most timeout of real time. Returns whether it held. The
     * predicate is tried at once, after everything that happens, and every few milliseconds while the lens
     * moves; it runs in the calling thread with no lock held. Not from the trace callback.
     */
    bool waitFor(const std::function<bool(const State &)> &predicate,
                 std::chrono::milliseconds timeout) const;

    /*
     * Switch a fault on: NAME[=VALUE][#COUNT][@START[..END]]. VALUE as listed by knownFaults(). COUNT: it
     * strikes that often, then it is over. START, END: seconds from now, fractions allowed. Set again, it
     * replaces the fault of that name; others stay. "drop-rx=0.05", "no-completion#1", "mute=3@10",
     * "noise=1@0..5". Throws std::invalid_argument with what is allowed.
     */
    void setFault(const std::string &text);
    /* Switch a fault off. What it did stays done, but "mute", "stall" and "rate" end with it. Not set:
     * nothing happens. */
    void clearFault(const std::string &name);
    void clearFaults();

    /* Take the supply voltage away. Sockets, motion and volatile settings are gone; registers stay. */
    void powerCut();
    /* Apply the supply voltage: 90 38 FF, boot, on. Nothing happens to a camera that has it. */
    void powerApply();
    /* The adapter is pulled: the pty is closed, the link removed. The camera itself runs on, heard by nobody.
     */
    void hangUp();
    /* A new pty behind the same link, at 9600 bit/s as a fresh adapter. Without a hang-up before, one is made
     * first. */
    void replug();
    /* Send bytes to the host as they are, paced as a reply is; no fault changes them. */
    void sendRaw(const Bytes &bytes);

  private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace sim

#endif
