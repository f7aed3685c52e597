#pragma once

#include "automation/type_info_holder.h"

namespace AUX {

/// One late-bound call through an interface's table, with arguments fitted to its types.
class TypedCall {
public:
    TypedCall() noexcept = default;
    TypedCall(const TypedCall&) = delete;
    TypedCall& operator=(const TypedCall&) = delete;
    ~TypedCall();

    /// Reads the types; the holder's lock is held. `function` outlives the call.
    /// \return DISP_E_BADVARTYPE for a type that cannot be passed, E_OUTOFMEMORY.
    [[nodiscard]] HRESULT Describe(TypeInfoHolder& holder, const FUNCDESC& function) noexcept;
    /// As TypeInfoHolder::Invoke. `result` may be null, and is empty after a failure.
    [[nodiscard]] HRESULT Run(void* instance, const DISPPARAMS& given, VARIANT* result,
                              UINT* argumentError) noexcept;

private:
    using Type = TypeInfoHolder::ResolvedType;
    static constexpr int kMaxParameters = 60;

    [[nodiscard]] HRESULT Take(int parameter, VARIANT* given) noexcept;
    [[nodiscard]] HRESULT Fit(const Type& wanted, bool isInOnly, VARIANT* given,
                              int place) noexcept;
    [[nodiscard]] HRESULT FitObject(const Type& wanted, VARIANT& given, int place) noexcept;
    [[nodiscard]] HRESULT Call(void* instance, VARIANT* result) noexcept;
    void PassPointer(int place, void* pointer) noexcept;
    void PassValue(int place, VARTYPE kind, const VARIANT& value) noexcept;

    const FUNCDESC* function_ = nullptr;
    Type types_[kMaxParameters];
    Type resultType_;
    int resultPlace_ = -1;
    int count_ = 0;
    VARTYPE kinds_[kMaxParameters + 1] = {};
    VARIANT passed_[kMaxParameters + 1] = {};
    VARIANT* places_[kMaxParameters + 1] = {};
    VARIANT temporaries_[kMaxParameters] = {};
};

}  // namespace AUX
