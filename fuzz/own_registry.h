#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace fuzz {

/// A registry of this process's own, in memory if there is a place for files there. It goes with
/// the process.
class OwnRegistry {
public:
    OwnRegistry() {
        std::error_code none;
        const std::filesystem::path memory = "/dev/shm";
        const bool hasMemory = std::filesystem::is_directory(memory, none);
        std::string name =
            (hasMemory ? memory : std::filesystem::temp_directory_path()) / "quvada-fuzz-XXXXXX";
        if (!mkdtemp(name.data())) std::abort();
        folder_ = name;
        setenv("QUVADA_HOME", name.c_str(), 1);
    }
    ~OwnRegistry() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

private:
    std::filesystem::path folder_;
};

}  // namespace fuzz
