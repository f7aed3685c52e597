#pragma once

#include <cstdint>

#include "foundation/stream.h"
#include "foundation/wstring.h"
#include "platform/handles.h"

namespace AUX {

/// How a file is opened: values of CreateFileW, but for `access`, which is the streams' own.
struct FileOpening {
    DWORD disposition = 0;
    std::uint32_t access = 0;
    DWORD share = 0;
    DWORD flags = 0;
};

/// An open file with what is needed to open it again. Owns the handle.
class FileStore : public StreamStore {
public:
    FileStore() noexcept;
    ~FileStore() override;

    [[nodiscard]] bool IsValid() const noexcept override;

    /// With write access cuts the file to `size`; that it cannot is the result. Then forgets the
    /// file. \return 1, with nothing done, if no file is open.
    Status Close() noexcept override;

    /// A mapped file makes and ends its mapping here; a plain one has none, and gives 0.
    [[nodiscard]] virtual Status CreateMapping() noexcept;
    [[nodiscard]] virtual Status CloseMapping() noexcept;

    /// Opens the file `path` names; nothing may be open. On failure nothing is.
    [[nodiscard]] Status OpenFile(const FileOpening& opening) noexcept;

    /// Opens the file once more after its handle went bad, and closes that. Size and time of the
    /// last write must be what they were. \return kStatusFileChanged; after a failure no file is
    /// open.
    [[nodiscard]] Status ReopenFile() noexcept;

    /// Cuts or lengthens the file.
    [[nodiscard]] Status SetEnd(std::int64_t end) noexcept;

    WString path;
    std::uint64_t lastWriteTime = 0;  ///< In units of 100 nanoseconds since 1601.
    platform::FileHandle handle;
    std::uint32_t lastReopen = 0;  ///< GetTickCount of the last reopening, or of construction.
    std::uint32_t access = 0;      ///< Write alone is kept as read and write.
    DWORD share = 0;
    bool isOverlapped = false;  ///< Whether transfers may be under way when their call returns.

private:
    struct OpenedFile {
        platform::FileHandle handle;
        std::int64_t size = 0;
        std::uint64_t lastWriteTime = 0;
    };
    Status OpenHandle(const FileOpening& opening, OpenedFile& file) const noexcept;
};

}  // namespace AUX
