#include "bench/services.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include "bench/line.h"
#include "viscacam_host.h"

namespace bench {

namespace {

constexpr uint32_t QUEUES = 4;

Queue &queue(uint32_t id) {
    static Queue queues[QUEUES];
    return queues[id % QUEUES];
}

std::string g_device;
uint32_t g_moduleType = 0;
int g_port = -1;
std::atomic<int> g_log{-1};
std::atomic<uint64_t> g_lines{0};

} // namespace

Queue::Queue() : m_fd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

bool Queue::put(const void *element) {
    pthread_mutex_lock(&m_lock);
    const bool room = m_count < CAPACITY;
    if (room) {
        ++m_puts;
        std::memcpy(m_ring[(m_head + m_count) % CAPACITY], element, ELEMENT);
        if (m_sink || m_count == 0)
            eventfd_write(m_fd, 1);
        if (m_show != nullptr)
            m_show(m_ring[(m_head + m_count) % CAPACITY]);
        m_count += m_sink ? 0 : 1;
    }
    pthread_mutex_unlock(&m_lock);
    return room;
}

void *Queue::take() {
    pthread_mutex_lock(&m_lock);
    const bool there = m_count > 0;
    if (there) {
        std::memcpy(m_taken, m_ring[m_head], ELEMENT);
        m_head = (m_head + 1) % CAPACITY;
        eventfd_t ignored = 0;
        if (--m_count == 0)
            eventfd_read(m_fd, &ignored);
    }
    pthread_mutex_unlock(&m_lock);
    return there ? m_taken : nullptr;
}

bool Queue::empty() {
    pthread_mutex_lock(&m_lock);
    const bool empty = m_count == 0;
    pthread_mutex_unlock(&m_lock);
    return empty;
}

void serve(const std::string &device, uint32_t moduleType) {
    g_device = device;
    g_moduleType = moduleType;
}

Queue &commandQueue() {
    return queue(VISCA_CMD_QUEUE_ID);
}

void logTo(int fd) {
    g_log = fd;
}

uint64_t logLines() {
    return g_lines;
}

namespace {

void log(uint32_t level, const char *format, va_list arguments) {
    if (level <= VISCA_LOG_INFO)
        g_lines.fetch_add(1, std::memory_order_relaxed);
    const int fd = g_log.load(std::memory_order_relaxed);
    if (fd < 0)
        return;
    char line[512];
    const int size = std::vsnprintf(line, sizeof line, format, arguments);
    const size_t kept = size < static_cast<int>(sizeof line) ? static_cast<size_t>(size) : sizeof line - 1;
    if (size > 0 && write(fd, line, kept) < 0)
        logTo(-1);
}

} // namespace

} // namespace bench

using namespace bench;

uint32_t QUEUE_PutRawData(uint32_t, uint32_t ulQueueId, const void *pData, uint32_t) {
    return queue(ulQueueId).put(pData) ? 0 : 1;
}

uint32_t QUEUE_GetSerialData(uint32_t ulQueueId, void **ppElem) {
    *ppElem = queue(ulQueueId).take();
    return *ppElem == nullptr ? 1 : 0;
}

uint32_t QUEUE_IsEmpty(uint32_t, uint32_t ulQueueId, uint32_t *pulFlag) {
    *pulFlag = queue(ulQueueId).empty() ? 1 : 0;
    return 0;
}

uint32_t QUEUE_GetQueueReadFd(uint32_t, uint32_t ulQueueId, int32_t *piFd) {
    *piFd = queue(ulQueueId).readFd();
    return 0;
}

uint32_t DRV_OpenCom(uint32_t, int32_t *piFd) {
    *piFd = g_port = openLine(g_device);
    return g_port < 0 ? 1 : 0;
}

uint32_t DRV_SetComParam(uint32_t, const DrvComParam *pstParam) {
    termios settings = {};
    tcgetattr(g_port, &settings);
    const speed_t rate = pstParam->ulBaudRate == 38400   ? B38400
                         : pstParam->ulBaudRate == 19200 ? B19200
                                                         : B9600;
    cfsetspeed(&settings, rate);
    return tcsetattr(g_port, TCSANOW, &settings) == 0 ? 0 : 1;
}

uint32_t DRV_FlushCom(int32_t iFd, uint32_t) {
    return tcflush(iFd, TCIOFLUSH) == 0 ? 0 : 1;
}

int32_t DRV_ComSend(int32_t iFd, uint32_t ulLength, const uint8_t *pucData) {
    return static_cast<int32_t>(write(iFd, pucData, ulLength));
}

void DRV_Common_Print(uint32_t ulLevel, const char *pcFormat, ...) {
    va_list arguments;
    va_start(arguments, pcFormat);
    log(ulLevel, pcFormat, arguments);
    va_end(arguments);
}

void DRV_Common_Print_Cam(uint32_t ulLevel, const char *pcFormat, ...) {
    va_list arguments;
    va_start(arguments, pcFormat);
    log(ulLevel, pcFormat, arguments);
    va_end(arguments);
}

uint32_t COMDRV_GetCamModuleType(void) {
    return g_moduleType;
}

uint32_t COMDRV_GetProductSubType(void) {
    return 0;
}

uint32_t COMDRV_GetManuinfo(ManuInfo *) {
    return 1;
}

uint32_t COMDRV_GetCaller(void) {
    return 2;
}

uint32_t COMDRV_System(const char *) {
    return 0;
}

uint32_t COMDRV_DBG_RegisterThreadInfo(uint32_t, uint32_t, const char *) {
    return 0;
}
