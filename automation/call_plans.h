#pragma once

#include <memory>

#include "automation/id_map.h"
#include "platform/typeinfo.h"

namespace AUX {

/// A type without aliases and pointers; VT_USERDEFINED is one that no call can pass.
struct ResolvedType {
    VARTYPE kind = VT_USERDEFINED;
    int level = 0;       // 1 is a reference to a `kind`
    GUID interfaceId{};  // of an object other than IUnknown and IDispatch
};

/// A member as a typed call needs it.
struct CallPlan {
    FUNCDESC* function = nullptr;
    std::unique_ptr<ResolvedType[]> parameters;
    ResolvedType result{VT_VOID};  // VT_VOID: none, or a parameter gives it
};

/// What typed calls have asked the type information of one interface for. Any thread may look up;
/// only one asks at a time.
class CallPlans {
public:
    /// Borrows `info`, for as long as it lives.
    explicit CallPlans(ITypeInfo& info) noexcept : info_(info) {}
    CallPlans(const CallPlans&) = delete;
    CallPlans& operator=(const CallPlans&) = delete;
    /// Gives the descriptions back to the type information.
    ~CallPlans();

    /// Null if it has not been asked for, else the plan; one without a function says that there is
    /// no member of that kind.
    [[nodiscard]] const CallPlan* Find(DISPID member, INVOKEKIND kind) const noexcept;

    /// The same, and asks for what is not there. Null if memory runs out.
    [[nodiscard]] const CallPlan* Ask(DISPID member, INVOKEKIND kind) noexcept;

private:
    // All of them fail only if memory runs out.
    [[nodiscard]] bool Describe(DISPID member, INVOKEKIND kind, FUNCDESC*& function) noexcept;
    [[nodiscard]] bool Resolve(CallPlan& plan) noexcept;
    [[nodiscard]] bool Resolve(ITypeInfo& info, const TYPEDESC& type, int depth,
                               ResolvedType& resolved) noexcept;
    [[nodiscard]] bool ResolveNamed(ITypeInfo& info, HREFTYPE reference, int depth,
                                    ResolvedType& resolved) noexcept;

    ITypeInfo& info_;
    IdMap<CallPlan*> functions_[4];  // by kind: method, get, put, put of a reference
    IdMap<ResolvedType> types_;      // by HREFTYPE
};

}  // namespace AUX
