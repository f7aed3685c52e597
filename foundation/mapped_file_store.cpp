#include "foundation/mapped_file_store.h"

#include <utility>

#include "foundation/system_facts.h"
#include "platform/files.h"

namespace AUX {

MappedFileStore::MappedFileStore() noexcept
    : granularity(Facts().machine.dwAllocationGranularity), viewSize(2 * granularity) {}

// The last stream on a store closes it before; this only keeps a handle from leaking.
MappedFileStore::~MappedFileStore() { UnmapViews(); }

bool MappedFileStore::IsValid() const noexcept {
    return mapping || (access == kAccessRead && allocated == 0 && handle);
}

Status MappedFileStore::Close() noexcept {
    UnmapViews();
    (void)CloseMapping();
    dirtyEnd = 0;
    return FileStore::Close();
}

Status MappedFileStore::CreateMapping() noexcept {
    const bool isReadOnly = access == kAccessRead;
    mapAccess = isReadOnly ? FILE_MAP_READ : FILE_MAP_WRITE;
    protection = isReadOnly ? PAGE_READONLY : PAGE_READWRITE;
    dirtyEnd = size;
    if (!isReadOnly) return MapBytes(size - size % granularity + granularity);
    allocated = size;
    return size < 1 ? kStatusOk : MapBytes(size);
}

Status MappedFileStore::MapBytes(std::int64_t bytes) noexcept {
    const auto length = static_cast<std::uint64_t>(bytes);
    mapping.Reset(CreateFileMappingW(handle.Get(), nullptr, protection,
                                     static_cast<DWORD>(length >> 32), static_cast<DWORD>(length),
                                     nullptr));
    if (!mapping) return StatusFromFailedCall(GetLastError());
    allocated = bytes;
    return kStatusOk;
}

Status MappedFileStore::CloseMapping() noexcept {
    mapping.Reset();
    return kStatusOk;
}

void MappedFileStore::AddView(FileView& added) noexcept {
    added.nextView = std::exchange(firstView_, &added);
}

void MappedFileStore::RemoveView(FileView& removed) noexcept {
    for (FileView** link = &firstView_; *link; link = &(*link)->nextView) {
        if (*link != &removed) continue;
        *link = std::exchange(removed.nextView, nullptr);
        return;
    }
}

void MappedFileStore::UnmapViews() noexcept {
    for (FileView* each = firstView_; each; each = each->nextView) {
        each->view.Reset();
        each->viewLeft = 0;
    }
}

TempFileStore::~TempFileStore() = default;

// The path is there even after the file was lost and could not be opened again.
Status TempFileStore::Close() noexcept {
    const WString closed = std::move(path);
    const bool deletes = deleteOnClose && !keep && !closed.IsEmpty();
    deleteOnClose = false;
    keep = false;
    goesWithHandle = false;
    const Status status = MappedFileStore::Close();
    if (!deletes || DeleteFileW(closed.Text()) || IsFailure(status)) return status;
    return StatusFromFailedCall(GetLastError());
}

}  // namespace AUX
