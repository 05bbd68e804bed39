// Tuning of the auto-focus from a text file, from its line to the module's answer in the log.
#include "tests/camera/field_camera_test.h"

#include <fstream>

namespace camera {

class AfDebugTest : public CameraTest {
  protected:
    static void Append(const std::string &line) { std::ofstream(kFile, std::ios::app) << line << std::flush; }

    static constexpr char kFile[] = "/tmp/testaf.txt";
    SharedFile m_file{kFile};
};

TEST_F(AfDebugTest, ALineThatIsAppendedReachesTheModuleAndItsAnswerIsLogged) {
    Append("old\n");
    // The start of the library's focus part begins to follow the file.
    SetLibraryTimeScale(5); // the file is looked at once a second
    StartWithoutFiles("kova2");
    Append("step 3\n");
    ASSERT_TRUE(AwaitHost("DEBUG AF_DEBUG recv ack:ok step 3"));
    SetLibraryTimeScale(1);
    CatchUp();
    EXPECT_THAT(Line(),
                ElementsAre("> 81 66 66 66 07 73 74 65 70 20 33 0A", "< 66 09 6F 6B 20 73 74 65 70 20 33"));
    EXPECT_EQ(State().sentCount("AF debug"), 1u);
    Forget();
    EXPECT_EQ(Zoom(), State().zoom);
    EXPECT_EQ(TimeOuts(), 0u);
}

} // namespace camera
