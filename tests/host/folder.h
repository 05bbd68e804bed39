/**
 * @file folder.h
 * A folder for a test's files, and files whole.
 */
#ifndef VISCACAM_TESTS_HOST_FOLDER_H
#define VISCACAM_TESTS_HOST_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/** A new empty folder that goes away with its files. */
class Folder {
  public:
    Folder() {
        std::string strPattern = (std::filesystem::temp_directory_path() / "host_test.XXXXXX").string();
        if (mkdtemp(strPattern.data()) == nullptr) {
            std::abort();
        }
        m_strPath = strPattern;
    }
    ~Folder() {
        std::error_code stError;
        std::filesystem::remove_all(m_strPath, stError);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    std::string operator/(const std::string &strName) const { return m_strPath + "/" + strName; }

  private:
    std::string m_strPath;
};

inline void WriteFile(const std::string &strPath, const std::string &strContent) {
    std::ofstream(strPath, std::ios::binary) << strContent;
}

inline std::string ReadFile(const std::string &strPath) {
    std::ostringstream stContent;
    stContent << std::ifstream(strPath, std::ios::binary).rdbuf();
    return stContent.str();
}

#endif
