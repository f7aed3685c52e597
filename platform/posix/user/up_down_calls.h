#pragma once

/// The up-down control.

#include "platform/posix/user/window_types.h"

#define UPDOWN_CLASSW TEXT("msctls_updown32")

struct NMUPDOWN {
    NMHDR hdr;
    int iPos;    // before the change
    int iDelta;  // the parent may change it
};
using LPNMUPDOWN = NMUPDOWN*;

inline constexpr DWORD UDS_WRAP = 0x1;
inline constexpr DWORD UDS_SETBUDDYINT = 0x2;
inline constexpr DWORD UDS_ALIGNRIGHT = 0x4;
inline constexpr DWORD UDS_ALIGNLEFT = 0x8;
inline constexpr DWORD UDS_AUTOBUDDY = 0x10;
inline constexpr DWORD UDS_ARROWKEYS = 0x20;
inline constexpr DWORD UDS_HORZ = 0x40;
inline constexpr DWORD UDS_NOTHOUSANDS = 0x80;

inline constexpr UINT UDM_SETRANGE = WM_USER + 101;
inline constexpr UINT UDM_GETRANGE = WM_USER + 102;
inline constexpr UINT UDM_SETPOS = WM_USER + 103;
inline constexpr UINT UDM_GETPOS = WM_USER + 104;
inline constexpr UINT UDM_SETBUDDY = WM_USER + 105;
inline constexpr UINT UDM_GETBUDDY = WM_USER + 106;
inline constexpr UINT UDM_SETRANGE32 = WM_USER + 111;
inline constexpr UINT UDM_GETRANGE32 = WM_USER + 112;
inline constexpr UINT UDM_SETPOS32 = WM_USER + 113;
inline constexpr UINT UDM_GETPOS32 = WM_USER + 114;

inline constexpr UINT UDN_DELTAPOS = static_cast<UINT>(-722);
