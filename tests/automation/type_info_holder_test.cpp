#include "automation/type_info_holder.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

#include "automation/id_map.h"
#include "platform/object_pointer.h"
#include "tests/automation/texts.h"
#include "tests/cab/failing_new.h"
#include "tests/support/case_table.h"

namespace AUX {
namespace {

using holder_cases::Shown;
using holder_cases::Texts;
using platform::ComPtr;
using platform::UniqueBstr;
using platform::UniqueVariant;

static_assert(HashOfId(0) == 0x4D25767F9DCE13F5);

constexpr WORD kCall = DISPATCH_METHOD, kGet = DISPATCH_PROPERTYGET, kPut = DISPATCH_PROPERTYPUT;

HRESULT Load(ITypeInfo** info) noexcept {
    return holder_cases::LoadTypes(platform::InterfaceId<ITexts>(), info);
}
HRESULT LoadDerived(ITypeInfo** info) noexcept {
    return holder_cases::LoadTypes(platform::InterfaceId<IMoreTexts>(), info);
}
/// The other side, which counts the result among the parameters.
HRESULT LoadTable(ITypeInfo** info) noexcept {
    ComPtr<ITypeInfo> dispatch;
    HREFTYPE reference = 0;
    HRESULT result = Load(dispatch.Put());
    if (SUCCEEDED(result))
        result = dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference);
    return FAILED(result) ? result : dispatch->GetRefTypeInfo(reference, info);
}

VARIANT Of(VARTYPE kind, const void* pointer) {
    VARIANT value;
    VariantInit(&value);
    value.vt = kind;
    value.byref = const_cast<void*>(pointer);
    return value;
}
VARIANT Number(LONG number, VARTYPE kind = VT_I4) {
    VARIANT value = Of(kind, nullptr);
    value.lVal = number;
    return value;
}

struct Answer {
    HRESULT result;
    std::string shown;
    UINT argumentError = 99;
    EXCEPINFO exception{};
};

/// \param arguments  In their order; the first `names.size()` of them are named.
Answer Ask(IDispatch& object, DISPID member, WORD flags, std::vector<VARIANT> arguments,
           std::vector<DISPID> names = {}) {
    std::reverse(arguments.begin() + static_cast<std::ptrdiff_t>(names.size()), arguments.end());
    DISPPARAMS parameters{arguments.data(), names.data(), static_cast<UINT>(arguments.size()),
                          static_cast<UINT>(names.size())};
    Answer answer;
    UniqueVariant result;
    answer.result = object.Invoke(member, IID{}, 0x409, flags, &parameters, result.Put(),
                                  &answer.exception, &answer.argumentError);
    answer.shown = Shown(result.Get());
    return answer;
}

class TypeInfoHolderTest : public ::testing::Test {
protected:
    ~TypeInfoHolderTest() override {
        EXPECT_EQ(texts_->AddRef(), 2u) << "no reference is left";
        texts_->Release();
    }
    IDispatch& Object() { return *static_cast<ITexts*>(texts_.Get()); }

