#include <gtest/gtest.h>
#include <map>

#include "host/com_browser.h"
#include "host/text_document.h"
#include "platform/unique_bstr.h"
#include "platform/unique_variant.h"

namespace host {
namespace {

using platform::ComPtr;
using platform::FromUtf8;
using platform::UniqueBstr;
using platform::UniqueVariant;
using platform::WideString;

/// Documents of this site can be read, nothing else.
const std::map<std::string, std::string> kSite = {
    {"file:///s/sheet.css", "p { color: red }"},
    {"file:///s/one.html", "<p id=a>One</p><iframe src=deep/two.html></iframe>"},
    {"file:///s/deep/two.html", "<body contenteditable><a href='x.html'>Two</a><img src=p.png>"},
};

constexpr char kPage[] =
    "<html><head><title> a  b </title><link rel=stylesheet href='sheet.css'><style>b{}</style>"
    "<link rel='alternate stylesheet' href=missing.css></head><body><p>Text <!-- no --> here"
    "<img SRC='a&amp;b.png'><img></p><iframe src=http://other.example/></iframe>"
    "<iframe src=one.html></iframe></body></html>";

ComPtr<Browser> BrowserOf(const std::shared_ptr<TextDocument>& page) {
    return platform::MakeObject<Browser>(page);
}

std::shared_ptr<TextDocument> Page(const char* markup = kPage) {
    return std::make_shared<TextDocument>(TEXT("file:///s/page.html"), FromUtf8(markup), 900,
                                          [](const WideString& url) -> std::optional<WideString> {
                                              const auto found = kSite.find(platform::ToUtf8(url));
                                              if (found == kSite.end()) return std::nullopt;
                                              return FromUtf8(found->second);
                                          });
}

ComPtr<IHTMLDocument2> DocumentOf(const ComPtr<Browser>& browser) {
    ComPtr<IDispatch> face;
    EXPECT_EQ(browser->get_Document(face.Put()), S_OK);
    return face.As<IHTMLDocument2>();
}

std::string Text(const UniqueBstr& text) {
    return text ? platform::ToUtf8({text.Get(), SysStringLen(text.Get())}) : "(null)";
}

template <class Interface, class From>
std::string Read(const ComPtr<From>& object, HRESULT (STDMETHODCALLTYPE Interface::*get)(BSTR*)) {
    UniqueBstr text;
    const auto face = object.template As<Interface>();
    EXPECT_EQ((face.Get()->*get)(nullptr), E_POINTER);
    const HRESULT result = (face.Get()->*get)(text.Put());
    return result == S_OK ? Text(text) : "failed";
}

ComPtr<IHTMLDocument2> FrameOf(const ComPtr<IHTMLDocument2>& document, LONG index, HRESULT result) {
    ComPtr<IHTMLFramesCollection2> frames;
    EXPECT_EQ(document->get_frames(frames.Put()), S_OK);
    UniqueVariant number(index);
    UniqueVariant frame;
    EXPECT_EQ(frames->item(number.Change(), frame.Put()), S_OK);
    ComPtr<IHTMLDocument2> inner;
    const auto window = ComPtr<IDispatch>(frame.Get().pdispVal).As<IHTMLWindow2>();
    EXPECT_EQ(window->get_document(inner.Put()), result);
    return inner;
}

std::string SelectionIn(const ComPtr<IHTMLDocument2>& document) {
    ComPtr<IHTMLSelectionObject> selection;
    EXPECT_EQ(document->get_selection(selection.Put()), S_OK);
    ComPtr<IDispatch> range;
    EXPECT_EQ(selection->createRange(range.Put()), S_OK);
    const auto text = range.As<IHTMLTxtRange>();
    if (!text) return "controls";
    return Read(text, &IHTMLTxtRange::get_text) + "|" + Read(text, &IHTMLTxtRange::get_htmlText);
}

TEST(ComFaces, ShowThePageAlsoWhenTheBrowserHasEnded) {
    auto browser = BrowserOf(Page());
    EXPECT_EQ(browser->get_Document(nullptr), E_POINTER);
    EXPECT_EQ(browser->get_LocationURL(nullptr), E_POINTER);
    EXPECT_EQ(browser->get_HWND(nullptr), E_POINTER);
    const auto document = DocumentOf(browser);
    browser->ClosePage();
    IDispatch* none = browser.Get();
    EXPECT_EQ(browser->get_Document(&none), S_FALSE);
    EXPECT_EQ(none, nullptr);
    UniqueBstr address;
    EXPECT_EQ(browser->get_LocationURL(address.Put()), S_OK);
    EXPECT_EQ(Text(address), "");
    browser.Reset();

    EXPECT_EQ(Read(document, &IHTMLDocument2::get_title), "a b");
    ComPtr<IHTMLElement> body;
    ASSERT_EQ(document->get_body(body.Put()), S_OK);
    ComPtr<IHTMLElement> root;
    ASSERT_EQ(body->get_parentElement(root.Put()), S_OK);
    EXPECT_EQ(Read(root, &IHTMLElement::get_outerHTML), kPage);
    ComPtr<IHTMLElement> above;
    EXPECT_EQ(root->get_parentElement(above.Put()), S_OK);
    EXPECT_FALSE(above);
    LONG height = 7;
    EXPECT_EQ(root.As<IHTMLElement2>()->get_scrollHeight(nullptr), E_POINTER);
    EXPECT_EQ(root.As<IHTMLElement2>()->get_scrollHeight(&height), S_OK);
    EXPECT_EQ(height, 900);
    const auto bare = DocumentOf(BrowserOf(Page("<p>x")));
    ASSERT_EQ(bare->get_body(body.Put()), S_OK);
    ASSERT_EQ(body->get_parentElement(root.Put()), S_OK);
    EXPECT_EQ(Read(root, &IHTMLElement::get_outerHTML), "<html><p>x</html>");
}

TEST(ComFaces, GiveAttributesResolvedAndTakeThemIntoTheMarkup) {
    const auto page = Page();
    std::string error;
    ASSERT_TRUE(page->Select("p", error)) << error;
    const auto document = DocumentOf(BrowserOf(page));
    ComPtr<IHTMLElementCollection> all;
    ASSERT_EQ(document->get_all(all.Put()), S_OK);
    UniqueVariant tag;
    tag.Change()->vt = VT_BSTR;
    tag.Change()->bstrVal = SysAllocString(TEXT("IMG"));
    ComPtr<IDispatch> found;
    ASSERT_EQ(all->tags(tag.Get(), found.Put()), S_OK);
    const auto images = found.As<IHTMLElementCollection>();
    LONG count = 0;
    ASSERT_EQ(images->get_length(&count), S_OK);
    ASSERT_EQ(count, 2);
    const UniqueBstr name(SysAllocString(TEXT("src")));
    for (LONG i = 0; i < count; ++i) {
        const UniqueVariant index(i);
        ASSERT_EQ(images->item(index.Get(), index.Get(), found.Put()), S_OK);
        const auto image = found.As<IHTMLElement>();
        UniqueVariant value;
        ASSERT_EQ(image->getAttribute(name.Get(), 0, value.Put()), S_OK);
        EXPECT_EQ(value.Get().vt, i == 0 ? VT_BSTR : VT_NULL);
        EXPECT_EQ(image->setAttribute(name.Get(), value.Get(), 0), S_OK);
    }
    EXPECT_EQ(SelectionIn(document),
              "Text here|<p>Text <!-- no --> here"
              "<img SRC=\"file:///s/a&amp;b.png\"><img></p>");
}

TEST(ComFaces, ReachFramesToAnyDepthAndSelectionsInThem) {
    const auto page = Page();
    const auto top = DocumentOf(BrowserOf(page));
    EXPECT_EQ(SelectionIn(top), "(null)|(null)");
    EXPECT_FALSE(FrameOf(top, 0, E_ACCESSDENIED)) << "of another site";
    const auto one = FrameOf(top, 1, S_OK);
    const auto two = FrameOf(one, 0, S_OK);
    std::vector<std::shared_ptr<PageDocument>> frames;
    std::string error;
    ASSERT_TRUE(page->Frames(frames) && frames[1]->Select("#a", error)) << error;
    EXPECT_EQ(SelectionIn(one), "One|<p id=a>One</p>");
    ASSERT_TRUE(frames[1]->Frames(frames) && frames[0]->Select("img", error)) << error;
    EXPECT_EQ(SelectionIn(two), "controls") << "an image in an editable page";
    ASSERT_TRUE(frames[0]->Select("a", error)) << error;
    EXPECT_EQ(SelectionIn(two), "Two|<a href='x.html'>Two</a>");
    EXPECT_FALSE(frames[0]->Select(".none", error));
    EXPECT_FALSE(error.empty());
}

TEST(ComFaces, ListTheStyleSheets) {
    const auto document = DocumentOf(BrowserOf(Page()));
    ComPtr<IHTMLStyleSheetsCollection> sheets;
    ASSERT_EQ(document->get_styleSheets(sheets.Put()), S_OK);
    LONG count = 0;
    ASSERT_EQ(sheets->get_length(&count), S_OK);
    const std::string expected[] = {"sheet.css|p { color: red }", "(null)|b{}",
                                    "missing.css|failed"};
    ASSERT_EQ(count, 3);
    for (LONG i = 0; i < count; ++i) {
        UniqueVariant index(i);
        UniqueVariant item;
        ASSERT_EQ(sheets->item(index.Change(), item.Put()), S_OK);
        const ComPtr<IDispatch> sheet(item.Get().pdispVal);
        EXPECT_EQ(Read(sheet, &IHTMLStyleSheet::get_href) + "|" +
                      Read(sheet, &IHTMLStyleSheet::get_cssText),
                  expected[i]);
    }
    UniqueVariant index(count);
    UniqueVariant item;
    EXPECT_EQ(sheets->item(index.Change(), item.Put()), DISP_E_BADINDEX);
}

TEST(MarkupOutline, EditsTagsOfAnyForm) {
    const struct {
        const char* tag;
        const char* edited;
    } kCases[] = {
        {"<img src=a.png>", "<img src=\"v&amp;&quot;\">"},
        {"<img src='a' alt=x/>", "<img src=\"v&amp;&quot;\" alt=x/>"},
        {"<img alt='src=b' />", "<img alt='src=b' src=\"v&amp;&quot;\" />"},
        {"<img src>", "<img src=\"v&amp;&quot;\">"},
        {"<img SRC = \"a\"hidden>", "<img SRC = \"v&amp;&quot;\"hidden>"},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(platform::ToUtf8(SetTagAttribute(FromUtf8(c.tag), TEXT("src"), TEXT("v&\""))),
                  c.edited);
    }
    // A page may be cut off anywhere.
    const WideString markup = FromUtf8(kPage);
    for (std::size_t cut = 0; cut < markup.size(); ++cut) {
        for (const OutlineElement& element :
             ReadOutline(platform::WideView(markup).substr(0, cut))) {
            EXPECT_LE(element.content, element.contentEnd);
            EXPECT_LE(element.contentEnd, element.end);
            EXPECT_LE(element.end, cut);
        }
    }
}

}  // namespace
}  // namespace host
