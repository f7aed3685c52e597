#include "automation/type_info_holder.h"

#include <new>

#include "automation/type_info_cache.h"
#include "automation/typed_call.h"

namespace AUX {
namespace {

constexpr int kMaxDepth = 16;
constexpr INVOKEKIND kKinds[] = {INVOKE_FUNC, INVOKE_PROPERTYGET, INVOKE_PROPERTYPUT,
                                 INVOKE_PROPERTYPUTREF};

class Guard {
public:
    explicit Guard(CRITICAL_SECTION& lock) noexcept : lock_(lock) { EnterCriticalSection(&lock_); }
    ~Guard() { LeaveCriticalSection(&lock_); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    CRITICAL_SECTION& lock_;
};

int PlaceOf(INVOKEKIND kind) noexcept {
    int place = 0;
    while (kKinds[place] != kind) ++place;
    return place;
}

}  // namespace

TypeInfoHolder::TypeInfoHolder(Loader loader) noexcept : load_(loader) {
    (void)InitializeCriticalSectionAndSpinCount(&lock_, 0);  // never fails
}

TypeInfoHolder::~TypeInfoHolder() {
    if (cache_) {
        for (const auto& map : cache_->functions) {
            map.ForEach([this](FUNCDESC* each) { info_->ReleaseFuncDesc(each); });
        }
    }
    DeleteCriticalSection(&lock_);
}

HRESULT TypeInfoHolder::Load() noexcept {
    if (isLoaded_.load(std::memory_order_acquire)) return S_OK;
    const Guard guard(lock_);
    if (info_) return S_OK;
    const HRESULT result = load_(info_.Put());
    if (SUCCEEDED(result)) isLoaded_.store(true, std::memory_order_release);
    return result;
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
    const HRESULT result = Load();
    if (SUCCEEDED(result)) *info = platform::ComPtr<ITypeInfo>(info_).Detach();
    return result;
}

HRESULT TypeInfoHolder::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                      DISPID* ids) noexcept {
    if (!names || !ids) return E_POINTER;
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    const HRESULT result = Load();
    return FAILED(result) ? result : info_->GetIDsOfNames(names, count, ids);
}

HRESULT TypeInfoHolder::Invoke(void* instance, DISPID member, REFIID reserved, WORD flags,
                               DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                               UINT* argumentError) noexcept {
    if (!IsEqualIID(reserved, IID{})) return DISP_E_UNKNOWNINTERFACE;
    if (!instance || !parameters) return E_INVALIDARG;
    if (!IsKnown(member, flags)) {
        const HRESULT loaded = Load();
        if (FAILED(loaded)) return loaded;
        ++stockCalls_;
        const HRESULT stock =
            info_->Invoke(instance, member, flags, parameters, result, exception, argumentError);
        if (stock != DISP_E_BADVARTYPE) return stock;
    }
    HRESULT last = DISP_E_MEMBERNOTFOUND;
    for (const INVOKEKIND kind : kKinds) {
        if ((flags & kind) == 0) continue;
        TypedCall call;
        {
            const Guard guard(lock_);
            const FUNCDESC* function = Describe(member, kind);
            last = function ? call.Describe(*this, *function) : DISP_E_MEMBERNOTFOUND;
        }
        // The method may call back; the lock is not held then.
        if (SUCCEEDED(last)) last = call.Run(instance, *parameters, result, argumentError);
        if (SUCCEEDED(last)) return last;
    }
    return last;
}

bool TypeInfoHolder::IsKnown(DISPID member, WORD flags) noexcept {
    if (!isLoaded_.load(std::memory_order_acquire)) return false;
    const Guard guard(lock_);
    if (!cache_) return false;
    for (const INVOKEKIND kind : kKinds) {
        if (!(flags & kind)) continue;
        if (cache_->functions[PlaceOf(kind)].Find(static_cast<std::uint32_t>(member))) return true;
    }
    return false;
}

const FUNCDESC* TypeInfoHolder::Describe(DISPID member, INVOKEKIND kind) noexcept {
    if (!cache_) cache_.reset(new (std::nothrow) Cache);
    if (!cache_) return nullptr;
    auto& map = cache_->functions[PlaceOf(kind)];
    const auto id = static_cast<std::uint32_t>(member);
    if (FUNCDESC* const* found = map.Find(id)) return *found;
    FUNCDESC* asked = Ask(member, kind);
    if (asked && !map.Add(id, asked)) {
        info_->ReleaseFuncDesc(asked);
        return nullptr;
    }
    return asked;
}

FUNCDESC* TypeInfoHolder::Ask(DISPID member, INVOKEKIND kind) noexcept {
    platform::ComPtr<ITypeInfo2> info;
    void* found = nullptr;
    if (FAILED(info_->QueryInterface(platform::InterfaceId<ITypeInfo2>(), &found))) return nullptr;
    *info.Put() = static_cast<ITypeInfo2*>(found);
    UINT index = 0;
    TYPEATTR* type = nullptr;
    if (FAILED(info->GetFuncIndexOfMemId(member, kind, &index))) return nullptr;
    if (FAILED(info->GetTypeAttr(&type))) return nullptr;
    const UINT functions = type->cFuncs;
    // The index leaves out what a dispatch interface inherits, GetFuncDesc counts it.
    UINT base = static_cast<UINT>(type->cbSizeVft / sizeof(void*));
    if (type->typekind == TKIND_INTERFACE) base = base - functions - 3;
    info->ReleaseTypeAttr(type);
    // What derives from more than IDispatch has another base; then all are searched.
    for (UINT i = 0; i <= functions; ++i) {
        FUNCDESC* asked = nullptr;
        if (FAILED(info->GetFuncDesc(i == 0 ? index + base : i - 1, &asked))) continue;
        if (asked->memid == member && asked->invkind == kind) return asked;
        info->ReleaseFuncDesc(asked);
    }
    return nullptr;
}

bool TypeInfoHolder::Resolve(ITypeInfo* info, const TYPEDESC& type, ResolvedType& resolved,
                             int depth) noexcept {
    if (depth > kMaxDepth) return false;
    if (type.vt == VT_USERDEFINED) return ResolveNamed(info, type.hreftype, resolved, depth);
    if (type.vt != VT_PTR) {
        resolved = {};
        resolved.kind = type.vt == VT_INT       ? VARTYPE{VT_I4}
                        : type.vt == VT_UINT    ? VARTYPE{VT_UI4}
                        : type.vt == VT_HRESULT ? VARTYPE{VT_ERROR}
                                                : type.vt;
        return true;
    }
    if (!Resolve(info, *type.lptdesc, resolved, depth + 1)) return false;
    // The pointer over an interface is what makes it an object; one more is a reference to it.
    const TYPEDESC& target = *type.lptdesc;
    const bool isObject = resolved.kind == VT_DISPATCH || resolved.kind == VT_UNKNOWN;
    if (!isObject || target.vt != VT_USERDEFINED) ++resolved.level;
    return true;
}

bool TypeInfoHolder::ResolveNamed(ITypeInfo* info, HREFTYPE reference, ResolvedType& resolved,
                                  int depth) noexcept {
    // References are numbers of the library's own type information.
    const bool isOwn = info == info_.Get();
    if (const ResolvedType* found = isOwn ? cache_->types.Find(reference) : nullptr) {
        resolved = *found;
        return true;
    }
    platform::ComPtr<ITypeInfo> target;
    TYPEATTR* type = nullptr;
    if (FAILED(info->GetRefTypeInfo(reference, target.Put()))) return false;
    if (FAILED(target->GetTypeAttr(&type))) return false;
    resolved = {};
    bool isResolved = true;
    switch (type->typekind) {
        case TKIND_ENUM:
            resolved.kind = VT_I4;
            break;
        case TKIND_INTERFACE:
        case TKIND_DISPATCH:
            resolved.kind = type->typekind == TKIND_DISPATCH ? VT_DISPATCH : VT_UNKNOWN;
            resolved.interfaceId = type->guid;
            break;
        case TKIND_ALIAS:
            isResolved = Resolve(target.Get(), type->tdescAlias, resolved, depth + 1);
            break;
        default:
            isResolved = false;
    }
    target->ReleaseTypeAttr(type);
    if (isResolved && isOwn) (void)cache_->types.Add(reference, resolved);  // only a cache
    return isResolved;
}

}  // namespace AUX
