#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

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

/// The content of a file; empty if it cannot be read.
inline std::string ReadHostFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace test_support
