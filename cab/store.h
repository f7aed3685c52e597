#pragma once

#include "cab/kinds.h"
#include "foundation/stream.h"
#include "foundation/wstring_view.h"

/// What a store of bags has to offer. There is no store of files yet: saving a bag to a file gives
/// "not implemented" to the client. These are the two faces that one would have.
namespace AUX::CAB {

/// A stored value that is read. It lives as long as its store; its children belong to it.
/// A getter for another kind than the reader's own gives false.
class DataReader {
public:
    virtual ~DataReader() = default;
    [[nodiscard]] virtual Kind GetKind() noexcept = 0;

    /// Children of a container; 0 otherwise.
    [[nodiscard]] virtual std::uint32_t GetCount() noexcept = 0;
    [[nodiscard]] virtual DataReader* ChildAt(std::uint32_t index) noexcept = 0;
    [[nodiscard]] virtual WStringView KeyAt(std::uint32_t index) noexcept = 0;
    [[nodiscard]] virtual DataReader* ChildByKey(WStringView key) noexcept = 0;

    [[nodiscard]] virtual bool ReadBool(bool& value) noexcept = 0;
    [[nodiscard]] virtual bool ReadInt(std::int32_t& value) noexcept = 0;
    [[nodiscard]] virtual bool ReadInt64(std::int64_t& value) noexcept = 0;
    [[nodiscard]] virtual bool ReadDouble(double& value) noexcept = 0;
    [[nodiscard]] virtual bool ReadString(WStringView& value) noexcept = 0;
    [[nodiscard]] virtual bool ReadStream(Stream*& value) noexcept = 0;
};

/// A stored value that is written. An operation gives false when the store cannot take the value.
class DataWriter {
public:
    virtual ~DataWriter() = default;
    [[nodiscard]] virtual bool PutBool(bool value) noexcept = 0;
    [[nodiscard]] virtual bool PutInt(std::int32_t value) noexcept = 0;
    [[nodiscard]] virtual bool PutInt64(std::int64_t value) noexcept = 0;
    [[nodiscard]] virtual bool PutDouble(double value) noexcept = 0;
    [[nodiscard]] virtual bool PutString(WStringView value) noexcept = 0;
    [[nodiscard]] virtual bool PutStream(Stream& value) noexcept = 0;

    /// Begins a container.
    [[nodiscard]] virtual bool PutContainer(Kind kind) noexcept = 0;
    /// Adds a place to the container that was begun; an element of an array has no key. The writer
    /// of the place is this one's, and valid until the next call. \return null if it cannot.
    [[nodiscard]] virtual DataWriter* Add(WStringView key, Kind kind) noexcept = 0;
};

}  // namespace AUX::CAB
