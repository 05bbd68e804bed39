#include "sim/temp_folder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sim {

TempFolder::TempFolder() {
    const char *parent = std::getenv("TMPDIR");
    m_path = std::string(parent != nullptr && *parent != '\0' ? parent : "/tmp") + "/viscacam-sim-XXXXXX";
    if (mkdtemp(m_path.data()) == nullptr)
        throw std::runtime_error("cannot make a folder " + m_path + ": " + std::strerror(errno));
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

Bytes readFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void writeFile(const std::string &path, const std::string &content) {
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace sim
