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
 * - The exposure mode decides what the host may set: shutter priority the shutter, iris priority the iris,
 * manual all three and no exposure compensation, a Kova module's mode 0E the gain; else it is not executable.
 * Everything else about the picture is accepted in every mode. Automatic exposure does not move the shutter,
 * gain and iris that are reported.
 * - A shutter that the host has chosen and that is longer than a vertical period stretches it.
 *
 * What a Kova module has beside a block:
 * - The version inquiries 09 04 B1, B2 and B5 are known under header 0x71 only, everything else under 0x81.
 * - A version in segments: the first inquiry is answered by the count of segments, each further one by the
 * next segment. A new series begins behind the last segment, after power-up and reset, and when the camera
 * was not asked for 8 s.
 * - Mirror and flip take effect at the next power-on or reset if the capability word has the bit 0x08, else
 * at once; the sensor offset always at the next power-on or reset.
 * - Zoom and focus reports, when switched on: 90 07 00 AE 01 FF (focus: AF) when a motion has begun, ..00..
 * when it is over. A motion that replaces another goes on without a report.
 * - A one-push focus in a rectangle is cut where one of its values has a byte 0xFF, as every packet is.
 *
 * - An upgrade, 01 04 AA, is not answered: the line belongs to XMODEM at once, and the module receives the
 * files of the mask one after the other, bit 0 uimage, bit 1 program, bit 10 patch. It flashes them when all
 * have come and are good, and then runs the new version without a word. A file may begin with a line
 *     viscacam-image KIND VERSION LENGTH CRC32
 * kind as above, length in decimal and CRC-32 in hex of all bytes behind the line; then kind, length and CRC
 * must be right, and the module tells VERSION from then on (a patch's as the program's). A file without the
 * line is good as it is and changes no version. A supply that fails meanwhile makes the upgrade fail.
 * - A log export, 01 04 A7, is not answered either: the module sends a .tgz by XMODEM with blocks of 128
 * bytes, padded with NUL to whole blocks, which tar accepts. A module of the second generation does so at
 * 115200 bit/s and is back at its own rate afterwards.
 * - While a transfer runs, nothing else is heard or sent. Only the upgrade state inquiry 09 04 A9 is answered
 * until the host has begun with a file. XMODEM's times are real ones, whatever the time scale.
 * - An AF debug packet is answered by 66, a length byte and "ok " with the text's printable characters, 127
 * at most in all. A pause of a second inside it ends it; its bytes are noise then.
 *
 * XMODEM is played by rx and sx of the package lrzsz, the archive is made by tar: both must be in PATH, else
 * an upgrade or export fails with a remark in the trace. Programs and temporary files end with the Camera.
 *
 * Threads: every Camera has one thread of its own, asleep in ppoll() unless a byte or a deadline is due; an
 * idle camera wakes up never. All member functions may be called from any thread, and from the trace
 * callback, except where a comment says otherwise. All times are of the monotonic clock.
 *
 * Errors: a wrong name, value or path gives std::invalid_argument, a refused system call std::runtime_error;
 * the text is one line that a user can act on.
 */

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
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

/*
 * All cameras that can be simulated, in the order in which a user is shown them: the blocks sony1, sony3,
 * sony4, sony5, and the Kova modules by the last four digits of their code, kova-2001 (0x02012001) to
 * kova-2A02, but kova1 (0x02012000) and kova2 (0x02012A01) for the first of the first generation and the
 * usual one of the second. findCamera() also knows kova for kova-2001, and kova-2000 and kova-2A01.
 */
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

