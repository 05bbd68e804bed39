#include "fuzz/world.h"

#include "fuzz/law.h"

#include <cstring>
#include <sys/mman.h>
#include <ucontext.h>

#if defined(__SANITIZE_ADDRESS__)
#    define VISCACAM_FUZZ_ASAN
#elif defined(__has_feature)
#    if __has_feature(address_sanitizer)
#        define VISCACAM_FUZZ_ASAN
#    endif
#endif
#ifdef VISCACAM_FUZZ_ASAN
#    include <sanitizer/common_interface_defs.h>
#endif

namespace fuzz {

namespace {

constexpr size_t MOST_CHUNKS = 256;
constexpr size_t QUEUES = 4;
constexpr size_t MOST_FIBERS = 4;
constexpr size_t STACK_SIZE = 256 * 1024;

struct Chunk {
    Span bytes;
    uint64_t due;
};

struct Queue {
    ViscaPkt element[QUEUE_CAPACITY];
    ViscaPkt taken;
    size_t first, count, capacity;
};

struct Fiber {
    ucontext_t context;
    void *(*body)(void *);
    void *argument;
    const void *stack;
    size_t stack_size;
    int fd;
    uint64_t deadline;
};

thread_local bool t_inside = false;

// The clock and the fibers go on from run to run; everything else is fresh.
uint64_t g_now = 1000 * SECOND;
Fiber g_fiber[MOST_FIBERS];
size_t g_fibers = 1;
size_t g_current = 0;
size_t g_left = 0;

struct State {
    Chunk chunk[MOST_CHUNKS];
    size_t chunks, first_chunk;
    size_t read_limit;
    unsigned long bytes_read, waits, log_lines, dumps;
    uint32_t module_type;
    Queue queue[QUEUES];
};
State g_state;
Hooks g_hooks;

bool IsReadable(int fd) {
    if (fd == PORT_FD)
        return g_state.first_chunk < g_state.chunks && g_state.chunk[g_state.first_chunk].due <= g_now;
    if (fd >= FIRST_QUEUE_FD && fd < FIRST_QUEUE_FD + static_cast<int>(QUEUES))
        return g_state.queue[fd - FIRST_QUEUE_FD].count > 0;
    return false;
}

bool IsReady(const Fiber &fiber) {
    return IsReadable(fiber.fd) || fiber.deadline <= g_now;
}

/** The next that can go on, in turn; MOST_FIBERS if none can. */
size_t NextReady() {
    for (size_t i = 1; i <= g_fibers; ++i) {
        const size_t candidate = (g_current + i) % g_fibers;
        if (IsReady(g_fiber[candidate]))
            return candidate;
    }
    return MOST_FIBERS;
}

uint64_t NextEvent() {
    uint64_t next = NEVER;
    for (size_t i = 0; i < g_fibers; ++i)
        next = g_fiber[i].deadline < next ? g_fiber[i].deadline : next;
    if (g_state.first_chunk < g_state.chunks) {
        const uint64_t due = g_state.chunk[g_state.first_chunk].due;
        next = due > g_now && due < next ? due : next;
    }
    return next;
}

/** On a stack that was just switched to. Tells where the stack lies that was left. */
void Arrive(void *fake_stack) {
#ifdef VISCACAM_FUZZ_ASAN
    const void *stack = nullptr;
    __sanitizer_finish_switch_fiber(fake_stack, &stack, &g_fiber[g_left].stack_size);
    g_fiber[g_left].stack = stack;
#else
    (void)fake_stack;
#endif
}

void SwitchTo(size_t next) {
    g_left = g_current;
    g_current = next;
    ucontext_t *const left = &g_fiber[g_left].context;
    void *fake_stack = nullptr;
#ifdef VISCACAM_FUZZ_ASAN
    __sanitizer_start_switch_fiber(&fake_stack, g_fiber[next].stack, g_fiber[next].stack_size);
#endif
    swapcontext(left, &g_fiber[next].context);
    Arrive(fake_stack);
}

void FiberBody() {
    Arrive(nullptr);
    const Fiber &self = g_fiber[g_current];
    (void)self.body(self.argument);
    Broken(__FILE__, __LINE__, "a thread of the library never ends");
}

} // namespace

bool Inside() {
    return t_inside;
}

Run::Run() {
    g_state.chunks = g_state.first_chunk = 0;
    g_state.bytes_read = g_state.waits = g_state.log_lines = g_state.dumps = 0;
    for (Queue &queue : g_state.queue) {
        queue.first = queue.count = 0;
        queue.capacity = QUEUE_CAPACITY;
    }
    g_state.read_limit = SIZE_MAX;
    g_state.module_type = 0x02000001;
    g_hooks = Hooks();
    t_inside = true;
}

Run::~Run() {
    RemoveFiles();
    t_inside = false;
}

Hooks &World() {
    return g_hooks;
}

/* ---- The clock ---- */

uint64_t Now() {
    return g_now;
}

unsigned long Waits() {
    return g_state.waits;
}

bool WaitUntil(int fd, uint64_t deadline) {
    ++g_state.waits;
    Fiber &self = g_fiber[g_current];
    self.fd = fd;
    self.deadline = deadline;
    while (!IsReady(self)) {
        const size_t next = NextReady();
        if (next < MOST_FIBERS) {
            SwitchTo(next); // it comes back when this one can go on
            continue;
        }
        const uint64_t event = NextEvent();
        if (event == NEVER)
            break; // the line is silent for ever
        g_now = event;
    }
    const bool readable = IsReadable(fd);
    self.fd = NO_FD;
    if (g_hooks.idle != nullptr && !readable)
        g_hooks.idle();
    return readable;
}

/* ---- The port ---- */

void Feed(Span bytes, uint64_t when) {
    if (bytes.size == 0 || g_state.chunks == MOST_CHUNKS)
        return;
    size_t at = g_state.chunks++;
    for (; at > g_state.first_chunk && g_state.chunk[at - 1].due > when; --at)
        g_state.chunk[at] = g_state.chunk[at - 1];
    g_state.chunk[at] = {bytes, when};
}

size_t ReadPort(uint8_t *to, size_t size) {
    if (g_hooks.read != nullptr)
        g_hooks.read();
    if (!IsReadable(PORT_FD) && !WaitUntil(PORT_FD, NEVER))
        return 0;
    size_t done = 0;
    const size_t most = size < g_state.read_limit ? size : g_state.read_limit;
    while (done < most && IsReadable(PORT_FD)) {
        Span &bytes = g_state.chunk[g_state.first_chunk].bytes;
        const size_t piece = bytes.size < most - done ? bytes.size : most - done;
        memcpy(to + done, bytes.bytes, piece);
        done += piece;
        bytes = {bytes.bytes + piece, bytes.size - piece};
        if (bytes.size == 0)
            ++g_state.first_chunk;
    }
    g_state.bytes_read += done;
    return done;
}

void LimitReads(size_t most) {
    g_state.read_limit = most;
}

size_t Unread() {
    size_t unread = 0;
    for (size_t i = g_state.first_chunk; i < g_state.chunks; ++i)
        unread += g_state.chunk[i].bytes.size;
    return unread;
}

unsigned long BytesRead() {
    return g_state.bytes_read;
}

/* ---- The host ---- */

void SetModuleType(uint32_t type) {
    g_state.module_type = type;
}

unsigned long LogLines() {
    return g_state.log_lines;
}

unsigned long Dumps() {
    return g_state.dumps;
}

void AddLogLine(bool dump) {
    ++(dump ? g_state.dumps : g_state.log_lines);
}

void LimitQueue(uint32_t queue, size_t capacity) {
    g_state.queue[queue].capacity = capacity;
}

size_t QueueLength(uint32_t queue) {
    return g_state.queue[queue].count;
}

bool Preload(uint32_t id, const ViscaPkt &packet) {
    Queue &queue = g_state.queue[id];
    if (queue.count >= queue.capacity)
        return false;
    queue.element[(queue.first + queue.count++) % QUEUE_CAPACITY] = packet;
    return true;
}

void EmptyQueue(uint32_t queue) {
    g_state.queue[queue].count = 0;
}

/* ---- Fibers ---- */

void StartFiber(void *(*body)(void *), void *argument) {
    LAW(g_fibers < MOST_FIBERS);
    Fiber &fiber = g_fiber[g_fibers];
    fiber.body = body;
    fiber.argument = argument;
    void *stack =
        mmap(nullptr, STACK_SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    LAW(stack != MAP_FAILED);
    fiber.stack = stack;
    fiber.stack_size = STACK_SIZE;
    fiber.fd = NO_FD;
    fiber.deadline = 0; // at once
    getcontext(&fiber.context);
    fiber.context.uc_stack.ss_sp = stack;
    fiber.context.uc_stack.ss_size = STACK_SIZE;
    fiber.context.uc_link = nullptr;
    makecontext(&fiber.context, FiberBody, 0);
    ++g_fibers;
}

size_t CurrentFiber() {
    return g_current;
}

} // namespace fuzz

/* ---- The services of viscacam_host.h ---- */

using fuzz::g_state;

extern "C" {

uint32_t QUEUE_PutRawData(uint32_t ulType, uint32_t ulQueueId, const void *pData, uint32_t ulLength) {
    LAW(ulType == VISCA_QUEUE_TYPE && ulQueueId < fuzz::QUEUES && ulQueueId != 2);
    LAW(ulLength == sizeof(ViscaPkt));
    ViscaPkt packet;
    memcpy(&packet, pData, sizeof(packet));
    if (fuzz::g_hooks.put != nullptr && !fuzz::g_hooks.put(ulQueueId, packet))
        return 1;
    return fuzz::Preload(ulQueueId, packet) ? 0 : 1;
}

uint32_t QUEUE_GetSerialData(uint32_t ulQueueId, void **ppElem) {
    LAW(ulQueueId < fuzz::QUEUES);
    fuzz::Queue &queue = g_state.queue[ulQueueId];
    if (queue.count == 0)
        return 1;
    queue.taken = queue.element[queue.first];
    queue.first = (queue.first + 1) % fuzz::QUEUE_CAPACITY;
    --queue.count;
    *ppElem = &queue.taken;
    if (fuzz::g_hooks.taken != nullptr)
        fuzz::g_hooks.taken(ulQueueId, queue.taken);
    return 0;
}

uint32_t QUEUE_IsEmpty(uint32_t ulType, uint32_t ulQueueId, uint32_t *pulFlag) {
    LAW(ulType == VISCA_QUEUE_TYPE && ulQueueId < fuzz::QUEUES);
    *pulFlag = g_state.queue[ulQueueId].count == 0 ? 1 : 0;
    return 0;
}

uint32_t QUEUE_GetQueueReadFd(uint32_t ulType, uint32_t ulQueueId, int32_t *piFd) {
    LAW(ulType == VISCA_QUEUE_TYPE && ulQueueId < fuzz::QUEUES);
    *piFd = fuzz::FIRST_QUEUE_FD + static_cast<int32_t>(ulQueueId);
    return 0;
}

uint32_t DRV_OpenCom(uint32_t, int32_t *piFd) {
    *piFd = fuzz::PORT_FD;
    return 0;
}

uint32_t DRV_SetComParam(uint32_t, const DrvComParam *) {
    return 0;
}

uint32_t DRV_FlushCom(int32_t iFd, uint32_t ulMode) {
    LAW(iFd == fuzz::PORT_FD && ulMode == VISCA_FLUSH_BOTH);
    return 0;
}

int32_t DRV_ComSend(int32_t iFd, uint32_t ulLength, const uint8_t *pucData) {
    LAW(iFd == fuzz::PORT_FD && ulLength > 0);
    return fuzz::g_hooks.send != nullptr ? fuzz::g_hooks.send({pucData, ulLength})
                                         : static_cast<int32_t>(ulLength);
}

void DRV_Common_Print(uint32_t ulLevel, const char *pcFormat, ...) {
    fuzz::AddLogLine(false);
    if (fuzz::g_hooks.log != nullptr) {
        __builtin_va_list arguments;
        __builtin_va_start(arguments, pcFormat);
        fuzz::g_hooks.log(ulLevel, pcFormat, arguments);
        __builtin_va_end(arguments);
    }
}

void DRV_Common_Print_Cam(uint32_t, const char *, ...) {
    fuzz::AddLogLine(true);
}

uint32_t COMDRV_GetCamModuleType(void) {
    return g_state.module_type;
}

uint32_t COMDRV_GetProductSubType(void) {
    return 0;
}

uint32_t COMDRV_GetManuinfo(ManuInfo *pstManuInfo) {
    memset(pstManuInfo, 0, sizeof(*pstManuInfo));
    return 0;
}

uint32_t COMDRV_GetCaller(void) {
    return 0;
}

uint32_t COMDRV_System(const char *pcCommand) {
    if (fuzz::g_hooks.system != nullptr)
        fuzz::g_hooks.system(pcCommand);
    return 0;
}

uint32_t COMDRV_DBG_RegisterThreadInfo(uint32_t, uint32_t, const char *) {
    return 0;
}

} // extern "C"
