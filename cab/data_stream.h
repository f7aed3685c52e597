#pragma once

#include "cab/data_item.h"

namespace AUX::CAB {

/// Copies of more bytes lie in a temporary file, of which only a window is mapped at a time.
inline constexpr std::int64_t kMaxBytesInMemory = 4 << 20;

/// Copies all bytes of a stream into a new one, which stands at its start.
/// \return what fails in either, `copy` then being untouched.
[[nodiscard]] Status CopyWhole(Stream& source, std::unique_ptr<Stream>& copy) noexcept;

/// Bytes. Owns its stream, which is made in memory at the first use.
class DataStream final : public DataItem {
public:
    /// \param equalFlags  kEqualAnyStream. The streams' positions move.
    [[nodiscard]] bool Equals(DataItem* other, std::uint32_t equalFlags) noexcept override;
    /// What is written through it raises no change count and sets no flags. Null when memory runs
    /// out.
    [[nodiscard]] Stream* GetStream() noexcept override;
    /// With `attach` the stream comes from `new` and becomes the item's, when it succeeds.
    [[nodiscard]] bool SetStream(Stream* newStream, bool attach) noexcept override;
    [[nodiscard]] Kind GetType() noexcept override { return Kind::Stream; }
    [[nodiscard]] bool WriteTo(DataWriter& sink, bool skipDefaults) noexcept override;
    /// Streams have no default other than no bytes.
    [[nodiscard]] bool IsDefault() noexcept override;
    [[nodiscard]] bool AssignValue(DataItem& source, bool withFlags) noexcept override;
    bool ResetValue() noexcept override;

private:
    std::unique_ptr<Stream> value;
};

}  // namespace AUX::CAB
