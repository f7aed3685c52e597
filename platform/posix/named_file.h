#pragma once

#include <cstdint>
#include <string>

#include "platform/text.h"

namespace platform {

/// Turns the name of a kernel object into a file name of letters, digits and "._-%", different for
/// different names and profiles. \return 0 or a Win32 code.
DWORD NamedFileName(LPCWSTR name, std::string& fileName);

/// A file of the user's runtime folder that exists as long as anyone holds it: each holder has a
/// shared lock on it, which the system takes back however the holder ends. Whoever finds a file
/// that nobody holds removes it. Finding, making and letting go exclude each other by a lock on the
/// folder, held for the moment. The folder is the user's own with no access for others, or it is
/// not used.
class NamedFile {
public:
    NamedFile() = default;
    ~NamedFile() { Release(); }
    NamedFile(const NamedFile&) = delete;
    NamedFile& operator=(const NamedFile&) = delete;

    /// Opens the file, or makes it with `size` zeroed bytes that have their place on the disk, so
    /// that no later access can fail. Afterwards Size() is the file's, whoever made it.
    DWORD Create(const std::string& fileName, std::uint64_t size, bool& existed);
    /// ERROR_FILE_NOT_FOUND if nobody holds such a file.
    DWORD Open(const std::string& fileName);

    [[nodiscard]] int Descriptor() const { return file_; }
    [[nodiscard]] std::uint64_t Size() const { return size_; }

private:
    DWORD OpenHeld(const std::string& fileName);
    DWORD Make(const std::string& fileName, std::uint64_t size);
    void Release();

    int folder_ = -1;
    int file_ = -1;
    std::uint64_t size_ = 0;
    std::string fileName_;
};

}  // namespace platform
