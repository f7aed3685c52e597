#include <gtest/gtest.h>

#include "host/com_browser.h"
#include "platform/unique_bstr.h"

namespace host {
namespace {

using platform::ComPtr;
using platform::UniqueBstr;
using platform::WideString;

ComPtr<Browser> BrowserOver(DocumentModel model) {
    return platform::MakeObject<Browser>(std::make_shared<const DocumentModel>(std::move(model)));
}

ComPtr<IHTMLDocument2> DocumentOf(const ComPtr<Browser>& browser) {
    ComPtr<IDispatch> document;
    EXPECT_EQ(browser->get_Document(document.Put()), S_OK);
    return document.As<IHTMLDocument2>();
}

WideString TextOf(const UniqueBstr& text) { return {text.Get(), SysStringLen(text.Get())}; }

TEST(ComFaces, ShowTheModel) {
    DocumentModel model;
    model.url = TEXT("file:///a.html#b");
    model.title = WideString(TEXT("a\0b"), 3);  // A title may hold any character.
    model.rootHeight = 900;
    model.bodyHeight = 0;
    const ComPtr<Browser> browser = BrowserOver(model);
    ASSERT_TRUE(browser);
    UniqueBstr text;
    ASSERT_EQ(browser->get_LocationURL(text.Put()), S_OK);
    EXPECT_EQ(TextOf(text), model.url);

    const ComPtr<IHTMLDocument2> document = DocumentOf(browser);
    ASSERT_TRUE(document);
    ASSERT_EQ(document->get_title(text.Put()), S_OK);
    EXPECT_EQ(TextOf(text), model.title);

    ComPtr<IHTMLElement> body;
    ComPtr<IHTMLElement> root;
    ASSERT_EQ(document->get_body(body.Put()), S_OK);
    ASSERT_EQ(document.As<IHTMLDocument3>()->get_documentElement(root.Put()), S_OK);
    LONG height = 7;
    ASSERT_EQ(body.As<IHTMLElement2>()->get_scrollHeight(&height), S_OK);
    EXPECT_EQ(height, 0);
    ASSERT_EQ(root.As<IHTMLElement2>()->get_scrollHeight(&height), S_OK);
    EXPECT_EQ(height, 900);
}

TEST(ComFaces, SayWhatIsNotThere) {
    const ComPtr<Browser> bare = platform::MakeObject<Browser>(nullptr);
    IDispatch* none = bare.Get();
    EXPECT_EQ(bare->get_Document(&none), S_FALSE);
    EXPECT_EQ(none, nullptr);
    UniqueBstr text;
    EXPECT_EQ(bare->get_LocationURL(text.Put()), S_OK);
    EXPECT_EQ(SysStringLen(text.Get()), 0u);

    const ComPtr<Browser> browser = BrowserOver({});
    const ComPtr<IHTMLDocument2> document = DocumentOf(browser);
    ComPtr<IHTMLElement> element;
    EXPECT_EQ(document->get_body(element.Put()), S_OK);
    EXPECT_FALSE(element);
    EXPECT_EQ(document.As<IHTMLDocument3>()->get_documentElement(element.Put()), S_OK);
    EXPECT_FALSE(element);
}

TEST(ComFaces, RefuseAMissingOutParameter) {
    const ComPtr<Browser> browser = BrowserOver({});
    const ComPtr<IHTMLDocument2> document = DocumentOf(browser);
    EXPECT_EQ(browser->get_Document(nullptr), E_POINTER);
    EXPECT_EQ(browser->get_LocationURL(nullptr), E_POINTER);
    EXPECT_EQ(browser->get_HWND(nullptr), E_POINTER);
    EXPECT_EQ(document->get_body(nullptr), E_POINTER);
    EXPECT_EQ(document->get_title(nullptr), E_POINTER);
    EXPECT_EQ(document.As<IHTMLDocument3>()->get_documentElement(nullptr), E_POINTER);
}

TEST(ComFaces, KeepThePageWhenTheBrowserEnds) {
    DocumentModel model;
    model.title = TEXT("kept");
    ComPtr<Browser> browser = BrowserOver(model);
    const ComPtr<IHTMLDocument2> document = DocumentOf(browser);
    browser.Reset();
    UniqueBstr title;
    ASSERT_EQ(document->get_title(title.Put()), S_OK);
    EXPECT_EQ(TextOf(title), TEXT("kept"));
}

}  // namespace
}  // namespace host
