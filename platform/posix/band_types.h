#pragma once

#include "platform/posix/browser_types.h"
#include "platform/posix/user/window_types.h"

/// Something that is put into a site, as a band is into its bar.
struct IObjectWithSite : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetSite(IUnknown* site) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSite(REFIID id, void** site) = 0;
};
QVD_INTERFACE_ID(IObjectWithSite, 0xFC4801A3, 0x2BA9, 0x11CF,
                 {0xA2, 0x29, 0x00, 0xAA, 0x00, 0x3D, 0x73, 0x52});

struct IServiceProvider : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id, void** object) = 0;
};
QVD_INTERFACE_ID(IServiceProvider, 0x6D5140C1, 0x7436, 0x11CE,
                 {0x80, 0x34, 0x00, 0xAA, 0x00, 0x60, 0x09, 0xFA});

struct IOleWindow : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) = 0;
    virtual HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL enters) = 0;
};
QVD_INTERFACE_ID(IOleWindow, 0x00000114, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

struct IDockingWindow : IOleWindow {
    virtual HRESULT STDMETHODCALLTYPE ShowDW(BOOL shows) = 0;
    virtual HRESULT STDMETHODCALLTYPE CloseDW(DWORD reserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResizeBorderDW(const RECT* border, IUnknown* site,
                                                     BOOL reserved) = 0;
};
QVD_INTERFACE_ID(IDockingWindow, 0x012DD920, 0x7B26, 0x11D0,
                 {0x8C, 0xA9, 0x00, 0xA0, 0xC9, 0x2D, 0xBF, 0xE8});

inline constexpr DWORD DBIM_MINSIZE = 0x01;
inline constexpr DWORD DBIM_MAXSIZE = 0x02;
inline constexpr DWORD DBIM_INTEGRAL = 0x04;
inline constexpr DWORD DBIM_ACTUAL = 0x08;
inline constexpr DWORD DBIM_TITLE = 0x10;
inline constexpr DWORD DBIM_MODEFLAGS = 0x20;
inline constexpr DWORD DBIM_BKCOLOR = 0x40;

struct POINTL {
    LONG x;
    LONG y;
};

/// What a band says of itself, as far as the mask asks.
struct DESKBANDINFO {
    DWORD dwMask;
    POINTL ptMinSize;
    POINTL ptMaxSize;
    POINTL ptIntegral;
    POINTL ptActual;
    WCHAR wszTitle[256];
    DWORD dwModeFlags;
    DWORD crBkgnd;
};

struct IDeskBand : IDockingWindow {
    virtual HRESULT STDMETHODCALLTYPE GetBandInfo(DWORD band, DWORD viewMode,
                                                  DESKBANDINFO* info) = 0;
};
QVD_INTERFACE_ID(IDeskBand, 0xEB0FE172, 0x1A3A, 0x11D0,
                 {0x89, 0xB3, 0x00, 0xA0, 0xC9, 0x0A, 0x90, 0xAC});

struct IInputObject : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE UIActivateIO(BOOL activates, MSG* message) = 0;
    virtual HRESULT STDMETHODCALLTYPE HasFocusIO() = 0;
    virtual HRESULT STDMETHODCALLTYPE TranslateAcceleratorIO(MSG* message) = 0;
};
QVD_INTERFACE_ID(IInputObject, 0x68284FAA, 0x6A48, 0x11D0,
                 {0x8C, 0x78, 0x00, 0xC0, 0x4F, 0xD9, 0x18, 0xB4});

struct IInputObjectSite : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE OnFocusChangeIS(IUnknown* object, BOOL hasFocus) = 0;
};
QVD_INTERFACE_ID(IInputObjectSite, 0xF1DB8392, 0x7331, 0x11D0,
                 {0x8C, 0x99, 0x00, 0xA0, 0xC9, 0x2D, 0xBF, 0xE8});

struct IConnectionPoint : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) = 0;
};
QVD_INTERFACE_ID(IConnectionPoint, 0xB196B286, 0xBAB4, 0x101A,
                 {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07});

inline constexpr HRESULT CONNECT_E_NOCONNECTION = static_cast<HRESULT>(0x80040200);
inline constexpr HRESULT CONNECT_E_CANNOTCONNECT = static_cast<HRESULT>(0x80040202);

struct IConnectionPointContainer : IUnknown {
    /// CONNECT_E_NOCONNECTION for events that the object does not have.
    virtual HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID id, IConnectionPoint** point) = 0;
};
QVD_INTERFACE_ID(IConnectionPointContainer, 0xB196B284, 0xBAB4, 0x101A,
                 {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07});

struct DOCHOSTUIINFO;
struct IDataObject;
struct IDropTarget;
struct IOleCommandTarget;
struct IOleInPlaceActiveObject;
struct IOleInPlaceFrame;
struct IOleInPlaceUIWindow;

/// How a host wants its document to behave.
struct IDocHostUIHandler : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE ShowContextMenu(DWORD id, POINT* place, IUnknown* target,
                                                      IDispatch* object) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHostInfo(DOCHOSTUIINFO* info) = 0;
    virtual HRESULT STDMETHODCALLTYPE ShowUI(DWORD id, IOleInPlaceActiveObject* object,
                                             IOleCommandTarget* target, IOleInPlaceFrame* frame,
                                             IOleInPlaceUIWindow* document) = 0;
    virtual HRESULT STDMETHODCALLTYPE HideUI() = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdateUI() = 0;
    virtual HRESULT STDMETHODCALLTYPE EnableModeless(BOOL isEnabled) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL isActive) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL isActive) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResizeBorder(const RECT* border, IOleInPlaceUIWindow* window,
                                                   BOOL isFrame) = 0;
    virtual HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* message, const GUID* group,
                                                           DWORD id) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOptionKeyPath(LPWSTR* path, DWORD reserved) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDropTarget(IDropTarget* proposed,
                                                    IDropTarget** target) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetExternal(IDispatch** external) = 0;
    virtual HRESULT STDMETHODCALLTYPE TranslateUrl(DWORD reserved, LPWSTR url, LPWSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE FilterDataObject(IDataObject* object,
                                                       IDataObject** result) = 0;
};
QVD_INTERFACE_ID(IDocHostUIHandler, 0xBD3F23C0, 0xD43E, 0x11CF,
                 {0x89, 0x3B, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x1A});

/// The tab has come to the front or gone to the back.
inline constexpr LONG DISPID_WINDOWSTATECHANGED = 283;
