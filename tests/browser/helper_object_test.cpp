// The add-in's class in both of its roles, as a browser uses it.

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "browser/browser_helper_object.h"
#include "browser/explorer_test.h"
#include "browser/screen_scale.h"
#include "browser/toolbar_state.h"
#include "platform/com_object.h"
#include "platform/registry.h"
#include "platform/testing.h"
#include "tests/support/com_rules.h"
#include "tests/support/test_profile.h"

namespace {

using platform::ComPtr;
using platform::InterfaceId;
using platform::WideString;

/// The browser's events. Keeps one sink at a time.
class Events final : public platform::ComObject<platform::NotImplemented<IConnectionPoint>> {
public:
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override {
        void* found = nullptr;
        EXPECT_EQ(sink->QueryInterface(platform::kBrowserEvents, &found), S_OK);
        sink_.Attach(static_cast<IDispatch*>(found));
        *cookie = 7;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override {
        EXPECT_EQ(cookie, 7u);
        sink_.Reset();
        return S_OK;
    }
    [[nodiscard]] IDispatch* Sink() const { return sink_.Get(); }
    HRESULT Fire(DISPID event) const {
        DISPPARAMS none = {};
        return sink_->Invoke(event, IID{}, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
    }

private:
    ComPtr<IDispatch> sink_;
};

/// A browser of one tab. What is asked of it is noted in `log`.
class TabBrowser final
    : public platform::ComObject<platform::NotImplemented<IWebBrowser2>, IServiceProvider,
                                 platform::NotImplemented<IConnectionPointContainer>> {
public:
    HRESULT STDMETHODCALLTYPE ShowBrowserBar(VARIANT* classId, VARIANT* shows,
                                             VARIANT* size) noexcept override {
        EXPECT_EQ(classId->vt, VT_BSTR);
        EXPECT_EQ(WideString(classId->bstrVal), kAddinClassText);
        EXPECT_EQ(shows->vt, VT_BOOL);
        EXPECT_EQ(size, nullptr);
        log += shows->boolVal ? "show " : "hide ";
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id,
                                           void** object) noexcept override {
        const bool isKnown = IsEqualGUID(service, platform::kTopLevelBrowserService) ||
                             IsEqualGUID(service, platform::kWebBrowserService);
        return isKnown ? QueryInterface(id, object) : E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID id,
                                                  IConnectionPoint** point) noexcept override {
        *point = nullptr;
        if (!IsEqualIID(id, platform::kBrowserEvents)) return CONNECT_E_NOCONNECTION;
        *point = ComPtr<IConnectionPoint>(events.Get()).Detach();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override {
        *address = nullptr;
        onAddress();
        return E_FAIL;
    }

    std::string log;
    std::function<void()> onAddress = [] {};
    const ComPtr<Events> events = platform::MakeObject<Events>();
};

/// The bar that bands are put into.
class BandSite final : public platform::ComObject<IOleWindow, IServiceProvider, IInputObjectSite> {
public:
    BandSite(ComPtr<TabBrowser> browser, HWND window)
        : browser_(std::move(browser)), window_(window) {}

    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) noexcept override {
        *window = window_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id,
                                           void** object) noexcept override {
        return browser_ ? browser_->QueryService(service, id, object) : E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE OnFocusChangeIS(IUnknown*, BOOL) noexcept override { return S_OK; }

private:
    ComPtr<TabBrowser> browser_;
    HWND window_;
};

ComPtr<QVDIEaddinBHO> MakeHelper() {
    void* made = nullptr;
    EXPECT_EQ(MakeBrowserHelperObject(InterfaceId<IQVDIEaddinBHO>(), &made), S_OK);
    ComPtr<QVDIEaddinBHO> helper;
    helper.Attach(static_cast<QVDIEaddinBHO*>(static_cast<IQVDIEaddinBHO*>(made)));
    return helper;
}

/// The window of a bar, on the calling thread. Its class belongs to the program and stays.
HWND MakeBarWindow() {
    WNDCLASSEXW info = {};
    info.cbSize = sizeof info;
    info.lpfnWndProc = DefWindowProcW;
    info.lpszClassName = TEXT("QuvadaBar");
    RegisterClassExW(&info);  // At the first time.
    return CreateWindowExW(0, info.lpszClassName, nullptr, WS_POPUP, 0, 0, 200, 40, nullptr,
                           nullptr, nullptr, nullptr);
}

class HelperObjectTest : public testing::Test {
protected:
    void SetUp() override {
        SharedToolbarState().SetShown(1);
        SharedToolbarState().SetActive(nullptr);
        parent_ = MakeBarWindow();
        ASSERT_TRUE(parent_);
    }
    void TearDown() override {
        DestroyWindow(parent_);
        EXPECT_FALSE(IsModuleLocked()) << "an object has not ended";
    }
    ComPtr<BandSite> Bar(const ComPtr<TabBrowser>& browser) {
        return platform::MakeObject<BandSite>(browser, parent_);
    }

    const test_support::TestProfile profile_;
    HWND parent_ = nullptr;
};

TEST_F(HelperObjectTest, KeepsTheRulesOfObjects) {
    const ComPtr<QVDIEaddinBHO> helper = MakeHelper();
    EXPECT_TRUE(IsModuleLocked());
    test_support::ExpectComRules(
        static_cast<IQVDIEaddinBHO*>(helper.Get()),
        {InterfaceId<IQVDIEaddinBHO>(), InterfaceId<IObjectWithSite>(), InterfaceId<IOleWindow>(),
         InterfaceId<IDockingWindow>(), InterfaceId<IDeskBand>(), InterfaceId<IInputObject>(),
         InterfaceId<IDispatch>(), InterfaceId<IDocHostUIHandler>()});
    void* none = &none;
    EXPECT_EQ(helper->QueryInterface(platform::kBrowserEvents, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    const ComPtr<TabBrowser> browser = platform::MakeObject<TabBrowser>();
    ASSERT_EQ(helper->SetSite(static_cast<IOleWindow*>(Bar(browser).Get())), S_OK);
    test_support::ExpectComRules(browser->events->Sink(),
                                 {InterfaceId<IDispatch>(), platform::kBrowserEvents});
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

TEST_F(HelperObjectTest, TellsTheBrowserToMakeTheBarAndThenWhetherToShowIt) {
    for (const DWORD shown : {0u, 1u, 5u}) {
        SharedToolbarState().SetShown(shown);
        const ComPtr<TabBrowser> browser = platform::MakeObject<TabBrowser>();
        const ComPtr<QVDIEaddinBHO> helper = MakeHelper();
        EXPECT_EQ(helper->SetSite(static_cast<IWebBrowser2*>(browser.Get())), S_OK);
        EXPECT_EQ(browser->log, shown ? "show show " : "show hide ");
        EXPECT_FALSE(browser->events->Sink());
        void* site = &site;
        EXPECT_EQ(helper->GetSite(InterfaceId<IUnknown>(), &site), E_FAIL);
        EXPECT_EQ(site, nullptr);
        HWND window = parent_;
        EXPECT_EQ(helper->GetWindow(&window), S_OK);
        EXPECT_EQ(window, nullptr);
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    }
}

TEST_F(HelperObjectTest, IsTheToolbarInABarUntilItIsClosed) {
    const ComPtr<TabBrowser> browser = platform::MakeObject<TabBrowser>();
    const ComPtr<QVDIEaddinBHO> helper = MakeHelper();
    const ComPtr<BandSite> bar = Bar(browser);
    ASSERT_EQ(helper->SetSite(static_cast<IOleWindow*>(bar.Get())), S_OK);
    HWND window = nullptr;
    EXPECT_EQ(helper->GetWindow(nullptr), E_INVALIDARG);
    EXPECT_EQ(helper->GetWindow(&window), S_OK);
    EXPECT_EQ(GetParent(window), parent_);
    void* site = nullptr;
    EXPECT_EQ(helper->GetSite(InterfaceId<IInputObjectSite>(), &site), S_OK);
    ComPtr<IInputObjectSite> held;
    held.Attach(static_cast<IInputObjectSite*>(site));
    EXPECT_EQ(helper->SetSite(static_cast<IOleWindow*>(bar.Get())), E_FAIL) << "still connected";

    DESKBANDINFO info = {};
    info.dwMask = 0x7F;
    info.wszTitle[0] = 'x';
    info.dwModeFlags = 9;
    EXPECT_EQ(helper->GetBandInfo(0, 0, &info), S_OK);
    EXPECT_EQ(helper->GetBandInfo(0, 0, nullptr), S_OK);
    EXPECT_EQ(info.ptMinSize.x, Scale(41));
    EXPECT_GE(info.ptMinSize.y, Scale(16));
    EXPECT_EQ(info.ptActual.y, info.ptMinSize.y);
    EXPECT_TRUE(info.ptMaxSize.x == -1 && info.ptMaxSize.y == -1 && info.ptIntegral.x == -1);
    EXPECT_TRUE(info.wszTitle[0] == 0 && info.dwModeFlags == 0 && info.dwMask == 0x3F);
    DESKBANDINFO untouched = {};
    untouched.ptMinSize.x = 3;
    EXPECT_EQ(helper->GetBandInfo(0, 0, &untouched), S_OK);
    EXPECT_EQ(untouched.ptMinSize.x, 3);

    EXPECT_EQ(helper->ShowDW(FALSE), S_OK);
    EXPECT_EQ(SharedToolbarState().IsShown(), 0u);
    EXPECT_TRUE(IsWindow(window)) << "the browser hides it";
    EXPECT_EQ(helper->HasFocusIO(), S_OK);
    EXPECT_EQ(helper->TranslateAcceleratorIO(nullptr), S_FALSE);
    EXPECT_EQ(helper->ResizeBorderDW(nullptr, nullptr, FALSE), E_NOTIMPL);
    EXPECT_EQ(helper->HideUI(), E_NOTIMPL);
    EXPECT_EQ(helper->CloseDW(0), S_OK);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(helper->CloseDW(0), S_OK);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
    EXPECT_FALSE(browser->events->Sink());
    for (int i = 0; i < 2; ++i) {
        const HWND before = i ? window : nullptr;
        EXPECT_EQ(helper->SetSite(static_cast<IOleWindow*>(bar.Get())), S_OK) << "once more";
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
        EXPECT_TRUE(!before || !IsWindow(before)) << "a window is left of the last bar";
        EXPECT_EQ(helper->GetWindow(&window), S_OK);
    }
}

TEST_F(HelperObjectTest, MayBeGivenUpWhileItConverts) {
    const platform::testing::MessageBoxRecorder messages;
    const platform::testing::SaveDialogScript cancelled(std::nullopt);
    const ComPtr<TabBrowser> browser = platform::MakeObject<TabBrowser>();
    ComPtr<QVDIEaddinBHO> helper = MakeHelper();
    ASSERT_EQ(helper->SetSite(static_cast<IOleWindow*>(Bar(browser).Get())), S_OK);
    HWND window = nullptr;
    ASSERT_EQ(helper->GetWindow(&window), S_OK);
    browser->onAddress = [&] {
        EXPECT_EQ(helper->CloseDW(0), S_OK);
        EXPECT_EQ(helper->SetSite(nullptr), S_OK);
        helper.Reset();
    };
    SendMessageW(window, WM_COMMAND, 1, 0);
    EXPECT_FALSE(helper);
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(HelperObjectTest, DoesWithoutWhatASiteLacks) {
    const ComPtr<QVDIEaddinBHO> helper = MakeHelper();
    HWND window = nullptr;
    const ComPtr<BandSite> noBrowser =
        platform::MakeObject<BandSite>(ComPtr<TabBrowser>(), parent_);
    EXPECT_EQ(helper->SetSite(static_cast<IOleWindow*>(noBrowser.Get())), S_OK);
    const ComPtr<BandSite> noWindow =
        platform::MakeObject<BandSite>(platform::MakeObject<TabBrowser>(), nullptr);
    EXPECT_EQ(helper->SetSite(static_cast<IOleWindow*>(noWindow.Get())), S_OK);
    EXPECT_EQ(helper->GetWindow(&window), S_OK);
    EXPECT_EQ(window, nullptr);
    const ComPtr<Events> neither = platform::MakeObject<Events>();
    EXPECT_EQ(helper->SetSite(static_cast<IConnectionPoint*>(neither.Get())), S_OK);
    EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

TEST_F(HelperObjectTest, ATabThatComesToTheFrontTakesOverTheFlag) {
    const ComPtr<TabBrowser> browsers[] = {platform::MakeObject<TabBrowser>(),
                                           platform::MakeObject<TabBrowser>()};
    const ComPtr<QVDIEaddinBHO> helpers[] = {MakeHelper(), MakeHelper()};
    for (int i : {0, 1}) {
        const ComPtr<BandSite> bar = Bar(browsers[i]);
        ASSERT_EQ(helpers[i]->SetSite(static_cast<IOleWindow*>(bar.Get())), S_OK);
    }
    const auto fire = [&](int tab, DISPID event) {
        EXPECT_EQ(browsers[tab]->events->Fire(event), S_OK);
        return std::exchange(browsers[tab]->log, {});
    };
    EXPECT_EQ(fire(0, DISPID_WINDOWSTATECHANGED), "") << "nobody was active before";
    EXPECT_EQ(fire(0, DISPID_WINDOWSTATECHANGED), "") << "it was itself";
    EXPECT_EQ(helpers[0]->ShowDW(FALSE), S_OK);
    EXPECT_EQ(fire(1, 259), "") << "another event";
    EXPECT_EQ(fire(1, DISPID_WINDOWSTATECHANGED), "hide ");
    EXPECT_EQ(helpers[1]->ShowDW(TRUE), S_OK);
    EXPECT_EQ(fire(0, DISPID_WINDOWSTATECHANGED), "show ");
    // The end of any band leaves no band active.
    EXPECT_EQ(helpers[1]->CloseDW(0), S_OK);
    EXPECT_EQ(SharedToolbarState().GetActive(), nullptr);
    for (const auto& helper : helpers) EXPECT_EQ(helper->SetSite(nullptr), S_OK);
}

TEST_F(HelperObjectTest, TabsOnTheirOwnThreadsShareTheFlag) {
    const auto tab = [](int rounds) {
        const HWND parent = MakeBarWindow();
        const ComPtr<TabBrowser> browser = platform::MakeObject<TabBrowser>();
        for (int i = 0; i < rounds; ++i) {
            const ComPtr<QVDIEaddinBHO> helper = MakeHelper();
            const auto bar = platform::MakeObject<BandSite>(browser, parent);
            EXPECT_EQ(helper->SetSite(static_cast<IOleWindow*>(bar.Get())), S_OK);
            EXPECT_EQ(helper->ShowDW(i % 2), S_OK);
            EXPECT_EQ(browser->events->Fire(DISPID_WINDOWSTATECHANGED), S_OK);
            EXPECT_EQ(helper->CloseDW(0), S_OK);
            EXPECT_EQ(helper->SetSite(nullptr), S_OK);
        }
        DestroyWindow(parent);
    };
    std::thread other(tab, 30);
    tab(30);
    other.join();
}

TEST_F(HelperObjectTest, RefusesExplorer) {
    const struct {
        const WCHAR* title;
        bool isExplorer;
    } kCases[] = {
        {TEXT("explorer.exe"), true},     {TEXT("C:\\Windows\\EXPLORER.EXE"), true},
        {TEXT("\\explorer.exe"), true},   {TEXT("myexplorer.exe"), false},
        {TEXT("iexplore.exe"), false},    {TEXT(""), false},
        {TEXT("explorer.exe /e"), false}, {TEXT("xxplorer.exe"), false},
    };
    for (const auto& c : kCases) EXPECT_EQ(IsExplorerTitle(c.title), c.isExplorer);
    if (!platform::testing::kOwnsTheSystem) return;
    platform::testing::SetStartTitle(TEXT("C:\\Windows\\explorer.exe"));
    const ComPtr<QVDIEaddinBHO> helper = MakeHelper();
    const ComPtr<TabBrowser> browser = platform::MakeObject<TabBrowser>();
    EXPECT_EQ(helper->SetSite(static_cast<IWebBrowser2*>(browser.Get())), E_NOTIMPL);
    EXPECT_EQ(helper->ShowDW(FALSE), E_NOTIMPL);
    EXPECT_EQ(helper->CloseDW(0), E_NOTIMPL);
    platform::testing::SetStartTitle({});
    EXPECT_EQ(browser->log, "");
    EXPECT_EQ(SharedToolbarState().IsShown(), 1u);
}

TEST(ToolbarState, IsKeptInTheUsersRegistry) {
    const test_support::TestProfile profile;
    constexpr WCHAR kKey[] = TEXT("Software\\Norvane Systems\\Quvada 5\\IE Addin");
    const auto write = [&](DWORD type, DWORD number) {
        platform::RegistryKey key;
        RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                        nullptr);
        RegSetValueExW(key.Get(), TEXT("ShowToolbar"), 0, type,
                       reinterpret_cast<const BYTE*>(&number), sizeof number);
    };
    const auto load = [](DWORD change) {
        ToolbarState state;
        EXPECT_TRUE(state.Load());
        const DWORD shown = state.IsShown();
        state.SetShown(change);
        state.Store();
        return shown;
    };
    EXPECT_EQ(load(0), 1u) << "no value";
    EXPECT_EQ(load(7), 0u);
    EXPECT_EQ(load(7), 7u) << "any number is kept";
    write(REG_BINARY, 0);
    EXPECT_EQ(load(1), 1u) << "no number";
}

}  // namespace