    const UniqueBstr one_{SysAllocString(TEXT("1"))};
    const VARIANT text_ = Of(VT_BSTR, one_.Get());
    TypeInfoHolder holder_{Load};
    const ComPtr<Texts> texts_ = platform::MakeObject<Texts>(holder_);
};

std::vector<std::string> Words(const platform::WideString& text) {
    std::istringstream in(platform::ToUtf8(text));
    return {std::istream_iterator<std::string>(in), {}};
}

TEST_F(TypeInfoHolderTest, CallsThroughTheTableWhatTheStockCallRefuses) {
    const UniqueBstr nine(SysAllocString(TEXT("9"))), zz(SysAllocString(TEXT("zz")));
    alignas(8) WCHAR plain[] = TEXT("1 plain text");
    VARIANT inner = text_, quarter = Number(0, VT_R8);
    quarter.dblVal = 0.25;
    ASSERT_EQ(VariantChangeType(&quarter, &quarter, 0, VT_DECIMAL), S_OK);
    BSTR lent = one_.Get();
    LONG seven = 7;
    const std::map<std::string, VARIANT> values = {
        {"one", text_},
        {"zz", Of(VT_BSTR, zz.Get())},
        {"nine", Of(VT_BSTR, nine.Get())},
        {"plain", Of(VT_UNKNOWN, plain)},
        {"nothing", Of(VT_UNKNOWN, nullptr)},
        {"self", Of(VT_DISPATCH, &Object())},
        {"unknown", Of(VT_UNKNOWN, &Object())},
        {"inner", Of(VT_BYREF | VT_VARIANT, &inner)},
        {"lent", Of(VT_BYREF | VT_BSTR, &lent)},
        {"seven", Of(VT_BYREF | VT_I4, &seven)},
        {"two", Number(2)},
        {"large", Number(256)},
        {"null", Number(0, VT_NULL)},
        {"empty", Number(0, VT_EMPTY)},
        {"missing", Number(DISP_E_PARAMNOTFOUND, VT_ERROR)},
        {"quarter", quarter},
    };
    for (const auto& row : test_support::ReadCases(AUTOMATION_CASES "typed_calls.tsv", 9)) {
        SCOPED_TRACE(platform::ToUtf8(row[0]));
        const auto number = [&](std::size_t field, int base = 10) {
            return std::strtoul(platform::ToUtf8(row[field]).c_str(), nullptr, base);
        };
        std::vector<VARIANT> arguments;
        for (const std::string& each : Words(row[3])) arguments.push_back(values.at(each));
        std::vector<DISPID> names;
        for (const std::string& each : Words(row[4])) names.push_back(std::stoi(each));
        const std::uint32_t before = holder_.StockCalls();
        const Answer answer = Ask(Object(), static_cast<DISPID>(number(1)),
                                  static_cast<WORD>(number(2)), arguments, names);
        const auto expected = static_cast<HRESULT>(static_cast<DWORD>(number(5, 16)));
        EXPECT_EQ(answer.result, expected);
        EXPECT_EQ(answer.shown, platform::ToUtf8(row[6]));
        EXPECT_EQ(answer.argumentError, number(7));
        EXPECT_EQ(holder_.StockCalls() - before, number(8));
        if (FAILED(expected) && number(8) == 0) {
            EXPECT_EQ(answer.exception.scode, expected);
        }
    }
}

TEST_F(TypeInfoHolderTest, GivesBackWhatAMethodChanged) {
    const UniqueBstr own(SysAllocString(TEXT("own")));
    BSTR lent = own.Get(), words = SysAllocString(TEXT("so"));
    double half = 0;
    LONG ten = 10;
    UniqueVariant number, any, room, result;
    *number.Change() = Of(VT_BSTR, SysAllocString(TEXT("7")));
    *room.Change() = Of(VT_BSTR, SysAllocString(TEXT("zz")));
    IDispatch* object = ComPtr<IDispatch>(texts_.Get()).Detach();
    IDispatch* other = nullptr;
    // Through references of the kinds themselves, and through values of the caller's.
    std::vector<VARIANT> arguments = {Of(VT_BSTR, own.Get()),
                                      Of(VT_BYREF | VT_VARIANT, number.Change()),
                                      Of(VT_BYREF | VT_BSTR, &words),
                                      Of(VT_BYREF | VT_R8, &half),
                                      Of(VT_BYREF | VT_VARIANT, any.Change()),
                                      Of(VT_BYREF | VT_DISPATCH, &object),
                                      Of(VT_BYREF | VT_DISPATCH, &other),
                                      Of(VT_BYREF | VT_I4, &ten),
                                      Of(VT_BYREF | VT_BSTR, &lent)};
    ASSERT_EQ(Ask(Object(), 5, kCall, arguments).result, S_OK);
    EXPECT_EQ(number.Get().vt, VT_I2) << "the caller's value took the kind";
    EXPECT_EQ(number.Get().iVal, 8);
    EXPECT_EQ(half, 2.5);
    EXPECT_EQ(any.Get().iVal, 11);
    EXPECT_EQ(object, nullptr);
    ASSERT_EQ(other, &Object());
    other->Release();
    // What a caller holds may be of any kind before a result is put there.
    arguments[3] = Of(VT_BYREF | VT_VARIANT, room.Change());
    arguments[6] = Of(VT_BYREF | VT_VARIANT, result.Change());
    arguments[7] = Number(3);
    ASSERT_EQ(Ask(Object(), 5, kCall, arguments).result, S_OK);
    EXPECT_EQ(room.Get().dblVal, 2.5);
    EXPECT_EQ(Shown(result.Get()), "object");
    // An object of another sort must not reach a method that calls through the table of its own.
    ComPtr<ITypeInfo> stranger;
    ASSERT_EQ(Load(stranger.Put()), S_OK);
    IUnknown* wrong = stranger.Get();
    const struct {
        std::size_t place;
        VARIANT value;
    } kRefused[] = {
        {1, Of(VT_BSTR, own.Get())},
        {2, Of(VT_BYREF | VT_BSTR, nullptr)},
        {4, Of(VT_BYREF | VT_VARIANT, nullptr)},
        {5, Of(VT_BYREF | VT_DISPATCH, &wrong)},
        {5, Of(VT_UNKNOWN, wrong)},
        {8, Of(VT_BSTR, own.Get())},
    };
    for (const auto& c : kRefused) {
        std::vector<VARIANT> changed = arguments;
        changed[c.place] = c.value;
        const Answer answer = Ask(Object(), 5, kCall, changed);
        EXPECT_EQ(answer.result, DISP_E_TYPEMISMATCH);
        EXPECT_EQ(answer.argumentError, c.place);
    }
    EXPECT_EQ(Shown(UniqueBstr(words).Get()), "so own 10 own own 3 own");
}

// Whatever a caller passes reaches a member as what it takes, or is refused; nothing is lost.
TEST_F(TypeInfoHolderTest, SurvivesArgumentsOfEverySort) {
    constexpr unsigned kSeed = 7;
    std::mt19937 random(kSeed);
    const auto upTo = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    constexpr VARTYPE kKinds[] = {VT_EMPTY,   VT_NULL,  VT_I2,      VT_I4,      VT_R8,
                                  VT_CY,      VT_DATE,  VT_BSTR,    VT_I8,      VT_DISPATCH,
                                  VT_I1,      VT_ERROR, VT_BOOL,    VT_VARIANT, VT_UI2,
                                  VT_UNKNOWN, VT_UI8,   VT_DECIMAL, VT_BSTR,    VT_BSTR};
    constexpr unsigned kCounts[] = {0, 1, 2, 13, 8, 9, 1, 1, 1, 2, 3, 2, 2};  // by member
    constexpr unsigned kMost = 13;
    int successes[kMost] = {};
    for (int i = 0; i < 20'000; ++i) {
        // What is lent and what references lead to, each in room for any kind.
        UniqueVariant own[kMost], room[kMost];
        std::vector<VARIANT> arguments;
        const unsigned member = upTo(kMost);
        for (unsigned n = upTo(3) ? kCounts[member] : upTo(kMost + 1); n > 0; --n) {
            const VARTYPE kind = kKinds[upTo(20)];
            const auto fill = [&](VARIANT& value) {
                value = Number(static_cast<LONG>(upTo(300)),
                               kind == VT_VARIANT ? VARTYPE{VT_I4} : kind);
                if (kind == VT_BSTR)
                    value.bstrVal = SysAllocString(upTo(2) ? TEXT("12") : TEXT("zz"));
                if (kind == VT_DISPATCH || kind == VT_UNKNOWN) {
                    value.punkVal = upTo(2) ? ComPtr<IUnknown>(&Object()).Detach() : nullptr;
                }
            };
            fill(*own[n - 1].Change());
            VARIANT& lent = *room[n - 1].Change();
            fill(lent);
            VARIANT argument = own[n - 1].Get();
            // A VARIANT that the member gives another value is to be its caller's own.
            const bool isChanged =
                member == 5 && (kind == VT_BSTR || kind == VT_DISPATCH || kind == VT_UNKNOWN);
            const unsigned form = isChanged ? 0 : upTo(4);
            if (form == 0) argument = Of(VT_BYREF | VT_VARIANT, &lent);
            if (form == 1 && kind > VT_NULL && kind != VT_VARIANT && kind != VT_ERROR) {
                const bool isWhole = kind == VT_DECIMAL;
                argument = Of(static_cast<VARTYPE>(VT_BYREF | kind),
                              isWhole ? static_cast<void*>(&lent) : &lent.byref);
            }
            arguments.push_back(argument);
        }
        std::vector<DISPID> names;
        for (unsigned n = upTo(4); n > 2 && names.size() < arguments.size(); --n) {
            names.push_back(upTo(2) ? DISPID{DISPID_PROPERTYPUT} : static_cast<DISPID>(upTo(9)));
        }
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", call " << i);
        const Answer answer = Ask(Object(), static_cast<DISPID>(member),
                                  static_cast<WORD>(upTo(16)), arguments, names);
        successes[member] += SUCCEEDED(answer.result);
    }
    for (const unsigned member : {1, 2, 4, 6, 7, 8, 9, 12})
        EXPECT_GT(successes[member], 5) << member;
}

