// How far an XMODEM transfer is, read from what lrzsz prints.
#include "tool/transfer_progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tool {

using std::chrono::seconds;
using Clock = TransferMeter::Clock;

namespace {

const Clock::time_point START{};

const char SENDING[] = "Sending QDM_program.bin, 16 blocks: Give your local XMODEM receive command now.\r\n"
                       "\rXmodem sectors/kbytes sent:   0/ 0k";

} // namespace

TEST(TransferMeter, KnowsNothingBeforeTheFirstBlock) {
    TransferMeter meter(2048);
    meter.feed("Sending QDM_program.bin, 16 blocks: Give", START);
    EXPECT_EQ(meter.state(START).shown(), "0 %, 0 of 2048 bytes");
}

TEST(TransferMeter, CountsWhatASenderHasSent) {
    TransferMeter meter(2048);
    meter.feed(SENDING, START);
    meter.feed("\rXmodem sectors/kbytes sent:   8/ 1k", START);
    meter.feed("\rXmodem sectors/kbytes se", START + seconds(2));
    meter.feed("nt:  16/ 2k", START + seconds(2));
    const TransferState state = meter.state(START + seconds(2));
    EXPECT_EQ(state.bytes, 1024U);
    EXPECT_EQ(state.shown(), "50 %, 1024 of 2048 bytes, 512 bytes/s, 2 s left");
}

TEST(TransferMeter, TakesTheRealSizeAtTheEndOfAFile) {
    TransferMeter meter(2000);
    meter.feed(SENDING, START);
    meter.feed(
        "\rXmodem sectors/kbytes sent:  15/ 1k\rBytes Sent:   2000   BPS:960\r\n\r\nTransfer complete\r\n",
        START + seconds(2));
    EXPECT_EQ(meter.state(START + seconds(2)).bytes, 2000U);
}

TEST(TransferMeter, AddsUpFiles) {
    TransferMeter meter(4000);
    meter.feed(std::string(SENDING) + "\rBytes Sent:   1500   BPS:960\r\n", START);
    meter.feed("Sending QDM_uimage.bin, 16 blocks: Give your local XMODEM receive command now.\r\n"
               "\rXmodem sectors/kbytes sent:   8/ 1k\r",
               START + seconds(1));
    EXPECT_EQ(meter.state(START + seconds(1)).bytes, 2524U);
}

TEST(TransferMeter, CountsReceivedBlocksBeyondTheNumbersOnTheLine) {
    TransferMeter meter;
    meter.feed("rx: ready to receive /tmp/kova.tgz\r\n", START);
    for (unsigned block = 1; block <= 300; ++block)
        meter.feed("Blocks received: " + std::to_string(block % 256) + "\r", START + seconds(1));
    EXPECT_EQ(meter.state(START + seconds(1)).bytes, 300U * 128);
    meter.feed("Blocks received: -10\r\r\nBytes received:   38300   BPS:960\r\n", START + seconds(2));
    EXPECT_EQ(meter.state(START + seconds(2)).shown().substr(0, 11), "38300 bytes");
}

TEST(TransferMeter, CountsABlockThatComesTwiceOnce) {
    TransferMeter meter;
    meter.feed("rx: ready to receive a\r\nBlocks received: 1\rBlocks received: 1\rBlocks received: 2\r",
               START);
    EXPECT_EQ(meter.state(START).bytes, 256U);
}

TEST(TransferMeter, CountsRetries) {
    TransferMeter meter(2048);
    meter.feed(std::string(SENDING) + "\nRetry 1: NAK on sector\r\n\nRetry 2: Timeout on sector ACK\r\n",
               START);
    EXPECT_EQ(meter.state(START).shown(), "0 %, 0 of 2048 bytes, 2 retries");
}

TEST(TransferMeter, ShowsThatNothingMovesAnyMore) {
    TransferMeter meter(2048);
    meter.feed(std::string(SENDING) + "\rXmodem sectors/kbytes sent:   8/ 1k\r", START);
    meter.feed("\rXmodem sectors/kbytes sent:   8/ 1k\r", START + seconds(1));
    EXPECT_DOUBLE_EQ(meter.state(START + seconds(64)).bytesPerSecond, 16);
}

} // namespace tool
