#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <optional>

#include "driver/protected_mode.h"
#include "foundation/module_folder.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/memory.h"
#include "platform/modules.h"
#include "platform/testing.h"
#include "tests/support/test_profile.h"

namespace driver_test {

/// What the browser answers. The test owns it and may change it between calls.
struct Page {
    platform::WideString address;  // empty: asking for it fails
    platform::WideString title;
    bool hasDocument = true;
    std::optional<LONG> rootHeight;  // none: there is no such element
    std::optional<LONG> bodyHeight;
    IID refused = {};  // an interface that no object gives
    std::function<void()> onTitle = [] {};
};

/// An object of the page's that does nothing by itself.
template <class... Interfaces>
class PageObject : public platform::ComObject<platform::NotImplemented<Interfaces>...> {
public:
    explicit PageObject(Page& page) noexcept : page_(page) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        using Base = platform::ComObject<platform::NotImplemented<Interfaces>...>;
        return Base::QueryInterface(IsEqualIID(id, page_.refused) ? IID{} : id, object);
    }

protected:
    Page& page_;
};

class Element final : public PageObject<IHTMLElement, IHTMLElement2> {
public:
    Element(Page& page, LONG height) noexcept : PageObject(page), height_(height) {}

    HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) noexcept override {
        *height = height_;
        return S_OK;
    }

private:
    LONG height_;
};

class Document final : public PageObject<IHTMLDocument2, IHTMLDocument3> {
public:
    using PageObject::PageObject;

    HRESULT STDMETHODCALLTYPE get_title(BSTR* title) noexcept override {
        page_.onTitle();
        *title = SysAllocString(page_.title.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) noexcept override {
        return Give(page_.bodyHeight, body);
    }
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) noexcept override {
        return Give(page_.rootHeight, root);
    }

private:
    /// An element that is not there is a success with nothing, as a browser gives it.
    HRESULT Give(std::optional<LONG> height, IHTMLElement** element) noexcept {
        *element = height ? platform::MakeObject<Element>(page_, *height).Detach() : nullptr;
        return S_OK;
    }
};

class Browser final : public PageObject<IWebBrowser2> {
public:
    using PageObject::PageObject;

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override {
        *document = nullptr;
        if (!page_.hasDocument) return E_FAIL;
        *document = static_cast<IHTMLDocument2*>(platform::MakeObject<Document>(page_).Detach());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override {
        *address = page_.address.empty() ? nullptr : SysAllocString(page_.address.c_str());
        return *address ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR*) noexcept override { return E_FAIL; }
};

/// The first bytes of the shared memory object, opened by its name; empty if there is none.
inline std::string ReadShared(std::size_t bytes) {
    const platform::MappingHandle mapping(
        OpenFileMappingW(FILE_MAP_READ, FALSE, TEXT("QVD:IEP:HTMLData")));
    if (!mapping) return {};
    const platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, bytes));
    return view ? std::string(static_cast<const char*>(view.Get()), bytes) : std::string();
}

/// What the stand-in for ieframe.dll answers from now on: "1", "0", "fail:" and a result code, or
/// nothing at all. The answer kept before is forgotten.
inline void SetProtectedAnswer(const char* answer) {
    ForgetProtectedModeAnswer();
    platform::testing::SetEnvironment("QUVADA_TEST_PROTECTED", answer);
}

/// A tab of a browser that is not protected, an add-in in a folder of its own, and beside it a
/// converter that is there but no program: commands come as far as its launch, which fails.
class CommandTest : public testing::Test {
protected:
    void SetUp() override {
        WCHAR path[MAX_PATH];
        platform::WideString standIn(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
        standIn.resize(standIn.rfind('\\'));  // bin
        standIn.replace(standIn.rfind('\\') + 1, standIn.npos, TEXT("test_modules\\ieframe.dll"));
        browserModule_ = platform::ModuleHandle(LoadLibraryW(standIn.c_str()));
        ASSERT_TRUE(browserModule_) << "the stand-in for ieframe.dll is not there";
        SetProtectedAnswer("0");
        // Any module will do as the add-in's own.
        const platform::WideString addin = profile_.Path(TEXT("addin.dll"));
        ASSERT_TRUE(test_support::WriteWholeFile(addin, test_support::ReadWholeFile(standIn)));
        addin_ = platform::ModuleHandle(LoadLibraryW(addin.c_str()));
        ASSERT_TRUE(addin_ && AttachModule(addin_.Get()));
        ASSERT_TRUE(test_support::WriteWholeFile(converter_, "no program"));
    }
    void TearDown() override { DetachModule(); }

    test_support::TestProfile profile_;
    const platform::WideString converter_ = profile_.Path(TEXT("PageRenderApp.x86.exe"));
    const platform::WideString output_ = profile_.Path(TEXT("out.pdf"));
    platform::ModuleHandle browserModule_;
    platform::ModuleHandle addin_;
    Page page_;
    platform::ComPtr<Browser> browser_ = platform::MakeObject<Browser>(page_);
    platform::testing::MessageBoxRecorder messages_;
};

}  // namespace driver_test
