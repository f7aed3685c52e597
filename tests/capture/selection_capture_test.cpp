#include "capture/selection_capture.h"

#include <gtest/gtest.h>
#include <map>

#include "host/com_browser.h"
#include "host/text_document.h"
#include "platform/com_object.h"

namespace {

using platform::ComPtr;
using platform::FromUtf8;
using platform::WideString;

const std::map<std::string, std::string> kSite = {
    {"http://h/f/one.html", "<p id=t><a href=1>One</a></p>"},
    {"http://h/f/two.html",
     "<p id=t>Two<img src=2.png><IMG src='2b.png'></p>"
     "<iframe src=deep.html></iframe>"},
    {"http://h/f/deep.html",
     "<div contenteditable><img id=c src=d.png></div>"
     "<p id=t>Deep <script>x</script><a href=d>d</a></p>"},
};

constexpr char kTop[] =
    "<p id=t>Top <a name=n href=\"u?a&amp;b\">link</a></p><iframe src=http://other/></iframe>"
    "<iframe src=f/one.html></iframe><iframe src=f/two.html></iframe>";

class SelectionTest : public testing::Test {
protected:
    SelectionTest()
        : page_(std::make_shared<host::TextDocument>(
              TEXT("http://h/p"), FromUtf8(kTop), 800,
              [](const WideString& url) -> std::optional<WideString> {
                  const auto found = kSite.find(platform::ToUtf8(url));
                  if (found == kSite.end()) return std::nullopt;
                  return FromUtf8(found->second);
              })) {}

    std::shared_ptr<host::PageDocument> Frame(std::initializer_list<std::size_t> path) {
        std::shared_ptr<host::PageDocument> document = page_;
        for (const std::size_t index : path) {
            std::vector<std::shared_ptr<host::PageDocument>> frames;
            EXPECT_TRUE(document->Frames(frames));
            document = frames.at(index);
        }
        return document;
    }
    void Select(std::initializer_list<std::size_t> path, const char* selector = "#t") {
        std::string error;
        ASSERT_TRUE(Frame(path)->Select(selector, error)) << error;
    }
    std::string Captured() {
        AUX::WString markup;
        EXPECT_TRUE(markup.Assign(TEXT("old")));
        const bool captured = CaptureSelection(browser_.Get(), markup);
        EXPECT_EQ(markup == TEXT("old"), !captured);
        return captured ? platform::ToUtf8(AUX::WStringView(markup)) : "none";
    }
    std::string Markup(const std::shared_ptr<host::PageDocument>& document) {
        std::shared_ptr<host::PageElement> root;
        WideString markup;
        EXPECT_TRUE(document->Root(root) && root->Markup(markup));
        return platform::ToUtf8(markup);
    }

    std::shared_ptr<host::TextDocument> page_;
    ComPtr<host::Browser> browser_ = platform::MakeObject<host::Browser>(page_);
};

TEST_F(SelectionTest, TheFirstInOrderWinsAndOnlyItsDocumentChanges) {
    EXPECT_EQ(Captured(), "none");
    Select({2, 0}, "#c");
    EXPECT_EQ(Captured(), "none") << "a control in an editable page";
    Select({2, 0});
    EXPECT_EQ(Captured(), "<p id=t>Deep <script>x</script><a href=\"http://h/f/d\">d</a></p>");
    EXPECT_NE(Markup(Frame({2, 0})).find("src=\"http://h/f/d.png\""), std::string::npos)
        << "also what is not selected";
    EXPECT_EQ(Markup(Frame({2})), "<html>" + kSite.at("http://h/f/two.html") + "</html>");
    Select({2});
    EXPECT_EQ(Captured(),
              "<p id=t>Two<img src=\"http://h/f/2.png\">"
              "<IMG src=\"http://h/f/2b.png\"></p>");
    EXPECT_EQ(Markup(page_), "<html>" + std::string(kTop) + "</html>") << "not asked for yet";
    Select({1});
    EXPECT_EQ(Captured(), "<p id=t><a href=\"http://h/f/1\">One</a></p>");
    Select({});
    EXPECT_EQ(Captured(), "<p id=t>Top <a name=n href=\"http://h/u?a&amp;b\">link</a></p>");
    browser_.Reset();
    EXPECT_EQ(page_.use_count(), 1) << "a reference was kept";
}

TEST_F(SelectionTest, FindingGivesTheInnermostDocumentAndChangesNothing) {
    ComPtr<IDispatch> shown;
    ASSERT_EQ(browser_->get_Document(shown.Put()), S_OK);
    auto document = shown.As<IHTMLDocument2>();
    IHTMLDocument2* const top = document.Get();
    ComPtr<IHTMLSelectionObject> selection;
    ASSERT_EQ(top->get_selection(selection.Put()), S_OK);
    EXPECT_EQ(FindSelection(document, selection), S_FALSE);
    EXPECT_FALSE(selection);
    EXPECT_EQ(document.Get(), top);
    Select({2, 0});
    const std::string before = Markup(Frame({2, 0}));
    EXPECT_EQ(FindSelection(document, selection), S_OK);
    EXPECT_TRUE(HasTextSelection(selection.Get()));
    EXPECT_NE(document.Get(), top);
    ComPtr<IHTMLElement> body;
    ComPtr<IHTMLElement> root;
    ASSERT_EQ(document->get_body(body.Put()), S_OK);
    EXPECT_EQ(Markup(Frame({2, 0})), before);
    document.Reset();
    EXPECT_EQ(FindSelection(document, selection), S_FALSE);
    EXPECT_FALSE(selection) << "released";
}

}  // namespace
