// Every member of every dual interface, called by its name as a script does, and through the table.

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include "objects/root_object.h"
#include "objects/value_objects.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"
#include "tests/objects/host_objects.h"
#include "tests/objects/table_call.h"
#include "tests/support/case_table.h"
#include "tests/support/test_profile.h"

namespace {

using namespace AUX;
using objects_test::TableCall;
using platform::ComPtr;
using platform::FromUtf8;
using platform::ToUtf8;
using platform::UniqueBstr;
using platform::UniqueVariant;

HRESULT LoadFamilyTypes(ITypeLib** library) noexcept {
    return LoadTypeLib(FromUtf8(FAMILY_TYPES).c_str(), library);
}

std::string TextOf(BSTR text) { return ToUtf8({text ? text : TEXT(""), SysStringLen(text)}); }

std::string Show(const VARIANT& value) {
    std::ostringstream out;
    switch (value.vt) {
        case VT_EMPTY:
            break;
        case VT_BOOL:
            return value.boolVal ? "true" : "false";
        case VT_BSTR:
            out << '\'' << TextOf(value.bstrVal) << '\'';
            break;
        case VT_R4:
            out << value.fltVal;
            break;
        case VT_R8:
            out << value.dblVal;
            break;
        case VT_UNKNOWN:
        case VT_DISPATCH:
            return value.punkVal ? "object" : "null";
        case VT_I4:
            out << value.lVal;
            break;
        case VT_UI4:
            out << static_cast<ULONG>(value.lVal);
            break;
        default:
            out << "of type " << value.vt;
    }
    return out.str();
}

class Sink final : public platform::ComObject<IMessageSink> {
public:
    HRESULT STDMETHODCALLTYPE OnMessage(ULONG, IMessageEvent* event) noexcept override {
        last = ComPtr<IMessageEvent>(event);
        return S_OK;
    }
    ComPtr<IMessageEvent> last;
};

enum class Way { ByName, ByTable };

class FamilyCallsTest : public testing::TestWithParam<Way> {
protected:
    FamilyCallsTest() {
        EXPECT_TRUE(StartObjects(LoadFamilyTypes));
        const auto operation = platform::MakeObject<objects_test::Operation>();
        operation->Put(TEXT("Input"), CAB::Kind::Array);
        operation->Put(TEXT("Output"), CAB::Kind::Object);
        objects_["operation"] = ComPtr<IUnknown>(operation.Get());
        objects_["root"] = ComPtr<IUnknown>(&Root());
        objects_["meter"] = ComPtr<IUnknown>(platform::MakeObject<objects_test::Meter>().Get());
        objects_["step"] =
            ComPtr<IUnknown>(platform::MakeObject<objects_test::Step>(log_, 'a').Get());
        const auto sink = platform::MakeObject<Sink>();
        EXPECT_EQ(Root().GetHub(hub_.Put()), S_OK);
        EXPECT_EQ(hub_->Subscribe(sink.Get(), -1), S_OK);
        // The objects of a message are let go with it, so it is kept from inside.
        EXPECT_EQ(hub_->Fire(2, TEXT("message"), 7, 5, 40, nullptr, 50, nullptr), S_OK);
        objects_["event"] = ComPtr<IUnknown>(sink->last.Get());
        EXPECT_EQ(hub_->Unsubscribe(sink.Get()), S_OK);
    }
    ~FamilyCallsTest() override {
        objects_.clear();
        hub_.Reset();
        EndObjects();
    }

    // The value that a word of the table stands for, put where it belongs.
    void Read(const std::string& word, VARIANT& value) {
        if (word[0] == '$' || word == "null") {
            const ComPtr<IUnknown> object =
                word[0] == '$' ? objects_.at(word.substr(1)) : ComPtr<IUnknown>();
            ComPtr<IDispatch> dispatch = object.As<IDispatch>();
            value.vt = object && !dispatch ? VT_UNKNOWN : VT_DISPATCH;
            if (value.vt == VT_DISPATCH) value.pdispVal = dispatch.Detach();
            if (value.vt == VT_UNKNOWN) value.punkVal = ComPtr<IUnknown>(object).Detach();
        } else if (word[0] == '\'') {
            value.vt = VT_BSTR;
            std::string text = word.substr(1, word.size() - 2);
            for (char& letter : text) letter = letter == '_' ? ' ' : letter;
            value.bstrVal = SysAllocString(FromUtf8(text).c_str());
        } else if (word == "true" || word == "false") {
            value.vt = VT_BOOL;
            value.boolVal = ToVariantBool(word == "true");
        } else if (word.find('.') != std::string::npos) {
            value.vt = VT_R8;
            value.dblVal = std::stod(word);
        } else {
            value.vt = VT_I4;
            value.lVal = static_cast<LONG>(std::stoi(word));
        }
    }

