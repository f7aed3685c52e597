#pragma once

#include <atomic>
#include <memory>

#include "automation/id_map.h"
#include "platform/com_ptr.h"
#include "platform/sync.h"
#include "platform/typeinfo.h"

namespace AUX {

/// The type information of one dual interface, and late-bound calls through it. The stock call
/// comes first; members whose types it refuses, such as plain texts, are called through the
/// interface's table, from the second time on at once. One static object for each interface; any
/// thread may use it. It must not end while a call runs.
class TypeInfoHolder {
public:
    /// Gives a reference to the dispatch side of the interface, or the code of a failure; then it
    /// is asked again.
    using Loader = HRESULT (*)(ITypeInfo** info) noexcept;

    explicit TypeInfoHolder(Loader loader) noexcept;
    TypeInfoHolder(const TypeInfoHolder&) = delete;
    TypeInfoHolder& operator=(const TypeInfoHolder&) = delete;
    /// Gives the descriptions back to the type information.
    ~TypeInfoHolder();

    /// The operations of IDispatch; the language makes no difference.
    HRESULT GetTypeInfoCount(UINT* count) noexcept;
    HRESULT GetTypeInfo(UINT index, ITypeInfo** info) noexcept;
    HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;

    /// \param instance       The object's pointer to the interface that is described.
    /// \param argumentError  May be null. Of a typed call, the number of the parameter whose
    ///                       argument does not fit, counted from 0 at the first.
    /// \return What the stock call gives, unless that is DISP_E_BADVARTYPE. Of a typed call, the
    ///         method's own code, or DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT,
    ///         DISP_E_TYPEMISMATCH, E_OUTOFMEMORY, what VariantChangeType gives.
    HRESULT Invoke(void* instance, DISPID member, REFIID reserved, WORD flags,
                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                   UINT* argumentError) noexcept;

    /// How often the stock call was tried.
    [[nodiscard]] std::uint32_t StockCalls() const noexcept { return stockCalls_.load(); }

private:
    friend class TypedCall;

    /// A type without aliases and pointers. Level 1 is a reference to a `kind`.
    struct ResolvedType {
        VARTYPE kind = VT_EMPTY;
        int level = 0;
        GUID interfaceId{};  // of an object other than IUnknown and IDispatch
    };
    struct Cache;

    [[nodiscard]] HRESULT Load() noexcept;
    [[nodiscard]] bool IsKnown(DISPID member, WORD flags) noexcept;
    /// Null without such a member, or if memory runs out. The caller holds the lock.
    [[nodiscard]] const FUNCDESC* Describe(DISPID member, INVOKEKIND kind) noexcept;
    [[nodiscard]] FUNCDESC* Ask(DISPID member, INVOKEKIND kind) noexcept;
    [[nodiscard]] bool Resolve(ITypeInfo* info, const TYPEDESC& type, ResolvedType& resolved,
                               int depth) noexcept;
    [[nodiscard]] bool ResolveNamed(ITypeInfo* info, HREFTYPE reference, ResolvedType& resolved,
                                    int depth) noexcept;

    Loader load_;
    CRITICAL_SECTION lock_;
    platform::ComPtr<ITypeInfo> info_;
    std::unique_ptr<Cache> cache_;
    std::atomic<bool> isLoaded_ = false;
    std::atomic<std::uint32_t> stockCalls_ = 0;
};

}  // namespace AUX
