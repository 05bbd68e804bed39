/**
 * @file calls.h
 * The library's public calls as steps: the call itself, and what is forecast of it.
 */
#ifndef VISCACAM_TESTS_MODEL_CALLS_H
#define VISCACAM_TESTS_MODEL_CALLS_H

#include <cstdint>
#include <string>

#include "sim/sim.h"
#include "tests/model/forecast.h"

namespace model {

/** Name of a call that applies a profile, by any number. */
std::string ProfileName(uint64_t number);
/** Name of a call that this module has, by any number. */
std::string CallName(uint64_t number, bool kova);
bool IsCall(const std::string &name);
/** An inquiry blocks and queues nothing. */
bool IsInquiry(const std::string &name);

/** Queue something: make the call, and its forecast. "again" is the profile before. */
class Commands {
  public:
    /** @return what the library returned */
    uint32_t Call(const std::string &name, uint32_t value);
    /** The same call in the forecast. @return what the library must return */
    uint32_t Foresee(const std::string &name, uint32_t value, Forecast &forecast);

  private:
    std::string m_profile = "exposure";
    uint32_t m_profileValue = 0;
};

/**
 * Ask something. @param text receives what came, in words
 * @return what the library returned
 */
uint32_t Ask(const std::string &name, uint32_t value, std::string *text);
/** The same words from what the camera is. */
std::string RightAnswer(const std::string &name, uint32_t value, const sim::State &state);

} // namespace model

#endif
