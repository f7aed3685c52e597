#pragma once

/// COM for systems that lack it. An interface here has the operations that the code calls, in the
/// order of the real one; it is not binary compatible with Windows' and need not be.

#include "platform/base.h"

namespace platform {

/// Specialised beside each interface.
template <class T>
struct InterfaceIdOf;

/// The id of an interface.
template <class T>
constexpr const IID& InterfaceId() noexcept {
    return InterfaceIdOf<T>::value;
}

}  // namespace platform

/// Binds an interface to its id, as __CRT_UUID_DECL does on Windows.
#define QVD_INTERFACE_ID(T, ...)                 \
    template <>                                  \
    struct platform::InterfaceIdOf<T> {          \
        static constexpr IID value{__VA_ARGS__}; \
    }

struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;

protected:
    ~IUnknown() = default;  // Objects end through Release.
};
QVD_INTERFACE_ID(IUnknown, 0x00000000, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

using DISPID = LONG;
using SCODE = LONG;
using LPOLESTR = LPWSTR;
using VARIANT_BOOL = SHORT;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

struct ITypeInfo;
struct DISPPARAMS;
struct EXCEPINFO;
struct VARIANT;

/// Calls by name; platform/typeinfo.h has what its operations take.
struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID language, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                                    LCID language, DISPID* ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID language,
                                             WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                             EXCEPINFO* exception, UINT* argumentError) = 0;
};
QVD_INTERFACE_ID(IDispatch, 0x00020400, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

inline bool IsEqualGUID(REFGUID a, REFGUID b) noexcept { return a == b; }
inline bool IsEqualIID(REFIID a, REFIID b) noexcept { return a == b; }

/// A counted text: a 32-bit byte length lies before the characters, a terminator behind them.
using BSTR = WCHAR*;

/// A null text gives null, as does a lack of memory.
BSTR SysAllocString(const WCHAR* text) noexcept;
/// A null text gives `length` characters without content.
BSTR SysAllocStringLen(const WCHAR* text, UINT length) noexcept;
/// Null is passed over.
void SysFreeString(BSTR text) noexcept;
/// Characters without the terminator; 0 for null.
UINT SysStringLen(BSTR text) noexcept;
