// A file transfer over the camera's line: the board's CPLD switches the line over, a program of the board
// moves the bytes, and what is left over on the line is discarded. The caller owns the line meanwhile by one
// of the link's flags.
#ifndef VISCACAM_VISCA_SONY_CTRL_KOVA_TRANSFER_H
#define VISCACAM_VISCA_SONY_CTRL_KOVA_TRANSFER_H

namespace viscacam {

void SwitchLineToTransfer();
void SwitchLineBack();

// Flush both directions until the host succeeds; there is no limit to the tries. pcCaller is named in the
// log.
void FlushLine(const char *pcCaller);

} // namespace viscacam

#endif
