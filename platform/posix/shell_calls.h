#pragma once

/// The shell's calls for systems that lack them.

#include "platform/base.h"

inline constexpr INT SW_SHOWNORMAL = 1;
inline constexpr INT SW_SHOW = 5;
inline constexpr INT SE_ERR_FNF = 2;
inline constexpr INT SE_ERR_PNF = 3;
inline constexpr INT SE_ERR_ACCESSDENIED = 5;
inline constexpr INT SE_ERR_OOM = 8;
inline constexpr INT SE_ERR_NOASSOC = 31;

/// Starts a program in a session of its own, with no input and this process's output.
/// \param operation   Null or "open"; other verbs give SE_ERR_NOASSOC.
/// \param parameters  Reaches the program raw, as one argument. Null or empty: no argument.
/// \param folder      Where the program starts; null is the current folder.
/// \return above 32 if it started; else SE_ERR_FNF, SE_ERR_PNF, SE_ERR_ACCESSDENIED, SE_ERR_OOM,
///         ERROR_BAD_FORMAT (11), or SE_ERR_NOASSOC for a file that is no program.
HINSTANCE ShellExecuteW(HWND owner, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters,
                        LPCWSTR folder, INT show) noexcept;

/// The program's path in quotes, a blank and the text of the arguments. One argument stands raw,
/// since ShellExecuteW hands over one text; of several, the empty ones and those with a blank or a
/// quote stand in quotes. It lives as long as the process.
LPWSTR GetCommandLineW() noexcept;

/// Whether a file or a folder has this name.
BOOL PathFileExistsW(LPCWSTR path) noexcept;

// Known folders (knownfolders.h, shlobj.h).
using KNOWNFOLDERID = GUID;
using REFKNOWNFOLDERID = const GUID&;
inline constexpr GUID FOLDERID_LocalAppDataLow{
    0xA520A1A4, 0x1780, 0x4FF6, {0xBD, 0x18, 0x16, 0x73, 0x43, 0xC5, 0xAF, 0x16}};
inline constexpr int CSIDL_LOCAL_APPDATA = 28;

/// The folder is made if it is missing. The text is freed by CoTaskMemFree.
/// \return the code of ERROR_FILE_NOT_FOUND for an unknown id.
HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID id, DWORD flags, HANDLE token, LPWSTR* path) noexcept;
/// As SHGetKnownFolderPath, into a buffer of MAX_PATH units. E_INVALIDARG for an unknown folder.
HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, LPWSTR path) noexcept;
/// Null is passed over.
void CoTaskMemFree(LPVOID block) noexcept;

inline constexpr UINT SHGFI_ATTRIBUTES = 0x800;
inline constexpr DWORD SFGAO_FOLDER = 0x20000000;
inline constexpr DWORD SFGAO_HIDDEN = 0x00080000;
inline constexpr DWORD SFGAO_READONLY = 0x00040000;
inline constexpr DWORD SFGAO_SYSTEM = 0x00001000;
inline constexpr DWORD SFGAO_COMPRESSED = 0x04000000;
struct SHFILEINFOW {
    HICON hIcon;
    int iIcon;
    DWORD dwAttributes;
    WCHAR szDisplayName[260];
    WCHAR szTypeName[80];
};
/// Answers SHGFI_ATTRIBUTES with the folder and read-only marks; 0 if the path cannot be found,
/// which is so for every network name: there is no network neighbourhood here.
DWORD_PTR SHGetFileInfoW(LPCWSTR path, DWORD attributes, SHFILEINFOW* information, UINT bytes,
                         UINT flags) noexcept;
