#ifndef VISCACAM_TOOL_TRANSFER_PROGRESS_H
#define VISCACAM_TOOL_TRANSFER_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace tool {

/* How far a transfer is. */
struct TransferState {
    uint64_t bytes = 0;                       /* over the line, all files together */
    uint64_t total = 0;                       /* of all files; 0: not known */
    double bytesPerSecond = 0;                /* over the last few seconds; 0: nothing moves */
    unsigned retries = 0;                     /* blocks that had to be sent again */
    std::optional<std::chrono::seconds> left; /* empty: not known */

    /* "45 %, 12288 of 27264 bytes, 960 bytes/s, 16 s left" or "12288 bytes, 960 bytes/s" */
    std::string shown() const;
};

/*
 * Follows an XMODEM transfer by what the programs of lrzsz print about it with -vv, in either direction. Any
 * number of files one after the other. One thread at a time.
 */
class TransferMeter {
  public:
    using Clock = std::chrono::steady_clock;

    /* total: bytes of all files; 0 when nobody knows. */
    explicit TransferMeter(uint64_t total = 0) : m_total(total) {}
    /* More of the text, cut anywhere. Times must not run backwards. */
    void feed(const std::string &text, Clock::time_point now = Clock::now());
    /* The text begins anew. */
    void restart();
    TransferState state(Clock::time_point now = Clock::now()) const;

  private:
    void take(const std::string &line, Clock::time_point now);
    void beginFile();
    void countReceived(unsigned block);
    void moveTo(uint64_t bytes, Clock::time_point now);

    uint64_t m_total;
    std::string m_rest;      /* a line whose end is not there yet */
    uint64_t m_finished = 0; /* bytes of the files before */
    uint64_t m_inFile = 0;   /* bytes of the file that is under way */
    unsigned m_block = 0;    /* last one that was received, a byte wide */
    unsigned m_retries = 0;
    std::deque<std::pair<Clock::time_point, uint64_t>> m_recent;
};

/*
 * The same for transfers of this process: from the constructor on the host has the transfer programs write
 * into a file of its own, which is read here. One at a time. One thread.
 */
class TransferProgress {
  public:
    /* total: bytes of all files; 0 when nobody knows. Throws std::runtime_error when the file cannot be made.
     */
    explicit TransferProgress(uint64_t total = 0);
    ~TransferProgress();
    TransferProgress(const TransferProgress &) = delete;
    TransferProgress &operator=(const TransferProgress &) = delete;

    /* Read what was added and tell how far it is. */
    TransferState look();
    /* Look, and put it into words if more has gone over since it was told last. */
    std::optional<std::string> news();

  private:
    bool wasEmptied() const;

    std::string m_path;
    int m_fd = -1;
    uint64_t m_offset = 0;
    uint64_t m_told = 0;
    TransferMeter m_meter;
};

} // namespace tool

#endif
