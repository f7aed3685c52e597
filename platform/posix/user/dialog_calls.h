#pragma once

/// Dialogs made from compiled templates, as the system's dialog manager does it. Fonts are not
/// drawn: their size alone counts, for the dialog units, and no WM_SETFONT is sent.

#include "platform/posix/resource_calls.h"
#include "platform/posix/user/hook_calls.h"
#include "platform/posix/user/window_calls.h"

using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

#define WC_DIALOG TEXT("#32770")

inline constexpr DWORD DS_ABSALIGN = 0x1;
inline constexpr DWORD DS_SETFONT = 0x40;
inline constexpr DWORD DS_MODALFRAME = 0x80;
inline constexpr DWORD DS_NOIDLEMSG = 0x100;
inline constexpr DWORD DS_3DLOOK = 0x4;
inline constexpr DWORD DS_NOFAILCREATE = 0x10;
inline constexpr DWORD DS_CONTROL = 0x400;
inline constexpr DWORD DS_CENTER = 0x800;
inline constexpr DWORD DS_SHELLFONT = DS_SETFONT | 0x8;

// Words of a dialog.
inline constexpr int DLGWINDOWEXTRA = 30;
inline constexpr int DWLP_MSGRESULT = 0;
inline constexpr int DWLP_DLGPROC = 8;
inline constexpr int DWLP_USER = 16;

inline constexpr UINT DM_GETDEFID = WM_USER + 0;
inline constexpr UINT DM_SETDEFID = WM_USER + 1;
inline constexpr WORD DC_HASDEFID = 0x534B;

// What a control wants of the keys (WM_GETDLGCODE).
inline constexpr LRESULT DLGC_WANTARROWS = 0x1;
inline constexpr LRESULT DLGC_WANTTAB = 0x2;
inline constexpr LRESULT DLGC_WANTALLKEYS = 0x4;
inline constexpr LRESULT DLGC_WANTMESSAGE = 0x4;
inline constexpr LRESULT DLGC_HASSETSEL = 0x8;
inline constexpr LRESULT DLGC_DEFPUSHBUTTON = 0x10;
inline constexpr LRESULT DLGC_UNDEFPUSHBUTTON = 0x20;
inline constexpr LRESULT DLGC_RADIOBUTTON = 0x40;
inline constexpr LRESULT DLGC_WANTCHARS = 0x80;
inline constexpr LRESULT DLGC_STATIC = 0x100;
inline constexpr LRESULT DLGC_BUTTON = 0x2000;

/// Makes a modeless dialog from a template of `module` (RT_DIALOG) with its controls, sends
/// WM_INITDIALOG, and shows it if the template says WS_VISIBLE.
/// \param owner  The parent of a WS_CHILD template, else the owner; may be null then.
/// \return null with FindResourceW's and CreateWindowExW's error codes, or
///         ERROR_RESOURCE_DATA_NOT_FOUND for a damaged template. A control that cannot be made ends
///         the dialog, but under DS_NOFAILCREATE it is left out.
HWND CreateDialogParamW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure,
                        LPARAM parameter) noexcept;
/// Makes a dialog and runs its messages until EndDialog, each of which its thread's filters see
/// first (SetWindowsHookExW); the owner is disabled meanwhile. WM_QUIT
/// ends it, too, and is left in the queue.
/// \return EndDialog's result; 0 for an owner that is no window, -1 if it cannot be made.
INT_PTR DialogBoxParamW(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure,
                        LPARAM parameter) noexcept;
/// Hides a modal dialog and enables its owner; DialogBoxParamW returns after the message at hand.
BOOL EndDialog(HWND dialog, INT_PTR result) noexcept;
/// Asks the dialog's procedure, and does what the dialog manager does when that does not answer.
LRESULT DefDlgProcW(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
/// Handles a message for a window inside the dialog: keys that move in the dialog or press its
/// buttons, else it is dispatched. \return FALSE for a message to another window.
BOOL IsDialogMessageW(HWND dialog, MSG* message) noexcept;
/// Turns dialog units into pixels.
BOOL MapDialogRect(HWND dialog, RECT* rect) noexcept;

/// The next (previous) control with WS_TABSTOP that is visible and enabled, round in a ring;
/// windows with WS_EX_CONTROLPARENT stand for what is in them. \param control  Null begins at the
/// start (the end).
HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous) noexcept;
/// The next (previous) one in the control's group, which begins with WS_GROUP, round in a ring.
HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous) noexcept;

// Controls by id.

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam,
                            LPARAM lParam) noexcept;
BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) noexcept;
/// \return the units written without the terminator.
UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR buffer, int size) noexcept;
BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) noexcept;
/// \param translated  May be null. Gets whether the text is a number of 32 bits; the result is 0 if
///                    not. Blanks may stand before the number; behind it nothing is read.
UINT GetDlgItemInt(HWND dialog, int id, BOOL* translated, BOOL isSigned) noexcept;
BOOL CheckDlgButton(HWND dialog, int id, UINT check) noexcept;
UINT IsDlgButtonChecked(HWND dialog, int id) noexcept;
/// Checks one of the radio buttons with the ids `first` to `last`, and takes the check from the
/// others.
BOOL CheckRadioButton(HWND dialog, int first, int last, int checked) noexcept;
