#ifndef VISCACAM_SIM_BLOCK_H
#define VISCACAM_SIM_BLOCK_H

#include "sim/cameras.h"
#include "sim/command_table.h"
#include "sim/framer.h"
#include "sim/image.h"
#include "sim/kova.h"
#include "sim/kova_log.h"
#include "sim/kova_upgrade.h"
#include "sim/lens.h"
#include "sim/registers.h"
#include "sim/reply_path.h"
#include "sim/settings.h"
#include "sim/world.h"

#include <deque>

namespace sim {

/*
 * The camera block behind the line. A packet that has arrived waits for the vertical edge and is then
 * processed:
 *
 *   command    row found -> socket free -> executable -> acknowledged 90 4y FF -> later completed 90 5y FF
 *   inquiry    row found -> executable -> answered 90 50 data FF
 *
 * and refused with 90 6y code FF at the first step that fails. What a row does is in the file of its subject.
 */
class Block {
  public:
    Block(World &world, ReplyPath &replies, Transfer &transfer, const Traits &traits);

    /* Whether its header is one that this camera answers to. */
    bool isAddressedBy(const Packet &packet) const;
    /* A packet whose last byte is on the line now. */
    void arrive(const Packet &packet);

    /* ---- power.cpp ---- */
    void startIn(Power power);
    void supplyOn();
    void supplyOff();
    void switchOn();
    void switchToStandby();
    void reset();
    Power power() const { return m_power; }
    /* The supply fails in the middle of the command that comes as this one from now; 0: it does not. */
    void cutPowerAtCommand(unsigned long command) { m_commandsToPowerCut = command; }

    /* ---- sockets, for the rows of network.cpp; a socket is 1 or 2 ---- */
    bool socketBusy(unsigned socket) const { return m_sockets[socket - 1].busy; }
    /* Its command ends without completion; the lens stops if it was moving for it. */
    void cancelSocket(unsigned socket);

    /* ---- lens_reports.cpp ---- */
    /* Ask the host to set the image parameters again; false: not a Kova module. */
    bool requestConfiguration();

    /* ---- for the rows of every subject ---- */
    Clock::time_point now() const { return m_world.now; }
    Clock::duration real(std::chrono::duration<double> cameraTime) const { return m_world.real(cameraTime); }
    const Traits &traits() const { return m_traits; }
    Settings &settings() { return m_settings; }
    Registers &registers() { return m_registers; }
    Lens &lens() { return m_lens; }
    Kova &kova() { return m_kova; }
    KovaUpgrade &upgrade() { return m_upgrade; }
    KovaLog &log() { return m_log; }

    /* ---- for the state ---- */
    Bytes received(const std::string &kind) const { return m_upgrade.received(kind); }
    void describe(State &state) const;

  private:
    struct Socket {
        bool busy = false;
        bool due = false;         /* nothing but the lens is still waited for */
        unsigned long serial = 0; /* another number for every command */
        Lens::Motion motion;
        Clock::time_point awaited{}; /* of the lens; asked for once, not again at every packet */
    };

    /* An axis whose motion a Kova module reports. */
    struct Watch {
        unsigned axis;
        const char *setting; /* reports wanted */
        uint8_t report;
        bool moving = false;
        unsigned serial = 0; /* of the motion whose end is waited for */
    };

    void enqueue(const Packet &packet);
    Clock::duration verticalPeriod() const;
    void awaitEdge();
    void processNext();
    void process(const Packet &packet);
    bool hears(const Packet &packet) const;
    void count(const Packet &packet);
    bool faultRefuses(const Packet &packet);
    void answerAfDebug(const Packet &packet);
    void serve(const Packet &packet, const Row &row, const Args &args);
    void execute(const Packet &packet, const Row &row, const Args &args);
    void accept(const Packet &packet, unsigned socket, const Outcome &outcome);
    void cutPowerAfter(Clock::time_point acknowledged);
    void becomeDue(unsigned socket, unsigned long serial);
    void settle(unsigned socket, unsigned long serial);
    void complete(unsigned socket, unsigned long serial);
    void sendCompletion(unsigned socket);
    unsigned freeSocket() const;
    void refuse(const Packet &packet, unsigned socket, uint8_t code);
    void reply(const Packet &packet, const Outcome &outcome);
    /* At this time, unless the camera loses its memory before. */
    void later(Clock::time_point when, Scheduler::Action action);
    void boot();
    void forgetAll();
    void watchLens();
    void watchAxis(Watch &watch);
    void report(const Bytes &bytes);

    World &m_world;
    ReplyPath &m_replies;
    Transfer &m_transfer;
    const Traits &m_traits;
    CommandTable m_table;
    Settings m_settings;
    Registers m_registers;
    Lens m_lens;
    Kova m_kova;
    KovaUpgrade m_upgrade;
    KovaLog m_log;
    Watch m_watches[2] = {{ZOOM_AXIS, "zoomReports", 0xAE}, {FOCUS_AXIS, "focusReports", 0xAF}};
    Power m_power = Power::off;
    unsigned long m_epoch = 0;   /* counts losses of memory */
    unsigned long m_outages = 0; /* counts losses of supply */
    Socket m_sockets[2];
    unsigned long m_serials = 0;
    std::deque<Packet> m_waiting;
    bool m_edgeAwaited = false;
    Clock::time_point m_edge{}; /* of any vertical period */
    std::map<std::string, unsigned long> m_seen;
    unsigned long m_ignored = 0;
    unsigned long m_commands = 0;
    unsigned long m_commandsToPowerCut = 0;
};

std::vector<Row> powerRows();
std::vector<Row> networkRows();
std::vector<Row> identityRows();
std::vector<Row> orientationRows();
void addOrientationSettings(Settings &settings, const Traits &traits);

} // namespace sim

#endif
