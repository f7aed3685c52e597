#include <new>

#include "platform/posix/typeinfo/type_objects.h"

namespace platform::types {
namespace {

BSTR Copy(const WideString& text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

}  // namespace

HRESULT Document(const WideString& name, const OptionalText& help, BSTR* nameOut, BSTR* text,
                 DWORD* helpContext, BSTR* helpFile) {
    if (helpContext) *helpContext = 0;
    if (helpFile) *helpFile = nullptr;
    if (text) *text = nullptr;
    if (nameOut) {
        *nameOut = Copy(name);
        if (!*nameOut) return E_OUTOFMEMORY;
    }
    if (!text || !help.isThere) return S_OK;
    *text = Copy(help.text);
    if (*text) return S_OK;
    if (nameOut) {
        SysFreeString(*nameOut);
        *nameOut = nullptr;
    }
    return E_OUTOFMEMORY;
}

UINT TypeLibrary::GetTypeInfoCount() { return static_cast<UINT>(library_->types.size()); }

HRESULT TypeLibrary::GetTypeInfo(UINT index, ITypeInfo** info) {
    if (!info) return E_INVALIDARG;
    *info = nullptr;
    if (index >= library_->types.size()) return TYPE_E_ELEMENTNOTFOUND;
    return MakeTypeInfo(library_, &library_->types[index], Side::Dispatch, info);
}

HRESULT TypeLibrary::GetTypeInfoType(UINT index, TYPEKIND* kind) {
    if (!kind) return E_INVALIDARG;
    if (index >= library_->types.size()) return TYPE_E_ELEMENTNOTFOUND;
    const Type& type = library_->types[index];
    *kind = type.IsDual() ? TKIND_DISPATCH : type.kind;
    return S_OK;
}

HRESULT TypeLibrary::GetTypeInfoOfGuid(REFGUID id, ITypeInfo** info) {
    if (!info) return E_INVALIDARG;
    *info = nullptr;
    for (const Type& type : library_->types) {
        if (type.id == id) return MakeTypeInfo(library_, &type, Side::Dispatch, info);
    }
    return TYPE_E_ELEMENTNOTFOUND;
}

HRESULT TypeLibrary::GetLibAttr(TLIBATTR** attributes) {
    if (!attributes) return E_INVALIDARG;
    *attributes = new (std::nothrow) TLIBATTR{library_->id,    library_->language, SYS_WIN64,
                                              library_->major, library_->minor,    library_->flags};
    return *attributes ? S_OK : E_OUTOFMEMORY;
}

HRESULT TypeLibrary::GetDocumentation(INT index, BSTR* name, BSTR* text, DWORD* helpContext,
                                      BSTR* helpFile) {
    if (index < 0) {
        return Document(library_->name, library_->help, name, text, helpContext, helpFile);
    }
    if (static_cast<UINT>(index) >= GetTypeInfoCount()) return TYPE_E_ELEMENTNOTFOUND;
    const Type& type = library_->types[static_cast<UINT>(index)];
    return Document(type.name, type.help, name, text, helpContext, helpFile);
}

void TypeLibrary::ReleaseTLibAttr(TLIBATTR* attributes) { delete attributes; }

}  // namespace platform::types
