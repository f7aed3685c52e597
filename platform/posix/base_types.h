#pragma once

/// The Win32 base types for systems that lack them. Sizes, signs and values are Windows'.

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using CHAR = char;
using WCHAR = char16_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using BOOL = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using DWORD64 = std::uint64_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SHANDLE_PTR = std::intptr_t;
using SIZE_T = std::size_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using HRESULT = std::int32_t;
using LSTATUS = std::int32_t;

using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using PLONG = LONG*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;

using HANDLE = void*;
using HGLOBAL = HANDLE;
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;
struct HWND__;
using HWND = HWND__*;
struct HICON__;
using HICON = HICON__*;
struct HKEY__;
using HKEY = HKEY__*;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

/// Only the 64-bit view of the union: nothing of ours reads its halves.
union LARGE_INTEGER {
    LONGLONG QuadPart;
};

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using REFGUID = const GUID&;

#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDMETHODCALLTYPE
#define TEXT(literal) u##literal
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD MAX_PATH = 260;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

using FARPROC = INT_PTR (*)();

// Error codes of GetLastError and of the registry's results (winerror.h).
inline constexpr LSTATUS ERROR_SUCCESS = 0;
inline constexpr DWORD NO_ERROR = 0;
#define QVD_ERROR_CODE(name, value) inline constexpr LSTATUS name = value
QVD_ERROR_CODE(ERROR_FILE_NOT_FOUND, 2);
QVD_ERROR_CODE(ERROR_PATH_NOT_FOUND, 3);
QVD_ERROR_CODE(ERROR_TOO_MANY_OPEN_FILES, 4);
QVD_ERROR_CODE(ERROR_ACCESS_DENIED, 5);
QVD_ERROR_CODE(ERROR_INVALID_HANDLE, 6);
QVD_ERROR_CODE(ERROR_NOT_ENOUGH_MEMORY, 8);
QVD_ERROR_CODE(ERROR_BAD_FORMAT, 11);
QVD_ERROR_CODE(ERROR_OUTOFMEMORY, 14);
QVD_ERROR_CODE(ERROR_INVALID_DRIVE, 15);
QVD_ERROR_CODE(ERROR_NOT_SAME_DEVICE, 17);
QVD_ERROR_CODE(ERROR_NO_MORE_FILES, 18);
QVD_ERROR_CODE(ERROR_WRITE_PROTECT, 19);
QVD_ERROR_CODE(ERROR_BAD_LENGTH, 24);
QVD_ERROR_CODE(ERROR_GEN_FAILURE, 31);
QVD_ERROR_CODE(ERROR_SHARING_VIOLATION, 32);
QVD_ERROR_CODE(ERROR_HANDLE_EOF, 38);
QVD_ERROR_CODE(ERROR_NOT_SUPPORTED, 50);
QVD_ERROR_CODE(ERROR_BAD_NETPATH, 53);
QVD_ERROR_CODE(ERROR_FILE_EXISTS, 80);
QVD_ERROR_CODE(ERROR_INVALID_PARAMETER, 87);
QVD_ERROR_CODE(ERROR_BUFFER_OVERFLOW, 111);
QVD_ERROR_CODE(ERROR_DISK_FULL, 112);
QVD_ERROR_CODE(ERROR_CALL_NOT_IMPLEMENTED, 120);
QVD_ERROR_CODE(ERROR_INSUFFICIENT_BUFFER, 122);
QVD_ERROR_CODE(ERROR_INVALID_NAME, 123);
QVD_ERROR_CODE(ERROR_MOD_NOT_FOUND, 126);
QVD_ERROR_CODE(ERROR_PROC_NOT_FOUND, 127);
QVD_ERROR_CODE(ERROR_NEGATIVE_SEEK, 131);
QVD_ERROR_CODE(ERROR_DIR_NOT_EMPTY, 145);
QVD_ERROR_CODE(ERROR_BAD_PATHNAME, 161);
QVD_ERROR_CODE(ERROR_BUSY, 170);
QVD_ERROR_CODE(ERROR_ALREADY_EXISTS, 183);
QVD_ERROR_CODE(ERROR_BAD_EXE_FORMAT, 193);
QVD_ERROR_CODE(ERROR_FILENAME_EXCED_RANGE, 206);
QVD_ERROR_CODE(ERROR_MORE_DATA, 234);
QVD_ERROR_CODE(ERROR_NO_MORE_ITEMS, 259);
QVD_ERROR_CODE(ERROR_DIRECTORY, 267);
QVD_ERROR_CODE(ERROR_NOT_OWNER, 288);
QVD_ERROR_CODE(ERROR_MR_MID_NOT_FOUND, 317);
QVD_ERROR_CODE(ERROR_INVALID_ADDRESS, 487);
QVD_ERROR_CODE(ERROR_NOACCESS, 998);
QVD_ERROR_CODE(ERROR_BADDB, 1009);
QVD_ERROR_CODE(ERROR_BADKEY, 1010);
QVD_ERROR_CODE(ERROR_KEY_DELETED, 1018);
QVD_ERROR_CODE(ERROR_REGISTRY_CORRUPT, 1015);
QVD_ERROR_CODE(ERROR_REGISTRY_IO_FAILED, 1016);
QVD_ERROR_CODE(ERROR_IO_INCOMPLETE, 996);
QVD_ERROR_CODE(ERROR_IO_PENDING, 997);
QVD_ERROR_CODE(ERROR_NO_TOKEN, 1008);
QVD_ERROR_CODE(ERROR_DLL_INIT_FAILED, 1114);
QVD_ERROR_CODE(ERROR_USER_MAPPED_FILE, 1224);
QVD_ERROR_CODE(ERROR_COMMITMENT_LIMIT, 1455);
QVD_ERROR_CODE(ERROR_RESOURCE_DATA_NOT_FOUND, 1812);
QVD_ERROR_CODE(ERROR_RESOURCE_TYPE_NOT_FOUND, 1813);
QVD_ERROR_CODE(ERROR_RESOURCE_NAME_NOT_FOUND, 1814);
#undef QVD_ERROR_CODE

// Result codes of COM (winerror.h).
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);

constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
constexpr bool FAILED(HRESULT result) { return result < 0; }

/// The calling thread's error code, as the last failed call left it.
DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;
