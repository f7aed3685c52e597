#pragma once

/// The file calls for systems that lack them. Paths are those of `posix/paths.h`.
///
/// Sharing: each open file holds range locks of its open file description, far behind any content,
/// one for each kind of access and each kind that it refuses to others. So share modes hold between
/// handles, modules and processes of this layer and vanish with a killed holder. They do not bind
/// programs that use the system directly, and a file system without such locks has no sharing
/// violations. An open file can be deleted or replaced by a program outside the layer.
///
/// Attributes: read-only is a file without any write permission, and it binds root too. Hidden,
/// system and archive are not kept. A symbolic link is FILE_ATTRIBUTE_REPARSE_POINT, with
/// FILE_ATTRIBUTE_DIRECTORY if it leads to a folder.

#include "platform/base.h"

// Access, share modes, dispositions and flags of CreateFileW.
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;
inline constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x2;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD FILE_ATTRIBUTE_COMPRESSED = 0x800;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;

inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 1;
inline constexpr DWORD MOVEFILE_COPY_ALLOWED = 2;
inline constexpr DWORD MOVEFILE_WRITE_THROUGH = 8;

/// Offsets are bytes from the start of the file.
struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;

struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    WCHAR cFileName[260];
    WCHAR cAlternateFileName[14];
};

struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD dwVolumeSerialNumber;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh;
    DWORD nFileIndexLow;
};

enum FILE_INFO_BY_HANDLE_CLASS { FileIdInfo = 18 };
struct FILE_ID_128 {
    BYTE Identifier[16];
};
struct FILE_ID_INFO {
    ULONGLONG VolumeSerialNumber;
    FILE_ID_128 FileId;
};

/// Opens or makes a file. The security attributes and the template are passed over. Where
/// CREATE_ALWAYS or OPEN_ALWAYS meets an existing file the error code is ERROR_ALREADY_EXISTS after
/// success, else 0. FILE_FLAG_OVERLAPPED is taken, and every transfer is complete when its call
/// returns. With FILE_FLAG_DELETE_ON_CLOSE the name goes with the handle, but stays if the process
/// is killed. \return INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND (a
/// folder of the path is missing), ERROR_ACCESS_DENIED (a folder, a read-only file, a refusal),
/// ERROR_SHARING_VIOLATION, ERROR_FILE_EXISTS (CREATE_NEW), ERROR_INVALID_NAME,
/// ERROR_INVALID_PARAMETER (disposition).
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile) noexcept;

/// Reads at the offset of `overlapped`, or at the file pointer. At the end of the file the result
/// is TRUE with a count of 0 without `overlapped`, and FALSE with ERROR_HANDLE_EOF with it.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD read,
              LPOVERLAPPED overlapped) noexcept;
/// Writes at the offset of `overlapped`, or at the file pointer. ERROR_DISK_FULL after a part was
/// written leaves that part in the file.
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, LPDWORD written,
               LPOVERLAPPED overlapped) noexcept;
/// The outcome that the last transfer left in `overlapped`.
BOOL GetOverlappedResult(HANDLE file, LPOVERLAPPED overlapped, LPDWORD bytes, BOOL wait) noexcept;
/// ERROR_NEGATIVE_SEEK before the start; a place behind the end is taken.
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                      DWORD method) noexcept;
/// Cuts or lengthens the file to the file pointer.
BOOL SetEndOfFile(HANDLE file) noexcept;
BOOL FlushFileBuffers(HANDLE file) noexcept;

BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) noexcept;
/// The time of creation is the time of the last status change where the file system keeps no
/// better.
BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write) noexcept;
/// The volume is the device number, the index the inode.
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information) noexcept;
/// Knows FileIdInfo. ERROR_BAD_LENGTH if `bytes` is too small.
BOOL GetFileInformationByHandleEx(HANDLE file, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID information,
                                  DWORD bytes) noexcept;

/// Moves a file or a folder. Between devices a file is copied to a temporary name and put in place
/// in one step (MOVEFILE_COPY_ALLOWED); without the flag ERROR_NOT_SAME_DEVICE.
/// ERROR_ALREADY_EXISTS without MOVEFILE_REPLACE_EXISTING; ERROR_ACCESS_DENIED if the target is a
/// folder, read-only or open without FILE_SHARE_DELETE; ERROR_SHARING_VIOLATION if the source is
/// open so.
BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) noexcept;
/// ERROR_ACCESS_DENIED for a folder or a read-only file; ERROR_SHARING_VIOLATION if it is open
/// without FILE_SHARE_DELETE.
BOOL DeleteFileW(LPCWSTR path) noexcept;
/// ERROR_ALREADY_EXISTS if anything has the name.
BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) noexcept;
/// ERROR_DIR_NOT_EMPTY, ERROR_DIRECTORY for a file. A link to a folder goes, its target stays.
BOOL RemoveDirectoryW(LPCWSTR path) noexcept;
DWORD GetFileAttributesW(LPCWSTR path) noexcept;
BOOL SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept;

/// Begins a search. The last part of the path may hold `*` and `?`; case counts as the file system
/// has it. Names that are no well-formed UTF-8, or hold a character that Windows' names cannot, are
/// left out: no path could name them. \return INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND
/// (nothing matches), ERROR_PATH_NOT_FOUND, ERROR_DIRECTORY (searched below a file).
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* found) noexcept;
/// ERROR_NO_MORE_FILES at the end.
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* found) noexcept;
BOOL FindClose(HANDLE search) noexcept;

/// TMPDIR or /tmp, with a `\` at its end. \return the length without terminator, or the size that a
/// buffer needs with it.
DWORD GetTempPathW(DWORD size, LPWSTR buffer) noexcept;
/// Makes an empty file `<up to three characters><hex>.tmp` if `unique` is 0; else only gives the
/// name. `name` holds MAX_PATH units. \return the number used, or 0: ERROR_DIRECTORY without such a
/// folder.
UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR name) noexcept;
