#include "sim/lens.h"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {

constexpr unsigned TOP_SPEED = 7;
constexpr double ZOOM_TRAVEL_SECONDS =
    2.4; // wide to optical tele end at top speed: more than the 2 s that hosts wait
constexpr double FOCUS_TRAVEL_SECONDS = 3.0;
constexpr int DZOOM_ON = 2;

// Speed 7 is the top, each step below it an eighth less.
double speedOf(unsigned speed, double travel, double seconds) {
    return travel / seconds * (std::min(speed, TOP_SPEED) + 1) / (TOP_SPEED + 1);
}

} // namespace

void Axis::drive(double target, double speed, Clock::time_point now) {
    m_from = position(now);
    m_to = target;
    m_start = now;
    const std::chrono::duration<double> length(std::abs(m_to - m_from) / speed);
    m_arrival = now + std::chrono::duration_cast<Clock::duration>(length);
    ++m_serial;
}

void Axis::place(double position, Clock::time_point now) {
    m_from = m_to = position;
    m_arrival = now;
    ++m_serial;
}

double Axis::position(Clock::time_point now) const {
    if (!moving(now))
        return m_to;
    const double done =
        std::chrono::duration<double>(now - m_start) / std::chrono::duration<double>(m_arrival - m_start);
    return m_from + (m_to - m_from) * std::max(done, 0.0);
}

Lens::Lens(double timeScale, Settings &settings)
    : m_scale(timeScale), m_settings(settings), m_zoom(0), m_focus(SCENE_FOCUS) {}

void Lens::home(Clock::time_point now) {
    m_zoom.place(0, now);
    m_focus.place(SCENE_FOCUS, now);
}

unsigned Lens::zoomEnd() const {
    return m_settings.get("dzoom") == DZOOM_ON ? ZOOM_DIGITAL_END : ZOOM_OPTICAL_END;
}

void Lens::driveZoom(unsigned target, unsigned speed, Clock::time_point now) {
    m_zoom.drive(std::min(target, zoomEnd()), m_scale * speedOf(speed, ZOOM_OPTICAL_END, ZOOM_TRAVEL_SECONDS),
                 now);
}

void Lens::driveFocus(unsigned target, unsigned speed, Clock::time_point now) {
    const auto nearLimit = static_cast<unsigned>(m_settings.get("nearLimit"));
    m_focus.drive(std::clamp(target, FOCUS_FAR, nearLimit),
                  m_scale * speedOf(speed, FOCUS_NEAR - FOCUS_FAR, FOCUS_TRAVEL_SECONDS), now);
}

void Lens::stop(unsigned axes, Clock::time_point now) {
    if (axes & ZOOM_AXIS)
        m_zoom.stop(now);
    if (axes & FOCUS_AXIS)
        m_focus.stop(now);
}

void Lens::focusOnScene(Clock::time_point now) {
    driveFocus(SCENE_FOCUS, TOP_SPEED, now);
}

void Lens::obeyLimits(Clock::time_point now) {
    if (m_zoom.target() > zoomEnd())
        driveZoom(zoomEnd(), TOP_SPEED, now);
    if (m_focus.target() > m_settings.get("nearLimit"))
        driveFocus(FOCUS_NEAR, TOP_SPEED, now);
}

unsigned Lens::zoom(Clock::time_point now) const {
    return static_cast<unsigned>(m_zoom.position(now));
}

unsigned Lens::focus(Clock::time_point now) const {
    return static_cast<unsigned>(m_focus.position(now));
}

bool Lens::over(const Motion &motion, Clock::time_point now) const {
    const bool zooming =
        (motion.axes & ZOOM_AXIS) && m_zoom.serial() == motion.zoomSerial && m_zoom.moving(now);
    const bool focusing =
        (motion.axes & FOCUS_AXIS) && m_focus.serial() == motion.focusSerial && m_focus.moving(now);
    return !zooming && !focusing;
}

Clock::time_point Lens::arrival(const Motion &motion) const {
    Clock::time_point latest{};
    if ((motion.axes & ZOOM_AXIS) && m_zoom.serial() == motion.zoomSerial)
        latest = std::max(latest, m_zoom.arrival());
    if ((motion.axes & FOCUS_AXIS) && m_focus.serial() == motion.focusSerial)
        latest = std::max(latest, m_focus.arrival());
    return latest;
}

} // namespace sim
