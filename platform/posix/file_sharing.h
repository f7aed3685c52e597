#pragma once

/// Share modes between all handles of all processes, held as range locks of the open file
/// description.

#include <string>

#include "platform/base.h"

namespace platform {

/// What one handle does with a file and lets others do.
struct ShareClaim {
    bool reads;
    bool writes;
    bool deletes;
    DWORD share;  // FILE_SHARE_ flags
};

/// Enters the claim for an open descriptor; it ends with the descriptor.
/// \return false with ERROR_SHARING_VIOLATION. A file system without such locks takes every claim.
[[nodiscard]] bool ClaimFile(int descriptor, const ShareClaim& claim) noexcept;

/// Whether some handle forbids that the file be deleted or replaced. False for what cannot be
/// opened to look.
[[nodiscard]] bool IsHeldAgainstDeletion(const std::string& host) noexcept;

}  // namespace platform