    static HRESULT CallByName(IDispatch* object, const std::string& member,
                              std::vector<VARIANT> arguments, UniqueVariant& result) {
        platform::WideString name = FromUtf8(member);
        LPOLESTR names[] = {name.data()};
        DISPID id = 0;
        HRESULT status = object->GetIDsOfNames(IID{}, names, 1, 0, &id);
        EXPECT_EQ(status, S_OK);
        std::reverse(arguments.begin(), arguments.end());
        DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        EXCEPINFO about{};
        status = object->Invoke(id, IID{}, 0, DISPATCH_METHOD, &parameters, result.Put(), &about,
                                nullptr);
        const UniqueBstr source(about.bstrSource), text(about.bstrDescription),
            help(about.bstrHelpFile);
        return status == DISP_E_EXCEPTION ? about.scode : status;
    }

    // Calls a member; `refs` are the places that arguments such as &i4=5 stand for.
    HRESULT Call(IDispatch* object, const std::string& member, const std::string& words,
                 UniqueVariant& result) {
        struct Place {
            UniqueVariant value;
            std::string expected;
        };
        static const std::map<std::string, VARTYPE> kKinds = {
            {"i4", VT_I4}, {"ui4", VT_UI4}, {"i8", VT_I8},     {"ui8", VT_UI8},
            {"r8", VT_R8}, {"r4", VT_R4},   {"bool", VT_BOOL}, {"bstr", VT_BSTR}};
        std::vector<VARIANT> arguments;
        std::vector<std::unique_ptr<Place>> places;
        std::istringstream in(words);
        for (std::string word; in >> word;) {
            VARIANT value{};
            places.push_back(std::make_unique<Place>());
            if (word[0] == '&') {
                const std::size_t equals = word.find('=');
                places.back()->expected = word.substr(equals + 1);
                VARIANT& place = *places.back()->value.Change();
                place.vt = kKinds.at(word.substr(1, equals - 1));
                value.vt = static_cast<VARTYPE>(VT_BYREF | place.vt);
                value.byref = &place.llVal;
            } else {
                Read(word, *places.back()->value.Change());
                value = places.back()->value.Get();
            }
            arguments.push_back(value);
        }
        HRESULT status = S_OK;
        if (GetParam() == Way::ByName) {
            status = CallByName(object, member, std::move(arguments), result);
        } else {
            status = TableCall(object, member, std::move(arguments)).Make(result);
            SimplifyNumber(*result.Change());
        }
        for (const auto& place : places) {
            if (SUCCEEDED(status) && !place->expected.empty()) {
                EXPECT_EQ(Show(place->value.Get()), place->expected);
            }
        }
        return status;
    }

    // The members of an object's dual interface, as "IFace.Member".
    static std::set<std::string> MembersOf(IDispatch* object, std::string& face) {
        std::set<std::string> members;
        ComPtr<ITypeInfo> info;
        if (FAILED(object->GetTypeInfo(0, 0, info.Put()))) return members;
        UniqueBstr name;
        EXPECT_EQ(info->GetDocumentation(MEMBERID_NIL, name.Put(), nullptr, nullptr, nullptr),
                  S_OK);
        face = TextOf(name.Get());
        FUNCDESC* function = nullptr;
        for (UINT i = 0; SUCCEEDED(info->GetFuncDesc(i, &function)); ++i) {
            constexpr int kInherited = 7 * sizeof(void*);
            UniqueBstr member, help;
            EXPECT_EQ(
                info->GetDocumentation(function->memid, member.Put(), help.Put(), nullptr, nullptr),
                S_OK);
            if (function->oVft >= kInherited) {
                // Numbers follow the slots, and never change.
                const auto slot = (function->oVft - kInherited) / static_cast<int>(sizeof(void*));
                EXPECT_EQ(function->memid, slot + 1) << TextOf(member.Get());
                EXPECT_GT(SysStringLen(help.Get()), 5u) << TextOf(member.Get());
                members.insert(face + "." + TextOf(member.Get()));
            }
            info->ReleaseFuncDesc(function);
        }
        return members;
    }

    /// Makes the calls of a table, and notes which members its objects have.
    void RunTable(const char* path);

