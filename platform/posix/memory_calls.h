#pragma once

/// The calls for shared memory, for systems that lack them. All set the thread's error code.

#include "platform/base.h"

inline constexpr DWORD PAGE_READONLY = 0x02;
inline constexpr DWORD PAGE_READWRITE = 0x04;
inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD FILE_MAP_WRITE = 0x0002;
inline constexpr DWORD FILE_MAP_READ = 0x0004;

/// Makes zeroed memory under a name, or opens what the name stands for: then the size is the
/// existing one and the error code ERROR_ALREADY_EXISTS, else ERROR_SUCCESS.
/// \param file        A file, then `name` is null; INVALID_HANDLE_VALUE: memory and not a file.
/// \param protection  PAGE_READWRITE; of a file also PAGE_READONLY.
/// \param sizeHigh    with `sizeLow` the size in bytes. Memory is rounded up to whole pages. 0 is a
///     file's own size; one that can be written becomes as long as the mapping, with its room on
///     the disk taken.
/// \param name        Case counts. A prefix `Local\` says nothing, `Global\` is a space of its own.
/// \return null with ERROR_INVALID_PARAMETER (size 0, other arguments), ERROR_PATH_NOT_FOUND
///     (another `\` in the name), ERROR_BAD_PATHNAME (it begins with one), ERROR_INVALID_NAME
///     (nothing behind the prefix), ERROR_FILENAME_EXCED_RANGE (over about 200 letters),
///     ERROR_COMMITMENT_LIMIT (no room), ERROR_ACCESS_DENIED (the runtime folder is not the user's
///     own). Of a file: ERROR_FILE_INVALID (it is empty, and so is the size), ERROR_ACCESS_DENIED
///     (the handle cannot do as much), ERROR_NOT_ENOUGH_MEMORY (longer than a file to be read),
///     ERROR_DISK_FULL.
HANDLE CreateFileMappingW(HANDLE file, const SECURITY_ATTRIBUTES* security, DWORD protection,
                          DWORD sizeHigh, DWORD sizeLow, LPCWSTR name) noexcept;

/// As CreateFileMappingW, for a name that this process alone knows: its modules meet there, and
/// nothing of it outlives the process. Sizes up to 4 GiB; the name is needed.
HANDLE CreateFileMappingA(HANDLE file, const SECURITY_ATTRIBUTES* security, DWORD protection,
                          DWORD sizeHigh, DWORD sizeLow, LPCSTR name) noexcept;

/// Opens existing memory. Null with ERROR_FILE_NOT_FOUND if nobody holds it any more.
HANDLE OpenFileMappingW(DWORD access, BOOL inherit, LPCWSTR name) noexcept;

/// Maps `size` bytes, or all to the end for 0. The offset is a multiple of 64 KiB, else
/// ERROR_MAPPED_ALIGNMENT; of memory it is 0. A view of a file to be written can be written even if
/// `access` is reading, and two views of the same place may have one address.
/// \return null with ERROR_ACCESS_DENIED if that is more than there is, or if the handle was opened
///     for reading and `access` is writing.
LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                     SIZE_T size) noexcept;

/// FALSE with ERROR_INVALID_ADDRESS if no view begins at `view`.
BOOL UnmapViewOfFile(LPCVOID view) noexcept;

/// Starts to bring what was written through a view to the device; FlushFileBuffers waits for it.
/// Only with size 0, the whole view.
BOOL FlushViewOfFile(LPCVOID view, SIZE_T size) noexcept;

/// Gives zeroed pages that begin at a multiple of 64 KiB. Only `address` null, `type` MEM_COMMIT
/// and `protection` PAGE_READWRITE: others give null with ERROR_INVALID_PARAMETER. \return null
/// with ERROR_NOT_ENOUGH_MEMORY or ERROR_INVALID_PARAMETER (size 0).
LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD type, DWORD protection) noexcept;

/// Gives back what VirtualAlloc gave. \param size  0; \param type  MEM_RELEASE.
/// \return FALSE with ERROR_INVALID_PARAMETER, or ERROR_INVALID_ADDRESS if nothing begins there.
BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD type) noexcept;

inline constexpr DWORD HEAP_ZERO_MEMORY = 0x00000008;

/// The process heap is the run-time's; its blocks begin at multiples of 16. Nothing else counts as
/// a heap. A failure gives null and sets no error code.
HANDLE GetProcessHeap() noexcept;
LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T size) noexcept;
/// Only with flags 0.
LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T size) noexcept;
BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID block) noexcept;

/// Zeroes memory, also where nothing reads it afterwards.
LPVOID SecureZeroMemory(LPVOID memory, SIZE_T size) noexcept;