/* What a Kova module says about itself; of no meaning for a block. */
struct KovaOptions {
    /* Capability word. 0x04: program version in segments, 0x08: mirror and flip need a power cycle, 0x10:
       there is an extension version. Not given: 0x1C for the second generation, 0 for the others. */
    std::optional<uint32_t> ability;
    std::array<uint8_t, 4> uimageVersion{0, 1, 2, 3};      /* digits, each below 0xFF: 1.23 */
    std::array<uint8_t, 4> oldProgramVersion{0, 12, 0, 3}; /* single-reply form, each below 0xFF: D012SP03 */
    /* In segments: up to 99 digits, separators '-' and '_' (told by the extension version of a module only;
       in a program version hosts take them for a transmission error), and characters from 'A' to '~'. */
    std::string programVersion = "B02D014SP05";
    std::string extensionVersion = "R01-B02_C3";
    std::string softVersion = "V1.0.3"; /* of the encoder: up to 13 characters from ' ' to '~' */
    struct Board {
        uint8_t version; /* below 0xFF, as the type */
        uint8_t type;
    };
    std::array<Board, 3> boards{{{1, 1}, {2, 1}, {3, 2}}}; /* encoder, sensor, motor */
    int temperature = 41;                                  /* degrees, -127 to 128 */
    std::chrono::milliseconds flashTime{2000};             /* of an upgrade, 0 to 10 min */
    unsigned upgradeEndsIn = 4; /* state of an upgrade whose files are good: 4 success, 5 failure */
    /* A transfer is given up when nothing comes from the host for so long, in real time; 1 ms to 10 min. A
       host that has not understood a byte is silent for up to 14 s. */
    std::chrono::milliseconds transferPatience{20000};
    bool sceneMoves = true; /* luma and focus value rise and fall in 20 s; false: luma stays at 0x80 */
};

struct Options {
    std::string camera = "sony1"; /* see findCamera() */
    unsigned baud = 9600;         /* the only rate that the camera hears: 9600, 19200 or 38400 */
    bool paced = true;        /* bytes take 10 bit times each, both ways; false: full speed of the machine */
    bool vertical = true;     /* one packet is processed per vertical period; false: at once */
    double frameRate = 59.94; /* vertical periods a second, 1 to 1000; 50 for a 25-frame norm. At 50 and less
                                 the slow shutters are 1/3, 1/6, 1/12, 1/25 s, else 1/4, 1/8, 1/15, 1/30 s */
    Latency latency = Latency::none();
    bool completesAtOnce = false; /* the completion of what needs no motion follows directly behind the
                                     acknowledgement; false: a vertical period later */
    std::chrono::milliseconds bootTime{3000}; /* after supply, power-on command and reset; 0 to 10 min */
    Power start = Power::booting; /* state when the camera starts; booting announces itself with 90 38 FF */
    bool silentWhileBooting =
        false;              /* true: the power inquiry too is unanswered while booting; false: answered 03 */
    double timeScale = 1.0; /* the camera's time runs this many times faster than real time, 0.01 to 1000:
                               boot, motion, vertical clock, latencies, byte times, times of faults */
    bool awake = false;     /* the camera's thread never sleeps, and costs a processor core: for measurements
                               that its late wake-ups would spoil */
    uint64_t seed = 1;      /* of everything random; same seed, faults and traffic: same behaviour */
    std::string link;       /* symbolic link to the slave, kept up to date by replug(); empty: none.
                               An existing link is replaced, any other file is an error */
    std::vector<std::string> faults; /* set before the camera starts; see Camera::setFault() */
    Trace trace;                     /* empty: none */
    KovaOptions kova;

    /* No pacing, no vertical clock, no latency, already powered on: for tests whose subject is not time. */
    static Options fast(const std::string &camera = "sony1");
};

/* ---- What a camera believes ---- */

/*
 * Names in State::settings. Values are as in the packets: 2 is on and 3 off where nothing else is said, a
 * shutter or an iris is the position, an offset is signed. All are volatile but those marked (kept), which a
 * Kova module keeps for ever. (later) takes effect at the next power-on or reset.
 *
 * Lens:
 * - focusMode (2 auto, 3 manual, 4), dzoom, nearLimit, irCorrection (0, 1), afMode (0 to 2)
 * Orientation:
 * - mirror, flip (kept on a Kova module; later with the ability 0x08)
 * Exposure:
 * - exposureMode (0 automatic, 3 manual, 0x0A shutter, 0x0B iris priority; Kova also 0x0C to 0x0F)
 * - shutter (0 to 0x15), iris (0 to 0x11), gain (0 to 0x0F; Kova: 0 to 100 percent)
 * - expComp, expCompLevel (0 to 0x0E, 7 is neutral), slowShutter
 * - metering (3 average, 2 spot; Kova also 4), spotX, spotY (0 to 15)
 * Exposure, Kova only:
 * - shutterValue (N of 1/N s, 1 to 65535; 0: the position counts), slowShutterLimit (N, 1 to 255)
 * - shutterLow, shutterHigh (N, 1 to 65535), gainLow, gainHigh (percent), each pair rising
 * Picture:
 * - wbMode (0 to 8), redGain, blueGain (0 to 255), colourGain (0 to 14; Kova: 0 to 255)
 * - aperture (0 to 15), noiseReduction (0 to 5), wdr (0, 2, 3; sony5: 0, 6, 3; Kova: 0, 1, 3)
 * - icr (2 black and white, 3 colour), autoIcr
 * - defog, defogLevel (sony5: 1 to 3 while on; else 0); sony3 and sony5 only
 * Picture, Kova only:
 * - brightness, contrast, noise2d, noise3d, defogMode, defogSense (0 to 255), wdrLevel (0 to 9)
 * Kova module:
 * - irCut (4 enabled, 5 disabled; kept), lowDelay (kept), domeType (0 to 4; kept)
 * - offsetX, offsetY (kept, later), offsetFlag (kept), sceneMode (the module's code)
 * - afTrigger (last one-push focus: 1, 6 to 9, 0x0A point, 0x0B rectangle; 0 none)
 * - afValue1 to afValue4 (of the point or rectangle), debugItem, debugValue, zoomReports, focusReports
 */

