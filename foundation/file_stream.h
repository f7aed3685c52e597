#pragma once

#include "foundation/file_store.h"
#include "foundation/stream.h"
#include "platform/files.h"

namespace AUX {

/// A file. Clones may read it from several threads at the same time, each at its own position.
///
/// Reading recovers from a lost network path: the file is opened anew, at most every 500
/// milliseconds, and reading goes on if its size and its time are what they were.
class FileStream : public Stream {
public:
    FileStream() noexcept;
    ~FileStream() override;

    /// Closes, and opens a file.
    /// \param disposition, share, flags  As CreateFileW takes them.
    /// \param access  kAccessRead, kAccessWrite or both; write alone reads too.
    /// \return kStatusInvalidAccessMode without any access; kStatusInsufficientMemory; the system's
    ///         error. After a failure the stream is closed.
    [[nodiscard]] Status Open(const WCHAR* path, DWORD disposition, std::uint32_t access,
                              DWORD share, DWORD flags) noexcept;

    [[nodiscard]] std::uint32_t GetAccess() const noexcept override;
    /// Needs kAccessRead. \return kStatusReadFailed if the network path is lost again at once,
    /// kStatusFileChanged if the file is another than it was.
    [[nodiscard]] Status Read(void* buffer, std::int64_t length,
                              std::int64_t& count) noexcept override;
    /// Needs kAccessWrite, and lengthens the file. \return kStatusFailure for a short write.
    [[nodiscard]] Status Write(const void* data, std::int64_t length,
                               std::int64_t& count) noexcept override;
    /// Needs kAccessWrite. \return kStatusInternalError if less was written than was read, whatever
    /// the reason.
    [[nodiscard]] Status CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                  std::int64_t length, std::int64_t& count) noexcept override;
    /// Needs kAccessWrite.
    [[nodiscard]] Status SetSize(std::int64_t newSize) noexcept override;
    [[nodiscard]] Status Compact() noexcept override;
    [[nodiscard]] Status ReleaseView() noexcept override;
    [[nodiscard]] Status Flush() noexcept override;
    [[nodiscard]] StreamType GetStreamType() const noexcept override;
    [[nodiscard]] std::unique_ptr<Stream> Clone(Status* status = nullptr) noexcept override;
    [[nodiscard]] bool GetFileIdentity(FileIdentity& identity) const noexcept override;

    /// Opens the same file with other access, at position 0; nothing happens if the access is that
    /// already. If it cannot, the file is opened as it was, and the failure is the result; if that
    /// fails too, its failure is, and the stream is closed.
    [[nodiscard]] virtual Status ReopenReadWrite() noexcept;
    [[nodiscard]] virtual Status ReopenReadOnly() noexcept;

    /// Moves the file, replacing what has the new name, and opens it there for shared reading, at
    /// position 0; its own path changes nothing. While another program holds the file it waits and
    /// tries again, 2.5 seconds in all. After a failure the file is open under its old path again,
    /// or, if that cannot be, the stream is closed.
    [[nodiscard]] virtual Status Rename(const WCHAR* newPath) noexcept;

    /// The store, made if there is none; null when memory runs out. The stream owns it.
    [[nodiscard]] virtual FileStore* GetStore() noexcept;

    /// Ends the mapping of a mapped file.
    [[nodiscard]] virtual Status ReleaseMapping() noexcept;

protected:
    /// Sets the position, without a check.
    virtual void MoveTo(std::int64_t place) noexcept;

    [[nodiscard]] Status NeedAccess(std::uint32_t access) const noexcept;

    /// Opens the file anew after its network path was lost, unless that has just been done.
    /// \param wasReopened  Becomes true if it was tried.
    /// \return 1 if too little time has passed since the last time: the caller reads again.
    [[nodiscard]] Status RecoverRead(bool& wasReopened) noexcept;

    /// Copies inside one file, overlapping or not, to the position.
    /// \param available  The bytes that the source holds behind `start`, at most `length`.
    /// \param buffer     kCopyBuffer bytes, or `length` if that is less.
    [[nodiscard]] Status CopyWithin(Stream& source, std::int64_t start, std::int64_t available,
                                    std::int64_t length, char* buffer,
                                    std::int64_t& count) noexcept;
    static constexpr std::int64_t kCopyBuffer = 4096;

private:
    [[nodiscard]] FileStore* File() const noexcept { return static_cast<FileStore*>(store); }
    [[nodiscard]] DWORD TransferResult(BOOL succeeded, DWORD& moved) noexcept;
    void SetOffset() noexcept;
    [[nodiscard]] DWORD ReadChunk(void* buffer, DWORD bytes, DWORD& moved) noexcept;
    [[nodiscard]] DWORD WriteChunk(const void* data, DWORD bytes, DWORD& moved) noexcept;
    struct Content {
        std::int64_t size;
        bool isCutOnClose;
    };
    [[nodiscard]] Content ContentNow() const noexcept;
    [[nodiscard]] Status CloseWhole(const Content& content) noexcept;
    [[nodiscard]] Status OpenAgain(WString path, const FileOpening& opening,
                                   const Content& content) noexcept;
    [[nodiscard]] Status OpenStore(WString path, const FileOpening& opening) noexcept;
    [[nodiscard]] Status Reopen(std::uint32_t access) noexcept;
    [[nodiscard]] Status CopyFromOther(Stream& source, std::int64_t length, char* buffer,
                                       std::int64_t& count) noexcept;

    OVERLAPPED overlapped = {};    ///< Its offset is set from the position before each transfer.
    platform::KernelHandle event;  ///< Manual reset; this stream's own, so that clones can wait.
};

}  // namespace AUX
