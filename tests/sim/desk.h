#ifndef VISCACAM_TESTS_SIM_DESK_H
#define VISCACAM_TESTS_SIM_DESK_H

#include "host_end.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

inline constexpr const char *DONE = "90 41 FF 90 51 FF";
inline constexpr const char *SYNTAX = "90 60 02 FF";
inline constexpr const char *REFUSED = "90 61 41 FF";

/* A camera without delays of line and vertical clock; its lens runs at a hundred times its speed. */
inline sim::Options quick(const std::string &name = "sony1") {
    sim::Options options = sim::Options::fast(name);
    options.timeScale = 100;
    return options;
}

/* One command and the setting that it leaves. */
struct Stored {
    const char *packet;
    const char *setting;
    int value;
};

/* A camera and a host at its line. */
struct Desk {
    explicit Desk(const sim::Options &options = quick()) : camera(options), host(camera) {}
    explicit Desk(const std::string &name) : Desk(quick(name)) {}

    bool until(const std::function<bool(const sim::State &)> &predicate) const {
        return camera.waitFor(predicate, HostEnd::PATIENCE);
    }
    bool rests() const {
        return until([](const sim::State &state) { return !state.zoomMoving && !state.focusMoving; });
    }
    bool isOn() const {
        return until([](const sim::State &state) { return state.power == sim::Power::on; });
    }
    void powerCycle() {
        EXPECT_EQ(host.command("81 01 04 00 03 FF"), DONE);
        EXPECT_EQ(host.command("81 01 04 00 02 FF"), DONE);
        EXPECT_TRUE(isOn());
    }
    int setting(const std::string &name) const { return camera.state().setting(name); }
    void expectStored(const std::vector<Stored> &rows) {
        for (const Stored &row : rows) {
            EXPECT_EQ(host.command(row.packet), DONE) << row.packet;
            EXPECT_EQ(setting(row.setting), row.value) << row.packet;
        }
    }
    void expectEach(const std::vector<const char *> &packets, const std::string &reply) {
        for (const char *packet : packets)
            EXPECT_EQ(host.ask(packet), reply) << packet;
    }

    sim::Camera camera;
    HostEnd host;
};

#endif
