#include "foundation/temp_mapped_file_stream.h"

#include "foundation/temp_location.h"
#include "platform/files.h"

namespace AUX {

TempFileStore* TempMappedFileStream::GetStore() noexcept {
    if (!store) TakeStore(new (std::nothrow) TempFileStore);
    return static_cast<TempFileStore*>(store);
}

std::unique_ptr<Stream> TempMappedFileStream::Clone(Status* status) noexcept {
    return CloneAs<TempMappedFileStream>(status);
}

Status TempMappedFileStream::OpenTemp(const WCHAR* prefix, const WCHAR* folder,
                                      bool deleteOnClose) noexcept {
    (void)Close();  // What became of the file before says nothing about the new one.
    if (!GetStore()) return kStatusInsufficientMemory;
    WCHAR name[MAX_PATH];
    if (const Status status = MakeTempFileNameInFolder(name, prefix, folder)) return status;
    const DWORD flags =
        FILE_ATTRIBUTE_TEMPORARY | (deleteOnClose ? 0 : DWORD{FILE_FLAG_DELETE_ON_CLOSE});
    const Status status =
        Open(name, CREATE_ALWAYS, kAccessRead | kAccessWrite, FILE_SHARE_READ, flags);
    if (IsFailure(status)) {
        (void)DeleteFileW(name);
        return status;
    }
    GetStore()->deleteOnClose = deleteOnClose;
    GetStore()->goesWithHandle = !deleteOnClose;
    return status;
}

// Runs what closes the file and opens it again.
template <class Operation>
Status TempMappedFileStream::WithoutDeleting(Operation operation) noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    TempFileStore& temp = *GetStore();
    if (temp.goesWithHandle) return kStatusUnsupportedOperation;
    const bool wasDeleted = temp.deleteOnClose;
    const bool wasKept = temp.keep;
    temp.keep = true;
    const Status status = operation();
    temp.deleteOnClose = wasDeleted && IsOpen();
    temp.keep = wasKept && IsOpen();
    return status;
}

Status TempMappedFileStream::ReopenReadWrite() noexcept {
    return WithoutDeleting([this] { return MappedFileStream::ReopenReadWrite(); });
}

Status TempMappedFileStream::ReopenReadOnly() noexcept {
    return WithoutDeleting([this] { return MappedFileStream::ReopenReadOnly(); });
}

Status TempMappedFileStream::Rename(const WCHAR* newPath) noexcept {
    return WithoutDeleting([this, newPath] { return MappedFileStream::Rename(newPath); });
}

}  // namespace AUX
