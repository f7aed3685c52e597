#pragma once

/// The toolbar control, as far as the code uses it: buttons without image lists and texts, in one
/// row. It sends its parent NM_CUSTOMDRAW (an NMCUSTOMDRAW), TBN_DROPDOWN and WM_COMMAND, and no
/// other notification; WM_COMMAND of its own menus it passes on.

#include "platform/posix/gdi/gdi_calls.h"

#define TOOLBARCLASSNAMEW TEXT("ToolbarWindow32")

struct INITCOMMONCONTROLSEX {
    DWORD dwSize;
    DWORD dwICC;
};
inline constexpr DWORD ICC_BAR_CLASSES = 0x4;
inline constexpr DWORD ICC_TAB_CLASSES = 0x8;
inline constexpr DWORD ICC_UPDOWN_CLASS = 0x10;
inline constexpr DWORD ICC_STANDARD_CLASSES = 0x4000;

/// Makes the classes of the common controls known. Those of up-downs and tab controls are in any
/// case. \return FALSE for a wrong size.
BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* wanted) noexcept;

struct TBBUTTON {
    int iBitmap;
    int idCommand;
    BYTE fsState;
    BYTE fsStyle;
    BYTE bReserved[6];
    DWORD_PTR dwData;
    INT_PTR iString;
};
static_assert(sizeof(TBBUTTON) == 32);

struct TBBUTTONINFOW {
    UINT cbSize;
    DWORD dwMask;
    int idCommand;
    int iImage;
    BYTE fsState;
    BYTE fsStyle;
    WORD cx;
    DWORD_PTR lParam;
    LPWSTR pszText;
    int cchText;
};

struct NMCUSTOMDRAW {
    NMHDR hdr;
    DWORD dwDrawStage;
    HDC hdc;
    RECT rc;
    DWORD_PTR dwItemSpec;  // the button's command
    UINT uItemState;
    LPARAM lItemlParam;
};

struct NMTOOLBARW {
    NMHDR hdr;
    int iItem;
    TBBUTTON tbButton;
    int cchText;
    LPWSTR pszText;
    RECT rcButton;
};

inline constexpr DWORD TBSTYLE_TOOLTIPS = 0x100;
inline constexpr DWORD TBSTYLE_FLAT = 0x800;
inline constexpr DWORD TBSTYLE_LIST = 0x1000;
inline constexpr DWORD TBSTYLE_TRANSPARENT = 0x8000;
inline constexpr DWORD CCS_TOP = 0x1;
inline constexpr DWORD CCS_NORESIZE = 0x4;
inline constexpr DWORD CCS_NOPARENTALIGN = 0x8;
inline constexpr DWORD CCS_NODIVIDER = 0x40;
inline constexpr DWORD TBSTYLE_EX_DRAWDDARROWS = 0x1;
inline constexpr BYTE BTNS_DROPDOWN = 0x8;
inline constexpr BYTE BTNS_AUTOSIZE = 0x10;
inline constexpr BYTE TBSTATE_PRESSED = 0x2;
inline constexpr BYTE TBSTATE_ENABLED = 0x4;

inline constexpr UINT TB_BUTTONCOUNT = WM_USER + 24;
inline constexpr UINT TB_COMMANDTOINDEX = WM_USER + 25;
inline constexpr UINT TB_GETITEMRECT = WM_USER + 29;
inline constexpr UINT TB_BUTTONSTRUCTSIZE = WM_USER + 30;
inline constexpr UINT TB_SETBUTTONSIZE = WM_USER + 31;
inline constexpr UINT TB_SETBITMAPSIZE = WM_USER + 32;
inline constexpr UINT TB_SETBUTTONINFOW = WM_USER + 64;
inline constexpr UINT TB_INSERTBUTTONW = WM_USER + 67;
inline constexpr UINT TB_SETEXTENDEDSTYLE = WM_USER + 84;
inline constexpr UINT TB_SETPADDING = WM_USER + 87;
inline constexpr DWORD TBIF_SIZE = 0x40;

inline constexpr UINT NM_CUSTOMDRAW = static_cast<UINT>(-12);
inline constexpr UINT TBN_DROPDOWN = static_cast<UINT>(-710);
inline constexpr LRESULT TBDDRET_DEFAULT = 0;
inline constexpr LRESULT TBDDRET_TREATPRESSED = 2;

inline constexpr DWORD CDDS_PREPAINT = 0x1;
inline constexpr DWORD CDDS_POSTPAINT = 0x2;
inline constexpr DWORD CDDS_PREERASE = 0x3;
inline constexpr DWORD CDDS_POSTERASE = 0x4;
inline constexpr DWORD CDDS_ITEM = 0x10000;
inline constexpr DWORD CDDS_ITEMPREPAINT = CDDS_ITEM | CDDS_PREPAINT;
inline constexpr DWORD CDDS_ITEMPOSTPAINT = CDDS_ITEM | CDDS_POSTPAINT;
inline constexpr DWORD CDDS_ITEMPREERASE = CDDS_ITEM | CDDS_PREERASE;
inline constexpr DWORD CDDS_ITEMPOSTERASE = CDDS_ITEM | CDDS_POSTERASE;
inline constexpr DWORD CDDS_SUBITEM = 0x20000;
inline constexpr LRESULT CDRF_DODEFAULT = 0x0;
inline constexpr LRESULT CDRF_SKIPDEFAULT = 0x4;
inline constexpr LRESULT CDRF_NOTIFYPOSTPAINT = 0x10;
inline constexpr LRESULT CDRF_NOTIFYITEMDRAW = 0x20;
inline constexpr UINT CDIS_SELECTED = 0x1;
inline constexpr UINT CDIS_HOT = 0x40;