/* A file that a Kova module has received. */
struct KovaFile {
    std::string kind; /* "uimage", "program", "patch" */
    size_t size;      /* bytes with the padding of the last block */
};

/* What a Kova module believes beside its settings; all 0 on a block. */
struct KovaState {
    uint32_t ability = 0;
    uint32_t clock = 0;                  /* seconds as last set */
    unsigned luma = 0;                   /* of the scene now */
    uint32_t focusValue = 0;             /* of the picture now */
    unsigned upgradeState = 0;           /* 0 none yet, 1 receiving, 3 flashing, 4 success, 5 failed */
    uint32_t upgradeMask = 0;            /* of the last upgrade, a bit for each file */
    std::vector<KovaFile> filesReceived; /* by the last upgrade, in the order of arrival */
    unsigned long logExports = 0;        /* begun */
    unsigned long logSaves = 0;
    bool transferring = false;            /* the line belongs to XMODEM now */
    unsigned long transfersCompleted = 0; /* of either direction */
    unsigned long transfersFailed = 0;
    unsigned long transferBlocks = 0; /* seen on the line, repeated ones too; rises while one runs */
};

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
    bool socketBusy[2] = {false, false};           /* socket 1, socket 2 */
    std::map<std::string, int> settings;           /* by the names above, in effect */
    std::map<std::string, int> pendingSettings;    /* set, effective after the next power-on or reset */
    std::map<unsigned, unsigned> registers;        /* effective values that are not 0 */
    std::map<unsigned, unsigned> pendingRegisters; /* written, effective after the next power-on or reset */
    /*
     * Packets that the camera has processed, refused ones too, by their first bytes after the header in hex:
     * "01 04 07" zoom drive, "09 04 47" zoom position inquiry, "2y" cancel, "30 01" address set, "01 00 01"
     * IF_Clear, "long" packets of more than 16 bytes, "other" once there are more kinds than anybody needs.
     */
    std::map<std::string, unsigned long> seen;
    /* Replies by kind: "ack", "completion", "answer", "power-up", "report", "AF debug", "error 02", ... */
    std::map<std::string, unsigned long> sent;
    unsigned long packetsSeen = 0;    /* all packets that arrived, ignored ones too */
    unsigned long ignoredPackets = 0; /* for another address, or while off, booting or mute */
    unsigned long noiseBytes = 0;     /* bytes at a wrong rate, or between packets */
    unsigned long lostBytes = 0;      /* sent but the host did not read for so long that the line overran */
    KovaState kova;
    unsigned long wakeUps = 0;       /* of the camera's thread: does not rise while nothing happens */
    std::vector<std::string> faults; /* as set, those that are over left out */

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
    /* Have a Kova module ask the host to set the image parameters again: 90 07 00 EF FF. Nothing is sent
     * unless it is on. Throws std::invalid_argument on a block. */
    void requestConfiguration();
    /* The file of a kind ("uimage", "program", "patch") that the last upgrade has brought, with the padding
     * of its last block; empty if there is none. */
    Bytes receivedFile(const std::string &kind) const;
    /* Send bytes to the host as they are, paced as a reply is; no fault changes them. */
    void sendRaw(const Bytes &bytes);

  private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace sim

#endif
