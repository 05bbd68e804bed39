// What the settings of the camera share: sending one, and looking a host value up in a table of camera codes.
#ifndef VISCACAM_VISCA_SONY_CTRL_SETTING_H
#define VISCACAM_VISCA_SONY_CTRL_SETTING_H

#include <stdint.h>

#include "visca_que/command.h"
#include "visca_que/log.h"

namespace viscacam {

// Queue a setting; 1, with the usual line logged at the caller's place, when it was refused.
template <uint32_t N>
uint32_t SendSetting(const uint8_t (&aucPayload)[N], const LogPlace &rCaller) {
    if (QueueCommand(aucPayload) == VISCA_SUCCESS) {
        return VISCA_SUCCESS;
    }
    LOG_ERROR_AT(rCaller, "ViscaEnQueueCmd() fail exit\n");
    return VISCA_FAILURE;
}

// A row of a table: what the host asks for, what the camera is told.
struct CodeRow {
    uint32_t ulValue;
    uint8_t ucCode;
};

// The camera's code for a host value; false when the table does not hold it.
template <uint32_t N>
bool FindCode(const CodeRow (&astTable)[N], uint32_t ulValue, uint8_t *pucCode) {
    for (const CodeRow &rRow : astTable) {
        if (rRow.ulValue == ulValue) {
            *pucCode = rRow.ucCode;
            return true;
        }
    }
    return false;
}

// Laws that every table keeps: no host value twice.
template <uint32_t N>
constexpr bool HasUniqueValues(const CodeRow (&astTable)[N]) {
    for (uint32_t i = 0; i < N; ++i) {
        for (uint32_t j = i + 1; j < N; ++j) {
            if (astTable[i].ulValue == astTable[j].ulValue) {
                return false;
            }
        }
    }
    return true;
}

} // namespace viscacam

#endif
