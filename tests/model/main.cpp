// viscacam_model: random model runs, and those that are kept.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "tests/model/plan.h"
#include "tests/model/run.h"
#include "tests/model/shrink.h"

namespace {

constexpr char USAGE[] =
    "usage: viscacam_model [--seeds N] [--steps M] [--seed S] [--camera NAME]\n"
    "                      N runs of M steps (1 of 60), seeds S, S + 1, ... (1); the seed chooses the "
    "camera\n"
    "       viscacam_model --kept FILE      runs that were kept, a line each; # begins a remark\n"
    "       viscacam_model --replay LINE    one such run\n"
    "       viscacam_model --print ...      print the lines instead of running them\n"
    "A run that fails is made as short as it will go and printed as a line to keep.\n"
    "Exit status: 0 all held, 1 one failed, 2 wrong usage.\n";

constexpr unsigned SHRINK_TRIES = 100;

struct Order {
    uint64_t seeds = 1;
    uint64_t first = 1;
    unsigned steps = 60;
    bool print = false;
    std::string camera;
    std::string kept;
    std::string replay;
};

// One failure may be bad luck of the threads, so a shorter plan has two tries to fail.
bool Fails(const model::Plan &plan) {
    for (int i = 0; i < 2; ++i) {
        if (!model::RunApart(plan).empty()) {
            return true;
        }
    }
    return false;
}

bool Holds(const model::Plan &plan, const std::string &name, bool shrink) {
    const std::string wrong = model::RunApart(plan);
    if (wrong.empty()) {
        return true;
    }
    std::printf("%s FAILED: %s\n%s\n", name.c_str(), wrong.c_str(), model::ToLine(plan).c_str());
    std::fflush(stdout);
    if (shrink) {
        const model::Plan shorter = model::Shrink(plan, Fails, SHRINK_TRIES);
        std::printf("to keep:\n%s\n", model::ToLine(shorter).c_str());
    }
    return false;
}

int RunSeeds(const Order &order) {
    int failed = 0;
    for (uint64_t seed = order.first; seed < order.first + order.seeds; ++seed) {
        const model::Plan plan = model::MakePlan(seed, order.steps, order.camera);
        if (order.print) {
            std::printf("%s\n", model::ToLine(plan).c_str());
        } else {
            failed += Holds(plan, "seed " + std::to_string(seed), true) ? 0 : 1;
        }
    }
    if (!order.print) {
        std::printf("%llu runs of %u steps, %d failed\n", static_cast<unsigned long long>(order.seeds),
                    order.steps, failed);
    }
    return failed == 0 ? 0 : 1;
}

int RunKept(const std::string &path) {
    std::ifstream file(path);
    if (!file) {
        throw std::invalid_argument("cannot read " + path);
    }
    int failed = 0;
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        line = line.substr(0, line.find('#'));
        if (++number; line.find_first_not_of(' ') != std::string::npos) {
            failed += Holds(model::FromLine(line), path + ":" + std::to_string(number), false) ? 0 : 1;
        }
    }
    return failed == 0 ? 0 : 1;
}

Order OrderFrom(int argc, char **argv) {
    Order order;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--print") {
            order.print = true;
            continue;
        }
        if (i + 1 == argc) {
            throw std::invalid_argument(name + " takes a value, or there is no such option");
        }
        const std::string value = argv[++i];
        if (name == "--seeds") {
            order.seeds = std::stoull(value);
        } else if (name == "--seed") {
            order.first = std::stoull(value);
        } else if (name == "--steps") {
            order.steps = static_cast<unsigned>(std::stoul(value));
        } else if (name == "--camera") {
            order.camera = value;
        } else if (name == "--kept") {
            order.kept = value;
        } else if (name == "--replay") {
            order.replay = value;
        } else {
            throw std::invalid_argument("there is no option " + name);
        }
    }
    return order;
}

} // namespace

int main(int argc, char **argv) {
    if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::fputs(USAGE, stdout);
        return 0;
    }
    try {
        const Order order = OrderFrom(argc, argv);
        if (!order.kept.empty()) {
            return RunKept(order.kept);
        }
        if (!order.replay.empty()) {
            return Holds(model::FromLine(order.replay), "the run", false) ? 0 : 1;
        }
        return RunSeeds(order);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "viscacam_model: %s\n%s", error.what(), USAGE);
        return 2;
    }
}
