#ifndef VISCACAM_BENCH_MODBUS_H
#define VISCACAM_BENCH_MODBUS_H

#include <functional>

namespace bench {

/* A call that reads one register with libmodbus (RTU) over a pseudo-terminal, at whose other end a thread
 * answers as soon as it has read the question. Empty when the bench was built without libmodbus. Both throw
 * std::runtime_error. */
std::function<void()> registerReader();

} // namespace bench

#endif
