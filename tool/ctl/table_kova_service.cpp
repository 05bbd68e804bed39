/* Kova modules: sensor, image detection, upgrade and log. */
#include <fstream>
#include <future>
#include <memory>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

#include "host/host.h"
#include "tool/ctl/job.h"
#include "tool/ctl/table.h"
#include "tool/kova_upgrade.h"
#include "tool/transfer_progress.h"
#include "viscacam.h"

namespace tool::ctl {

namespace {

using std::chrono::milliseconds;

const char ARCHIVE[] = "/tmp/kova.tgz"; // where the library has it put
constexpr milliseconds TELL_EVERY{250};
constexpr uint32_t CALLER_WITHOUT_DETECTION = 2;
constexpr uint32_t CALLER_WITH_DETECTION = 0;

void check(uint32_t result, const std::string &what) {
    if (result != VISCA_SUCCESS)
        throw Refused(what);
}

Domain offset() {
    return Domain::number(-32768, 32767);
}

void showSensorOffset(Job &job, const Arguments &) {
    int32_t x = 0;
    int32_t y = 0;
    if (!job.ask([&] { return KOVA_GetSensorOffset(&x, &y); }, "the sensor's offset"))
        return;
    job.number("x", x);
    job.number("y", y);
}

void setSensorOffset(Job &job, const Arguments &arguments) {
    const auto x = static_cast<int32_t>(arguments.number("x"));
    const auto y = static_cast<int32_t>(arguments.number("y"));
    const uint32_t markNumber = arguments.word("flag");
    check(
        job.perform("setting the offset, off and on", [=] { return KOVA_SetSensorOffset(x, y, markNumber); }),
        "the offset was not set");
}

void reverse(Job &job, const Arguments &arguments) {
    const uint32_t mode = arguments.word("mode");
    const uint32_t force = arguments.has("force") ? 1 : 0;
    check(job.perform("setting the orientation", [=] { return KOVA_SetSensorReverse(mode, force); }),
          "the orientation was not set");
}

void becomeCaller(uint32_t caller) {
    host::Board board = host::GetBoard();
    board.ulCaller = caller;
    host::SetBoard(board);
}

void beginDetection(Job &job, const Arguments &) {
    becomeCaller(CALLER_WITH_DETECTION);
    job.perform("starting the image detection", [type = job.moduleType()] {
        KovaSetDetectImgParam(type);
        return VISCA_SUCCESS;
    });
}

void showHeldBack(Job &job) {
    job.number("held-back-daynight", gstImgDetectParam.lBlackWhiteMode);
    job.number("held-back-wb", gstImgDetectParam.lWbMode);
}

void endDetection(Job &job, const Arguments &) {
    job.perform("ending the image detection", KOVA_ResumeDetectImgParam);
    becomeCaller(CALLER_WITHOUT_DETECTION);
}

void showPackage(Job &job, const Arguments &) {
    char uimage[128] = "";
    char program[128] = "";
    const bool known = KovaGetNewKovaUimageVer(uimage) == VISCA_SUCCESS &&
                       KovaGetNewKovaProgramVer(program) == VISCA_SUCCESS;
    if (!known)
        throw Refused("no version can be read from the package under /tmp/update");
    job.text("uimage", uimage);
    job.text("program", program);
}

UpgradePlan planOf(Job &job) {
    UpgradePlan plan;
    std::string trouble;
    job.ask(
        [&] {
            try {
                plan = planUpgrade();
            } catch (const std::runtime_error &error) {
                trouble = error.what();
            }
            return VISCA_SUCCESS;
        },
        "the module's versions");
    if (!trouble.empty())
        throw Refused(trouble);
    return plan;
}

/* Shows how far an upgrade is. */
class TransferTeller {
  public:
    TransferTeller(Screen &screen, uint64_t total) : m_screen(screen), m_progress(total) {}
    ~TransferTeller() { m_screen.endProgress(); }
    void tell() {
        const bool sending = ViscaIsUpdatingCam() == 1;
        m_screen.progress(sending ? "sending: " + m_progress.look().shown() : "the module writes its flash");
    }

