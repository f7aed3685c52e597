#pragma once

/// Files, folders, searches and temporary names.

#include "platform/handles.h"

#ifdef _WIN32

#if _WIN32_WINNT < 0x0602
// The headers hold these back from programs that also run on Windows 7, where the call just fails.
struct FILE_ID_INFO {
    ULONGLONG VolumeSerialNumber;
    FILE_ID_128 FileId;
};
inline constexpr auto FileIdInfo = static_cast<FILE_INFO_BY_HANDLE_CLASS>(18);
#endif

#else

#include "platform/posix/file_calls.h"

#endif

namespace platform {

struct FindHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Value value) noexcept { FindClose(value); }
};
/// Owns a search; INVALID_HANDLE_VALUE is none.
using FindHandle = UniqueHandle<FindHandleTraits>;

}  // namespace platform
