#pragma once

/// Menus. An item is found by its command, also in the menus below, or with MF_BYPOSITION by its
/// place. A handle that is no menu's gives ERROR_INVALID_MENU_HANDLE.

#include "platform/posix/user/window_types.h"

inline constexpr UINT MF_BYCOMMAND = 0x0;
inline constexpr UINT MF_ENABLED = 0x0;
inline constexpr UINT MF_GRAYED = 0x1;
inline constexpr UINT MF_DISABLED = 0x2;
inline constexpr UINT MF_POPUP = 0x10;
inline constexpr UINT MF_BYPOSITION = 0x400;
inline constexpr UINT MF_SEPARATOR = 0x800;
inline constexpr UINT TPM_RIGHTBUTTON = 0x2;

/// A menu from the resources of a module; FindResourceW's error codes, ERROR_INVALID_DATA for one
/// that cannot be read.
HMENU LoadMenuW(HINSTANCE module, LPCWSTR name) noexcept;
/// The menus below go with it.
BOOL DestroyMenu(HMENU menu) noexcept;
/// Null if there is none at this place.
HMENU GetSubMenu(HMENU menu, int position) noexcept;
/// \param state  MF_ENABLED, MF_GRAYED or MF_DISABLED. \return the old one, or -1 without the item.
BOOL EnableMenuItem(HMENU menu, UINT item, UINT state) noexcept;
/// -1 on failure.
int GetMenuItemCount(HMENU menu) noexcept;
/// 0 for a separator, -1 for a menu below.
UINT GetMenuItemID(HMENU menu, int position) noexcept;
/// -1 if there is no such item.
UINT GetMenuState(HMENU menu, UINT item, UINT flags) noexcept;
/// \return the units written without the terminator.
int GetMenuStringW(HMENU menu, UINT item, LPWSTR buffer, int size, UINT flags) noexcept;
/// Sends WM_INITMENU and WM_INITMENUPOPUP to the owner and posts it the WM_COMMAND of what is
/// chosen. Nobody sees the menu: without a test's or the host's choice it is given up.
BOOL TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int reserved, HWND owner,
                    const RECT* ignored) noexcept;
