#include <gtest/gtest.h>

#include "platform/com_object.h"
#include "platform/html_defaults.h"
#include "platform/unique_bstr.h"

namespace platform {
namespace {

/// An element that is also another interface, as a browser's elements are.
class Element final
    : public ComObject<NotImplemented<IHTMLElement>, NotImplemented<IHTMLElement2>> {
public:
    HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) noexcept override {
        *height = 1234;
        return S_OK;
    }
};

class Document final
    : public ComObject<NotImplemented<IHTMLDocument2>, NotImplemented<IHTMLDocument3>> {
public:
    HRESULT STDMETHODCALLTYPE get_body(IHTMLElement** body) noexcept override {
        *body = MakeObject<Element>().Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_title(BSTR* title) noexcept override {
        *title = SysAllocString(TEXT("A title"));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_documentElement(IHTMLElement** root) noexcept override {
        return get_body(root);
    }
};

TEST(HtmlDouble, AnswersItsInterfacesAndWhatItOverrides) {
    const ComPtr<Document> made = MakeObject<Document>();
    ASSERT_TRUE(made);
    const ComPtr<IDispatch> document = made.As<IDispatch>();
    ASSERT_TRUE(document);
    const ComPtr<IHTMLDocument2> second = document.As<IHTMLDocument2>();
    const ComPtr<IHTMLDocument3> third = second.As<IHTMLDocument3>();
    ASSERT_TRUE(second);
    ASSERT_TRUE(third);
    EXPECT_FALSE(third.As<IHTMLElement2>());
    EXPECT_EQ(third.As<IUnknown>().Get(), document.As<IUnknown>().Get()) << "one identity";

    UniqueBstr title;
    ASSERT_EQ(second->get_title(title.Put()), S_OK);
    EXPECT_EQ(SysStringLen(title.Get()), 7u);
    ComPtr<IHTMLElement> body;
    ASSERT_EQ(third->get_documentElement(body.Put()), S_OK);
    const ComPtr<IHTMLElement2> measured = body.As<IHTMLElement2>();
    ASSERT_TRUE(measured);
    LONG height = 0;
    EXPECT_EQ(measured->get_scrollHeight(&height), S_OK);
    EXPECT_EQ(height, 1234);
}

TEST(HtmlInterfaces, HaveTheirPublishedIds) {
    struct IdCase {
        IID id;
        IID published;
    };
    const IdCase cases[] = {
        {InterfaceId<IWebBrowser2>(),
         {0xD30C1661, 0xCDAF, 0x11D0, {0x8A, 0x3E, 0x00, 0xC0, 0x4F, 0xC9, 0xE2, 0x6E}}},
        {InterfaceId<IHTMLDocument2>(),
         {0x332C4425, 0x26CB, 0x11D0, {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19}}},
        {InterfaceId<IHTMLDocument3>(),
         {0x3050F485, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLElement>(),
         {0x3050F1FF, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLElement2>(),
         {0x3050F434, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLElementCollection>(),
         {0x3050F21F, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLFramesCollection2>(),
         {0x332C4426, 0x26CB, 0x11D0, {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19}}},
        {InterfaceId<IHTMLWindow2>(),
         {0x332C4427, 0x26CB, 0x11D0, {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19}}},
        {InterfaceId<IHTMLSelectionObject>(),
         {0x3050F25A, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLTxtRange>(),
         {0x3050F220, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLStyleSheet>(),
         {0x3050F2E3, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
        {InterfaceId<IHTMLStyleSheetsCollection>(),
         {0x3050F37E, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}}},
    };
    for (const IdCase& c : cases) EXPECT_TRUE(IsEqualIID(c.id, c.published)) << c.id.Data1;
}

}  // namespace
}  // namespace platform
