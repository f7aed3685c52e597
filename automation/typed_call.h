#pragma once

#include "automation/call_plans.h"

namespace AUX {

/// One late-bound call through an interface's table, with arguments fitted to its types.
class TypedCall {
public:
    /// Borrows `plan`, which has a function, for its life.
    explicit TypedCall(const CallPlan& plan) noexcept;
    TypedCall(const TypedCall&) = delete;
    TypedCall& operator=(const TypedCall&) = delete;
    ~TypedCall();

    /// As TypeInfoHolder::Invoke; once. `result` may be null, and is empty after a failure.
    [[nodiscard]] HRESULT Run(void* instance, const DISPPARAMS& given, VARIANT* result,
                              UINT* argumentError) noexcept;

private:
    static constexpr int kMaxParameters = 60;

    [[nodiscard]] HRESULT Assign(const DISPPARAMS& given) noexcept;
    [[nodiscard]] HRESULT Take(int place) noexcept;
    [[nodiscard]] HRESULT TakeNothing(int place) noexcept;
    [[nodiscard]] HRESULT FitValue(const ResolvedType& wanted, VARIANT& given, int place) noexcept;
    [[nodiscard]] HRESULT FitReference(const ResolvedType& wanted, VARIANT& given,
                                       int place) noexcept;
    [[nodiscard]] HRESULT FitText(const VARIANT& given, int place) noexcept;
    [[nodiscard]] bool SetResultPlace() noexcept;
    [[nodiscard]] HRESULT Call(void* instance, VARIANT* result) noexcept;
    [[nodiscard]] USHORT FlagsOf(int place) const noexcept;
    void PassPointer(int place, void* pointer) noexcept;
    void PassValue(int place, VARTYPE kind, const VARIANT& value) noexcept;

    const CallPlan& plan_;
    const int parameters_;  // at most kMaxParameters, else it cannot be called
    int count_;             // of what is passed
    int resultPlace_ = -1;  // none
    VARTYPE resultKind_ = VT_EMPTY;
    // Only the first `parameters_` of each are made, and those of what is passed.
    VARIANT* given_[kMaxParameters];  // null: left out
    VARIANT temporaries_[kMaxParameters];
    VARIANT passed_[kMaxParameters + 1];
    VARTYPE kinds_[kMaxParameters + 1];
    VARIANT* places_[kMaxParameters + 1];
};

}  // namespace AUX
