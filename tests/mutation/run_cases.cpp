// Runs the cases of a unit test one by one, each in a process of its own that is forked when the test
// framework is ready, and stops at the first that fails. Prints its name. Exit status: 0 all passed, 1 one
// failed.
//
// usage: unit_NAME_test [CASE...]     these first
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned kSeconds = 15;         // a case takes milliseconds
constexpr rlim_t kProcessorSeconds = 4;   // ends an endless loop sooner
constexpr rlim_t kMemory = 1024UL << 20U; // and one that keeps what it does

std::vector<std::string> Cases() {
    std::vector<std::string> names;
    const testing::UnitTest &all = *testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i) {
        const testing::TestSuite &suite = *all.GetTestSuite(i);
        for (int k = 0; k < suite.total_test_count(); ++k) {
            names.push_back(std::string(suite.name()) + "." + suite.GetTestInfo(k)->name());
        }
    }
    return names;
}

void Limit(int resource, rlim_t limit) {
    const struct rlimit both = {limit, limit};
    (void)setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

[[noreturn]] void RunHere(const std::string &name) {
    Limit(RLIMIT_CPU, kProcessorSeconds);
    Limit(RLIMIT_DATA, kMemory);
    Limit(RLIMIT_CORE, 0);
    (void)alarm(kSeconds);
    ::testing::GTEST_FLAG(filter) = name;
    _exit(RUN_ALL_TESTS());
}

bool Passes(const std::string &name) {
    const pid_t child = fork();
    if (child == 0) {
        RunHere(name);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    std::vector<std::string> cases = Cases();
    auto rest = cases.begin();
    for (int i = 1; i < argc; ++i) {
        const auto found = std::find(rest, cases.end(), argv[i]);
        if (found != cases.end()) {
            std::rotate(rest, found, found + 1);
            ++rest;
        }
    }
    const int result = dup(STDOUT_FILENO);
    if (getenv("VISCACAM_SHOW") == nullptr) { // what a failing case says is of no use here
        const int nowhere = open("/dev/null", O_WRONLY);
        (void)dup2(nowhere, STDOUT_FILENO);
        (void)dup2(nowhere, STDERR_FILENO);
    }
    for (const std::string &name : cases) {
        if (!Passes(name)) {
            dprintf(result, "%s\n", name.c_str());
            return 1;
        }
    }
    return 0;
}
