// The browser around the add-in: its tabs on their threads, its bars, its events, with the real
// module in it.

#include "host/tab.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>

#include "browser/addin_class.h"
#include "host/installation.h"
#include "host/system.h"
#include "host/tab_thread.h"
#include "platform/registry.h"
#include "platform/unique_bstr.h"
#include "tests/support/com_rules.h"
#include "tests/support/test_profile.h"

namespace host {
namespace {

using platform::ComPtr;
using platform::InterfaceId;

/// Hears a browser's events.
class Sink final : public platform::ComObject<platform::NotImplemented<IConnectionPoint>> {
public:
    // Only its identity is used: what is heard comes through the add-in.
    void* AnswersAlso(REFIID id) noexcept override {
        return IsEqualIID(id, platform::kBrowserEvents) ? this : nullptr;
    }
};

/// Toolbars that only note what is asked.
class NotedBars final : public BrowserBars {
public:
    HRESULT Show(REFCLSID classId, bool shows) override {
        if (!IsEqualGUID(classId, kAddinClassId)) throw std::bad_alloc();
        shown += shows ? "+" : "-";
        return S_FALSE;
    }
    std::string shown;
};

TEST(HostBrowserTest, KeepsTheRulesAndChecksWhatItIsGiven) {
    NotedBars bars;
    const auto browser = platform::MakeObject<Browser>(nullptr, nullptr, &bars);
    test_support::ExpectComRules(static_cast<IWebBrowser2*>(browser.Get()),
                                 {InterfaceId<IWebBrowser2>(), InterfaceId<IServiceProvider>(),
                                  InterfaceId<IConnectionPointContainer>()});

    const auto show = [&](VARTYPE type, const WCHAR* text, VARIANT* flag) {
        const platform::UniqueBstr owned(SysAllocString(text));
        VARIANT classId = {};
        classId.vt = type;
        classId.bstrVal = owned.Get();
        return browser->ShowBrowserBar(&classId, flag, nullptr);
    };
    VARIANT no = {};
    no.vt = VT_BOOL;
    EXPECT_EQ(show(VT_BSTR, kAddinClassText, nullptr), S_FALSE) << "shown unless it is said";
    EXPECT_EQ(show(VT_BSTR, kAddinClassText, &no), S_FALSE);
    EXPECT_EQ(bars.shown, "+-");
    EXPECT_EQ(show(VT_I4, kAddinClassText, &no), E_INVALIDARG);
    EXPECT_EQ(show(VT_BSTR, TEXT("the toolbar"), &no), E_INVALIDARG);
    EXPECT_EQ(show(VT_BSTR, kApplicationIdText, &no), E_OUTOFMEMORY);
    EXPECT_EQ(browser->ShowBrowserBar(nullptr, &no, nullptr), E_INVALIDARG);
    browser->CloseBars();
    EXPECT_EQ(show(VT_BSTR, kAddinClassText, nullptr), E_FAIL);

    ComPtr<IConnectionPoint> events;
    EXPECT_EQ(browser->FindConnectionPoint(InterfaceId<IDispatch>(), events.Put()),
              CONNECT_E_NOCONNECTION);
    ASSERT_EQ(browser->FindConnectionPoint(platform::kBrowserEvents, events.Put()), S_OK);
    const auto sink = platform::MakeObject<Sink>();
    DWORD first = 0;
    DWORD second = 0;
    EXPECT_EQ(events->Advise(nullptr, &first), E_POINTER);
    EXPECT_EQ(events->Advise(browser.As<IServiceProvider>().Get(), &first),
              CONNECT_E_CANNOTCONNECT);
    ASSERT_EQ(events->Advise(sink.Get(), &first), S_OK);
    ASSERT_EQ(events->Advise(sink.Get(), &second), S_OK);
    EXPECT_NE(first, second);
    EXPECT_EQ(events->Unadvise(first), S_OK);
    EXPECT_EQ(events->Unadvise(first), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(events->Unadvise(second), S_OK);
    EXPECT_EQ(sink->AddRef(), 2u) << "no sink is kept";
    sink->Release();
}

/// Tabs with the module beside this program, which is registered for these tests only.
class TabTest : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(RegisterAddin(Scope::Machine, error)) << error;
    }
    void TearDown() override {
        std::string error;
        EXPECT_TRUE(UnregisterAddin(Scope::Machine, error)) << error;
    }

    const test_support::TestProfile profile_;
    const AddinList addins_;
};

TEST_F(TabTest, TwoTabsOnTwoThreadsShareTheToolbarsFlag) {
    TabThread threads[2];
    std::unique_ptr<Tab> tabs[2];
    for (int i = 0; i < 2; ++i) {
        threads[i].Do([&, i] {
            tabs[i] = std::make_unique<Tab>(addins_);
            std::string error;
            EXPECT_TRUE(tabs[i]->Open(nullptr, error)) << error;
        });
    }
    const auto isShown = [&](int tab) {
        bool shown = false;
        threads[tab].Do([&] { shown = tabs[tab]->ShowsToolbar(); });
        return shown;
    };
    const auto switchTo = [&](int tab) {
        threads[1 - tab].Do([&] { tabs[1 - tab]->SendToBack(); });
        threads[tab].Do([&] { tabs[tab]->BringToFront(); });
    };
    EXPECT_TRUE(isShown(0) && isShown(1));
    switchTo(0);
    threads[0].Do([&] { EXPECT_TRUE(SUCCEEDED(tabs[0]->ShowToolbar(false))); });
    EXPECT_FALSE(isShown(0));
    EXPECT_TRUE(isShown(1)) << "it hears of it when it comes to the front";
    switchTo(1);
    EXPECT_FALSE(isShown(1));
    // Both at once, as the user may press wildly.
    std::future<void> presses[2];
    for (int i = 0; i < 2; ++i) {
        presses[i] = threads[i].Start([&, i] {
            for (int k = 0; k < 50; ++k) {
                tabs[i]->BringToFront();
                EXPECT_TRUE(tabs[i]->Press(0x1234, std::nullopt).empty());
                tabs[i]->SendToBack();
            }
        });
    }
    for (std::future<void>& press : presses) press.get();
    for (int i = 0; i < 2; ++i) threads[i].Do([&, i] { tabs[i].reset(); });
}

TEST_F(TabTest, AThreadHandsOnWhatItsTasksThrow) {
    TabThread thread;
    EXPECT_THROW(thread.Do([] { throw std::runtime_error("no"); }), std::runtime_error);
    int done = 0;
    thread.Do([&] { ++done; });
    EXPECT_EQ(done, 1);
}

TEST_F(TabTest, AToolbarThatIsNotOfferedIsNotMade) {
    platform::RegistryKey toolbars;
    ASSERT_EQ(
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, TEXT("SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar"),
                      0, KEY_WRITE, toolbars.Put()),
        ERROR_SUCCESS);
    ASSERT_EQ(RegDeleteValueW(toolbars.Get(), kAddinClassText), ERROR_SUCCESS);
    TabThread thread;
    std::string error;
    thread.Do([&] {
        Tab tab(addins_);
        EXPECT_FALSE(tab.Open(nullptr, error));
    });
    EXPECT_NE(error.find("no toolbar"), std::string::npos) << error;
}

}  // namespace
}  // namespace host
