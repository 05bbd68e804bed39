// Runs a target without a fuzzer: every seed, every finding of the past, then a fixed number of mutations of
// the seeds, the same ones each time. Any compiler builds it, so the ordinary tests run it.
//
// usage: TARGET MUTATIONS PATH...    a path is an input, or a folder of inputs; names ending in .hex are
// written in hex
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size);
extern "C" const char *__asan_default_options();
extern "C" const char *__ubsan_default_options();

// A sanitizer's report then ends in the handler below.
extern "C" const char *__asan_default_options() {
    return "abort_on_error=1:detect_leaks=0";
}
extern "C" const char *__ubsan_default_options() {
    return "abort_on_error=1:print_stacktrace=1";
}

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t LONGEST = 512;
constexpr uint8_t TELLING[] = {0x90, 0xFF, 0x50, 0x51, 0x60, 0x66, 0x07, 0xAE, 0xEF, 0x81, 0x71,
                               0x88, 0x01, 0x02, 0x04, 0x09, 0x00, 0x10, 0x7F, 0x0A, ' ',  '\n'};

const uint8_t *g_bytes = nullptr;
size_t g_size = 0;

// Prints the input that was being run as hex, to be kept as a file; then the default action.
void TellInput(int number) {
    std::fputs("the input in hex:", stderr);
    for (size_t i = 0; i < g_size; ++i)
        std::fprintf(stderr, " %02X", g_bytes[i]);
    std::fputs("\n", stderr);
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void RunOne(const Bytes &input) {
    const Bytes exact(input); // no byte more than the input has, so that a read beyond it is seen
    g_bytes = exact.data();
    g_size = exact.size();
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

/** The same sequence on every machine. */
class Dice {
  public:
    size_t Below(size_t bound) {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<size_t>((m_state >> 33) % bound);
    }

  private:
    uint64_t m_state = 20;
};

Bytes FromHex(const std::string &text) {
    Bytes bytes;
    size_t at = 0;
    while (at < text.size()) {
        if (text[at] == '#') {
            at = std::min(text.find('\n', at), text.size());
        } else if (std::isxdigit(static_cast<unsigned char>(text[at])) != 0) {
            bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16)));
            at += 2;
        } else {
            ++at;
        }
    }
    return bytes;
}

Bytes Load(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return path.extension() == ".hex" ? FromHex(text) : Bytes(text.begin(), text.end());
}

std::vector<Bytes> LoadAll(int count, char **paths) {
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < count; ++i) {
        if (!std::filesystem::is_directory(paths[i])) {
            files.emplace_back(paths[i]);
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(paths[i]))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<Bytes> inputs;
    for (const auto &file : files)
        inputs.push_back(Load(file));
    return inputs;
}

void ChangeByte(Bytes &bytes, Dice &dice) {
    uint8_t &byte = bytes[dice.Below(bytes.size())];
    switch (dice.Below(3)) {
    case 0:
        byte = static_cast<uint8_t>(byte ^ 1U << dice.Below(8));
        break;
    case 1:
        byte = static_cast<uint8_t>(dice.Below(256));
        break;
    default:
        byte = TELLING[dice.Below(std::size(TELLING))];
        break;
    }
}

/** A piece of `from` goes into `bytes`. */
void Insert(Bytes &bytes, const Bytes &from, Dice &dice) {
    if (from.empty())
        return;
    const size_t first = dice.Below(from.size());
    const size_t count = 1 + dice.Below(from.size() - first);
    const Bytes piece(from.begin() + static_cast<long>(first),
                      from.begin() + static_cast<long>(first + count));
    const size_t at = dice.Below(bytes.size() + 1);
    bytes.insert(bytes.begin() + static_cast<long>(at), piece.begin(), piece.end());
}

void Erase(Bytes &bytes, Dice &dice) {
    const size_t first = dice.Below(bytes.size());
    const size_t count = 1 + dice.Below(std::min<size_t>(8, bytes.size() - first));
    bytes.erase(bytes.begin() + static_cast<long>(first), bytes.begin() + static_cast<long>(first + count));
}

Bytes Mutated(const std::vector<Bytes> &seeds, Dice &dice) {
    Bytes bytes = seeds[dice.Below(seeds.size())];
    for (size_t changes = 1 + dice.Below(6); changes > 0; --changes) {
        const size_t kind = bytes.empty() ? 5 : dice.Below(6);
        if (kind <= 2)
            ChangeByte(bytes, dice);
        else if (kind == 3)
            Erase(bytes, dice);
        else if (kind == 4)
            Insert(bytes, Bytes(bytes), dice);
        else
            Insert(bytes, seeds[dice.Below(seeds.size())], dice);
    }
    bytes.resize(std::min(bytes.size(), LONGEST));
    return bytes;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s MUTATIONS PATH...\n", argv[0]);
        return 2;
    }
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(number, TellInput);
    const std::vector<Bytes> seeds = LoadAll(argc - 2, argv + 2);
    if (seeds.empty()) {
        std::fprintf(stderr, "%s: no inputs\n", argv[0]);
        return 2;
    }
    const auto begin = std::chrono::steady_clock::now();
    for (const Bytes &seed : seeds)
        RunOne(seed);
    const unsigned long mutations = std::strtoul(argv[1], nullptr, 10);
    Dice dice;
    for (unsigned long i = 0; i < mutations; ++i)
        RunOne(Mutated(seeds, dice));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    std::printf("%zu inputs and %lu mutations in %.2f s\n", seeds.size(), mutations, took.count());
    return 0;
}
