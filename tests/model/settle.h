/**
 * @file settle.h
 * What a careful host does when a line has been bad, so that camera and library understand each other again.
 */
#ifndef VISCACAM_TESTS_MODEL_SETTLE_H
#define VISCACAM_TESTS_MODEL_SETTLE_H

#include <chrono>
#include <functional>

namespace model {

/** Wait until something holds. @return whether it did in time */
bool Await(const std::function<bool()> &holds, std::chrono::milliseconds limit);

/** A command whose terminator was lost would swallow the next packet, so a terminator goes first. */
void EndTornPacket();

/** The camera answers. An answer may be that of an earlier question, see IsInStep(). */
bool Answers();

/** Drop all answers that came too late, and tell whether questions get their own again. */
bool IsInStep();

} // namespace model

#endif
