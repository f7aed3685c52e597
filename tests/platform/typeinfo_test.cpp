#include "platform/typeinfo.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

#include "platform/com_ptr.h"
#include "platform/registry.h"
#include "platform/resources.h"
#include "platform/testing.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

constexpr GUID kLibrary{
    0x0E2C6E60, 0x53A6, 0x4D9C, {0x9B, 0x0F, 0x5A, 0x2F, 0x1B, 0x7C, 0x0D, 0x11}};
constexpr GUID kBrowserLibrary{
    0xEAB22AC0, 0x30C1, 0x11CF, {0xA7, 0xEB, 0x00, 0x00, 0xC0, 0x5B, 0xAE, 0x0B}};
constexpr GUID kBrowserEvents{
    0x34A715A0, 0x6587, 0x11D0, {0x92, 0x4A, 0x00, 0x20, 0xAF, 0xC7, 0xAC, 0x4D}};
// What the functions of IUnknown and IDispatch have for ids.
constexpr MEMBERID kInheritedIds = 0x60000000;
constexpr MEMBERID kOwnIds = 0x60020000;

std::string Text(const UniqueBstr& text) {
    return text ? ToUtf8(WideView(text.Get(), SysStringLen(text.Get()))) : "-";
}

/// Writes all that type information tells, a line a thing.
class Description {
public:
    std::string Of(ITypeLib* library) {
        UniqueBstr name, help;
        TLIBATTR* attributes = nullptr;
        EXPECT_EQ(library->GetDocumentation(-1, name.Put(), help.Put(), nullptr, nullptr), S_OK);
        EXPECT_EQ(library->GetLibAttr(&attributes), S_OK);
        out_ << "library " << Text(name) << " '" << Text(help) << "' " << attributes->wMajorVerNum
             << '.' << attributes->wMinorVerNum << " language " << attributes->lcid << " flags "
             << attributes->wLibFlags << " system " << attributes->syskind << '\n';
        library->ReleaseTLibAttr(attributes);
        for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
            ComPtr<ITypeInfo> info;
            TYPEKIND kind{};
            EXPECT_EQ(library->GetTypeInfo(i, info.Put()), S_OK);
            EXPECT_EQ(library->GetTypeInfoType(i, &kind), S_OK);
            out_ << kind << ": ";
            Of(info.Get());
            HREFTYPE other = 0;
            ComPtr<ITypeInfo> table;
            if (FAILED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &other))) continue;
            EXPECT_EQ(info->GetRefTypeInfo(other, table.Put()), S_OK);
            out_ << "  its table: ";
            Of(table.Get());
        }
        return out_.str();
    }

