#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

namespace test_support {

/// A fresh folder of a native test, removed at the end.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string name = std::filesystem::temp_directory_path() / "quvada-test-XXXXXX";
        path_ = std::filesystem::canonical(mkdtemp(name.data()));
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }
    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// The content of a file; what was read of it, if it cannot be read to its end: a file of /proc
/// fails while it is read when its process ends, and a stream's iterators would throw then.
inline std::string ReadHostFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return std::move(text).str();
}

}  // namespace test_support
