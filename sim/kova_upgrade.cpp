#include "sim/kova_upgrade.h"

#include "sim/block.h"
#include "sim/firmware_image.h"

#include <stdexcept>

namespace sim {

namespace {

enum UpgradeState : unsigned { NONE_YET = 0, RECEIVING = 1, FLASHING = 3, SUCCEEDED = 4, FAILED = 5 };

constexpr struct {
    unsigned bit;
    const char *kind;
} FILES[] = {{0, "uimage"}, {1, "program"}, {10, "patch"}};

// A host's program that was cancelled says so, and the next file's must not take that for its own.
constexpr std::chrono::milliseconds LINE_REST{300};

Outcome startUpgrade(Block &block, const Args &args) {
    return block.upgrade().start(args.number(0, 8)) ? nothing() : refused(NOT_EXECUTABLE);
}

Outcome tellUpgrade(Block &block, const Args &) {
    return answerNibbles(block.upgrade().toldState(), 2);
}

} // namespace

std::vector<Row> kovaUpgradeRows() {
    return {
        {"01 04 AA 0p 0q 0r 0s 0t 0u 0v 0w", startUpgrade},
        {"09 04 A9", tellUpgrade},
    };
}

bool KovaUpgrade::underWay() const {
    return m_state == RECEIVING || m_state == FLASHING;
}

bool KovaUpgrade::start(uint32_t mask) {
    if (underWay())
        return false;
    ++m_serial;
    m_mask = mask;
    m_state = RECEIVING;
    m_came.clear();
    m_files.clear();
    m_expected.clear();
    for (const auto &file : FILES) {
        if (mask & 1u << file.bit)
            m_expected.push_back(file.kind);
    }
    m_complete = !m_expected.empty();
    try {
        m_folder.emplace();
        receiveNext();
    } catch (const std::runtime_error &error) {
        fail(error.what());
    }
    return true;
}

void KovaUpgrade::receiveNext() {
    if (m_expected.empty()) {
        check();
        return;
    }
    const std::string kind = m_expected.front();
    m_expected.pop_front();
    m_world.remark("upgrade: the " + kind + " file is awaited");
    m_transfer.receive(m_folder->file(kind), [this, kind](Transfer::End end) { accept(kind, end); });
}

void KovaUpgrade::accept(const std::string &kind, Transfer::End end) {
    if (end == Transfer::End::silent) {
        fail("the host sends no more");
        return;
    }
    if (end == Transfer::End::failed) {
        m_complete = false;
        m_world.scheduler.at(m_world.now + LINE_REST, [this, serial = m_serial] {
            if (serial == m_serial)
                receiveNext();
        });
        return;
    }
    m_came[kind] = readFile(m_folder->file(kind));
    m_files.push_back({kind, m_came[kind].size()});
    receiveNext();
}

void KovaUpgrade::check() {
    m_folder.reset();
    if (!m_complete) {
        fail("a file has not come");
        return;
    }
    for (const auto &[kind, file] : m_came) {
        const FirmwareImage image = checkImage(file, kind);
        if (!image.fault.empty()) {
            fail("the " + kind + " file is refused, " + image.fault);
            return;
        }
        if (!image.version.empty() && !m_kova.canRun(kind, image.version)) {
            fail("the module cannot tell a " + kind + " version " + image.version);
            return;
        }
    }
    flash();
}

void KovaUpgrade::flash() {
    m_state = FLASHING;
    m_world.remark("upgrade: flashing");
    m_world.after(m_world.options.kova.flashTime, [this, serial = m_serial] {
        if (serial != m_serial)
            return;
        m_stuck = m_world.faults.strikes(Fault::upgradeStuck);
        if (!m_stuck)
            finish();
    });
}

void KovaUpgrade::unstick() {
    if (m_stuck)
        finish();
}

void KovaUpgrade::finish() {
    m_stuck = false;
    if (m_world.options.kova.upgradeEndsIn != SUCCEEDED) {
        fail("as it was told to");
        return;
    }
    for (const auto &[kind, file] : m_came) {
        const std::string version = checkImage(file, kind).version;
        if (!version.empty())
            m_kova.run(kind, version);
    }
    m_state = SUCCEEDED;
    m_world.remark("upgrade: success");
}

void KovaUpgrade::fail(const std::string &why) {
    m_folder.reset();
    m_state = FAILED;
    m_world.remark("upgrade failed: " + why);
}

void KovaUpgrade::supplyOff() {
    if (!underWay())
        return;
    ++m_serial;
    m_stuck = false;
    m_expected.clear();
    fail("the supply is gone");
}

unsigned KovaUpgrade::toldState() {
    Faults &faults = m_world.faults;
    return faults.strikes(Fault::upgradeState) ? static_cast<unsigned>(faults.value(Fault::upgradeState))
                                               : m_state;
}

Bytes KovaUpgrade::received(const std::string &kind) const {
    const auto found = m_came.find(kind);
    return found != m_came.end() ? found->second : Bytes();
}

void KovaUpgrade::describe(KovaState &state) const {
    state.upgradeState = m_state;
    state.upgradeMask = m_mask;
    state.filesReceived = m_files;
}

} // namespace sim