private:
    static std::string NameOf(ITypeInfo* info, HREFTYPE reference) {
        ComPtr<ITypeInfo> target;
        UniqueBstr name;
        EXPECT_EQ(info->GetRefTypeInfo(reference, target.Put()), S_OK);
        if (!target) return "?";
        (void)target->GetDocumentation(MEMBERID_NIL, name.Put(), nullptr, nullptr, nullptr);
        return Text(name);
    }

    static std::string Kind(ITypeInfo* info, const TYPEDESC& type) {
        if (type.vt == VT_PTR) return Kind(info, *type.lptdesc) + "*";
        return type.vt == VT_USERDEFINED ? NameOf(info, type.hreftype) : std::to_string(type.vt);
    }

    void Of(ITypeInfo* info) {
        UniqueBstr name, help;
        TYPEATTR* type = nullptr;
        EXPECT_EQ(info->GetDocumentation(MEMBERID_NIL, name.Put(), help.Put(), nullptr, nullptr),
                  S_OK);
        ASSERT_EQ(info->GetTypeAttr(&type), S_OK);
        out_ << type->typekind << ' ' << Text(name) << " '" << Text(help) << "' " << std::hex
             << type->guid.Data1 << " flags " << type->wTypeFlags << std::dec << " functions "
             << type->cFuncs << " variables " << type->cVars << " table " << type->cbSizeVft
             << '\n';
        for (UINT i = 0; i < type->cImplTypes; ++i) {
            HREFTYPE reference = 0;
            INT flags = 0;
            EXPECT_EQ(info->GetRefTypeOfImplType(i, &reference), S_OK);
            EXPECT_EQ(info->GetImplTypeFlags(i, &flags), S_OK);
            out_ << "  implements " << NameOf(info, reference) << ' ' << flags << '\n';
        }
        for (UINT i = 0; i < type->cVars; ++i) Variable(info, i);
        for (UINT i = 0; i < type->cFuncs; ++i) Function(info, i);
        info->ReleaseTypeAttr(type);
    }

    void Variable(ITypeInfo* info, UINT index) {
        VARDESC* variable = nullptr;
        ASSERT_EQ(info->GetVarDesc(index, &variable), S_OK);
        Names(info, variable->memid);
        out_ << " kind " << variable->varkind << " type "
             << Kind(info, variable->elemdescVar.tdesc);
        if (variable->varkind == VAR_CONST) out_ << " = " << variable->lpvarValue->lVal;
        out_ << '\n';
        info->ReleaseVarDesc(variable);
    }

    void Function(ITypeInfo* info, UINT index) {
        FUNCDESC* function = nullptr;
        ASSERT_EQ(info->GetFuncDesc(index, &function), S_OK);
        if (function->memid < kInheritedIds || function->memid >= kOwnIds) {
            Names(info, function->memid);
            out_ << " invoke " << function->invkind << " kind " << function->funckind << " at "
                 << function->oVft << " optional " << function->cParamsOpt << " flags "
                 << function->wFuncFlags << " gives " << Kind(info, function->elemdescFunc.tdesc)
                 << " takes";
            for (SHORT i = 0; i < function->cParams; ++i) {
                const ELEMDESC& each = function->lprgelemdescParam[i];
                out_ << ' ' << Kind(info, each.tdesc) << '/' << each.paramdesc.wParamFlags;
                if ((each.paramdesc.wParamFlags & PARAMFLAG_FHASDEFAULT) == 0) continue;
                const VARIANT& value = each.paramdesc.pparamdescex->varDefaultValue;
                out_ << '=' << value.vt << ':'
                     << (value.vt == VT_BSTR ? ToUtf8(value.bstrVal) : std::to_string(value.lVal));
            }
            out_ << '\n';
        }
        info->ReleaseFuncDesc(function);
    }

    void Names(ITypeInfo* info, MEMBERID member) {
        BSTR names[16] = {};
        UINT count = 0;
        UniqueBstr help;
        EXPECT_EQ(info->GetNames(member, names, 16, &count), S_OK);
        EXPECT_EQ(info->GetDocumentation(member, nullptr, help.Put(), nullptr, nullptr), S_OK);
        out_ << "  " << std::hex << member << std::dec;
        for (UINT i = 0; i < count; ++i) {
            const UniqueBstr name(names[i]);
            out_ << (i == 0 ? " " : ",") << Text(name);
        }
        out_ << " '" << Text(help) << "'";
    }

    std::ostringstream out_;
};

const WideString kProbe = FromUtf8(TEST_MODULES "\\probe.dll");

TEST(TypeInfo, OfOneIdlIsTheSameInBothBuilds) {
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadTypeLib(kProbe.c_str(), library.Put()), S_OK);
    std::ifstream file(PLATFORM_CASES "type_cases.txt", std::ios::binary);
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(Description().Of(library.Get()), expected.str());
}

