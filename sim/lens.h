#ifndef VISCACAM_SIM_LENS_H
#define VISCACAM_SIM_LENS_H

#include "sim/command_table.h"
#include "sim/settings.h"

namespace sim {

constexpr unsigned ZOOM_AXIS = 1;
constexpr unsigned FOCUS_AXIS = 2;

constexpr unsigned ZOOM_OPTICAL_END = 0x4000;
constexpr unsigned ZOOM_DIGITAL_END = 0x7AC0;
constexpr unsigned FOCUS_FAR = 0x1000;
constexpr unsigned FOCUS_NEAR = 0xF000;
constexpr unsigned SCENE_FOCUS = 0x4800; // where what the camera looks at is sharp

/* One motor: on its way from a place to another at a constant speed, or at rest. */
class Axis {
  public:
    explicit Axis(double position) : m_from(position), m_to(position) {}
    /* speed: positions per second of real time, above 0. */
    void drive(double target, double speed, Clock::time_point now);
    void stop(Clock::time_point now) { place(position(now), now); }
    void place(double position, Clock::time_point now);
    double position(Clock::time_point now) const;
    double target() const { return m_to; }
    bool moving(Clock::time_point now) const { return now < m_arrival; }
    Clock::time_point arrival() const { return m_arrival; }
    /* Another number for every motion: tells a motion from the one that replaced it. */
    unsigned serial() const { return m_serial; }

  private:
    double m_from;
    double m_to;
    Clock::time_point m_start{};
    Clock::time_point m_arrival{};
    unsigned m_serial = 0;
};

/* Zoom and focus. Speeds and places are of camera makers' blocks of this size, rounded. */
class Lens {
  public:
    Lens(double timeScale, Settings &settings);
    /* Power-up: wide end, focus on the scene. */
    void home(Clock::time_point now);

    /* A speed is 0 (slow) to 7; the target is cut to what the settings allow. */
    void driveZoom(unsigned target, unsigned speed, Clock::time_point now);
    void driveFocus(unsigned target, unsigned speed, Clock::time_point now);
    void stop(unsigned axes, Clock::time_point now);
    /* Auto focus finds the scene. */
    void focusOnScene(Clock::time_point now);
    /* After digital zoom was switched off or the near limit set: back into the range. */
    void obeyLimits(Clock::time_point now);

    unsigned zoomEnd() const;
    unsigned zoom(Clock::time_point now) const;
    unsigned focus(Clock::time_point now) const;
    bool zoomMoving(Clock::time_point now) const { return m_zoom.moving(now); }
    bool focusMoving(Clock::time_point now) const { return m_focus.moving(now); }

    /* A motion that a command started, to be asked later whether it is over: arrived, stopped or replaced by
     * another. */
    struct Motion {
        unsigned axes = 0;
        unsigned zoomSerial = 0;
        unsigned focusSerial = 0;
    };
    Motion motionOf(unsigned axes) const { return {axes, m_zoom.serial(), m_focus.serial()}; }
    bool over(const Motion &motion, Clock::time_point now) const;
    Clock::time_point arrival(const Motion &motion) const;

  private:
    double m_scale;
    Settings &m_settings;
    Axis m_zoom;
    Axis m_focus;
};

void addLensSettings(Settings &settings);
std::vector<Row> lensRows();

} // namespace sim

#endif
