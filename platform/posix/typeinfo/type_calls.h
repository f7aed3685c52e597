#pragma once

/// Type information for systems that lack it. The library of a module is its resource TYPELIB 1 in
/// the form of docs/type-information.md, made of the same IDL as Windows' own.

#include "platform/posix/typeinfo/type_descriptions.h"

struct ITypeLib;

struct ITypeInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** attributes) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT index, FUNCDESC** description) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetVarDesc(UINT index, VARDESC** description) = 0;
    /// The name of a member and of its parameters, as far as there is room.
    virtual HRESULT STDMETHODCALLTYPE GetNames(MEMBERID member, BSTR* names, UINT room,
                                               UINT* count) = 0;
    /// Of an interface its base. Of a dual interface, index -1 is its other side: the interface of
    /// the dispatch interface and the reverse.
    virtual HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT index, HREFTYPE* reference) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT index, INT* flags) = 0;
    /// Ids of a member and of its parameters. Case does not count.
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) = 0;
    /// Calls the member of `instance`, which has the described interface's table; of a dispatch
    /// interface that is no dual one through its own Invoke.
    /// \param argumentError  May be null. Gets the place of an argument that does not fit.
    /// \return DISP_E_MEMBERNOTFOUND without such a member of one of the kinds in `flags`, else
    ///         what platform::types::CallThroughTable gives.
    virtual HRESULT STDMETHODCALLTYPE Invoke(void* instance, MEMBERID member, WORD flags,
                                             DISPPARAMS* parameters, VARIANT* result,
                                             EXCEPINFO* exception, UINT* argumentError) = 0;
    /// MEMBERID_NIL asks for the type itself. Each out-parameter may be null.
    virtual HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID member, BSTR* name, BSTR* text,
                                                       DWORD* helpContext, BSTR* helpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE reference, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib** library, UINT* index) = 0;
    virtual void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR* attributes) = 0;
    virtual void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC* description) = 0;
    virtual void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC* description) = 0;
};
QVD_INTERFACE_ID(ITypeInfo, 0x00020401, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

struct ITypeInfo2 : ITypeInfo {
    /// Of a dispatch interface counted without what it inherits.
    virtual HRESULT STDMETHODCALLTYPE GetFuncIndexOfMemId(MEMBERID member, INVOKEKIND kind,
                                                          UINT* index) = 0;
};
QVD_INTERFACE_ID(ITypeInfo2, 0x00020412, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

struct ITypeLib : IUnknown {
    virtual UINT STDMETHODCALLTYPE GetTypeInfoCount() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoType(UINT index, TYPEKIND* kind) = 0;
    /// Of a dual interface the dispatch side. TYPE_E_ELEMENTNOTFOUND if there is none.
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoOfGuid(REFGUID id, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLibAttr(TLIBATTR** attributes) = 0;
    /// Index -1 asks for the library itself. Each out-parameter may be null.
    virtual HRESULT STDMETHODCALLTYPE GetDocumentation(INT index, BSTR* name, BSTR* text,
                                                       DWORD* helpContext, BSTR* helpFile) = 0;
    virtual void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* attributes) = 0;
};
QVD_INTERFACE_ID(ITypeLib, 0x00020402, 0x0000, 0x0000,
                 {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46});

inline constexpr HRESULT TYPE_E_INVDATAREAD = static_cast<HRESULT>(0x80028018);
inline constexpr HRESULT TYPE_E_REGISTRYACCESS = static_cast<HRESULT>(0x8002801C);
inline constexpr HRESULT TYPE_E_LIBNOTREGISTERED = static_cast<HRESULT>(0x8002801D);
inline constexpr HRESULT TYPE_E_ELEMENTNOTFOUND = static_cast<HRESULT>(0x8002802B);
inline constexpr HRESULT TYPE_E_CANTLOADLIBRARY = static_cast<HRESULT>(0x80029C4A);

/// Loads the library of a module or a file of its own. Unlike Windows' call it never registers it.
/// \param path  A path; behind `\` and a number at its end, the number of the resource.
/// \return TYPE_E_CANTLOADLIBRARY if there is no such file or it has no library,
///         TYPE_E_INVDATAREAD for a damaged one.
HRESULT LoadTypeLib(LPCWSTR path, ITypeLib** library) noexcept;

/// Loads a registered library; the browser's own and the one of the base interfaces need no
/// registration.
/// \param major, minor  The least version: of the same major one, the highest minor one counts.
/// \return TYPE_E_LIBNOTREGISTERED, or LoadTypeLib's codes.
HRESULT LoadRegTypeLib(REFGUID id, WORD major, WORD minor, LCID language,
                       ITypeLib** library) noexcept;

/// Writes the library's keys below `TypeLib`, and below `Interface` those of its dual and
/// automation interfaces.
/// \param path        Its full path.
/// \param helpFolder  May be null: the folder of `path`.
/// \return TYPE_E_REGISTRYACCESS if a key cannot be written.
HRESULT RegisterTypeLib(ITypeLib* library, LPWSTR path, LPWSTR helpFolder) noexcept;
/// The same for the current user, below HKEY_CURRENT_USER\Software\Classes.
HRESULT RegisterTypeLibForUser(ITypeLib* library, LPWSTR path, LPWSTR helpFolder) noexcept;

/// Removes those keys; keys above them that are empty then go too.
/// \return TYPE_E_REGISTRYACCESS if a key cannot be removed, E_INVALIDARG if it is not registered.
HRESULT UnRegisterTypeLib(REFGUID id, WORD major, WORD minor, LCID language,
                          SYSKIND system) noexcept;
HRESULT UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID language,
                                 SYSKIND system) noexcept;

/// Calls the function at a place in the table of `instance`, counted in bytes.
/// \param convention  CC_STDCALL.
/// \param resultKind  VT_I4 or VT_ERROR.
/// \param count       At most 62; `kinds` tells how each value is passed, VT_VARIANT and VT_DECIMAL
/// as copies. \return E_INVALIDARG for anything else; what the function itself gave is in `result`.
HRESULT DispCallFunc(void* instance, ULONG_PTR offset, CALLCONV convention, VARTYPE resultKind,
                     UINT count, VARTYPE* kinds, VARIANTARG** values, VARIANT* result) noexcept;
