// Includes no header of the library: what stands here are its symbols, without its types.
#include "tests/tool/stand_ins.h"

#include <cstdint>
#include <mutex>

namespace {

std::mutex mutex;
std::set<std::string> called;
std::function<void()> whenCalled;

void record(const char *name) {
    const std::lock_guard<std::mutex> lock(mutex);
    called.insert(name);
    if (whenCalled)
        whenCalled();
}

using UpgradeCallback = void (*)(uint32_t result);

} // namespace

// An upgrade is over at once.
#define KOVA_UpdateKova KovaUpdateKovaStandIn

#define STAND_IN(name)                                                                                       \
    extern "C" uintptr_t name() {                                                                            \
        record(#name);                                                                                       \
        return 0;                                                                                            \
    }
#include "stand_ins.inc"
#undef STAND_IN
#undef KOVA_UpdateKova

extern "C" {
uintptr_t KOVA_UpdateKova(UpgradeCallback callback) {
    record("KOVA_UpdateKova");
    callback(0);
    return 0;
}
uint32_t gulUpdateFileforKova = 0;
int32_t gstImgDetectParam[4] = {};
void *gpfnReportZoomStatus = nullptr;
void *gpfnReportFocusStatus = nullptr;
void *gpfnReconfigKovaImgParam = nullptr;
}

namespace stand_ins {

#define STAND_IN(name) #name,
std::set<std::string> all() {
    return {
#include "stand_ins.inc"
    };
}

std::set<std::string> takeCalled() {
    const std::lock_guard<std::mutex> lock(mutex);
    std::set<std::string> taken;
    taken.swap(called);
    return taken;
}

void onCall(std::function<void()> told) {
    const std::lock_guard<std::mutex> lock(mutex);
    whenCalled = std::move(told);
}

} // namespace stand_ins
