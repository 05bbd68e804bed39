/**
 * @file plan.h
 * What a run does: a camera and a list of steps, made from a seed before anything runs, and written as one
 * line that can be kept:
 *
 *     sony3 zoom-in exposure:2f1 fault:drop-rx=0.1 ask-zoom:1 calm again
 *
 * A step's number says whatever is left open by its name; the same number always says the same.
 */
#ifndef VISCACAM_TESTS_MODEL_PLAN_H
#define VISCACAM_TESTS_MODEL_PLAN_H

#include <cstdint>
#include <string>
#include <vector>

namespace model {

struct Step {
    std::string name;
    uint32_t value = 0;
    std::string fault = {}; /**< of "fault": as Camera::setFault() takes it */
};

struct Plan {
    std::string camera;
    std::vector<Step> steps;
};

/** The faults that strike, as Camera::setFault() takes them. None delays anything by more than 9 s. */
const std::vector<std::string> &Faults();

/** The plan of a seed. An empty camera: the seed chooses that too. */
Plan MakePlan(uint64_t seed, unsigned steps, const std::string &camera = "");

std::string ToLine(const Plan &plan);
/** Throws std::invalid_argument for a step that there is not. */
Plan FromLine(const std::string &line);

} // namespace model

#endif
