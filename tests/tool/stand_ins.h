/**
 * @file stand_ins.h
 * A library of which every public function does nothing but note that it was called, and succeed.
 */
#ifndef VISCACAM_TESTS_TOOL_STAND_INS_H
#define VISCACAM_TESTS_TOOL_STAND_INS_H

#include <functional>
#include <set>
#include <string>

namespace stand_ins {

/** The names of all functions, as the public header declares them. */
std::set<std::string> all();

/** The names of those that were called since the last time. */
std::set<std::string> takeCalled();

/** Called whenever one is called. */
void onCall(std::function<void()> told);

} // namespace stand_ins

#endif
