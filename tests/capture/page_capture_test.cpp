#include "capture/page_capture.h"

#include <gtest/gtest.h>
#include <map>

#include "host/com_browser.h"
#include "host/text_document.h"
#include "platform/files.h"
#include "platform/testing.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using platform::ComPtr;
using platform::FromUtf8;
using platform::ToUtf8;
using platform::WideString;
using test_support::ListFolder;
using test_support::ReadWholeFile;

std::map<std::string, std::string> site;

/// A page that lacks what a test takes from it.
struct Lacks {
    bool body = false;
    bool parent = false;
    bool markup = false;
    bool sheets = false;
};

class BrokenElement final : public host::PageElement {
public:
    BrokenElement(std::shared_ptr<host::PageElement> whole, const Lacks& lacks)
        : whole_(std::move(whole)), lacks_(lacks) {}
    bool ScrollHeight(LONG& height) override { return whole_->ScrollHeight(height); }
    bool Parent(std::shared_ptr<host::PageElement>& parent) override {
        if (lacks_.parent) return true;  // A body without a parent.
        if (!whole_->Parent(parent)) return false;
        parent = std::make_shared<BrokenElement>(parent, lacks_);
        return true;
    }
    bool Markup(WideString& markup) override { return !lacks_.markup && whole_->Markup(markup); }
    bool Attribute(const WideString&, std::optional<WideString>&) override { return false; }
    bool SetAttribute(const WideString&, const WideString&) override { return false; }

private:
    std::shared_ptr<host::PageElement> whole_;
    const Lacks& lacks_;
};

class Page final : public host::PageDocument {
public:
    Page(const std::string& markup, const Lacks& lacks)
        : whole_(std::make_shared<host::TextDocument>(
              TEXT("http://h.example/d/p.html"), FromUtf8(markup), 800,
              [](const WideString& url) -> std::optional<WideString> {
                  const auto found = site.find(ToUtf8(url));
                  if (found == site.end()) return std::nullopt;
                  return FromUtf8(found->second);
              })),
          lacks_(lacks) {}
    const WideString& Url() const override { return whole_->Url(); }
    bool Title(WideString& title) override { return whole_->Title(title); }
    bool Body(std::shared_ptr<host::PageElement>& body) override {
        if (lacks_.body) return true;
        if (!whole_->Body(body)) return false;
        body = std::make_shared<BrokenElement>(body, lacks_);
        return true;
    }
    bool Root(std::shared_ptr<host::PageElement>& root) override { return whole_->Root(root); }
    bool Elements(const WideString&, std::vector<std::shared_ptr<host::PageElement>>&) override {
        return false;
    }
    bool StyleSheets(std::vector<host::PageStyleSheet>& sheets) override {
        return !lacks_.sheets && whole_->StyleSheets(sheets);
    }
    bool Frames(std::vector<std::shared_ptr<PageDocument>>&) override { return false; }
    bool Selection(host::PageSelection&) override { return false; }
    bool Select(const std::string&, std::string&) override { return false; }

private:
    std::shared_ptr<host::TextDocument> whole_;
    Lacks lacks_;
};

class PageCaptureTest : public testing::Test {
protected:
    bool Capture(const std::string& markup, const Lacks& lacks = {}) {
        const auto browser =
            platform::MakeObject<host::Browser>(std::make_shared<Page>(markup, lacks));
        ComPtr<IDispatch> shown;
        EXPECT_EQ(browser->get_Document(shown.Put()), S_OK);
        const auto document = shown.As<IHTMLDocument2>();
        return PageCapture().Capture(document.Get(), TEXT("http://h.example/d/p.html"), path_);
    }
    /// The copy without its mark.
    std::string Copy() {
        const std::string bytes = ReadWholeFile(WideString(AUX::WStringView(path_)));
        EXPECT_TRUE(bytes.starts_with("\xEF\xBB\xBF<!DOCTYPE HTML><html>")) << bytes;
        return bytes.substr(bytes.find("<html>"));
    }
    /// The folder of the style sheets, with a '\' at its end.
    WideString Folder() {
        const WideString path{AUX::WStringView(path_)};
        return path.substr(0, path.size() - 5) + TEXT("_files\\");
    }
    void Empty() {
        test_support::RemoveTree(temp_);
        ASSERT_TRUE(CreateDirectoryW(temp_.c_str(), nullptr));
    }

    const test_support::TestProfile profile_;
    const WideString temp_ = profile_.TempFolder();
    AUX::WString path_;
};

constexpr char kSheet[] = "\xC3\xA9{background:url(img/b.png)}";

