/* The story of a log export: the module's archive comes over the line and is listed. */
#include <array>
#include <cstdio>
#include <future>
#include <memory>
#include <optional>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "tool/demo/chapters.h"
#include "tool/transfer_progress.h"
#include "viscacam.h"

namespace tool {

namespace {

const char ARCHIVE[] = "/tmp/kova.tgz"; // where the library has it put
const char LIST_ARCHIVE[] = "tar -tvzf /tmp/kova.tgz 2>&1";
constexpr uint32_t WHOLE_LOG = 0;
constexpr std::chrono::milliseconds TELL_EVERY{500};

// On a thread of its own: the call takes as long as the archive, and the story tells how far it is.
std::future<uint32_t> start() {
    const auto task =
        std::make_shared<std::packaged_task<uint32_t()>>([] { return KOVA_ExportLog(WHOLE_LOG); });
    std::future<uint32_t> result = task->get_future();
    std::thread([task] { (*task)(); }).detach();
    return result;
}

void run(Stage &stage) {
    stage.heading("The export: asked for, sent by the module by XMODEM");
    TransferProgress progress(0);
    std::future<uint32_t> result = start();
    while (result.wait_for(TELL_EVERY) != std::future_status::ready) {
        if (const std::optional<std::string> line = progress.news())
            stage.say(*line);
    }
    if (result.get() != VISCA_SUCCESS)
        throw StoryOver("the library did not start the export");
}

uint64_t archiveSize() {
    struct stat facts = {};
    if (stat(ARCHIVE, &facts) != 0 || facts.st_size == 0)
        throw StoryOver(std::string("no archive came: ") + ARCHIVE + " is not there");
    return static_cast<uint64_t>(facts.st_size);
}

struct Listing {
    std::vector<std::string> lines;
    bool complete;
};

Listing listArchive() {
    Listing listing = {{}, false};
    std::FILE *output = popen(LIST_ARCHIVE, "r");
    if (output == nullptr)
        throw StoryOver("tar cannot be run");
    std::array<char, 256> line = {};
    while (std::fgets(line.data(), line.size(), output) != nullptr) {
        std::string text = line.data();
        text.erase(text.find_last_not_of('\n') + 1);
        listing.lines.push_back(text);
    }
    listing.complete = pclose(output) == 0;
    return listing;
}

} // namespace

void tellExport(Stage &stage) {
    (void)unlink(ARCHIVE); // so that what is listed is what came
    stage.perform([&] {
        run(stage);
        return VISCA_SUCCESS;
    });
    stage.heading("What came");
    stage.say(std::to_string(archiveSize()) + " bytes in " + ARCHIVE);
    const Listing listing = listArchive();
    for (const std::string &line : listing.lines)
        stage.say(line);
    stage.table().add("an archive that tar can read", listing.complete ? "all of it" : "damaged",
                      listing.complete);
}

} // namespace tool
