#pragma once

#include "foundation/file_stream.h"
#include "foundation/mapped_file_store.h"

namespace AUX {

/// A file whose bytes move through a view of two granules (128 KiB, as a rule) that slides over it,
/// so that a file of any size takes little of the address space. A file to be written grows by
/// whole granules and is cut back when it is closed.
///
/// Clones have views of their own and may read at the same time on several threads. SetSize,
/// Compact, a Write or CopyFrom that lengthens the file, and Close end the views of all streams on
/// the file: nothing may run beside them.
///
/// A file that went away under its view (it was cut, its network path or its disk failed, the disk
/// is full) is a failure of the operation and no fault: Read opens it anew as FileStream does.
class MappedFileStream : public FileStream, protected FileView {
public:
    MappedFileStream() noexcept;
    ~MappedFileStream() override;

    /// Maps nothing: that waits until bytes are moved. Ends the view if another one is needed.
    [[nodiscard]] Status Seek(SeekMode mode, std::int64_t offset) noexcept override;
    /// Needs kAccessRead. \return kStatusReadFailed if the file is lost again at once,
    /// kStatusFileChanged if it is another than it was, ERROR_NOACCESS for a buffer that is none.
    [[nodiscard]] Status Read(void* buffer, std::int64_t length,
                              std::int64_t& count) noexcept override;
    /// Needs kAccessWrite. \return kStatusWriteFailed if the file is lost; the size is then that of
    /// what was written.
    [[nodiscard]] Status Write(const void* data, std::int64_t length,
                               std::int64_t& count) noexcept override;
    [[nodiscard]] Status ReadAt(void* buffer, std::int64_t length, SeekMode mode,
                                std::int64_t offset, std::int64_t& count) noexcept override;
    /// Needs kAccessWrite. Makes room for all that was asked for first; what the source does not
    /// give stays 0. \return kStatusWriteFailed if the file is lost.
    [[nodiscard]] Status CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                  std::int64_t length, std::int64_t& count) noexcept override;
    /// Needs kAccessWrite. If the file cannot grow it is open with its old size; if not even that
    /// can be mapped the stream is closed, and that failure is the result.
    [[nodiscard]] Status SetSize(std::int64_t newSize) noexcept override;
    /// Needs kAccessWrite. Cuts the file to its content. Fails as SetSize does, and if the written
    /// bytes cannot be flushed.
    [[nodiscard]] Status Compact() noexcept override;
    [[nodiscard]] Status ReleaseView() noexcept override;
    [[nodiscard]] Status Flush() noexcept override;
    [[nodiscard]] Status Detach() noexcept override;
    [[nodiscard]] StreamType GetStreamType() const noexcept override;
    [[nodiscard]] std::unique_ptr<Stream> Clone(Status* status = nullptr) noexcept override;
    Status Rewind() noexcept override;
    [[nodiscard]] MappedFileStore* GetStore() noexcept override;
    /// The stream counts as closed afterwards, but for Close.
    [[nodiscard]] Status ReleaseMapping() noexcept override;

protected:
    void MoveTo(std::int64_t place) noexcept override;

    /// Uses a new store, which may be null.
    void TakeStore(MappedFileStore* made) noexcept;

    /// Clones into a stream of the class T.
    template <class T>
    std::unique_ptr<Stream> CloneAs(Status* status) noexcept {
        std::unique_ptr<Stream> clone = MakeClone(static_cast<const T&>(*this), status);
        if (clone) static_cast<MappedFileStream&>(static_cast<T&>(*clone)).AddViewToStore();
        return clone;
    }

private:
    [[nodiscard]] MappedFileStore* Mapped() const noexcept {
        return static_cast<MappedFileStore*>(store);
    }
    [[nodiscard]] char* At() const noexcept {
        return static_cast<char*>(view.Get()) + (viewLength - viewLeft);
    }
    void AddViewToStore() noexcept;
    void RemoveViewFromStore() noexcept;
    void Advance(std::int64_t moved) noexcept;
    void RaiseSize(std::int64_t size) noexcept;
    [[nodiscard]] Status MapView() noexcept;
    [[nodiscard]] Status RecoverView(bool& wasReopened) noexcept;
    [[nodiscard]] Status MakeRoom(std::int64_t end) noexcept;
    [[nodiscard]] Status Remap(std::int64_t bytes, Status first) noexcept;
    [[nodiscard]] Status PutBytes(const char* data, std::int64_t length,
                                  std::int64_t& count) noexcept;
    [[nodiscard]] Status PutZeros(std::int64_t from, std::int64_t to) noexcept;
    [[nodiscard]] Status TakeBytes(Stream& source, std::int64_t room, std::int64_t& taken) noexcept;
    [[nodiscard]] Status CopyFromOther(Stream& source, std::int64_t length,
                                       std::int64_t& count) noexcept;
};

}  // namespace AUX
