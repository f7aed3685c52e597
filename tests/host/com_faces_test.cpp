#include <gtest/gtest.h>

#include "host/com_browser.h"
#include "platform/unique_bstr.h"

namespace host {
namespace {

using platform::ComPtr;

TEST(ComFaces, ShowThePageAlsoWhenTheBrowserHasEnded) {
    DocumentModel model;
    model.title = platform::WideString(TEXT("a\0b"), 3);  // A title may hold any character.
    model.rootHeight = 900;
    auto browser =
        platform::MakeObject<Browser>(std::make_shared<const DocumentModel>(std::move(model)));
    EXPECT_EQ(browser->get_Document(nullptr), E_POINTER);
    EXPECT_EQ(browser->get_LocationURL(nullptr), E_POINTER);
    EXPECT_EQ(browser->get_HWND(nullptr), E_POINTER);
    ComPtr<IDispatch> face;
    ASSERT_EQ(browser->get_Document(face.Put()), S_OK);
    browser.Reset();

    const auto document = face.As<IHTMLDocument2>();
    const auto newer = face.As<IHTMLDocument3>();
    EXPECT_EQ(document->get_body(nullptr), E_POINTER);
    EXPECT_EQ(document->get_title(nullptr), E_POINTER);
    EXPECT_EQ(newer->get_documentElement(nullptr), E_POINTER);
    platform::UniqueBstr title;
    ASSERT_EQ(document->get_title(title.Put()), S_OK);
    ASSERT_EQ(SysStringLen(title.Get()), 3u);
    EXPECT_EQ(title.Get()[2], 'b');
    ComPtr<IHTMLElement> root;
    ASSERT_EQ(newer->get_documentElement(root.Put()), S_OK);
    LONG height = 7;
    const auto sized = root.As<IHTMLElement2>();
    EXPECT_EQ(sized->get_scrollHeight(nullptr), E_POINTER);
    ASSERT_EQ(sized->get_scrollHeight(&height), S_OK);
    EXPECT_EQ(height, 900);
    IHTMLElement* body = root.Get();
    EXPECT_EQ(document->get_body(&body), S_OK) << "a page without one is no failure";
    EXPECT_EQ(body, nullptr);
}

TEST(ComFaces, SayThatThereIsNoPage) {
    const ComPtr<Browser> bare = platform::MakeObject<Browser>(nullptr);
    IDispatch* none = bare.Get();
    EXPECT_EQ(bare->get_Document(&none), S_FALSE);
    EXPECT_EQ(none, nullptr);
    platform::UniqueBstr text;
    EXPECT_EQ(bare->get_LocationURL(text.Put()), S_OK);
    EXPECT_EQ(SysStringLen(text.Get()), 0u);
}

}  // namespace
}  // namespace host
