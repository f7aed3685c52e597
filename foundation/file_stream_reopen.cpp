// Opening a file once more: after its network path was lost, with other access, under another name.

#include <cstring>
#include <utility>

#include "foundation/file_stream.h"
#include "platform/scope_exit.h"
#include "platform/sync.h"

namespace AUX {
namespace {

// Serialises the reopening of lost files in this process; it lasts as long as the process.
struct ReopenLock {
    ReopenLock() noexcept { (void)InitializeCriticalSectionAndSpinCount(&section, 4000); }
    CRITICAL_SECTION section;
};

}  // namespace

Status FileStream::RecoverRead(bool& wasReopened) noexcept {
    constexpr std::int32_t kPauseMs = 500;
    if (!IsOpen()) return kStatusInvalidArgument;
    static ReopenLock lock;
    EnterCriticalSection(&lock.section);
    const platform::ScopeExit leave([] { LeaveCriticalSection(&lock.section); });
    const std::int32_t passed = static_cast<std::int32_t>(GetTickCount() - File()->lastReopen);
    if (passed < kPauseMs) return 1;
    wasReopened = true;
    (void)ReleaseMapping();  // A view of a lost file is of no use, whether it goes in order or not.
    return File()->ReopenFile();
}

FileStream::Content FileStream::ContentNow() const noexcept {
    return {store->size, store->allocated > store->size};
}

// Closes a file that is opened again afterwards. That a mapped file could not be cut back to its
// content counts: what opens it next would take the rest for content.
Status FileStream::CloseWhole(const Content& content) noexcept {
    const Status status = Close();
    return content.isCutOnClose ? status : kStatusOk;
}

// Opens the file as it was, with the content that it had.
Status FileStream::OpenAgain(WString path, const FileOpening& opening,
                             const Content& content) noexcept {
    const Status status = OpenStore(std::move(path), opening);
    if (!IsFailure(status) && store->size > content.size) (void)SetSize(content.size);
    return status;
}

Status FileStream::ReopenReadWrite() noexcept { return Reopen(kAccessRead | kAccessWrite); }

Status FileStream::ReopenReadOnly() noexcept { return Reopen(kAccessRead); }

Status FileStream::Reopen(std::uint32_t access) noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    const std::uint32_t oldAccess = File()->access;
    if (access == oldAccess) return kStatusOk;
    WString path;
    WString samePath;
    if (!path.Assign(File()->path) || !samePath.Assign(path)) return kStatusInsufficientMemory;
    if (const Status status = ReleaseMapping(); IsFailure(status)) return status;
    FileOpening opening{OPEN_EXISTING, access, File()->share, FILE_ATTRIBUTE_NORMAL};
    const Content content = ContentNow();
    Status status = CloseWhole(content);
    if (!IsFailure(status)) status = OpenStore(std::move(path), opening);
    if (!IsFailure(status)) return status;
    opening.access = oldAccess;
    const Status second = OpenAgain(std::move(samePath), opening, content);
    return IsFailure(second) ? second : status;
}

Status FileStream::Rename(const WCHAR* newPath) noexcept {
    constexpr int kAttempts = 6;
    constexpr DWORD kPauseMs = 500;
    constexpr DWORD kMove =
        MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH;
    if (!IsOpen()) return kStatusNotInitialized;
    if (File()->path == WStringView(newPath)) return kStatusOk;
    // Copies, since closing forgets the path and the caller's text may be it in part.
    WString oldPath;
    WString target;
    if (!oldPath.Assign(File()->path) || !target.Assign(newPath)) return kStatusInsufficientMemory;
    const FileOpening opening{OPEN_EXISTING, File()->access, FILE_SHARE_READ,
                              FILE_ATTRIBUTE_NORMAL};
    const Content content = ContentNow();
    Status status = CloseWhole(content);
    for (int attempt = 1; attempt <= kAttempts && !IsFailure(status); ++attempt) {
        if (MoveFileExW(oldPath.Text(), target.Text(), kMove)) {
            status = OpenStore(std::move(target), opening);
            break;
        }
        const DWORD error = GetLastError();
        const bool isHeld = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        if (!isHeld || attempt == kAttempts) status = StatusFromFailedCall(error);
        if (!IsFailure(status)) Sleep(kPauseMs);
    }
    // The rename's failure counts.
    if (IsFailure(status)) (void)OpenAgain(std::move(oldPath), opening, content);
    return status;
}

bool FileStream::GetFileIdentity(FileIdentity& identity) const noexcept {
    if (!IsOpen()) return false;
    const HANDLE handle = File()->handle.Get();
    FileIdentity found;
    FILE_ID_INFO id = {};
    if (GetFileInformationByHandleEx(handle, FileIdInfo, &id, sizeof id)) {
        found.volumeSerialNumber = id.VolumeSerialNumber;
        std::memcpy(found.fileId, id.FileId.Identifier, sizeof found.fileId);
        identity = found;
        return true;
    }
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(handle, &information)) return false;
    found.volumeSerialNumber = information.dwVolumeSerialNumber;
    const DWORD words[] = {information.nFileIndexLow, information.nFileIndexHigh,
                           information.nFileSizeHigh, information.nFileSizeLow};
    static_assert(sizeof words == sizeof found.fileId);
    std::memcpy(found.fileId, words, sizeof words);
    identity = found;
    return true;
}

}  // namespace AUX
