#ifndef VISCACAM_TESTS_SIM_XMODEM_END_H
#define VISCACAM_TESTS_SIM_XMODEM_END_H

#include "desk.h"

#include <string>
#include <vector>

/* The host's side of a transfer: sx or rx of lrzsz at the host's end of the line, until it ends. A terminal
 * would be flushed by them when they end, so the bytes are carried to and fro. Whether it succeeded. */
bool runXmodem(const HostEnd &host, const std::vector<std::string> &command);

/* Send these bytes, in blocks of 1024 if wanted. */
bool sendFile(const HostEnd &host, const sim::Bytes &content, bool longBlocks = true);
/* What the camera sends; nothing if the transfer fails. */
sim::Bytes receiveFile(const HostEnd &host);

/* Bytes of which none is like its neighbours or the padding of a block. */
sim::Bytes pattern(size_t size);
sim::Bytes bytesOf(const std::string &text);

/* A folder for temporary files, where a Camera puts its own too as long as this lives. */
class TempHere {
  public:
    TempHere();
    ~TempHere();
    TempHere(const TempHere &) = delete;
    TempHere &operator=(const TempHere &) = delete;
    /* Nothing is left in it. */
    bool isEmpty() const;

  private:
    std::string m_path;
    std::string m_before;
};

size_t openDescriptors();
/* No process that this one has started is there, ended or not. */
bool hasNoChild();

#endif