    test_support::TestProfile profile_;
    std::set<std::string> wanted_, called_;
    std::string log_;
    ComPtr<IMessageHub> hub_;
    std::map<std::string, ComPtr<IUnknown>> objects_;
};

// Calls each member through the table, with zeros and nulls for all arguments.
void CallWithNulls(IDispatch* object) {
    // Colours have codes of their own, and one place of several is enough to be given something.
    static const std::map<std::string, HRESULT> kOtherCodes = {
        {"GetStandardPaper", S_OK}, {"GetComponents", S_OK},     {"GetRGB", E_INVALIDARG},
        {"GetCMYK", E_INVALIDARG},  {"IsSpecial", E_INVALIDARG}, {"GetGray", E_INVALIDARG}};
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(object->GetTypeInfo(0, 0, info.Put()), S_OK);
    FUNCDESC* function = nullptr;
    for (UINT i = 0; SUCCEEDED(info->GetFuncDesc(i, &function)); ++i) {
        constexpr int kInherited = 7 * sizeof(void*), kMost = 12;
        VARTYPE kinds[kMost];
        VARIANT zero{};
        VARIANTARG* arguments[kMost];
        const VARTYPE given = function->elemdescFunc.tdesc.vt;
        bool hasPlace = given != VT_VOID && given != VT_HRESULT;
        const int count = function->cParams + (hasPlace ? 1 : 0);
        for (int k = 0; k < count; ++k) {
            const bool isParameter = k < function->cParams;
            const ELEMDESC* parameter = isParameter ? &function->lprgelemdescParam[k] : nullptr;
            const VARTYPE kind = parameter ? parameter->tdesc.vt : VARTYPE{VT_I8};
            const bool isOwnForm = kind == VT_R4 || kind == VT_R8 || kind == VT_VARIANT;
            kinds[k] = isOwnForm ? kind : VARTYPE{VT_I8};
            arguments[k] = &zero;
            if (parameter && (parameter->paramdesc.wParamFlags & PARAMFLAG_FOUT)) hasPlace = true;
        }
        UniqueBstr name;
        UINT names = 0;
        EXPECT_EQ(info->GetNames(function->memid, name.Put(), 1, &names), S_OK);
        const std::string member = TextOf(name.Get());
        SCOPED_TRACE(member);
        if (function->oVft >= kInherited) {
            VARIANT result{};
            EXPECT_EQ(DispCallFunc(object, static_cast<ULONG_PTR>(function->oVft), CC_STDCALL,
                                   VT_I4, static_cast<UINT>(count), kinds, arguments, &result),
                      S_OK);
            const auto other = kOtherCodes.find(member);
            if (hasPlace) {
                EXPECT_EQ(result.lVal, other == kOtherCodes.end() ? E_POINTER : other->second);
            }
        }
        info->ReleaseFuncDesc(function);
    }
}

void FamilyCallsTest::RunTable(const char* path) {
    for (const auto& row : test_support::ReadCases(path, 3)) {
        const std::string target = ToUtf8(row[0]), expected = ToUtf8(row[2]);
        SCOPED_TRACE(testing::Message() << target << ' ' << ToUtf8(row[1]));
        // What is refused to a caller by name is not to a compiled one.
        if (GetParam() == Way::ByTable && expected == "refused") continue;
        const std::size_t dot = target.find('.');
        const std::string member = target.substr(dot + 1);
        const ComPtr<IDispatch> object = objects_[target.substr(0, dot)].As<IDispatch>();
        ASSERT_TRUE(object);
        std::string face;
        wanted_.merge(MembersOf(object.Get(), face));
        called_.insert(face + "." + member);
        UniqueVariant result;
        const HRESULT status = Call(object.Get(), member, ToUtf8(row[1]), result);
        if (expected == "refused") {
            EXPECT_TRUE(FAILED(status));
        } else if (expected[0] == '!') {
            EXPECT_EQ(status, static_cast<HRESULT>(std::stoul(expected.substr(1), nullptr, 16)));
        } else if (expected[0] == '$') {
            ASSERT_TRUE(SUCCEEDED(status));
            ASSERT_EQ(Show(result.Get()), "object");
            objects_[expected.substr(1)] = ComPtr<IUnknown>(result.Get().punkVal);
        } else {
            EXPECT_TRUE(SUCCEEDED(status)) << std::hex << status;
            if (expected != "*") {
                EXPECT_EQ(Show(result.Get()), expected);
            }
        }
    }
}

TEST_P(FamilyCallsTest, EachMemberGivesWhatTheTablesTellAndTakesNulls) {
    objects_["template"] = objects_test::StreamOf(
        R"(<CabTemplate version="1.0"><Root id="Shape" type="Dictionary" itemSet="Page"/>)"
        R"(<ItemSet id="Page"><Item id="width" type="Int" defVal="210"/></ItemSet></CabTemplate>)");
    objects_["stream"] = objects_test::StreamOf("some bytes");
    RunTable(FAMILY_CALLS);
    RunTable(BAG_CALLS);
    if (GetParam() == Way::ByTable) return;
    for (const std::string& member : called_) wanted_.erase(member);
    for (const std::string& member : wanted_) ADD_FAILURE() << member << " is called by no case";
    for (const auto& [name, object] : objects_) {
        SCOPED_TRACE(name);
        const ComPtr<IDispatch> dispatch = object.As<IDispatch>();
        ComPtr<ITypeInfo> info;
        if (dispatch && SUCCEEDED(dispatch->GetTypeInfo(0, 0, info.Put()))) {
            CallWithNulls(dispatch.Get());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Clients, FamilyCallsTest, testing::Values(Way::ByName, Way::ByTable),
                         [](const auto& each) {
                             return each.param == Way::ByName ? "ByName" : "ByTable";
                         });

}  // namespace