  private:
    Screen &m_screen;
    TransferProgress m_progress;
};

const char *stateName(uint32_t state) {
    switch (state) {
    case 1:
        return "receiving, or not answering";
    case 3:
        return "under way";
    case 4:
        return "done";
    case 5:
        return "failed";
    default:
        return "unknown";
    }
}

bool waitForUpgrade(Job &job, uint64_t bytes) {
    const auto done = std::make_shared<std::promise<bool>>();
    std::future<bool> result = done->get_future();
    job.bench().upgrading = true;
    TransferTeller teller(job.bench().screen, bytes);
    const uint32_t started = job.perform("asking for versions", [done] {
        return startUpgrade([done](bool good) { done->set_value(good); }) ? VISCA_SUCCESS : VISCA_FAILURE;
    });
    if (started != VISCA_SUCCESS) {
        job.bench().upgrading = false;
        throw Refused("the library did not start the upgrade");
    }
    while (result.wait_for(TELL_EVERY) != std::future_status::ready)
        teller.tell();
    job.bench().upgrading = false;
    return result.get();
}

void upgrade(Job &job, const Arguments &arguments) {
    const UpgradePlan plan = planOf(job);
    for (const std::string &line : plan.lines())
        job.line(line);
    job.number("bytes", static_cast<int64_t>(plan.bytesToSend()));
    if (plan.missing() != nullptr)
        throw Refused(plan.missing()->path + " is missing");
    if (arguments.has("dry-run"))
        return;
    job.mute("Start send file");
    job.mute("Send file success!"); // which it says whatever came of it
    if (!waitForUpgrade(job, plan.bytesToSend()))
        throw Refused("the upgrade failed");
    job.text("upgrade", plan.bytesToSend() == 0 ? "not needed" : "done");
}

void showUpgradeState(Job &job, const Arguments &) {
    uint32_t state = 0;
    const auto askState = [&] {
        state = KovaGetStatus();
        return VISCA_SUCCESS;
    };
    if (job.ask(askState, "the upgrade state"))
        job.number("state", state, std::to_string(state) + ", " + stateName(state));
}

std::string folderOf(const std::string &path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

void checkWritable(const std::string &path) {
    const bool exists = access(path.c_str(), F_OK) == 0;
    if (access(exists ? path.c_str() : folderOf(path).c_str(), W_OK) != 0)
        throw Refused("cannot write " + path);
}

// Returns the number of bytes.
int64_t copyArchive(const std::string &path) {
    struct stat facts = {};
    if (stat(ARCHIVE, &facts) != 0 || facts.st_size == 0)
        throw Refused("no archive came");
    std::ifstream from(ARCHIVE, std::ios::binary);
    std::ofstream to(path, std::ios::binary | std::ios::trunc);
    to << from.rdbuf();
    to.close();
    if (!from || !to)
        throw Refused("cannot write " + path);
    return facts.st_size;
}

void exportLog(Job &job, const Arguments &arguments) {
    const std::string path = arguments.text("file");
    const uint32_t which = arguments.word("which");
    checkWritable(path);
    job.mute("recv file");
    job.mute("Recv file"); // success, whatever came of it
    unlink(ARCHIVE);       // whether a new one came is seen by its being there
    TransferProgress progress;
    const uint32_t result = job.perform(
        "fetching the log", [which] { return KOVA_ExportLog(which); },
        [&] { return progress.look().shown(); });
    check(result, "the export did not start: commands did not go out, or the line did not take it");
    job.text("file", path);
    job.number("bytes", copyArchive(path));
}

std::vector<Row> sensorRows() {
    return {
        {"kova reverse",
         {needed("mode", Domain::choice({{"normal", 0}, {"both", 1}, {"mirror", 2}, {"flip", 3}})),
          flag("force")},
         "the sensor's orientation; the module may go off and on",
         {"kova reverse mirror"},
         reverse,
         {"KOVA_SetSensorReverse"},
         KOVA_ONLY | MAY_SEND_NOTHING},
        {"kova reverse product",
         {},
         "the orientation that the product's sub-type calls for",
         {"kova reverse product"},
         [](Job &job, const Arguments &) {
             check(job.perform("setting the orientation", KovaReverseCam), "the orientation was not set");
         },
         {"KovaReverseCam"},
         KOVA_ONLY | MAY_SEND_NOTHING},
        {"kova offset show",
         {},
         "the sensor's offset",
         {"kova offset show"},
         showSensorOffset,
         {"KOVA_GetSensorOffset"},
         KOVA_ONLY},
        {"kova offset set",
         {needed("x", offset()), needed("y", offset()), keyed("flag", Domain::number(0, 255))},
         "set it; the module goes off and on",
         {"kova offset set 4 -4"},
         setSensorOffset,
         {"KOVA_SetSensorOffset"},
         KOVA_ONLY},
        {"kova detect start",
         {},
         "image detection: day/night and white balance are held back",
         {"kova detect start"},
         beginDetection,
         {"KovaSetDetectImgParam"},
         KOVA_ONLY | MAY_SEND_NOTHING},
        {"kova detect show",
         {},
         "what is held back, -1 for nothing",
         {"kova detect show"},
         [](Job &job, const Arguments &) { showHeldBack(job); },
         {},
         KOVA_ONLY},
        {"kova detect end",
         {},
         "end it and apply what was held back",
         {"kova detect end"},
         endDetection,
         {"KOVA_ResumeDetectImgParam"},
         KOVA_ONLY | MAY_SEND_NOTHING},
    };
}

std::vector<Row> serviceRows() {
    return {
        {"kova upgrade",
         {flag("dry-run")},
         "from /tmp/update; --dry-run: what would be sent, and why",
         {"kova upgrade --dry-run", "kova upgrade"},
         upgrade,
         {"KovaGetNewKovaUimageVer", "KovaGetNewKovaProgramVer", "KovaGetCurKovaUimageVer",
          "KovaGetCurKovaProgramVer", "KOVA_UpdateKova", "ViscaMarkUpdatingCam"},
         KOVA_ONLY},
        {"kova upgrade state",
         {},
         "how the module's upgrade goes on",
         {"kova upgrade state"},
         showUpgradeState,
         {"KovaGetStatus"},
         KOVA_ONLY},
        {"kova package",
         {},
         "the versions of the package under /tmp/update",
         {"kova package"},
         showPackage,
         {"KovaGetNewKovaUimageVer", "KovaGetNewKovaProgramVer"},
         KOVA_ONLY},
        {"kova export-log",
         {needed("file", Domain::file()), keyed("which", Domain::number(0, 255))},
         "fetch its log into a file, a .tgz",
         {"kova export-log /tmp/log.tgz"},
         exportLog,
         {"KOVA_ExportLog"},
         KOVA_ONLY},
        {"kova save-log",
         {},
         "let it save its log",
         {"kova save-log"},
         [](Job &job, const Arguments &) {
             job.order(VISCA_KOVA_Savelog);
             job.line("sent; the module does not answer this");
         },
         {"VISCA_KOVA_Savelog"},
         KOVA_ONLY},
        {"kova version-files",
         {},
         "write the version files under /tmp",
         {"kova version-files"},
         [](Job &job, const Arguments &) {
             if (job.ask(KovaDumpVerInfo, "the versions"))
                 job.line("/tmp/kova_interversion, /tmp/kova_version, /tmp/kova_kversion");
         },
         {"KovaDumpVerInfo"},
         KOVA_ONLY},
    };
}

} // namespace

Subject kovaServiceCommands() {
    Subject subject = {"Kova modules: service", sensorRows()};
    const std::vector<Row> rows = serviceRows();
    subject.rows.insert(subject.rows.end(), rows.begin(), rows.end());
    return subject;
}

} // namespace tool::ctl
