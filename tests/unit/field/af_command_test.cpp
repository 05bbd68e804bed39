// The AF tuning's thread: lines of a text file become packets.
#include "tests/unit/field/field_test.h"

#include <unistd.h>

namespace unit {
namespace {

class AfCommandTest : public FieldTest {
  protected:
    TestFile m_commands{kAfFile}, m_weights{kWeightFile};

    /** The thread, stepped from pause to pause. */
    class AfThread : public ThreadUnderTest {
      public:
        AfThread() : ThreadUnderTest([] { AF_Debug(nullptr); }) {}
    };
    AfCommandTest() { Clib().ParkAtPause(1); }

    static std::string Packet(const std::string &text) {
        Bytes bytes = {0x81, 0x66, 0x66, 0x66, static_cast<uint8_t>(text.size())};
        bytes.insert(bytes.end(), text.begin(), text.end());
        return Hex(bytes);
    }
    static Lines Packets(const Lines &texts) {
        Lines packets;
        for (const std::string &text : texts) {
            packets.push_back(Packet(text));
        }
        return packets;
    }
    static std::string Read(const std::string &line) {
        return "INFO AF_Debug: dome read and send commamd:" + line + "\n";
    }
    /** Log and packets of a thread that found the file and then these lines behind its end. */
    Lines Appended(const std::string &content) {
        m_commands.Write("");
        AfThread thread;
        EXPECT_EQ("pause 1000000", thread.WaitParked());
        Host().Forget();
        m_commands.Append(content);
        EXPECT_EQ("pause 1000000", thread.Resume());
        return Host().Story({Call::Log, Call::Send});
    }
    static std::string Size(const std::string &size) {
        return "DEBUG AF_Debug:  weight.txt file size :" + size + "\n\n";
    }
};

TEST_F(AfCommandTest, StartsOneDetachedThread) {
    EXPECT_EQ(0U, AF_Debug_Init());
    EXPECT_EQ((Lines{"DEBUG AF_Debug_Init: FUN_ENTRY--param:", "thread create", "thread detach"}), Story());
    const std::vector<ThreadStart> starts = Clib().ThreadStarts();
    ASSERT_THAT(starts, SizeIs(1));
    EXPECT_EQ(AF_Debug, starts[0].body);
    EXPECT_TRUE(starts[0].default_attributes);
}

TEST_F(AfCommandTest, AThreadThatCannotBeCreatedIsReported) {
    Host().Fail(Call::ThreadCreate);
    EXPECT_EQ(1U, AF_Debug_Init());
    EXPECT_EQ((Lines{"DEBUG AF_Debug_Init: FUN_ENTRY--param:", "thread create",
                     "ERROR AF_Debug_Init: Create Thread for AF_Debug_Init Failed"}),
              Story());
}

TEST_F(AfCommandTest, LinesThatStoodThereAreNotSent) {
    m_commands.Write("old one\nold two\n");
    AfThread thread;
    EXPECT_EQ("pause 1000000", thread.WaitParked());
    EXPECT_EQ("AF_Debug", thread.Name());
    EXPECT_THAT(Host().Story({Call::Log, Call::Send}),
                ElementsAre("DEBUG AF_Debug: FUN_ENTRY--param:\n", "DEBUG AF_Debug: open testaf.txt ok\n\n"));
}

TEST_F(AfCommandTest, LinesThatAreAppendedAreSentOneByOne) {
    EXPECT_THAT(Appended("kp 3\nfocus\n"),
                ElementsAre(Read("kp 3\n"), "send 81 66 66 66 05 6B 70 20 33 0A", Read("focus\n"),
                            "send 81 66 66 66 06 66 6F 63 75 73 0A"));
}

TEST_F(AfCommandTest, TheFileIsLookedAtOnceASecond) {
    m_commands.Write("old\n");
    AfThread thread;
    EXPECT_EQ("pause 1000000", thread.WaitParked());
    for (size_t sent = 1; sent <= 5; ++sent) {
        m_commands.Append("a\n");
        EXPECT_EQ("pause 1000000", thread.Resume());
        EXPECT_EQ(sent, Host().Sent().size());
        EXPECT_EQ("pause 1000000", thread.Resume());
        EXPECT_EQ(sent, Host().Sent().size());
    }
    EXPECT_EQ(11 * 1000000U, Clib().Now());
}

TEST_F(AfCommandTest, AFileThatAppearsLaterIsReadFromItsStart) {
    AfThread thread;
    EXPECT_EQ("pause 10000000", thread.WaitParked());
    EXPECT_EQ("pause 10000000", thread.Resume());
    m_commands.Write("one\ntwo\n");
    EXPECT_EQ("pause 1000000", thread.Resume());
    EXPECT_THAT(Host().Story({Call::Log, Call::Send, Call::Sleep}),
                ElementsAre("DEBUG AF_Debug: FUN_ENTRY--param:\n",
                            "DEBUG AF_Debug: cannot open testaf.txt\n\n", "sleep 10000000",
                            "DEBUG AF_Debug: cannot open testaf.txt\n\n", "sleep 10000000",
                            "DEBUG AF_Debug: open testaf.txt ok\n\n", Read("one\n"),
                            "send 81 66 66 66 04 6F 6E 65 0A", Read("two\n"),
                            "send 81 66 66 66 04 74 77 6F 0A", "sleep 1000000"));
}

TEST_F(AfCommandTest, ALastLineWaitsForItsNewline) {
    m_commands.Write("");
    AfThread thread;
    thread.WaitParked();
    for (const char *piece : {"k", "p ", "3"}) {
        m_commands.Append(piece);
        EXPECT_EQ("pause 1000000", thread.Resume());
        EXPECT_THAT(Host().Sent(), IsEmpty());
    }
    m_commands.Append("\nnext");
    thread.Resume();
    EXPECT_EQ(Packets({"kp 3\n"}), Host().Sent());
    m_commands.Append("\n");
    thread.Resume();
    EXPECT_EQ(Packets({"kp 3\n", "next\n"}), Host().Sent());
}

TEST_F(AfCommandTest, AnOldLineWithoutNewlineIsNotSentWhenItsEndComes) {
    m_commands.Write("old ");
    AfThread thread;
    thread.WaitParked();
    m_commands.Append("new\n");
    thread.Resume();
    EXPECT_EQ(Packets({"new\n"}), Host().Sent()) << "from where the file ended";
}

TEST_F(AfCommandTest, LinesOfMoreThan122CharactersAreSplit) {
    const std::string a(122, 'a'), b(122, 'b');
    const struct {
        std::string content;
        Lines texts;
    } cases[] = {
        {std::string(120, 'a') + "\n", {std::string(120, 'a') + "\n"}},
        {std::string(121, 'a') + "\n", {std::string(121, 'a') + "\n"}},
        {a + "\n", {a, "\n"}},
        {a + "x\n", {a, "x\n"}},
        {a + b + "xyz\nnext\n", {a, b, "xyz\n", "next\n"}},
        {a, {a}}, // complete, as far as the read goes
        {a + "x", {a}},
    };
    for (const auto &test : cases) {
        Restart();
        Clib().ParkAtPause(1);
        Appended(test.content);
        EXPECT_EQ(Packets(test.texts), Host().Sent()) << test.content.size();
    }
}

TEST_F(AfCommandTest, AnEmptyLineIsANewline) {
    EXPECT_THAT(Appended("\n"), ElementsAre(Read("\n"), "send 81 66 66 66 01 0A"));
}

TEST_F(AfCommandTest, AZeroByteEndsTheTextAndAsTheLengthThePacket) {
    EXPECT_THAT(Appended(std::string("ab\0cd\n", 6)), ElementsAre(Read("ab"), "send 81 66 66 66 02 61 62"));
    Restart();
    Clib().ParkAtPause(1);
    EXPECT_THAT(Appended(std::string("\0cd\n", 4)), ElementsAre(Read(""), "send 81 66 66 66"));
}

TEST_F(AfCommandTest, AShortLineCarriesNothingOfTheLongOneBefore) {
    Appended(std::string(100, 'a') + "\nb\n");
    EXPECT_EQ(Packets({std::string(100, 'a') + "\n", "b\n"}), Host().Sent());
}

TEST_F(AfCommandTest, ItWritesThoughTheCameraCannotBeControlled) {
    ViscaSetCamCanCtrl(0);
    Appended("a\n");
    EXPECT_EQ(Packets({"a\n"}), Host().Sent());
}

TEST_F(AfCommandTest, APacketThatIsNotWrittenIsReportedByTheLinkAndTheNextFollows) {
    Host().Fail(Call::Send);
    EXPECT_THAT(Appended("a\nb\n"),
                ElementsAre(Read("a\n"), "send " + Packet("a\n"), "ERROR ViscaCamComSend: DRV_ComSend fail\n",
                            Read("b\n"), "send " + Packet("b\n")));
}

// --- weights

TEST_F(AfCommandTest, TheWeightFileFollowsTheWordAndAColon) {
    m_weights.Write("1,2,3");
    EXPECT_THAT(Appended("weight\n"),
                ElementsAre(Read("weight\n"), Size("5"), "INFO AF_Debug:  weight.txt file :weight:1,2,3\n\n",
                            "send 81 66 66 66 0C 77 65 69 67 68 74 3A 31 2C 32 2C 33"));
    EXPECT_EQ(17U, Host().Events(Call::Send).at(0).length);
}

TEST_F(AfCommandTest, TheFileTakesThePlaceOfTheRestOfTheLine) {
    m_weights.Write("7\n");
    Appended("weight and much more of it\n");
    EXPECT_EQ(Packets({"weight:7\n"}), Host().Sent());
}

TEST_F(AfCommandTest, TheWordMayStandAnywhereButSixCharactersAreKept) {
    m_weights.Write("7");
    Appended("set weight\nweigh\nWEIGHT\n");
    EXPECT_EQ(Packets({"set we:7", "weigh\n", "WEIGHT\n"}), Host().Sent());
}

TEST_F(AfCommandTest, AnEmptyWeightFileLeavesWordAndColon) {
    m_weights.Write("");
    EXPECT_THAT(Appended("weight 5\n"),
                ElementsAre(Read("weight 5\n"), Size("0"), "INFO AF_Debug:  weight.txt file :weight:\n\n",
                            "send " + Packet("weight:")));
}

TEST_F(AfCommandTest, AMissingWeightFileCostsTheLineOnly) {
    EXPECT_THAT(Appended("weight\nnext\n"),
                ElementsAre(Read("weight\n"), "ERROR AF_Debug: open weight.txt fail\n\n", Read("next\n"),
                            "send " + Packet("next\n")));
}

TEST_F(AfCommandTest, AWeightFileOf114BytesFits) {
    const std::string weights(114, '9');
    m_weights.Write(weights);
    EXPECT_THAT(Appended("weight\n"),
                ElementsAre(Read("weight\n"), Size("114"),
                            "INFO AF_Debug:  weight.txt file :weight:" + weights + "\n\n",
                            "send " + Packet("weight:" + weights)));
    EXPECT_EQ(126U, Host().Events(Call::Send).at(0).length);
}

TEST_F(AfCommandTest, ALargerWeightFileIsRefusedAndTheLineNotSent) {
    for (size_t size : {115U, 116U, 128U, 100000U}) {
        Restart();
        Clib().ParkAtPause(1);
        m_weights.Write(std::string(size, '9'));
        const Lines story = Appended("weight\nnext\n");
        ASSERT_THAT(story, SizeIs(5));
        EXPECT_EQ(Read("weight\n"), story[0]);
        EXPECT_EQ(Size(std::to_string(size)), story[1]);
        EXPECT_EQ("ERROR AF_Debug: weight.txt holds " + std::to_string(size) +
                      " bytes, more than 114, line not sent\n",
                  story[2]);
        EXPECT_EQ(Packets({"next\n"}), Host().Sent());
    }
}

TEST_F(AfCommandTest, AWeightFileWithoutASizeIsRefused) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    ASSERT_EQ(0, symlink(("/proc/self/fd/" + std::to_string(ends[0])).c_str(), kWeightFile));
    const std::string size = std::to_string(~0UL);
    EXPECT_THAT(Appended("weight\nnext\n"),
                ElementsAre(Read("weight\n"), Size(size),
                            "ERROR AF_Debug:  please check weight.txt,now file size :" + size + "\n\n",
                            Read("next\n"), "send " + Packet("next\n")));
    close(ends[0]);
    close(ends[1]);
}

TEST_F(AfCommandTest, TheWeightFileIsReadAfreshForEachLineAndClosed) {
    m_commands.Write("");
    AfThread thread;
    thread.WaitParked();
    int before = dup(0);
    close(before);
    for (const char *weights : {"11111", "2", "333"}) {
        m_weights.Write(weights);
        m_commands.Append("weight\n");
        thread.Resume();
    }
    m_weights.Write(std::string(115, '9'));
    m_commands.Append("weight\n");
    thread.Resume();
    EXPECT_EQ(Packets({"weight:11111", "weight:2", "weight:333"}), Host().Sent());
    const int after = dup(0);
    close(after);
    EXPECT_EQ(before, after) << "the lowest free descriptor";
}

TEST_F(AfCommandTest, AWeightFileWithAZeroByteIsSentUpToIt) {
    m_weights.Write(std::string("1,2\0,3", 6));
    Appended("weight\n");
    EXPECT_EQ(Packets({"weight:1,2"}), Host().Sent());
}

} // namespace
} // namespace unit
