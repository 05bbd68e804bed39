#ifndef VISCACAM_BENCH_LIBRARY_H
#define VISCACAM_BENCH_LIBRARY_H

#include <cstdint>
#include <string>

namespace bench {

constexpr uint32_t SONY_BLOCK = 0x02000001;
constexpr uint32_t KOVA_MODULE = 0x02012A01;

/* Start the library on this device, and wait until all that it sends at its start has gone out. Throws
 * std::runtime_error when it finds no camera. Once in a process. */
void startLibrary(const std::string &device, uint32_t moduleType);

} // namespace bench

#endif
