// A law is what must hold whatever the input is. A broken one ends the process, which the fuzzer takes for a
// finding.
#ifndef VISCACAM_FUZZ_LAW_H
#define VISCACAM_FUZZ_LAW_H

namespace fuzz {

[[noreturn]] void Broken(const char *file, int line, const char *law);

} // namespace fuzz

#define LAW(condition) ((condition) ? (void)0 : fuzz::Broken(__FILE__, __LINE__, #condition))

#endif
