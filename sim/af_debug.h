#ifndef VISCACAM_SIM_AF_DEBUG_H
#define VISCACAM_SIM_AF_DEBUG_H

#include "sim/sim.h"

#include <optional>

namespace sim {

/*
 * The AF debug packet of a Kova module: 81 66 66 66, a length byte, that many bytes of text. It is the only
 * one without a terminator, and may be longer than others. Its answer: 66, a length byte, text.
 */

/* How long a packet is that begins with these bytes. Nothing: it is another one, or too few are known. */
std::optional<size_t> afDebugSize(const Bytes &begun);
/* Whether these bytes begin an AF debug packet. */
bool isAfDebug(const Bytes &begun);
/* The answer to a whole packet. */
Bytes afDebugAnswer(const Bytes &packet);

/* A pause of this length inside a packet ends it. */
constexpr std::chrono::seconds AF_DEBUG_PAUSE{1};

} // namespace sim

#endif
