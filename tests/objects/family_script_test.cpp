// The system's own script engine over the family. Only where there is one.

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>

#include "objects/root_object.h"
#include "platform/com_library.h"
#include "platform/text.h"
#include "platform/unique_bstr.h"
#include "tests/objects/host_objects.h"
#include "tests/support/test_profile.h"
//
#include <activscp.h>

namespace {

using platform::ComPtr;
using platform::FromUtf8;
using platform::WideString;

constexpr CLSID kEngine = {
    0xF414C260, 0x6AC0, 0x11CF, {0xB6, 0xD1, 0x00, 0xAA, 0x00, 0xBB, 0xBB, 0x58}};

/// Gives the script its objects, and keeps what it says of its first error.
class Site final : public platform::ComObject<IActiveScriptSite> {
public:
    HRESULT STDMETHODCALLTYPE GetLCID(LCID*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item,
                                          ITypeInfo** info) noexcept override {
        if (info) *info = nullptr;
        if (!(wanted & SCRIPTINFO_IUNKNOWN)) return S_OK;
        *item = ComPtr<IUnknown>(objects.at(name)).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnScriptTerminate(const VARIANT*,
                                                const EXCEPINFO*) noexcept override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError* told) noexcept override {
        EXCEPINFO about{};
        DWORD context = 0;
        ULONG line = 0;
        LONG place = 0;
        (void)told->GetExceptionInfo(&about);
        (void)told->GetSourcePosition(&context, &line, &place);
        const platform::UniqueBstr text(about.bstrDescription), source(about.bstrSource),
            help(about.bstrHelpFile);
        error = "line " + std::to_string(line + 1) + ": ";
        if (text) error += platform::ToUtf8(text.Get());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnEnterScript() noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnLeaveScript() noexcept override { return S_OK; }

    std::map<WideString, ComPtr<IUnknown>> objects;
    std::string error;
};

/// Runs a script. \param log  Gets what it does to its steps.
void RunScript(const char* file, std::string& log) {
    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    ASSERT_TRUE(AUX::StartObjects([](ITypeLib** library) noexcept {
        return LoadTypeLib(FromUtf8(FAMILY_TYPES).c_str(), library);
    }));
    const LONG before = AUX::LiveObjects();
    {
        void* made = nullptr;
        ASSERT_EQ(CoCreateInstance(kEngine, nullptr, CLSCTX_INPROC_SERVER,
                                   platform::InterfaceId<IActiveScript>(), &made),
                  S_OK);
        ComPtr<IActiveScript> engine;
        engine.Attach(static_cast<IActiveScript*>(made));
        ASSERT_EQ(engine->QueryInterface(platform::InterfaceId<IActiveScriptParse>(), &made), S_OK);
        ComPtr<IActiveScriptParse> parser;
        parser.Attach(static_cast<IActiveScriptParse*>(made));
        const auto site = platform::MakeObject<Site>();
        site->objects = {
            {TEXT("root"), ComPtr<IUnknown>(&AUX::Root())},
            {TEXT("meter"), ComPtr<IUnknown>(platform::MakeObject<objects_test::Meter>().Get())},
            {TEXT("step"),
             ComPtr<IUnknown>(platform::MakeObject<objects_test::Step>(log, 'a').Get())}};
        ASSERT_EQ(engine->SetScriptSite(site.Get()), S_OK);
        ASSERT_EQ(parser->InitNew(), S_OK);
        for (const auto& [name, object] : site->objects) {
            ASSERT_EQ(engine->AddNamedItem(name.c_str(), SCRIPTITEM_ISVISIBLE), S_OK);
        }
        std::ifstream text(std::string(SCRIPTS) + file, std::ios::binary);
        const std::string script{std::istreambuf_iterator<char>(text), {}};
        ASSERT_FALSE(script.empty());
        EXPECT_EQ(engine->SetScriptState(SCRIPTSTATE_STARTED), S_OK);
        EXPECT_EQ(parser->ParseScriptText(FromUtf8(script).c_str(), nullptr, nullptr, nullptr, 0, 0,
                                          0, nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(site->error, "");
        EXPECT_EQ(engine->Close(), S_OK);
    }
    EXPECT_EQ(AUX::LiveObjects(), before) << "the engine let all of them go";
    AUX::EndObjects();
    CoUninitialize();
}

TEST(FamilyScript, UsesTheWholeFamily) {
    std::string log;
    RunScript("family.js", log);
    EXPECT_EQ(log, "-a-a");
}

TEST(FamilyScript, UsesBags) {
    const test_support::TestProfile profile;
    std::string log;
    RunScript("bags.js", log);
}

}  // namespace
