#pragma once

#include <atomic>
#include <memory>

#include "automation/member_names.h"
#include "platform/com_ptr.h"

namespace AUX {

class CallPlans;
struct CallPlan;

/// The type information of one dual interface, and late-bound calls through it. The stock call
/// comes first; members whose types it refuses, such as plain texts, are called through the
/// interface's table, from the second time on at once. One object for each interface serves all
/// that implement it; any thread may use it. It must not end while a call runs. What holders load
/// and remember is guarded by one lock of the module, which is never held while a member or a
/// loader runs; calls of members that are known take no lock.
class TypeInfoHolder {
public:
    /// Gives a reference to the dispatch side of the interface, or the code of a failure; then it
    /// is asked again. Any thread, two at once as well.
    using Loader = HRESULT (*)(ITypeInfo** info) noexcept;

    explicit TypeInfoHolder(Loader loader) noexcept;
    TypeInfoHolder(const TypeInfoHolder&) = delete;
    TypeInfoHolder& operator=(const TypeInfoHolder&) = delete;
    ~TypeInfoHolder();

    /// The operations of IDispatch; the language makes no difference.
    HRESULT GetTypeInfoCount(UINT* count) noexcept;
    HRESULT GetTypeInfo(UINT index, ITypeInfo** info) noexcept;
    HRESULT GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, DISPID* ids) noexcept;

    /// \param instance       The object's pointer to the interface that is described.
    /// \param parameters     A value for a parameter that is a VARIANT's address goes in itself:
    ///                       its owner must expect that the method changes it.
    /// \param exception      May be null. After a typed call's failure it holds the code only; what
    ///                       the method told by SetErrorInfo stays with the thread.
    /// \param argumentError  May be null. Of a typed call, the number of the parameter whose
    ///                       argument does not fit, counted from 0 at the first.
    /// \return What the stock call gives, unless that is DISP_E_BADVARTYPE. Of a typed call, the
    ///         method's own code, or DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT,
    ///         DISP_E_PARAMNOTFOUND for a name that no parameter has, DISP_E_PARAMNOTOPTIONAL,
    ///         DISP_E_TYPEMISMATCH, DISP_E_BADVARTYPE for a type that cannot be passed,
    ///         E_OUTOFMEMORY, what VariantChangeType gives.
    HRESULT Invoke(void* instance, DISPID member, REFIID reserved, WORD flags,
                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                   UINT* argumentError) noexcept;

    /// How often the stock call was tried.
    [[nodiscard]] std::uint32_t StockCalls() const noexcept { return stockCalls_; }

private:
    [[nodiscard]] HRESULT Load(ITypeInfo*& info) noexcept;
    [[nodiscard]] bool IsKnown(DISPID member, WORD flags) const noexcept;
    /// As CallPlans::Ask. The type information is loaded.
    [[nodiscard]] const CallPlan* Plan(DISPID member, INVOKEKIND kind) noexcept;
    [[nodiscard]] HRESULT CallTyped(void* instance, DISPID member, WORD flags,
                                    const DISPPARAMS& parameters, VARIANT* result,
                                    UINT* argumentError) noexcept;

    Loader load_;
    std::atomic<ITypeInfo*> info_ = nullptr;   // owned
    std::atomic<CallPlans*> plans_ = nullptr;  // owned
    std::unique_ptr<MemberNames> names_;       // set before `info_`; null without memory
    std::atomic<std::uint32_t> stockCalls_ = 0;
};

}  // namespace AUX
