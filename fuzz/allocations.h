// Counts heap allocations of the calling thread.
#ifndef VISCACAM_FUZZ_ALLOCATIONS_H
#define VISCACAM_FUZZ_ALLOCATIONS_H

namespace fuzz {

/** Allocations since this object was made, on the thread that made it. One at a time on a thread. */
class Allocations {
  public:
    Allocations();
    ~Allocations();
    unsigned long Count() const;
};

} // namespace fuzz

#endif
