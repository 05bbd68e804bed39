// What goes over the line while a file is transferred: blocks of XMODEM, which are no packets.
#ifndef VISCACAM_DECODE_XMODEM_H
#define VISCACAM_DECODE_XMODEM_H

#include "decode/decode.h"

namespace decode {

/// What was said in one go during a transfer: "block 5, 1024 bytes", "taken", "end of file". Any thread.
std::string XmodemMeaning(const Bytes &bytes);

} // namespace decode

#endif
