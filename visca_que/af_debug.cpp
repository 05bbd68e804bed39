// Tuning of the Kova module's auto-focus from a text file. A thread follows the file and sends every new line
// as one packet of its own kind: 81 66 66 66, length, text, without a terminator. The module answers in kind:
// 66, length, text.
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "visca_que/log.h"
#include "visca_que/thread.h"
#include "visca_que/wait.h"
#include "viscacam.h"

using namespace viscacam;

namespace {

constexpr char COMMAND_FILE[] = "/tmp/testaf.txt";
constexpr char WEIGHT_FILE[] = "/tmp/weight.txt";
constexpr char WEIGHT_WORD[] = "weight";
constexpr char AF_DEBUG[] = "AF_Debug"; // the function that the thread's lines name

constexpr uint32_t PACKET_SIZE = 128;
constexpr uint32_t TEXT_AT = 5;
constexpr uint32_t COLON_AT = TEXT_AT + sizeof(WEIGHT_WORD) - 1; // the line is taken to begin with the word
constexpr uint32_t WEIGHTS_AT = COLON_AT + 1;
constexpr long WEIGHTS_MAX = 114;

constexpr uint32_t FILE_WAIT_MS = 10000;
constexpr uint32_t LINE_WAIT_MS = 1000;

// Packets written less answers logged.
int32_t g_lUnanswered = 0;

void CountAnswers(int32_t lChange) {
    (void)__atomic_fetch_add(&g_lUnanswered, lChange, __ATOMIC_RELAXED);
}

// A packet under construction; the text is NUL-terminated.
struct AfPacket {
    char acByte[PACKET_SIZE];
};

char *Text(AfPacket *pstPacket) {
    return pstPacket->acByte + TEXT_AT;
}

// Waits for the file as long as it is missing. Old lines are passed over; those of a file that appeared later
// are not.
FILE *OpenCommandFile() {
    bool bWasMissing = false;
    FILE *pstFile = fopen(COMMAND_FILE, "r");
    while (pstFile == nullptr) {
        LOG_DEBUG_AS(AF_DEBUG, "cannot open testaf.txt\n\n");
        bWasMissing = true;
        SleepMs(FILE_WAIT_MS);
        pstFile = fopen(COMMAND_FILE, "r");
    }
    LOG_DEBUG_AS(AF_DEBUG, "open testaf.txt ok\n\n");
    if (!bWasMissing) {
        (void)fseek(pstFile, 0, SEEK_END);
    }
    return pstFile;
}

// The next complete line, newline included. A last line without one is read again until it is complete.
void ReadLine(FILE *pstFile, AfPacket *pstPacket) {
    for (;;) {
        const long lPosition = ftell(pstFile);
        const char *pcLine = fgets(Text(pstPacket), PACKET_SIZE - TEXT_AT, pstFile);
        if (pcLine != nullptr && feof(pstFile) == 0) {
            return;
        }
        (void)fseek(pstFile, lPosition, SEEK_SET);
        SleepMs(LINE_WAIT_MS);
    }
}

bool AppendWeights(FILE *pstFile, AfPacket *pstPacket) {
    (void)fseek(pstFile, 0, SEEK_END);
    const long lSize = ftell(pstFile);
    LOG_DEBUG_AS(AF_DEBUG, " weight.txt file size :%lu\n\n", static_cast<unsigned long>(lSize));
    if (lSize < 0) {
        LOG_ERROR_AS(AF_DEBUG, " please check weight.txt,now file size :%lu\n\n",
                     static_cast<unsigned long>(lSize));
        return false;
    }
    if (lSize > WEIGHTS_MAX) {
        LOG_ERROR_AS(AF_DEBUG, "weight.txt holds %ld bytes, more than %ld, line not sent\n", lSize,
                     WEIGHTS_MAX);
        return false;
    }
    (void)fseek(pstFile, 0, SEEK_SET);
    const size_t ulRead = fread(pstPacket->acByte + WEIGHTS_AT, 1, static_cast<size_t>(lSize), pstFile);
    pstPacket->acByte[COLON_AT] = ':';
    pstPacket->acByte[WEIGHTS_AT + ulRead] = '\0';
    LOG_INFO_AS(AF_DEBUG, " weight.txt file :%s\n\n", Text(pstPacket));
    return true;
}

// Put the weight file's content in place of what follows the word. False when the line cannot be sent.
bool TakeWeights(AfPacket *pstPacket) {
    FILE *pstFile = fopen(WEIGHT_FILE, "r");
    if (pstFile == nullptr) {
        LOG_ERROR_AS(AF_DEBUG, "open weight.txt fail\n\n");
        return false;
    }
    const bool bTaken = AppendWeights(pstFile, pstPacket);
    (void)fclose(pstFile);
    return bTaken;
}

void SendPacket(AfPacket *pstPacket) {
    constexpr uint8_t aucHead[] = {0x81, 0x66, 0x66, 0x66};
    static_assert(sizeof(aucHead) + 1 == TEXT_AT, "head and length stand before the text");
    memcpy(pstPacket->acByte, aucHead, sizeof(aucHead));
    pstPacket->acByte[sizeof(aucHead)] = static_cast<char>(strlen(Text(pstPacket)));
    CountAnswers(1);
    // Up to the first zero byte: a text without characters leaves the head alone.
    (void)ViscaCamComSend(static_cast<uint32_t>(strnlen(pstPacket->acByte, PACKET_SIZE)),
                          reinterpret_cast<const uint8_t *>(pstPacket->acByte));
}

// Read a piece of an answer, a gap of 1 s at most before it. 0 when nothing came, or when the line got a new
// owner meanwhile, to whom the bytes belong.
uint32_t ReadPiece(int32_t iFd, uint8_t *pucData, uint32_t ulLength) {
    if (!WaitForNextByte(iFd) || ViscaIsCamComBusy() == 1) {
        return 0;
    }
    const ssize_t lRead = read(iFd, pucData, ulLength);
    return lRead > 0 ? static_cast<uint32_t>(lRead) : 0;
}

} // namespace

