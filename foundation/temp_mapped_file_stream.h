#pragma once

#include "foundation/mapped_file_stream.h"

namespace AUX {

/// A mapped file that is temporary: it goes when the stream, with all its clones, is closed. Of a
/// file that this library deletes the owner may still decide to keep it (`GetStore()->keep`).
class TempMappedFileStream : public MappedFileStream {
public:
    /// Closes, and makes a file with a name of its own, to be read and written.
    /// \param prefix, folder  As MakeTempFileNameInFolder takes them.
    /// \param deleteOnClose   Whether the library deletes the file; else the system does, with the
    ///                        handle, and the file can neither be kept nor be renamed.
    /// \return as MakeTempFileNameInFolder and Open; no file is left behind by a failure.
    [[nodiscard]] Status OpenTemp(const WCHAR* prefix, const WCHAR* folder,
                                  bool deleteOnClose) noexcept;

    [[nodiscard]] std::unique_ptr<Stream> Clone(Status* status = nullptr) noexcept override;
    [[nodiscard]] TempFileStore* GetStore() noexcept override;

    /// As FileStream, and the file stays as temporary as it was, under its new name too. If it
    /// cannot be opened again it is kept.
    /// \return kStatusUnsupportedOperation for a file that the system deletes.
    [[nodiscard]] Status ReopenReadWrite() noexcept override;
    [[nodiscard]] Status ReopenReadOnly() noexcept override;
    [[nodiscard]] Status Rename(const WCHAR* newPath) noexcept override;

private:
    template <class Operation>
    Status WithoutDeleting(Operation operation) noexcept;
};

}  // namespace AUX
