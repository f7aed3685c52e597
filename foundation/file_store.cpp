#include "foundation/file_store.h"

#include <utility>

#include "platform/files.h"
#include "platform/sync.h"

namespace AUX {

FileStore::FileStore() noexcept : lastReopen(GetTickCount()) {}

// The last stream on a store closes it before; this only keeps a handle from leaking.
FileStore::~FileStore() = default;

bool FileStore::IsValid() const noexcept { return static_cast<bool>(handle); }

Status FileStore::CreateMapping() noexcept { return kStatusOk; }

Status FileStore::CloseMapping() noexcept { return kStatusOk; }

Status FileStore::Close() noexcept {
    if (!handle) return 1;
    const Status status = access & kAccessWrite ? SetEnd(size) : kStatusOk;
    handle.Reset();
    size = 0;
    allocated = 0;
    access = 0;
    path.Free();
    return status;
}

Status FileStore::SetEnd(std::int64_t end) noexcept {
    LARGE_INTEGER distance;
    distance.QuadPart = end;
    const bool isSet =
        SetFilePointerEx(handle.Get(), distance, nullptr, FILE_BEGIN) && SetEndOfFile(handle.Get());
    return isSet ? kStatusOk : StatusFromFailedCall(GetLastError());
}

Status FileStore::OpenHandle(const FileOpening& opening, OpenedFile& file) const noexcept {
    DWORD systemAccess = GENERIC_READ;
    if (opening.access & kAccessWrite) systemAccess |= GENERIC_WRITE;
    platform::FileHandle opened(CreateFileW(path.Text(), systemAccess, opening.share, nullptr,
                                            opening.disposition, opening.flags, nullptr));
    if (!opened) return StatusFromFailedCall(GetLastError());
    FILETIME time = {};
    LARGE_INTEGER end;
    end.QuadPart = 0;
    if (!GetFileTime(opened.Get(), nullptr, nullptr, &time) || !GetFileSizeEx(opened.Get(), &end)) {
        return StatusFromFailedCall(GetLastError());
    }
    file.handle = std::move(opened);
    file.size = end.QuadPart;
    file.lastWriteTime = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return kStatusOk;
}

Status FileStore::OpenFile(const FileOpening& opening) noexcept {
    OpenedFile file;
    if (const Status status = OpenHandle(opening, file)) return status;
    handle = std::move(file.handle);
    size = file.size;
    allocated = file.size;
    lastWriteTime = file.lastWriteTime;
    access = opening.access & kAccessMask;
    if (access & kAccessWrite) access |= kAccessRead;
    share = opening.share;
    isOverlapped = (opening.flags & FILE_FLAG_OVERLAPPED) != 0;
    return kStatusOk;
}

Status FileStore::ReopenFile() noexcept {
    handle.Reset();  // Not Close: the path and the sizes are still needed, and nothing is cut.
    OpenedFile file;
    const Status status = OpenHandle({OPEN_EXISTING, access, share, FILE_ATTRIBUTE_NORMAL}, file);
    if (IsFailure(status)) return status;
    if (file.size != size || file.lastWriteTime != lastWriteTime) return kStatusFileChanged;
    handle = std::move(file.handle);
    isOverlapped = false;
    lastReopen = GetTickCount();
    const Status mapped = CreateMapping();
    if (IsFailure(mapped)) (void)Close();
    return mapped;
}

}  // namespace AUX