uint32_t AF_Debug_Init(void) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    if (StartDetached(AF_Debug, nullptr) != 0) {
        LOG_ERROR("Create Thread for AF_Debug_Init Failed\n");
        return VISCA_FAILURE;
    }
    return VISCA_SUCCESS;
}

void *AF_Debug(void *) {
    LOG_DEBUG("FUN_ENTRY--param:\n");
    AfPacket stPacket = {};
    (void)prctl(PR_SET_NAME, "AF_Debug");
    FILE *pstFile = OpenCommandFile();
    for (;;) {
        ReadLine(pstFile, &stPacket);
        LOG_INFO("dome read and send commamd:%s\n", Text(&stPacket));
        if (strstr(Text(&stPacket), WEIGHT_WORD) == nullptr || TakeWeights(&stPacket)) {
            SendPacket(&stPacket);
        }
    }
}

// Called behind the 0x66. Everything that was announced is taken from the line, and what fits is kept; a
// stray 0x66 in noise costs a second at most.
void AF_DebugAck(void) {
    const int32_t iFd = ViscaGetCamComFd();
    uint8_t ucLength = 0;
    if (ReadPiece(iFd, &ucLength, 1) == 0) {
        LOG_WARN("AF debug answer cut off before its length\n");
        return;
    }
    uint8_t aucAnswer[UINT8_MAX + 1] = {};
    uint32_t ulReceived = 0;
    while (ulReceived < ucLength) {
        const uint32_t ulPiece = ReadPiece(iFd, aucAnswer + ulReceived, ucLength - ulReceived);
        if (ulPiece == 0) {
            LOG_WARN("AF debug answer cut off after %lu of %lu bytes\n", UL(ulReceived), UL(ucLength));
            return;
        }
        ulReceived += ulPiece;
    }
    constexpr uint32_t ulTextMax = 127;
    aucAnswer[ulReceived < ulTextMax ? ulReceived : ulTextMax] = 0;
    LOG_DEBUG("AF_DEBUG recv ack:%s\n", reinterpret_cast<const char *>(aucAnswer));
    CountAnswers(-1);
}
