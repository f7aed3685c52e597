#pragma once

/// The messages, notifications and styles of the system's own controls: Button, Edit, Static and
/// ComboBox (of which only drop lists, CBS_DROPDOWNLIST, are there). Their classes need no
/// registration. They draw nothing here but their background.

#include "platform/posix/user/window_types.h"

#define WC_BUTTONW TEXT("Button")
#define WC_EDITW TEXT("Edit")
#define WC_STATICW TEXT("Static")
#define WC_COMBOBOXW TEXT("ComboBox")

// Buttons.
inline constexpr DWORD BS_PUSHBUTTON = 0x0;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x1;
inline constexpr DWORD BS_CHECKBOX = 0x2;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x3;
inline constexpr DWORD BS_RADIOBUTTON = 0x4;
inline constexpr DWORD BS_3STATE = 0x5;
inline constexpr DWORD BS_AUTO3STATE = 0x6;
inline constexpr DWORD BS_GROUPBOX = 0x7;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x9;
inline constexpr DWORD BS_TYPEMASK = 0xF;
inline constexpr DWORD BS_NOTIFY = 0x4000;

inline constexpr UINT BM_GETCHECK = 0xF0;
inline constexpr UINT BM_SETCHECK = 0xF1;
inline constexpr UINT BM_GETSTATE = 0xF2;
inline constexpr UINT BM_SETSTATE = 0xF3;
inline constexpr UINT BM_SETSTYLE = 0xF4;
inline constexpr UINT BM_CLICK = 0xF5;

inline constexpr UINT BST_UNCHECKED = 0x0;
inline constexpr UINT BST_CHECKED = 0x1;
inline constexpr UINT BST_INDETERMINATE = 0x2;
inline constexpr UINT BST_PUSHED = 0x4;
inline constexpr UINT BST_FOCUS = 0x8;

inline constexpr WORD BN_CLICKED = 0;
inline constexpr WORD BN_SETFOCUS = 6;
inline constexpr WORD BN_KILLFOCUS = 7;

// Edits.
inline constexpr DWORD ES_AUTOHSCROLL = 0x80;
inline constexpr DWORD ES_PASSWORD = 0x20;
inline constexpr DWORD ES_READONLY = 0x800;
inline constexpr DWORD ES_NUMBER = 0x2000;

inline constexpr UINT EM_GETSEL = 0xB0;
inline constexpr UINT EM_SETSEL = 0xB1;
inline constexpr UINT EM_GETMODIFY = 0xB8;
inline constexpr UINT EM_SETMODIFY = 0xB9;
inline constexpr UINT EM_REPLACESEL = 0xC2;
inline constexpr UINT EM_LIMITTEXT = 0xC5;
inline constexpr UINT EM_SETLIMITTEXT = EM_LIMITTEXT;
inline constexpr UINT EM_SETPASSWORDCHAR = 0xCC;
inline constexpr UINT EM_SETREADONLY = 0xCF;
inline constexpr UINT EM_GETPASSWORDCHAR = 0xD2;
inline constexpr UINT EM_GETLIMITTEXT = 0xD5;

inline constexpr WORD EN_SETFOCUS = 0x100;
inline constexpr WORD EN_KILLFOCUS = 0x200;
inline constexpr WORD EN_CHANGE = 0x300;
inline constexpr WORD EN_UPDATE = 0x400;
inline constexpr WORD EN_MAXTEXT = 0x501;

// Combo boxes.
inline constexpr DWORD CBS_DROPDOWNLIST = 0x3;
inline constexpr DWORD CBS_SORT = 0x100;
inline constexpr DWORD CBS_HASSTRINGS = 0x200;

inline constexpr UINT CB_ADDSTRING = 0x143;
inline constexpr UINT CB_DELETESTRING = 0x144;
inline constexpr UINT CB_GETCOUNT = 0x146;
inline constexpr UINT CB_GETCURSEL = 0x147;
inline constexpr UINT CB_GETLBTEXT = 0x148;
inline constexpr UINT CB_GETLBTEXTLEN = 0x149;
inline constexpr UINT CB_INSERTSTRING = 0x14A;
inline constexpr UINT CB_RESETCONTENT = 0x14B;
inline constexpr UINT CB_FINDSTRING = 0x14C;
inline constexpr UINT CB_SELECTSTRING = 0x14D;
inline constexpr UINT CB_SETCURSEL = 0x14E;
inline constexpr UINT CB_SHOWDROPDOWN = 0x14F;
inline constexpr UINT CB_GETITEMDATA = 0x150;
inline constexpr UINT CB_SETITEMDATA = 0x151;
inline constexpr UINT CB_GETDROPPEDCONTROLRECT = 0x152;
inline constexpr UINT CB_GETDROPPEDSTATE = 0x157;
inline constexpr UINT CB_FINDSTRINGEXACT = 0x158;
inline constexpr LRESULT CB_OKAY = 0;
inline constexpr LRESULT CB_ERR = -1;

inline constexpr WORD CBN_SELCHANGE = 1;
inline constexpr WORD CBN_SETFOCUS = 3;
inline constexpr WORD CBN_KILLFOCUS = 4;
inline constexpr WORD CBN_DROPDOWN = 7;
inline constexpr WORD CBN_CLOSEUP = 8;
inline constexpr WORD CBN_SELENDOK = 9;
inline constexpr WORD CBN_SELENDCANCEL = 10;

// Static controls.
inline constexpr DWORD SS_LEFT = 0x0;
