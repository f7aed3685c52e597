#pragma once

/// The objects over a library that was read.

#include "platform/com_object.h"
#include "platform/posix/typeinfo/library.h"
#include "platform/posix/typeinfo/type_calls.h"

namespace platform::types {

/// Of a dual interface: how it is described.
enum class Side { Dispatch, Interface };

class TypeLibrary final : public ComObject<ITypeLib> {
public:
    explicit TypeLibrary(std::shared_ptr<const Library> library) : library_(std::move(library)) {}

    UINT STDMETHODCALLTYPE GetTypeInfoCount() override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoType(UINT index, TYPEKIND* kind) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoOfGuid(REFGUID id, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetLibAttr(TLIBATTR** attributes) override;
    HRESULT STDMETHODCALLTYPE GetDocumentation(INT index, BSTR* name, BSTR* text,
                                               DWORD* helpContext, BSTR* helpFile) override;
    void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* attributes) override;

private:
    std::shared_ptr<const Library> library_;
};

class TypeInfo final : public ComObject<ITypeInfo2> {
public:
    /// \param type  One of the library's.
    TypeInfo(std::shared_ptr<const Library> library, const Type& type, Side side);

    HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** attributes) override;
    HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT index, FUNCDESC** description) override;
    HRESULT STDMETHODCALLTYPE GetVarDesc(UINT index, VARDESC** description) override;
    HRESULT STDMETHODCALLTYPE GetNames(MEMBERID member, BSTR* names, UINT room,
                                       UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT index, HREFTYPE* reference) override;
    HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT index, INT* flags) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(void* instance, MEMBERID member, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) override;
    HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID member, BSTR* name, BSTR* text,
                                               DWORD* helpContext, BSTR* helpFile) override;
    HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE reference, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib** library, UINT* index) override;
    void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR* attributes) override;
    void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC* description) override;
    void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC* description) override;
    HRESULT STDMETHODCALLTYPE GetFuncIndexOfMemId(MEMBERID member, INVOKEKIND kind,
                                                  UINT* index) override;

private:
    struct Member {
        const Function* function = nullptr;
        const Variable* variable = nullptr;
    };

    void* AnswersAlso(REFIID id) noexcept override;
    [[nodiscard]] bool IsDispatchSideOfDual() const;
    /// A member by its id; of those with one id the first.
    [[nodiscard]] Member Find(MEMBERID member) const;
    [[nodiscard]] FUNCDESC Describe(const Function& function) const;

    std::shared_ptr<const Library> library_;
    const Type& type_;
    Side side_;
    /// Of an interface and a dual interface the bases' functions first, else its own.
    std::vector<const Function*> reachable_;
    /// The libraries of the bases, which own their functions.
    std::vector<std::shared_ptr<const Library>> bases_;
};

/// Gives a reference to the information of a type, of a dual interface the wanted side.
HRESULT MakeTypeInfo(std::shared_ptr<const Library> library, const Type* type, Side side,
                     ITypeInfo** info);

/// Fills the out-parameters of GetDocumentation; there are no help files.
HRESULT Document(const WideString& name, const OptionalText& help, BSTR* nameOut, BSTR* text,
                 DWORD* helpContext, BSTR* helpFile);

}  // namespace platform::types