// The default value of a key, or "-".
std::string ValueOf(const std::string& path) {
    RegistryKey key;
    WCHAR text[512] = {};
    DWORD size = sizeof text;
    const HKEY root = testing::kOwnsTheSystem ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    const WideString whole = FromUtf8("Software\\Classes\\" + path);
    if (RegOpenKeyExW(root, whole.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS) return "-";
    (void)RegQueryValueExW(key.Get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(text),
                           &size);
    return ToUtf8(text);
}

// For the user: Wine writes that to the machine's keys, which are no test's own; so the test ends
// with their removal.
TEST(TypeInfo, OfARegisteredLibraryIsFoundUntilItGoes) {
    const test_support::TestProfile profile;
    ComPtr<ITypeLib> library, found;
    WideString path = kProbe;
    ASSERT_EQ(LoadTypeLib(path.c_str(), library.Put()), S_OK);
    const std::string id = "{0E2C6E60-53A6-4D9C-9B0F-5A2F1B7C0D11}";
    const std::string calls = "Interface\\{0E2C6E61-53A6-4D9C-9B0F-5A2F1B7C0D11}";
    const std::string events = "Interface\\{0E2C6E64-53A6-4D9C-9B0F-5A2F1B7C0D11}";
    const std::pair<std::string, std::string> kKeys[] = {
        {"TypeLib\\" + id + "\\2.5", "Cases of \"types\""},
        {"TypeLib\\" + id + "\\2.5\\0\\win64", ToUtf8(path)},
        {"TypeLib\\" + id + "\\2.5\\FLAGS", "8"},
        {"TypeLib\\" + id + "\\2.5\\HELPDIR", TEST_MODULES},
        {calls, "ICalls"},
        {calls + "\\ProxyStubClsid32", "{00020424-0000-0000-C000-000000000046}"},
        {calls + "\\TypeLib", id},
        {events + "\\ProxyStubClsid32", "{00020420-0000-0000-C000-000000000046}"},
    };
    const HMODULE automation = GetModuleHandleW(TEXT("OLEAUT32.DLL"));
    auto* const registerForUser = ProcedureOf<HRESULT WINAPI(ITypeLib*, LPWSTR, LPWSTR)>(
        automation, "RegisterTypeLibForUser");
    auto* const unregisterForUser = ProcedureOf<HRESULT WINAPI(REFGUID, WORD, WORD, LCID, SYSKIND)>(
        automation, "UnRegisterTypeLibForUser");
    ASSERT_TRUE(registerForUser && unregisterForUser);
    EXPECT_EQ(LoadRegTypeLib(kLibrary, 2, 5, 0, found.Put()), TYPE_E_LIBNOTREGISTERED);
    ASSERT_EQ(registerForUser(library.Get(), path.data(), nullptr), S_OK);
    for (const auto& [key, value] : kKeys) EXPECT_EQ(ValueOf(key), value) << key;
    EXPECT_EQ(LoadRegTypeLib(kLibrary, 2, 5, 0x409, found.Put()), S_OK) << "language neutral";
    EXPECT_EQ(LoadRegTypeLib(kLibrary, 2, 3, 0, found.Put()), S_OK) << "an older one is wanted";
    EXPECT_EQ(LoadRegTypeLib(kLibrary, 2, 6, 0, found.Put()), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(LoadRegTypeLib(kLibrary, 1, 0, 0, found.Put()), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(unregisterForUser(kLibrary, 2, 5, 0, SYS_WIN64), S_OK);
    for (const auto& row : kKeys) EXPECT_EQ(ValueOf(row.first), "-") << row.first;
    EXPECT_EQ(ValueOf("TypeLib\\" + id), "-");
    EXPECT_EQ(unregisterForUser(kLibrary, 2, 5, 0, SYS_WIN64), E_INVALIDARG);
}

TEST(TypeInfo, OfWhatIsNoLibraryIsRefused) {
    const test_support::TestProfile profile;
    ComPtr<ITypeLib> library;
    const WideString copy = profile.Path(TEXT("cut.tlb"));
    EXPECT_EQ(LoadTypeLib(copy.c_str(), library.Put()), TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(LoadTypeLib((kProbe + TEXT("\\1")).c_str(), library.Put()), S_OK);
    EXPECT_EQ(LoadTypeLib((kProbe + TEXT("\\9")).c_str(), library.Put()), TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(library.Get(), nullptr);
    EXPECT_EQ(LoadTypeLib(nullptr, library.Put()), E_INVALIDARG);
    // Wine's reader takes the sizes in a library for true.
    if (!testing::kOwnsTheSystem) return;
    const ModuleHandle module(LoadLibraryExW(kProbe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    const auto bytes = ResourceBytes(module.Get(), MAKEINTRESOURCEW(1), TEXT("TYPELIB"));
    const std::string whole(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    ASSERT_GT(whole.size(), 1000u);
    for (std::size_t size = 4; size < whole.size(); ++size) {
        ASSERT_TRUE(test_support::WriteWholeFile(copy, whole.substr(0, size)));
        EXPECT_EQ(LoadTypeLib(copy.c_str(), library.Put()), TYPE_E_INVDATAREAD) << size;
    }
    for (std::size_t at = 4; at < whole.size(); at += 3) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        ASSERT_TRUE(test_support::WriteWholeFile(copy, damaged));
        if (FAILED(LoadTypeLib(copy.c_str(), library.Put()))) continue;
        for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
            ComPtr<ITypeInfo> info;
            EXPECT_EQ(library->GetTypeInfo(i, info.Put()), S_OK) << "at " << at;
        }
    }
}

TEST(TypeInfo, OfTheBrowsersEventsIsThereFromTheStart) {
    ComPtr<ITypeLib> library;
    ComPtr<ITypeInfo> events;
    ASSERT_EQ(LoadRegTypeLib(kBrowserLibrary, 1, 1, 0, library.Put()), S_OK);
    ASSERT_EQ(library->GetTypeInfoOfGuid(kBrowserEvents, events.Put()), S_OK);
    const std::pair<MEMBERID, const char*> kEvents[] = {
        {250, "BeforeNavigate2"},  {252, "NavigateComplete2"}, {253, "OnQuit"},
        {259, "DocumentComplete"}, {271, "NavigateError"},     {283, "WindowStateChanged"}};
    for (const auto& [id, name] : kEvents) {
        UniqueBstr found;
        EXPECT_EQ(events->GetDocumentation(id, found.Put(), nullptr, nullptr, nullptr), S_OK);
        EXPECT_EQ(Text(found), name);
    }
    EXPECT_EQ(library->GetTypeInfoOfGuid(kLibrary, events.Put()), TYPE_E_ELEMENTNOTFOUND);
}

}  // namespace
}  // namespace platform
