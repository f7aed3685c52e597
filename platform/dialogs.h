#pragma once

/// The common dialogs.

#include "platform/base.h"

#ifdef _WIN32
#include <commdlg.h>
#else

inline constexpr DWORD OFN_OVERWRITEPROMPT = 0x2;
inline constexpr DWORD OFN_ENABLEHOOK = 0x20;
inline constexpr DWORD OFN_EXPLORER = 0x80000;
inline constexpr DWORD OFN_ENABLESIZING = 0x800000;

using LPOFNHOOKPROC = UINT_PTR (*)(HWND, UINT, WPARAM, LPARAM);

struct OPENFILENAMEW {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCWSTR lpstrFilter;
    LPWSTR lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;
    LPWSTR lpstrFile;
    DWORD nMaxFile;
    LPWSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCWSTR lpstrInitialDir;
    LPCWSTR lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;
    WORD nFileExtension;
    LPCWSTR lpstrDefExt;
    LPARAM lCustData;
    LPOFNHOOKPROC lpfnHook;
    LPCWSTR lpTemplateName;
    void* pvReserved;
    DWORD dwReserved;
    DWORD FlagsEx;
};
using LPOPENFILENAMEW = OPENFILENAMEW*;

/// Asks for the file to save to: first what a test has installed, then the path in the environment
/// variable QUVADA_SAVE_AS, then the terminal, where an empty line takes the suggestion, an end of
/// input cancels, and OFN_OVERWRITEPROMPT asks before an existing file is taken. With none of these
/// it is cancelled, with a line on the standard error output. QUVADA_SAVE_AS asks nothing: whoever
/// sets it has chosen. A path may be given in the host's form (/tmp/a.pdf). A relative one starts
/// at the current folder. lpstrDefExt is added to a name that has no extension. The hook is not
/// called. \return TRUE with the full path in lpstrFile. FALSE when cancelled, or when the path
/// does not fit;
///         the buffer is unchanged then.
BOOL GetSaveFileNameW(LPOPENFILENAMEW dialog) noexcept;

/// Asks for a file to open: what a test has installed. Nobody else can be asked, so without that it
/// is cancelled. \return as GetSaveFileNameW.
BOOL GetOpenFileNameW(LPOPENFILENAMEW dialog) noexcept;

#endif
