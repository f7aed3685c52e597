#pragma once

/// The styles that the dialog templates name, with the system's values. For the resource compiler
/// only: natively there is no header of the system that it could read.

#define DS_SETFONT 0x40
#define DS_MODALFRAME 0x80
#define DS_CONTROL 0x400

#define WS_POPUP 0x80000000
#define WS_CHILD 0x40000000
#define WS_CAPTION 0xC00000
#define WS_SYSMENU 0x80000
#define WS_BORDER 0x800000
#define WS_VSCROLL 0x200000
#define WS_GROUP 0x20000
#define WS_TABSTOP 0x10000
#define WS_EX_CONTROLPARENT 0x10000
#define SS_LEFTNOWORDWRAP 0xC

#define ES_PASSWORD 0x20
#define ES_AUTOHSCROLL 0x80

#define CBS_DROPDOWNLIST 0x3

#define UDS_ALIGNRIGHT 0x4
#define UDS_AUTOBUDDY 0x10
#define UDS_ARROWKEYS 0x20
#define UDS_NOTHOUSANDS 0x80

// What the dialogs have in common.
#define QVD_PAGE_STYLE DS_SETFONT | DS_CONTROL | WS_CHILD
#define QVD_LIST_STYLE CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP
#define QVD_UP_DOWN_STYLE UDS_ALIGNRIGHT | UDS_AUTOBUDDY | UDS_ARROWKEYS | UDS_NOTHOUSANDS
// A label that a font makes longer than its place loses the end of its last word, not the word.
#define QVD_LABEL SS_LEFTNOWORDWRAP
