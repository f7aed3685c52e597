#pragma once

/// The types, constants and structures of windows and messages, with Windows' values and layout.

#include "platform/posix/base_types.h"

struct HMENU__;
using HMENU = HMENU__*;
struct HBRUSH__;
using HBRUSH = HBRUSH__*;
using HCURSOR = HICON;
using ATOM = WORD;

struct POINT {
    LONG x;
    LONG y;
};
using LPPOINT = POINT*;

struct SIZE {
    LONG cx;
    LONG cy;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPRECT = RECT*;
using LPCRECT = const RECT*;

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using TIMERPROC = void(CALLBACK*)(HWND, UINT, UINT_PTR, DWORD);

struct WNDCLASSEXW {
    UINT cbSize;
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
    HICON hIconSm;
};

struct CREATESTRUCTW {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCWSTR lpszName;
    LPCWSTR lpszClass;
    DWORD dwExStyle;
};

struct WINDOWPOS {
    HWND hwnd;
    HWND hwndInsertAfter;
    int x;
    int y;
    int cx;
    int cy;
    UINT flags;
};

struct STYLESTRUCT {
    DWORD styleOld;
    DWORD styleNew;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

struct HMONITOR__;
using HMONITOR = HMONITOR__*;

struct MONITORINFO {
    DWORD cbSize;
    RECT rcMonitor;
    RECT rcWork;
    DWORD dwFlags;
};

struct NMHDR {
    HWND hwndFrom;
    UINT_PTR idFrom;
    UINT code;
};

constexpr WORD LOWORD(DWORD_PTR value) { return static_cast<WORD>(value); }
constexpr WORD HIWORD(DWORD_PTR value) { return static_cast<WORD>(value >> 16); }
constexpr LONG MAKELONG(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LONG>(LOWORD(low) | DWORD{LOWORD(high)} << 16);
}
constexpr WPARAM MAKEWPARAM(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<DWORD>(MAKELONG(low, high));
}
constexpr LPARAM MAKELPARAM(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LPARAM>(MAKEWPARAM(low, high));
}

// Styles of classes and windows.
inline constexpr UINT CS_VREDRAW = 0x1;
inline constexpr UINT CS_HREDRAW = 0x2;
inline constexpr UINT CS_DBLCLKS = 0x8;
inline constexpr UINT CS_GLOBALCLASS = 0x4000;

inline constexpr DWORD WS_OVERLAPPED = 0x00000000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_DLGFRAME = 0x00400000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_CAPTION = WS_BORDER | WS_DLGFRAME;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_MINIMIZE = 0x20000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW = WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | 0x30000;

inline constexpr DWORD WS_EX_DLGMODALFRAME = 0x1;
inline constexpr DWORD WS_EX_NOPARENTNOTIFY = 0x4;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x200;
inline constexpr DWORD WS_EX_CONTROLPARENT = 0x10000;

inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000);

// Monitors.
inline constexpr DWORD MONITOR_DEFAULTTONULL = 0;
inline constexpr DWORD MONITOR_DEFAULTTONEAREST = 2;
inline constexpr DWORD MONITORINFOF_PRIMARY = 1;

// Window words.
inline constexpr int GWLP_WNDPROC = -4;
inline constexpr int GWLP_HINSTANCE = -6;
inline constexpr int GWLP_HWNDPARENT = -8;
inline constexpr int GWLP_ID = -12;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;
inline constexpr int GWLP_USERDATA = -21;

// SetWindowPos and ShowWindow.
inline constexpr UINT SWP_NOSIZE = 0x1;
inline constexpr UINT SWP_NOMOVE = 0x2;
inline constexpr UINT SWP_NOZORDER = 0x4;
inline constexpr UINT SWP_NOREDRAW = 0x8;
inline constexpr UINT SWP_NOACTIVATE = 0x10;
inline constexpr UINT SWP_SHOWWINDOW = 0x40;
inline constexpr UINT SWP_HIDEWINDOW = 0x80;
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOW = 5;
#define HWND_TOP (static_cast<HWND>(nullptr))
#define HWND_BOTTOM (reinterpret_cast<HWND>(ULONG_PTR{1}))
#define HWND_DESKTOP (static_cast<HWND>(nullptr))

// GetWindow.
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_OWNER = 4;
inline constexpr UINT GW_CHILD = 5;

// Messages.
inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_ACTIVATE = 0x0006;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_ERASEBKGND = 0x0014;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_NEXTDLGCTL = 0x0028;
inline constexpr UINT WM_VKEYTOITEM = 0x002E;
inline constexpr UINT WM_CHARTOITEM = 0x002F;
inline constexpr UINT WM_SETFONT = 0x0030;
inline constexpr UINT WM_GETFONT = 0x0031;
inline constexpr UINT WM_WINDOWPOSCHANGING = 0x0046;
inline constexpr UINT WM_WINDOWPOSCHANGED = 0x0047;
inline constexpr UINT WM_NOTIFY = 0x004E;
inline constexpr UINT WM_NOTIFYFORMAT = 0x0055;
inline constexpr UINT WM_STYLECHANGING = 0x007C;
inline constexpr UINT WM_STYLECHANGED = 0x007D;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_NCCALCSIZE = 0x0083;
inline constexpr UINT WM_NCACTIVATE = 0x0086;
inline constexpr UINT WM_GETDLGCODE = 0x0087;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102;
inline constexpr UINT WM_SYSCHAR = 0x0106;
inline constexpr UINT WM_INITDIALOG = 0x0110;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_HSCROLL = 0x0114;
inline constexpr UINT WM_VSCROLL = 0x0115;
inline constexpr UINT WM_INITMENU = 0x0116;
inline constexpr UINT WM_INITMENUPOPUP = 0x0117;
inline constexpr UINT WM_ENTERIDLE = 0x0121;
inline constexpr UINT WM_CTLCOLORMSGBOX = 0x0132;
inline constexpr UINT WM_CTLCOLORSTATIC = 0x0138;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_PARENTNOTIFY = 0x0210;
inline constexpr UINT WM_CAPTURECHANGED = 0x0215;
inline constexpr UINT WM_MOUSELEAVE = 0x02A3;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

inline constexpr WPARAM SIZE_RESTORED = 0;
inline constexpr WPARAM WA_INACTIVE = 0;
inline constexpr WPARAM WA_ACTIVE = 1;
inline constexpr LRESULT NFR_UNICODE = 2;
inline constexpr LPARAM NF_QUERY = 3;
inline constexpr UINT USER_TIMER_MINIMUM = 10;

inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;

// Scrolling.
inline constexpr WPARAM SB_THUMBPOSITION = 4;
inline constexpr WPARAM SB_ENDSCROLL = 8;

// Keys.
inline constexpr WPARAM VK_BACK = 0x08;
inline constexpr WPARAM VK_TAB = 0x09;
inline constexpr WPARAM VK_RETURN = 0x0D;
inline constexpr int VK_SHIFT = 0x10;
inline constexpr int VK_CONTROL = 0x11;
inline constexpr WPARAM VK_ESCAPE = 0x1B;
inline constexpr WPARAM VK_SPACE = 0x20;
inline constexpr WPARAM VK_PRIOR = 0x21;
inline constexpr WPARAM VK_NEXT = 0x22;
inline constexpr WPARAM VK_END = 0x23;
inline constexpr WPARAM VK_HOME = 0x24;
inline constexpr WPARAM VK_LEFT = 0x25;
inline constexpr WPARAM VK_UP = 0x26;
inline constexpr WPARAM VK_RIGHT = 0x27;
inline constexpr WPARAM VK_DOWN = 0x28;
inline constexpr WPARAM VK_DELETE = 0x2E;
inline constexpr WPARAM VK_F4 = 0x73;
