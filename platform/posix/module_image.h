#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace platform {

/// A module's file, mapped to be read. Owns the mapping; movable, not copyable. What it holds is
/// taken as foreign bytes: nothing in it is trusted.
class ModuleImage {
public:
    ModuleImage() = default;
    ~ModuleImage();
    ModuleImage(ModuleImage&& other) noexcept : bytes_(other.bytes_) { other.bytes_ = {}; }
    ModuleImage& operator=(ModuleImage&&) = delete;

    /// Maps a file, unless one is mapped already. \return false if it is no ELF file of this
    /// machine's kind.
    [[nodiscard]] bool Open(const std::string& hostPath) noexcept;
    /// The bytes of a section; empty if there is none or it does not lie inside the file.
    [[nodiscard]] std::span<const std::byte> Section(const char* name) const noexcept;

private:
    std::span<const std::byte> bytes_;
};

}  // namespace platform
