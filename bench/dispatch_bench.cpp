// What a late-bound call through AUX::TypeInfoHolder costs beside the stock ITypeInfo::Invoke.
// Builds for Windows too, where Google Benchmark is missing.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "automation/type_info_holder.h"
#include "bench/generated/dispatch_cases.h"
#include "platform/com_object.h"
#include "platform/shell.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"

namespace {

using platform::ComPtr;

HRESULT LoadTypes(ITypeInfo** info) noexcept {
    ComPtr<ITypeLib> library;
    const HRESULT result = LoadTypeLib(platform::FromUtf8(DISPATCH_CASES).c_str(), library.Put());
    if (FAILED(result)) return result;
    return library->GetTypeInfoOfGuid(platform::InterfaceId<ITimed>(), info);
}

AUX::TypeInfoHolder& Holder() {
    static AUX::TypeInfoHolder holder(LoadTypes);
    return holder;
}

class Timed final : public platform::ComObject<ITimed> {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID,
                                            DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        return E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE get_Number(BSTR key, LONG* result) override {
        *result = key[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_PlainNumber(LPWSTR key, LONG* result) override {
        *result = key[0];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Text(BSTR* result) override {
        *result = SysAllocString(kText);
        return *result ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE get_PlainText(LPWSTR* result) override {
        *result = static_cast<LPWSTR>(CoTaskMemAlloc(sizeof kText));
        if (!*result) return E_OUTOFMEMORY;
        std::memcpy(*result, kText, sizeof kText);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Fill(BSTR key, LONG a, double, VARIANT) override {
        return key[0] == a ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE PlainFill(LPWSTR key, LONG a, double, VARIANT) override {
        return key[0] == a ? S_FALSE : S_OK;
    }

private:
    static constexpr WCHAR kText[] = TEXT("a text of usual length");
};

struct Contender {
    const char* name;
    std::function<HRESULT()> call;
    double best = 1e9;  // ns
};

void Measure(std::vector<Contender>& contenders) {
    using Clock = std::chrono::steady_clock;
    constexpr int kRounds = 60, kCalls = 20'000;
    for (int round = 0; round < kRounds; ++round) {
        for (Contender& each : contenders) {
            const auto start = Clock::now();
            for (int i = 0; i < kCalls; ++i) {
                if (const HRESULT result = each.call(); FAILED(result)) {
                    std::printf("%s fails: %08X\n", each.name, static_cast<unsigned>(result));
                    std::exit(1);
                }
            }
            const std::chrono::duration<double, std::nano> took = Clock::now() - start;
            each.best = std::min(each.best, took.count() / kCalls);
        }
    }
}

VARIANT KeyOf(BSTR text) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = text;
    return value;
}

}  // namespace

int main() {
    ComPtr<ITypeInfo> info;
    if (FAILED(Holder().GetTypeInfo(0, info.Put()))) return 1;
    const ComPtr<Timed> object = platform::MakeObject<Timed>();
    const platform::UniqueBstr key(SysAllocString(TEXT("key")));
    VARIANT arguments[4];  // the last parameter's first
    for (VARIANT& each : arguments) {
        VariantInit(&each);
        each.vt = VT_I4;
        each.lVal = 7;
    }
    arguments[3] = KeyOf(key.Get());
    const auto withArguments = [&](UINT count) {
        return DISPPARAMS{&arguments[4 - count], nullptr, count, 0};
    };
    const auto stock = [&](DISPID member, WORD flags, UINT count) {
        platform::UniqueVariant result;
        DISPPARAMS parameters = withArguments(count);
        return info->Invoke(static_cast<ITimed*>(object.Get()), member, flags, &parameters,
                            result.Change(), nullptr, nullptr);
    };
    const auto held = [&](DISPID member, WORD flags, UINT count) {
        platform::UniqueVariant result;
        DISPPARAMS parameters = withArguments(count);
        return Holder().Invoke(static_cast<ITimed*>(object.Get()), member, IID{}, flags,
                               &parameters, result.Change(), nullptr, nullptr);
    };
    platform::WideString name = TEXT("PlainText");
    LPOLESTR names = name.data();
    DISPID id = 0;
    constexpr WORD kGet = DISPATCH_PROPERTYGET, kCall = DISPATCH_METHOD;
    const struct {
        const char* what;
        std::vector<Contender> contenders;
    } kWorkloads[] = {
        {"get a number by a key",
         {{"stock", [&] { return stock(1, kGet, 1); }},
          {"holder, stock call", [&] { return held(1, kGet, 1); }},
          {"holder, typed call", [&] { return held(2, kGet, 1); }},
          {"the same, method or get", [&] { return held(2, kCall | kGet, 1); }}}},
        {"get a text",
         {{"stock", [&] { return stock(3, kGet, 0); }},
          {"holder, stock call", [&] { return held(3, kGet, 0); }},
          {"holder, typed call", [&] { return held(4, kGet, 0); }}}},
        {"call with four arguments",
         {{"stock", [&] { return stock(5, kCall, 4); }},
          {"holder, stock call", [&] { return held(5, kCall, 4); }},
          {"holder, typed call", [&] { return held(6, kCall, 4); }}}},
        {"name to id",
         {{"stock", [&] { return info->GetIDsOfNames(&names, 1, &id); }},
          {"holder", [&] { return Holder().GetIDsOfNames(IID{}, &names, 1, &id); }}}},
    };
    for (const auto& workload : kWorkloads) {
        std::vector<Contender> contenders = workload.contenders;
        Measure(contenders);
        std::printf("%s\n", workload.what);
        for (const Contender& each : contenders) {
            std::printf("    %-26s %8.1f ns %6.2f\n", each.name, each.best,
                        each.best / contenders[0].best);
        }
    }
    return 0;
}
