#pragma once

/// The shell's calls for systems that lack them.

#include "platform/posix/com_types.h"
#include "platform/posix/user/window_types.h"

inline constexpr INT SE_ERR_FNF = 2;
inline constexpr INT SE_ERR_PNF = 3;
inline constexpr INT SE_ERR_ACCESSDENIED = 5;
inline constexpr INT SE_ERR_OOM = 8;
inline constexpr INT SE_ERR_NOASSOC = 31;

/// Opens a file. A program starts in a session of its own, with no input and this process's output;
/// addresses, folders and documents go to the desktop's opener, xdg-open, where there is a display.
/// With QUVADA_NO_OPEN=1 in the environment the opener is not started, and that counts as done.
/// \param operation   Null, "open" or, for a folder, "explore"; others give SE_ERR_NOASSOC.
/// \param parameters  Reaches a program raw, as one argument. Null or empty: no argument.
/// \param folder      Where a program starts; null is the current folder.
/// \return above 32 if it started; else SE_ERR_FNF, SE_ERR_PNF, SE_ERR_ACCESSDENIED, SE_ERR_OOM,
///         ERROR_BAD_FORMAT (11), or SE_ERR_NOASSOC for what nothing here opens, such as an .exe
///         file that may not be run.
HINSTANCE ShellExecuteW(HWND owner, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters,
                        LPCWSTR folder, INT show) noexcept;

inline constexpr ULONG SEE_MASK_FLAG_NO_UI = 0x400;
/// Without the fields that nothing of ours sets.
struct SHELLEXECUTEINFOW {
    DWORD cbSize;
    ULONG fMask;
    HWND hwnd;
    LPCWSTR lpVerb;
    LPCWSTR lpFile;
    LPCWSTR lpParameters;
    LPCWSTR lpDirectory;
    INT nShow;
    HINSTANCE hInstApp;
};
/// As ShellExecuteW, whose result goes to `hInstApp`. Never shows a message.
BOOL ShellExecuteExW(SHELLEXECUTEINFOW* information) noexcept;

using ASSOCF = DWORD;
inline constexpr ASSOCF ASSOCF_NONE = 0;
enum ASSOCSTR { ASSOCSTR_EXECUTABLE = 2 };
/// The program that opens a protocol, or files of an extension: from the command of its class in
/// the registry; of file, ftp, http, https and mailto else the desktop's opener.
/// \param size  In: units of `text`. Out: the units needed, terminator included.
/// \return S_FALSE if `text` is null; E_POINTER if it is too small; E_INVALIDARG; the code of
///         ERROR_NO_ASSOCIATION.
HRESULT AssocQueryStringW(ASSOCF flags, ASSOCSTR kind, LPCWSTR association, LPCWSTR verb,
                          LPWSTR text, LPDWORD size) noexcept;

/// The shell's name of a file: items, one after the other, up to one of size 0.
struct SHITEMID {
    USHORT cb;  // bytes, this field included
    BYTE abID[1];
};
struct ITEMIDLIST {
    SHITEMID mkid;
};
using LPITEMIDLIST = ITEMIDLIST*;
using LPCITEMIDLIST = const ITEMIDLIST*;

/// The shell's allocator, with the one operation that is called.
struct IMalloc : IUnknown {
    virtual void STDMETHODCALLTYPE Free(void* block) = 0;

protected:
    ~IMalloc() = default;
};
QVD_INTERFACE_ID(IMalloc, 0x00000002, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});
HRESULT SHGetMalloc(IMalloc** allocator) noexcept;

/// The item list of a file or folder that exists; freed by the shell's allocator.
/// \param attributes  Passed over. \return the code of ERROR_FILE_NOT_FOUND and the like.
HRESULT SHILCreateFromPath(LPCWSTR path, LPITEMIDLIST* list, DWORD* attributes) noexcept;
/// Opens a folder as ShellExecuteW does; desktops here have no common way to mark items in it.
HRESULT SHOpenFolderAndSelectItems(LPCITEMIDLIST folder, UINT count, LPCITEMIDLIST* items,
                                   DWORD flags) noexcept;

/// The program's path in quotes, a blank and the text of the arguments. One argument stands raw,
/// since ShellExecuteW hands over one text; of several, the empty ones and those with a blank or a
/// quote stand in quotes. It lives as long as the process.
LPWSTR GetCommandLineW() noexcept;

/// Whether a file or a folder has this name.
BOOL PathFileExistsW(LPCWSTR path) noexcept;
/// FALSE for a text that begins with '\' or has ':' as its second character.
BOOL PathIsRelativeW(LPCWSTR path) noexcept;
/// Puts `name` behind `folder`, either of which may be null, and drops "." and what ".." takes
/// back. Only '\' separates. An absolute name stands alone, a rooted one takes the folder's root.
/// \param path  MAX_PATH units. \return `path`; null, with an empty path, if both are null or the
/// result does not fit.
LPWSTR PathCombineW(LPWSTR path, LPCWSTR folder, LPCWSTR name) noexcept;
/// The first place of a text in another, case not counting; null if there is none or one is empty.
LPWSTR StrStrIW(LPCWSTR text, LPCWSTR sought) noexcept;

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
/// Null if memory runs out.
LPVOID CoTaskMemAlloc(SIZE_T size) noexcept;
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
