#include "automation/call_plans.h"

#include <new>

#include "platform/com_ptr.h"

namespace AUX {
namespace {

constexpr int kMaxDepth = 16;

// The pointer over an interface is what makes it an object; one more is a reference to it.
constexpr int kBareInterface = -1;

constexpr int PlaceOf(INVOKEKIND kind) noexcept {
    return kind == INVOKE_FUNC          ? 0
           : kind == INVOKE_PROPERTYGET ? 1
           : kind == INVOKE_PROPERTYPUT ? 2
                                        : 3;
}

// Where GetFuncDesc has what GetFuncIndexOfMemId counts from 0: a dispatch interface counts what it
// inherits in the one but not in the other.
UINT BaseOf(const TYPEATTR& type) noexcept {
    const UINT slots = type.cbSizeVft / static_cast<UINT>(sizeof(void*));
    return type.typekind == TKIND_INTERFACE ? slots - type.cFuncs - 3 : slots;
}

}  // namespace

CallPlans::~CallPlans() {
    for (const auto& map : functions_) {
        map.ForEach([this](std::uint32_t, CallPlan* each) {
            if (each->function) info_.ReleaseFuncDesc(each->function);
            delete each;
        });
    }
}

const CallPlan* CallPlans::Find(DISPID member, INVOKEKIND kind) const noexcept {
    CallPlan* const* found = functions_[PlaceOf(kind)].Find(static_cast<std::uint32_t>(member));
    return found ? *found : nullptr;
}

const CallPlan* CallPlans::Ask(DISPID member, INVOKEKIND kind) noexcept {
    if (const CallPlan* found = Find(member, kind)) return found;
    std::unique_ptr<CallPlan> plan(new (std::nothrow) CallPlan);
    if (!plan || !Describe(member, kind, plan->function)) return nullptr;
    const bool isKept =
        (!plan->function || Resolve(*plan)) &&
        functions_[PlaceOf(kind)].Add(static_cast<std::uint32_t>(member), plan.get());
    if (isKept) return plan.release();
    if (plan->function) info_.ReleaseFuncDesc(plan->function);
    return nullptr;
}

bool CallPlans::Describe(DISPID member, INVOKEKIND kind, FUNCDESC*& function) noexcept {
    TYPEATTR* type = nullptr;
    const HRESULT told = info_.GetTypeAttr(&type);
    if (FAILED(told)) return told != E_OUTOFMEMORY;
    const UINT functions = type->cFuncs, base = BaseOf(*type);
    info_.ReleaseTypeAttr(type);
    const auto take = [&](UINT index) {
        FUNCDESC* asked = nullptr;
        const HRESULT result = info_.GetFuncDesc(index, &asked);
        if (FAILED(result)) return result;
        if (asked->memid == member && asked->invkind == kind) {
            function = asked;
            return S_OK;
        }
        info_.ReleaseFuncDesc(asked);
        return S_FALSE;
    };
    platform::ComPtr<ITypeInfo2> info;
    UINT index = 0;
    if (SUCCEEDED(platform::QueryFor(&info_, info)) &&
        SUCCEEDED(info->GetFuncIndexOfMemId(member, kind, &index)) && take(index + base) == S_OK) {
        return true;
    }
    // What is inherited from more than IDispatch has another place, or is not counted at all.
    for (UINT i = 0; i < functions; ++i) {
        const HRESULT taken = take(i);
        if (taken == S_OK || taken == E_OUTOFMEMORY) return taken == S_OK;
    }
    return true;
}

bool CallPlans::Resolve(CallPlan& plan) noexcept {
    const FUNCDESC& function = *plan.function;
    const auto count = static_cast<std::size_t>(function.cParams);
    plan.parameters.reset(new (std::nothrow) ResolvedType[count]);
    if (!plan.parameters) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const TYPEDESC& type = function.lprgelemdescParam[i].tdesc;
        if (!Resolve(info_, type, 0, plan.parameters[i])) return false;
    }
    const TYPEDESC& result = function.elemdescFunc.tdesc;
    if (function.funckind != FUNC_DISPATCH || result.vt == VT_VOID) return true;
    return Resolve(info_, result, 0, plan.result);
}

bool CallPlans::Resolve(ITypeInfo& info, const TYPEDESC& type, int depth,
                        ResolvedType& resolved) noexcept {
    resolved = {};
    if (type.vt != VT_PTR && type.vt != VT_USERDEFINED) {
        resolved.kind = type.vt == VT_INT       ? VARTYPE{VT_I4}
                        : type.vt == VT_UINT    ? VARTYPE{VT_UI4}
                        : type.vt == VT_HRESULT ? VARTYPE{VT_ERROR}
                                                : type.vt;
        return true;
    }
    if (depth >= kMaxDepth) return true;
    if (type.vt == VT_USERDEFINED) return ResolveNamed(info, type.hreftype, depth, resolved);
    if (!Resolve(info, *type.lptdesc, depth + 1, resolved)) return false;
    ++resolved.level;
    return true;
}

bool CallPlans::ResolveNamed(ITypeInfo& info, HREFTYPE reference, int depth,
                             ResolvedType& resolved) noexcept {
    // References are numbers of the library's own type information.
    const bool isOwn = &info == &info_;
    if (const ResolvedType* found = isOwn ? types_.Find(reference) : nullptr) {
        resolved = *found;
        return true;
    }
    platform::ComPtr<ITypeInfo> target;
    TYPEATTR* type = nullptr;
    HRESULT told = info.GetRefTypeInfo(reference, target.Put());
    if (SUCCEEDED(told)) told = target->GetTypeAttr(&type);
    if (FAILED(told)) return told != E_OUTOFMEMORY;
    bool isRead = true;
    if (type->typekind == TKIND_ENUM) resolved.kind = VT_I4;
    if (type->typekind == TKIND_ALIAS) {
        isRead = Resolve(*target, type->tdescAlias, depth + 1, resolved);
    }
    if (type->typekind == TKIND_INTERFACE || type->typekind == TKIND_DISPATCH) {
        resolved.kind = type->typekind == TKIND_DISPATCH ? VT_DISPATCH : VT_UNKNOWN;
        resolved.level = kBareInterface;
        const bool isBase = IsEqualIID(type->guid, platform::InterfaceId<IDispatch>()) ||
                            IsEqualIID(type->guid, platform::InterfaceId<IUnknown>());
        if (!isBase) resolved.interfaceId = type->guid;
    }
    target->ReleaseTypeAttr(type);
    if (isRead && isOwn) (void)types_.Add(reference, resolved);  // only a cache
    return isRead;
}

}  // namespace AUX
