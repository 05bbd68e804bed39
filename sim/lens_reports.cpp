#include "sim/block.h"

namespace sim {

namespace {

constexpr int REPORTS_ON = 2;

} // namespace

std::vector<Row> lensReportRows() {
    return {
        {"01 04 AE 0p", assignsOneOf("zoomReports", {2, 3})},
        {"01 04 AF 0p", assignsOneOf("focusReports", {2, 3})},
    };
}

// Called after everything that may have started or ended a motion, and when one is due to end.
void Block::watchLens() {
    if (!isKova(m_traits))
        return;
    for (Watch &watch : m_watches)
        watchAxis(watch);
}

void Block::watchAxis(Watch &watch) {
    const Lens::Motion motion = m_lens.motionOf(watch.axis);
    const bool moving = !m_lens.over(motion, m_world.now);
    const unsigned serial = motion.zoomSerial + motion.focusSerial; // that of the other axis is harmless
    if (moving && serial != watch.serial) {
        watch.serial = serial;
        later(m_lens.arrival(motion), [this, &watch] { watchAxis(watch); });
    }
    if (moving == watch.moving)
        return;
    watch.moving = moving;
    if (m_power == Power::on && m_settings.get(watch.setting) == REPORTS_ON)
        report({0x90, 0x07, 0x00, watch.report, moving, 0xFF});
}

bool Block::requestConfiguration() {
    if (!isKova(m_traits))
        return false;
    if (m_power == Power::on)
        report({0x90, 0x07, 0x00, 0xEF, 0xFF});
    return true;
}

// Behind what is due now: the acknowledgement of a drive leaves before the report of its motion.
void Block::report(const Bytes &bytes) {
    later(m_world.now, [this, bytes] { m_replies.send(bytes, "report"); });
}

} // namespace sim
