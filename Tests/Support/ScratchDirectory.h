// A folder of its own for each test, removed with everything in it.

#ifndef ScratchDirectory_h
#define ScratchDirectory_h

#include "Base/Strings/qvStringIString.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>

namespace qvTest {

class ScratchDirectory {
public:
    ScratchDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvbase-test-XXXXXX").string();
        if (!mkdtemp(pattern.data())) {
            throw std::runtime_error("no scratch directory");
        }
        path_ = pattern;
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(ScratchDirectory const &) = delete;
    ScratchDirectory & operator=(ScratchDirectory const &) = delete;

    std::string path(std::string const & name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

inline qvString::IString wide(std::string const & text) { return qvString::IString(text.c_str(), qvString::UTF8); }

inline std::string bytesOf(std::string const & path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeBytes(std::string const & path, std::string const & bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

} // namespace qvTest

#endif