TEST_F(TypeInfoHolderTest, FindsMembersOfTheTableSideAndOfDerivedInterfaces) {
    TypeInfoHolder table(LoadTable), derived(LoadDerived);
    const ComPtr<Texts> first = platform::MakeObject<Texts>(table);
    EXPECT_EQ(Ask(*first, 1, kCall, {text_}).shown, "1!");
    EXPECT_EQ(Ask(*first, 2, kGet, {text_}).shown, "49");
    LONG label = 0;  // Here the result may be asked for as an argument, too.
    EXPECT_EQ(Ask(*first, 2, kGet, {text_, Of(VT_BYREF | VT_I4, &label)}).result, S_OK);
    EXPECT_EQ(label, 49);
    const ComPtr<Texts> second = platform::MakeObject<Texts>(derived);
    EXPECT_EQ(Ask(*second, 20, kCall, {text_}).shown, "98");
    EXPECT_EQ(Ask(*second, 1, kCall, {text_}).shown, "1!");
}

std::atomic<int> loads = 0;

TEST_F(TypeInfoHolderTest, LoadsAgainAfterAFailureAndThenNoMore) {
    loads = 0;
    TypeInfoHolder holder([](ITypeInfo** info) noexcept {
        return ++loads <= 3 ? TYPE_E_CANTLOADLIBRARY : Load(info);
    });
    const ComPtr<Texts> texts = platform::MakeObject<Texts>(holder);
    platform::WideString label = TEXT("LABEL");
    LPOLESTR name = label.data();
    DISPID id = 0;
    ComPtr<ITypeInfo> info;
    for (const HRESULT expected : {TYPE_E_CANTLOADLIBRARY, S_OK, S_OK}) {
        EXPECT_EQ(Ask(*texts, 1, kCall, {text_}).result, expected);
        EXPECT_EQ(holder.GetTypeInfo(0, info.Put()), expected);
        EXPECT_EQ(holder.GetIDsOfNames(IID{}, &name, 1, &id), expected);
    }
    EXPECT_EQ(loads, 4);
}

