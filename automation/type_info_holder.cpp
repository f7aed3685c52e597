#include "automation/type_info_holder.h"

#include <new>

#include "automation/call_plans.h"
#include "automation/typed_call.h"
#include "platform/sync.h"

namespace AUX {
namespace {

constexpr INVOKEKIND kKinds[] = {INVOKE_FUNC, INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT,
                                 INVOKE_PROPERTYPUTREF};

/// The module's lock.
class Lock {
public:
    Lock() noexcept { (void)InitializeCriticalSectionAndSpinCount(&section_, 0); }  // never fails
    ~Lock() { DeleteCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    [[nodiscard]] CRITICAL_SECTION* Section() noexcept { return &section_; }

private:
    CRITICAL_SECTION section_;
};

CRITICAL_SECTION* ModuleLock() noexcept {
    static Lock lock;
    return lock.Section();
}

class Guard {
public:
    Guard() noexcept { EnterCriticalSection(ModuleLock()); }
    ~Guard() { LeaveCriticalSection(ModuleLock()); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};

}  // namespace

// The lock is made first, so that it ends after the last holder.
TypeInfoHolder::TypeInfoHolder(Loader loader) noexcept : load_(loader) { (void)ModuleLock(); }

TypeInfoHolder::~TypeInfoHolder() {
    delete plans_.load();
    platform::ComPtr<ITypeInfo> released;
    released.Attach(info_.load());
}

HRESULT TypeInfoHolder::Load(ITypeInfo*& info) noexcept {
    info = info_.load(std::memory_order_acquire);
    if (info) return S_OK;
    platform::ComPtr<ITypeInfo> loaded;
    const HRESULT result = load_(loaded.Put());
    if (FAILED(result)) return result;
    const Guard guard;
    info = info_.load(std::memory_order_relaxed);
    if (info) return S_OK;  // Another thread was faster.
    names_.reset(new (std::nothrow) MemberNames);
    if (names_) names_->Read(*loaded);
    info = loaded.Detach();
    info_.store(info, std::memory_order_release);
    return S_OK;
}

HRESULT TypeInfoHolder::GetTypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT TypeInfoHolder::GetTypeInfo(UINT index, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const HRESULT result = Load(*info);
    if (SUCCEEDED(result)) (*info)->AddRef();
    return result;
}

HRESULT TypeInfoHolder::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                      DISPID* ids) noexcept {
    if (!names || !ids) return E_POINTER;
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    ITypeInfo* info = nullptr;
    const HRESULT result = Load(info);
    if (FAILED(result)) return result;
    // What parameters are called, only the type information knows.
    if (count == 1 && names[0] && names_ && names_->Find(names[0], ids[0])) return S_OK;
    return info->GetIDsOfNames(names, count, ids);
}

HRESULT TypeInfoHolder::Invoke(void* instance, DISPID member, REFIID reserved, WORD flags,
                               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                               UINT* argumentError) noexcept {
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    if (!instance || !parameters) return E_INVALIDARG;
    if (parameters->cArgs && !parameters->rgvarg) return E_INVALIDARG;
    if (parameters->cNamedArgs && !parameters->rgdispidNamedArgs) return E_INVALIDARG;
    if (!IsKnown(member, flags)) {
        ITypeInfo* info = nullptr;
        const HRESULT loaded = Load(info);
        if (FAILED(loaded)) return loaded;
        stockCalls_.fetch_add(1, std::memory_order_relaxed);
        const HRESULT stock =
            info->Invoke(instance, member, flags, parameters, result, exception, argumentError);
        if (stock != DISP_E_BADVARTYPE) return stock;
    }
    if (result) VariantInit(result);
    const HRESULT called = CallTyped(instance, member, flags, *parameters, result, argumentError);
    if (FAILED(called) && exception) {
        *exception = {};
        exception->scode = called;
    }
    return called;
}

HRESULT TypeInfoHolder::CallTyped(void* instance, DISPID member, WORD flags,
                                  const DISPPARAMS& parameters, VARIANT* result,
                                  UINT* argumentError) noexcept {
    HRESULT last = DISP_E_MEMBERNOTFOUND;
    for (const INVOKEKIND kind : kKinds) {
        if ((flags & kind) == 0) continue;
        const CallPlan* plan = Plan(member, kind);
        if (!plan) return E_OUTOFMEMORY;
        // A kind that the member is not of leaves the failure of the one before as it is.
        if (!plan->function) continue;
        last = TypedCall(*plan).Run(instance, parameters, result, argumentError);
        if (SUCCEEDED(last)) break;
    }
    return last;
}

bool TypeInfoHolder::IsKnown(DISPID member, WORD flags) const noexcept {
    const CallPlans* plans = plans_.load(std::memory_order_acquire);
    if (!plans) return false;
    for (const INVOKEKIND kind : kKinds) {
        const CallPlan* plan = (flags & kind) ? plans->Find(member, kind) : nullptr;
        if (plan && plan->function) return true;
    }
    return false;
}

const CallPlan* TypeInfoHolder::Plan(DISPID member, INVOKEKIND kind) noexcept {
    CallPlans* plans = plans_.load(std::memory_order_acquire);
    const CallPlan* plan = plans ? plans->Find(member, kind) : nullptr;
    if (plan) return plan;
    const Guard guard;
    plans = plans_.load(std::memory_order_relaxed);
    if (!plans) {
        plans = new (std::nothrow) CallPlans(*info_.load(std::memory_order_relaxed));
        plans_.store(plans, std::memory_order_release);
    }
    return plans ? plans->Ask(member, kind) : nullptr;
}

}  // namespace AUX
