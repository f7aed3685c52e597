#pragma once

/// Drawing on surfaces of 32 bits a pixel. A window that is no child has one surface, on which it
/// and the windows below it draw, each cut to what is visible of it. Only SRCCOPY is known.

#include "platform/posix/user/window_types.h"

struct HDC__;
using HDC = HDC__*;
using HGDIOBJ = void*;
struct HBITMAP__;
using HBITMAP = HBITMAP__*;
using COLORREF = DWORD;  // 0x00BBGGRR

inline constexpr int LOGPIXELSY = 90;
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr int COLOR_WINDOW = 5;
inline constexpr int COLOR_HIGHLIGHT = 13;
inline constexpr int COLOR_BTNFACE = 15;
inline constexpr int COLOR_BTNSHADOW = 16;
inline constexpr int COLOR_BTNTEXT = 18;
inline constexpr int COLOR_BTNHIGHLIGHT = 20;

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    LPVOID bmBits;
};

struct PAINTSTRUCT {
    HDC hdc;
    BOOL fErase;
    RECT rcPaint;
    BOOL fRestore;
    BOOL fIncUpdate;
    BYTE rgbReserved[32];
};

constexpr COLORREF RGB(BYTE red, BYTE green, BYTE blue) {
    return red | COLORREF{green} << 8 | COLORREF{blue} << 16;
}

/// For the client area of a window, or for the screen (null), on which nothing can be drawn.
HDC GetDC(HWND window) noexcept;
int ReleaseDC(HWND window, HDC dc) noexcept;
/// For a bitmap that is selected into it; one of 1 x 1 pixel at first.
HDC CreateCompatibleDC(HDC dc) noexcept;
BOOL DeleteDC(HDC dc) noexcept;
/// LOGPIXELSY: the screen's resolution in dots an inch. Others are not known, and give 0.
int GetDeviceCaps(HDC dc, int what) noexcept;

/// Erases what has to be erased by WM_ERASEBKGND, and makes the window valid.
/// \return the device context, cut to what had to be painted.
HDC BeginPaint(HWND window, PAINTSTRUCT* paint) noexcept;
BOOL EndPaint(HWND window, const PAINTSTRUCT* paint) noexcept;

/// A black bitmap; of no width or height it has 1 x 1 pixel. Null with ERROR_NOT_ENOUGH_MEMORY.
HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height) noexcept;
/// A bitmap from the resources of a module, of 24 or 32 bits a pixel without compression.
/// \return null with FindResourceW's error codes, or ERROR_INVALID_PARAMETER for another kind.
HBITMAP LoadBitmapW(HINSTANCE module, LPCWSTR name) noexcept;
/// Puts a bitmap into a memory device context. \return the old one, null on failure.
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) noexcept;
BOOL DeleteObject(HGDIOBJ object) noexcept;
/// Describes a bitmap. \return the bytes written; without a buffer those needed.
int GetObjectW(HGDIOBJ object, int size, LPVOID buffer) noexcept;

DWORD GetSysColor(int index) noexcept;
/// The system's own brush of this colour, which is never deleted.
HBRUSH GetSysColorBrush(int index) noexcept;
/// \param brush  One of GetSysColorBrush, or the number of a colour plus 1.
int FillRect(HDC dc, const RECT* rect, HBRUSH brush) noexcept;
/// What lies outside the source's surface is not copied.
BOOL BitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY,
            DWORD operation) noexcept;
/// Each pixel takes the nearest one of the source. Sizes below 1 draw nothing.
BOOL StretchBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY,
                int fromWidth, int fromHeight, DWORD operation) noexcept;
