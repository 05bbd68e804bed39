/**
 * @file forecast.h
 * What the library must do: which commands each call queues, and what it returns, from all that was accepted
 * before. A command is told by its third byte (81 01 04 XX), written down here by hand.
 *
 * The library remembers what it has sent of the image settings and sends what differs. So a repeated profile
 * tells what it remembers: whatever was refused goes out again, whatever was accepted does not.
 */
#ifndef VISCACAM_TESTS_MODEL_FORECAST_H
#define VISCACAM_TESTS_MODEL_FORECAST_H

#include <cstdint>
#include <map>
#include <vector>

#include "viscacam.h"

namespace model {

/** How many further commands are accepted when nothing limits them. */
constexpr unsigned NO_LIMIT = ~0U;

class Forecast {
  public:
    explicit Forecast(uint32_t moduleType);

    bool IsKova() const { return m_kova; }

    /** Nobody may control the camera after so many further commands. */
    void Limit(unsigned commands) { m_limit = commands; }
    unsigned Left() const { return m_limit; }
    /** Somebody else owns the line: everything is refused. */
    void SetOwned(bool owned) { m_owned = owned; }
    bool IsOwned() const { return m_owned; }
    bool Refuses() const { return m_owned || m_limit == 0; }

    /** The commands of the call that is forecast, begun anew. */
    std::vector<uint8_t> TakeCommands();

    /** A call that sends these one after the other and gives up at the first that is refused. */
    uint32_t Plain(const std::vector<uint8_t> &commands);
    uint32_t Exposure(const ExposureParam &profile);
    uint32_t WhiteBalance(const WhiteBalanceParam &balance);
    uint32_t Picture(const ImageEnhanceParam &picture);
    uint32_t DayNight(uint32_t mode);
    uint32_t Defog();
    uint32_t OnePush();
    /** Everything about the image is forgotten, as after a power cycle. */
    uint32_t Restore();

  private:
    bool Put(uint8_t command);
    bool Send(uint8_t command, int slot, int64_t value, bool *changed = nullptr, bool forced = false);
    bool Knows(int slot, int64_t value) const;
    bool SlowShutter(const ExposureParam &profile);
    bool Mode(uint32_t mode);
    bool Ranges(const ExposureParam &profile);
    bool Values(const ExposureParam &profile);
    bool Range(uint8_t command, int low, uint32_t lowValue, int high, uint32_t highValue);
    bool Compensation(int32_t value);
    bool Wdr(const ExposureParam &profile);
    bool Metering(const ExposureParam &profile);
    bool Day(uint32_t mode);

    uint32_t m_type;
    bool m_kova;
    bool m_owned = false;
    unsigned m_limit = NO_LIMIT;
    std::vector<uint8_t> m_commands;
    std::map<int, int64_t> m_known; // what was accepted last
    bool m_modeChanged = false;
    bool m_wdrChanged = false;
    bool m_slowChanged = false;
    bool m_dayChanged = false;
};

} // namespace model

#endif
