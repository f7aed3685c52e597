#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "platform/text.h"
#include "platform/typeinfo.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"

namespace objects_test {

/// A call through the table of an interface, as a compiled client makes it: the arguments are given
/// in the forms that the interface's description tells.
class TableCall {
public:
    /// \param arguments  In order; borrowed until the call is made.
    TableCall(IDispatch* object, const std::string& member, std::vector<VARIANT> arguments)
        : object_(object), given_(std::move(arguments)) {
        if (FAILED(object->GetTypeInfo(0, 0, info_.Put()))) return;
        for (UINT i = 0; SUCCEEDED(info_->GetFuncDesc(i, &function_)); ++i) {
            platform::UniqueBstr name;
            UINT names = 0;
            (void)info_->GetNames(function_->memid, name.Put(), 1, &names);
            if (names == 1 && platform::ToUtf8(name.Get()) == member) return;
            info_->ReleaseFuncDesc(function_);
            function_ = nullptr;
        }
    }
    ~TableCall() {
        if (function_) info_->ReleaseFuncDesc(function_);
    }
    TableCall(const TableCall&) = delete;
    TableCall& operator=(const TableCall&) = delete;

    /// \return what the member gives; DISP_E_MEMBERNOTFOUND if the interface has none of the name,
    ///         DISP_E_TYPEMISMATCH if an argument does not fit.
    HRESULT Make(platform::UniqueVariant& result) {
        if (!function_) return DISP_E_MEMBERNOTFOUND;
        const auto count = static_cast<std::size_t>(function_->cParams);
        for (std::size_t i = 0; i < count; ++i) {
            const ELEMDESC& parameter = function_->lprgelemdescParam[i];
            if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
                AddPlace(*parameter.tdesc.lptdesc, *result.Put());
            } else if (!AddArgument(parameter.tdesc)) {
                return DISP_E_TYPEMISMATCH;
            }
        }
        const TYPEDESC& own = function_->elemdescFunc.tdesc;
        if (own.vt != VT_VOID && own.vt != VT_HRESULT) AddPlace(own, *result.Put());
        std::vector<VARIANTARG*> pointers;
        for (VARIANT& each : passed_) pointers.push_back(&each);
        VARIANT status{};
        const HRESULT called = DispCallFunc(object_, static_cast<ULONG_PTR>(function_->oVft),
                                            CC_STDCALL, VT_I4, static_cast<UINT>(pointers.size()),
                                            kinds_.data(), pointers.data(), &status);
        return FAILED(called) ? called : status.lVal;
    }

private:
    void Pass(VARTYPE kind, const VARIANT& value) {
        kinds_.push_back(kind);
        passed_.push_back(value);
    }
    void PassPointer(const void* pointer) {
        VARIANT value{};
        value.vt = VT_I8;
        value.llVal = reinterpret_cast<std::intptr_t>(pointer);
        Pass(VT_I8, value);
    }

    // The place for a result, which knows its kind from here on.
    void AddPlace(const TYPEDESC& type, VARIANT& result) {
        PassPointer(type.vt == VT_VARIANT ? static_cast<void*>(&result) : &result.llVal);
        if (type.vt != VT_VARIANT) result.vt = type.vt == VT_PTR ? VARTYPE{VT_UNKNOWN} : type.vt;
    }

    bool AddArgument(const TYPEDESC& type) {
        VARIANT missing{};
        missing.vt = VT_ERROR;
        missing.lVal = DISP_E_PARAMNOTFOUND;
        const VARIANT value = next_ < given_.size() ? given_[next_++] : missing;
        switch (type.vt) {
            case VT_VARIANT:
                Pass(VT_VARIANT, value);
                return true;
            case VT_PTR:
                return AddPointer(*type.lptdesc, value);
            case VT_DISPATCH:
            case VT_UNKNOWN:
                PassPointer(value.punkVal);
                return value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
            default: {
                const bool isText = type.vt == VT_LPWSTR;
                platform::UniqueVariant& changed = Keep();
                if (FAILED(VariantChangeType(changed.Change(), const_cast<VARIANT*>(&value), 0,
                                             isText ? VARTYPE{VT_BSTR} : type.vt))) {
                    return false;
                }
                if (isText) {
                    PassPointer(changed.Get().bstrVal);
                } else {
                    Pass(type.vt, changed.Get());
                }
                return true;
            }
        }
    }

    bool AddPointer(const TYPEDESC& to, const VARIANT& value) {
        if (to.vt == VT_USERDEFINED) return AddObject(to.hreftype, value);
        const bool isReference = (value.vt & VT_BYREF) != 0;
        if (to.vt == VT_VARIANT && value.vt != (VT_BYREF | VT_VARIANT)) {
            PassPointer(&given_[next_ - 1]);
        } else if (isReference) {
            PassPointer(value.byref);
        }
        return isReference || to.vt == VT_VARIANT;
    }

    // What an object does not offer is passed as null.
    bool AddObject(HREFTYPE type, const VARIANT& value) {
        platform::ComPtr<ITypeInfo> wanted;
        TYPEATTR* facts = nullptr;
        if (FAILED(info_->GetRefTypeInfo(type, wanted.Put()))) return false;
        if (FAILED(wanted->GetTypeAttr(&facts))) return false;
        void* found = nullptr;
        if (value.punkVal) (void)value.punkVal->QueryInterface(facts->guid, &found);
        wanted->ReleaseTypeAttr(facts);
        VARIANT& kept = *Keep().Change();
        kept.vt = VT_UNKNOWN;
        kept.punkVal = static_cast<IUnknown*>(found);
        PassPointer(found);
        return value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    }

    platform::UniqueVariant& Keep() {
        kept_.push_back(std::make_unique<platform::UniqueVariant>());
        return *kept_.back();
    }

    IDispatch* object_;
    platform::ComPtr<ITypeInfo> info_;
    FUNCDESC* function_ = nullptr;
    std::vector<VARIANT> given_, passed_;
    std::vector<VARTYPE> kinds_;
    std::vector<std::unique_ptr<platform::UniqueVariant>> kept_;
    std::size_t next_ = 0;
};

}  // namespace objects_test
