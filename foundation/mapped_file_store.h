#pragma once

#include <cstdint>

#include "foundation/file_store.h"
#include "platform/memory.h"

namespace AUX {

/// A stream's window on a mapped file. The store knows all windows on it, since the file can only
/// be cut while there are none.
struct FileView {
    platform::MappedView view;
    std::int64_t viewBase = 0;     ///< Where it begins in the file.
    std::uint32_t viewLength = 0;  ///< Bytes that it covers.
    std::uint32_t viewLeft = 0;    ///< Bytes of it behind the stream's position.
    FileView* nextView = nullptr;
};

/// A file that streams reach through views of its mapping. `allocated` is the size of the mapping,
/// `size` that of the content. A file that can be written is as long as its mapping while it is
/// open, and is cut back to its content when it is closed.
class MappedFileStore : public FileStore {
public:
    MappedFileStore() noexcept;
    ~MappedFileStore() override;

    /// Whether there is a mapping, or the open file is empty and only read.
    [[nodiscard]] bool IsValid() const noexcept override;

    /// Ends all views and the mapping, then as FileStore.
    Status Close() noexcept override;

    /// Maps the file: all of one to be read, and at least a granule more of one to be written.
    [[nodiscard]] Status CreateMapping() noexcept override;
    [[nodiscard]] Status CloseMapping() noexcept override;

    /// Maps `bytes` of the file, where nothing is mapped; a file to be written becomes that long.
    /// \return the system's error; nothing is mapped then, and `allocated` stays.
    [[nodiscard]] Status MapBytes(std::int64_t bytes) noexcept;

    void AddView(FileView& added) noexcept;
    void RemoveView(FileView& removed) noexcept;
    /// Unmaps the windows of all streams.
    void UnmapViews() noexcept;

    DWORD mapAccess = FILE_MAP_READ;
    platform::MappingHandle mapping;
    DWORD protection = PAGE_READONLY;
    const std::uint32_t granularity;  ///< Where views can begin, in bytes.
    const std::uint32_t viewSize;     ///< Of a view at most, in bytes: two granules.
    std::int64_t dirtyEnd = 0;        ///< From here on the file holds zeros.

private:
    FileView* firstView_ = nullptr;
};

/// A temporary file, which goes when it is closed.
class TempFileStore : public MappedFileStore {
public:
    ~TempFileStore() override;

    /// As MappedFileStore, then deletes the file if it has to; that it cannot is the result only if
    /// the closing itself succeeded.
    Status Close() noexcept override;

    bool deleteOnClose = false;   ///< This store deletes the file.
    bool keep = false;            ///< The owner wants it kept after all.
    bool goesWithHandle = false;  ///< The system deletes the file; it cannot be kept.
};

}  // namespace AUX
