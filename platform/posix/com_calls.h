#pragma once

/// The library of COM for systems that lack it. Classes are found where their servers have
/// registered them, below HKEY_CLASSES_ROOT\CLSID. Every object lives on the thread that made it:
/// there are no proxies.

#include "platform/posix/com_types.h"

using CATID = GUID;
using LPCOLESTR = const WCHAR*;

inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3);
inline constexpr HRESULT CO_E_DLLNOTFOUND = static_cast<HRESULT>(0x800401F8);
inline constexpr HRESULT CO_E_ERRORINDLL = static_cast<HRESULT>(0x800401F9);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111);

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;

struct IClassFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL isLocked) = 0;
};
QVD_INTERFACE_ID(IClassFactory, 0x00000001, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

/// Notes what kinds of thing a class is, in its key.
struct ICatRegister : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                                  CATID* categories) = 0;
    /// A category that is not noted is no failure.
    virtual HRESULT STDMETHODCALLTYPE UnRegisterClassImplCategories(REFCLSID classId, ULONG count,
                                                                    CATID* categories) = 0;
};
QVD_INTERFACE_ID(ICatRegister, 0x0002E012, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

/// The one class that the layer itself provides: gives ICatRegister.
inline constexpr CLSID CLSID_StdComponentCategoriesMgr = {
    0x0002E005, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

/// Counts one more use of the library by this thread. S_FALSE if it uses it already.
HRESULT CoInitialize(LPVOID reserved) noexcept;
/// \param kind  COINIT_APARTMENTTHREADED.
HRESULT CoInitializeEx(LPVOID reserved, DWORD kind) noexcept;
void CoUninitialize() noexcept;

/// Gives the factory of a class. \param server  Null.
/// \return as CoCreateInstance.
HRESULT CoGetClassObject(REFCLSID classId, DWORD context, void* server, REFIID id,
                         void** factory) noexcept;

/// \param outer    Given to the class's factory.
/// \param context  CLSCTX_INPROC_SERVER.
/// \return CO_E_NOTINITIALIZED, REGDB_E_CLASSNOTREG, CO_E_DLLNOTFOUND (the registered module does
///         not load), CO_E_ERRORINDLL (it is no server), or what the factory gave.
HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID id,
                         void** object) noexcept;

/// Unloads the servers that CoCreateInstance loaded and that can be unloaded now.
void CoFreeUnusedLibraries() noexcept;

/// The class of a name ("Server.Object"). CO_E_CLASSSTRING if none is registered.
HRESULT CLSIDFromProgID(LPCOLESTR name, CLSID* classId) noexcept;

/// An id as "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}". The text is freed by CoTaskMemFree.
HRESULT StringFromCLSID(REFCLSID id, LPOLESTR* text) noexcept;
/// \return the units written with the terminator, 39; 0 if `size` is less.
int StringFromGUID2(REFGUID id, LPOLESTR text, int size) noexcept;
/// Reads that form, digits in either case. CO_E_CLASSSTRING for any other text.
HRESULT CLSIDFromString(LPCOLESTR text, CLSID* id) noexcept;