TEST_F(PageCaptureTest, CopiesThePageWithItsLinkedSheets) {
    const SYSTEMTIME time{2024, 5, 2, 7, 12, 34, 56, 789};
    const platform::testing::HeldClock clock(time);
    site = {{"http://h.example/css/a.css", kSheet},
            {"http://h.example/d/empty.css", ""},
            {"http://h.example/d/B.css", "b{}"}};
    ASSERT_TRUE(
        Capture("<html><head><link type=\"TEXT/CSS\" rel=\"stylesheet\" href=\"../css/a.css\">"
                "<link type=\"text/css\" rel=\"stylesheet\" href=\"../css/A.CSS\">"
                "<link rel=\"stylesheet\" href=\"B.css\">"
                "<link type=\"text/css\" rel=\"stylesheet\" href=\"empty.css\">"
                "<link type=\"text/css\" rel=\"x\" href=\"unlisted.css\">"
                "<style>p{background:url(i.png)}</style><script>no</script></head>"
                "<body><img src=\"i.png\"><a href=\"x?a=1&amp;b\">\xE6\x97\xA5</a></body></html>"));
    const auto files = ListFolder(Folder());
    ASSERT_EQ(files.size(), 1u) << "one for two links, none for the others";
    EXPECT_EQ(files[0].front(), TEXT('c'));
    EXPECT_TRUE(files[0].ends_with(TEXT(".tmp")));
    EXPECT_EQ(ReadWholeFile(Folder() + files[0]),
              "\xC3\xA9{background:url(\"http://h.example/css/img/b.png\")}");
    const std::string copy = Copy();
    const std::size_t local = copy.find("file:///");
    const std::string url = copy.substr(local, copy.find('"', local) - local);
    EXPECT_TRUE(url.ends_with("_files/" + ToUtf8(files[0]))) << url;
    EXPECT_EQ(
        copy,
        "<html><head><link type=\"TEXT/CSS\" rel=\"stylesheet\" href=\"" + url +
            "\"><link type=\"text/css\" rel=\"stylesheet\" href=\"" + url +
            "\"><link rel=\"stylesheet\" href=\"http://h.example/d/B.css\">"
            "<link type=\"text/css\" rel=\"stylesheet\" href=\"http://h.example/d/empty.css\">"
            "<link type=\"text/css\" rel=\"x\" href=\"http://h.example/d/unlisted.css\">"
            "<style>p{background:url(\"http://h.example/d/i.png\")}</style></head>"
            "<body><img src=\"http://h.example/d/i.png\">"
            "<a href=\"http://h.example/d/x?a=1&amp;b\">\xE6\x97\xA5</a></body></html>");
    if (platform::testing::kOwnsTheSystem) {
        EXPECT_EQ(path_, AUX::WStringView(temp_ + TEXT("qvd_34bf15.html")));
        ASSERT_TRUE(Capture("<html></html>"));
        EXPECT_EQ(path_, AUX::WStringView(temp_ + TEXT("qvd_34bf16.html")));
        EXPECT_TRUE(ListFolder(Folder()).empty()) << "the folder stands without links, too";
    }
}

TEST_F(PageCaptureTest, APageWithoutMarkupLeavesAnEmptyFolder) {
    EXPECT_FALSE(PageCapture().Capture(nullptr, TEXT("http://h/"), path_));
    EXPECT_TRUE(ListFolder(temp_).empty());
    for (const Lacks& lacks : {Lacks{.body = true}, Lacks{.parent = true}, Lacks{.markup = true}}) {
        EXPECT_FALSE(Capture("<html></html>", lacks));
        ASSERT_EQ(ListFolder(temp_).size(), 1u);
        EXPECT_TRUE(ListFolder(Folder()).empty());
        Empty();
    }
    EXPECT_TRUE(Capture("<html></html>", Lacks{.sheets = true})) << "the list stays empty";
}

constexpr char kLinked[] =
    "<html><link type=\"text/css\" rel=\"stylesheet\" href=\"a.css\"></html>";
constexpr char kAbsolute[] = "href=\"http://h.example/d/a.css\"";

TEST_F(PageCaptureTest, EachFailureLeavesWhatIsToldOfIt) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    site = {{"http://h.example/d/a.css", kSheet}};
    const struct {
        const char* call;
        unsigned nth;
        bool captured;
        int files;  // in the folder of the style sheets; -1: there is none
        bool page;
    } kCases[] = {
        {"GetTempPathW", 1, false, -1, false},  {"CreateDirectoryW", 1, false, -1, false},
        {"GetTempFileNameW", 1, true, 0, true}, {"CreateFileW", 1, true, 1, true},
        {"WriteFile", 1, true, 1, true},        {"UrlCreateFromPathW", 1, true, 1, true},
        {"CreateFileW", 2, false, 1, false},    {"WriteFile", 2, false, 1, true},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(std::string(c.call) + std::to_string(c.nth));
        path_.Clear();
        const platform::testing::InjectedFault fault(c.call, c.nth, ERROR_DISK_FULL);
        EXPECT_EQ(Capture(kLinked), c.captured);
        EXPECT_TRUE(fault.HasFired());
        EXPECT_EQ(ListFolder(temp_).size(), static_cast<std::size_t>((c.files >= 0) + c.page));
        if (c.files >= 0) {
            EXPECT_EQ(ListFolder(Folder()).size(), static_cast<std::size_t>(c.files));
        }
        if (c.captured) {
            EXPECT_NE(Copy().find(kAbsolute), std::string::npos);
        }
        Empty();
    }
}

TEST_F(PageCaptureTest, EachFailedAllocationGivesAWholeCopyOrNone) {
    site = {{"http://h.example/d/a.css", kSheet}};
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        AUX::WString path;
        std::swap(path, path_);
        const bool captured = Capture(kLinked);
        EXPECT_TRUE(captured || hasFailed());
        if (captured) {
            const std::string copy = Copy();
            const bool isLocal = copy.find("file:///") != std::string::npos;
            EXPECT_TRUE(isLocal || copy.find(kAbsolute) != std::string::npos ||
                        copy.find("href=\"a.css\"") != std::string::npos)
                << copy;
        }
        Empty();
        path_.Free();
    });
    EXPECT_GT(failures, 10u);
}

}  // namespace
