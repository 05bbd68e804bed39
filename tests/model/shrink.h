/**
 * @file shrink.h
 * Makes a failing plan as short as it will go: pieces are taken out, halves first, as long as the rest fails.
 */
#ifndef VISCACAM_TESTS_MODEL_SHRINK_H
#define VISCACAM_TESTS_MODEL_SHRINK_H

#include <functional>

#include "tests/model/plan.h"

namespace model {

/** @param fails whether a plan fails; asked at most tries times @return a plan that has failed */
Plan Shrink(Plan plan, const std::function<bool(const Plan &)> &fails, unsigned tries);

} // namespace model

#endif