TEST_F(TypeInfoHolderTest, KnowsNamesAndRefusesMisuse) {
    platform::WideString words[] = {TEXT("Values"), TEXT("M"), TEXT("b"), TEXT("pLAIN"),
                                    TEXT("Plai")};
    LPOLESTR names[5];
    for (int i = 0; i < 5; ++i) names[i] = words[i].data();
    DISPID ids[3] = {};
    const struct {
        int first;
        UINT count;
        HRESULT result;
        DISPID ids[3];
    } kNames[] = {{0, 1, S_OK, {3}},
                  {0, 3, S_OK, {3, 13, 2}},
                  {3, 1, S_OK, {6}},
                  {4, 1, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN}}};
    for (const auto& c : kNames) {
        EXPECT_EQ(holder_.GetIDsOfNames(IID{}, &names[c.first], c.count, ids), c.result);
        EXPECT_TRUE(std::equal(ids, ids + c.count, c.ids)) << words[c.first].size();
    }
    const IID other = platform::InterfaceId<ITexts>();
    EXPECT_EQ(holder_.GetIDsOfNames(other, names, 1, ids), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(holder_.GetIDsOfNames(IID{}, nullptr, 1, ids), E_POINTER);
    DISPPARAMS none{}, noArguments{nullptr, nullptr, 1, 0}, noNames{nullptr, nullptr, 0, 1};
    const auto invoke = [&](REFIID id, DISPPARAMS* parameters) {
        return Object().Invoke(1, id, 0, kCall, parameters, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(invoke(other, &none), DISP_E_UNKNOWNINTERFACE);
    for (DISPPARAMS* each : {static_cast<DISPPARAMS*>(nullptr), &noArguments, &noNames}) {
        EXPECT_EQ(invoke(IID{}, each), E_INVALIDARG);
    }
    UINT count = 0;
    ComPtr<ITypeInfo> first, again;
    EXPECT_EQ(holder_.GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(holder_.GetTypeInfo(1, first.Put()), DISP_E_BADINDEX);
    EXPECT_EQ(holder_.GetTypeInfo(0, nullptr), E_POINTER);
    EXPECT_EQ(holder_.GetTypeInfo(0, first.Put()), S_OK);
    EXPECT_EQ(holder_.GetTypeInfo(0, again.Put()), S_OK);
    EXPECT_EQ(first.Get(), again.Get()) << "loaded once";
}

// Members are met first, and the maps grow, while another thread looks them up.
TEST_F(TypeInfoHolderTest, ServesTwoThreads) {
    std::atomic<int> ready = 0;
    const auto work = [&](DISPID step) {
        ++ready;
        while (ready < 2) std::this_thread::yield();
        for (DISPID i = 0; i < 60; ++i) {
            const DISPID member = (i * step) % 13;
            const std::string shown = Ask(Object(), member, kCall | kGet | kPut, {text_}).shown;
            EXPECT_EQ(shown, member == 1 ? "1!" : member == 8 ? "1" : shown);
        }
    };
    std::thread other(work, 5);
    work(1);
    other.join();
}

TEST_F(TypeInfoHolderTest, FailsWithoutMemoryAndRecovers) {
    VARIANT text = text_;
    DISPPARAMS parameters{&text, nullptr, 1, 0};
    platform::WideString label = TEXT("Label");
    LPOLESTR name = label.data();
    for (const DISPID member : {2, 9, 0}) {  // a number, an object, names alone
        const auto work = [&] {
            TypeInfoHolder holder(Load);
            ComPtr<Texts> texts;
            texts.Attach(new (std::nothrow) Texts(holder));
            if (!texts) return;
            const auto call = [&] {
                UniqueVariant result;
                DISPID id = 0;
                if (member == 0) return holder.GetIDsOfNames(IID{}, &name, 1, &id);
                return holder.Invoke(static_cast<ITexts*>(texts.Get()), member, IID{}, kGet,
                                     &parameters, result.Change(), nullptr, nullptr);
            };
            const HRESULT first = call();
            const bool mayFail = bag_test::HasNewFailed();
            EXPECT_TRUE(first == S_OK || (mayFail && first == E_OUTOFMEMORY)) << std::hex << first;
            EXPECT_EQ(call(), S_OK) << "nothing is remembered wrongly";
        };
        work();  // What is made at the first use only is made now.
        const auto failures = bag_test::FailEachNew(work, bag_test::Requests::Nothrow);
        EXPECT_GE(failures, 3u);
    }
}

TEST_F(TypeInfoHolderTest, TellsObjectsFromTexts) {
    alignas(8) const WCHAR aligned[] = TEXT("a");
    alignas(8) const WCHAR zeros[8] = {};
    const void* ownTable[4] = {zeros, zeros, zeros, zeros};
    const void* notCode = ownTable;
    EXPECT_TRUE(platform::IsObjectPointer(&Object()));
    for (const void* each :
         std::initializer_list<const void*>{nullptr, aligned, aligned + 1, zeros, &notCode}) {
        EXPECT_FALSE(platform::IsObjectPointer(each));
    }
}

}  // namespace
}  // namespace AUX
