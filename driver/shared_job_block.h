#pragma once

#include <cstdint>

#include "foundation/allocated.h"
#include "platform/memory.h"

/// The name of the shared memory object: one for all tabs and jobs of a logon session.
inline constexpr WCHAR kSharedBlockName[] = TEXT("QVD:IEP:HTMLData");

/// A job's block in shared memory. Owns the mapping and its view; the object exists as long as
/// one process holds it. Not thread-safe.
class SharedJobBlock final : public AUX::Allocated {
public:
    /// Closes the block held before and publishes this one. While another tab's block is open, a
    /// block that is no larger overwrites that one's first bytes, and a larger one fails.
    /// \param size  In bytes; the block's first four bytes must say the same.
    /// \return false, with nothing open, if they do not, or the memory cannot be had.
    [[nodiscard]] bool Publish(const void* data, std::int64_t size) noexcept;

    void Close() noexcept;

    [[nodiscard]] bool IsOpen() const noexcept { return static_cast<bool>(mapping_); }

private:
    platform::KernelHandle mapping_;
    platform::MappedView view_;  // Ends before the mapping.
};
