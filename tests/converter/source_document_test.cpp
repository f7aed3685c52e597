#include "converter/source_document.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "converter/clean_up.h"
#include "converter/paths.h"

namespace converter {
namespace {

namespace fs = std::filesystem;
using Kind = chromium::Answer::Kind;

constexpr const char* kMain = "MAIN";

/// A folder with a page, a captured page with its sheets, and a file that is nobody's business.
class SourceDocumentTest : public testing::Test {
protected:
    SourceDocumentTest() {
        std::string name = fs::temp_directory_path() / "source-test-XXXXXX";
        root_ = fs::canonical(mkdtemp(name.data()));
        Write("secret.txt", "secret");
        Write("site/page.html", "<p>page");
        Write("site/sub/frame.html", "<p>frame");
        Write("site/pic.png", "png");
        Write("t/qvd_1a_files/c1.tmp",
              "@import url(file://" + (root_ / "t/qvd_1a_files/c2.tmp").string() + ");");
        Write("t/qvd_1a.html", "<link href=\"file://" + (root_ / "t/qvd_1a_files/c1.tmp").string() +
                                   "\" integrity=\"x\"><noscript>no</noscript>text");
    }
    ~SourceDocumentTest() override { fs::remove_all(root_); }

    void Write(const std::string& name, const std::string& text) {
        fs::create_directories((root_ / name).parent_path());
        std::ofstream(root_ / name) << text;
    }

    std::string Url(const std::string& name) const { return FileUrlOf((root_ / name).string()); }

    static SourceDocument Make(const Item& item) {
        Result<SourceDocument> made = SourceDocument::Make(item, TEXT("A < B"));
        EXPECT_TRUE(made) << made.GetError().text;
        return made ? *made : SourceDocument();
    }

    static Item ItemOf(const std::string& source) {
        Item item;
        item.source = platform::FromUtf8(source);
        return item;
    }

    struct Case {
        const char* why;
        std::string type;
        std::string url;
        Kind answer;
    };
    static void Check(SourceDocument& document, const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            EXPECT_EQ(document.Decide({c.url, c.type, "FRAME"}, kMain).kind, c.answer)
                << c.why << ": " << c.url;
        }
    }

    fs::path root_;
};

TEST_F(SourceDocumentTest, LetsAWebPageLoadNothingLocal) {
    SourceDocument document = Make(ItemOf("http://site.example/a"));
    Check(document, {{"picture", "Image", "https://other.example/p.png", Kind::Continue},
                     {"frame", "Document", "http://other.example/", Kind::Continue},
                     {"local picture", "Image", Url("site/pic.png"), Kind::Refuse},
                     {"local frame", "Document", Url("secret.txt"), Kind::Refuse},
                     {"script", "Script", "http://site.example/s.js", Kind::Refuse},
                     {"request", "XHR", "http://site.example/x", Kind::Refuse}});
    EXPECT_EQ(document.Decide({"http://site.example/a", "Document", kMain}, kMain).kind,
              Kind::Continue);
    EXPECT_EQ(document.Decide({Url("secret.txt"), "Document", kMain}, kMain).kind, Kind::Refuse);
    document.Seal();
    EXPECT_EQ(document.Decide({"http://site.example/b", "Document", kMain}, kMain).kind,
              Kind::Refuse)
        << "a page that was loaded is not replaced";
}

TEST_F(SourceDocumentTest, LetsALocalPageFrameItsOwnTreeOnly) {
    fs::create_symlink(root_ / "secret.txt", root_ / "site/link.html");
    for (const std::string& source : {Url("site/page.html"), (root_ / "site/page.html").string()}) {
        SourceDocument document = Make(ItemOf(source));
        EXPECT_EQ(document.Url(), Url("site/page.html"));
        const auto lead = [&](const std::string& url) {
            return document.Decide({url, "Document", kMain}, kMain).kind;
        };
        EXPECT_EQ(lead(document.Url()), Kind::Continue);
        EXPECT_EQ(lead(Url("site/sub/frame.html")), Kind::Continue);
        EXPECT_EQ(lead("http://x.example/"), Kind::Continue);
        EXPECT_EQ(lead(Url("secret.txt")), Kind::Refuse) << "a page that leads to any file";
        Check(document,
              {{"own frame", "Document", Url("site/sub/frame.html"), Kind::Continue},
               {"picture elsewhere", "Image", Url("secret.txt"), Kind::Continue},
               {"frame elsewhere", "Document", Url("secret.txt"), Kind::Refuse},
               {"frame by way of dots", "Document", Url("site/../secret.txt"), Kind::Refuse},
               {"frame by way of encoded dots", "Document", Url("site/") + "%2e%2e/secret.txt",
                Kind::Refuse},
               {"frame by way of a link", "Document", Url("site/link.html"), Kind::Refuse},
               {"listing", "Document", Url("site/sub"), Kind::Refuse},
               {"no file", "Image", "file:///dev/zero", Kind::Refuse},
               {"missing", "Image", Url("site/none.png"), Kind::Refuse},
               {"web picture", "Image", "http://x.example/", Kind::Continue}});
    }
}

TEST_F(SourceDocumentTest, ServesACapturedPageWithItsSheets) {
    Item item = ItemOf((root_ / "t/qvd_1a.html").string());
    item.sourceIsTemporary = true;
    SourceDocument document = Make(item);
    const chromium::Answer page = document.Decide({document.Url(), "Document", kMain}, kMain);
    ASSERT_EQ(page.kind, Kind::Serve);
    EXPECT_EQ(page.body, "<link href=\"http://sheets.invalid/c1.tmp\" data-hash=\"x\">text");
    EXPECT_EQ(page.headers[1].first, "Content-Security-Policy");
    EXPECT_EQ(document.Decide({document.Url(), "Document", kMain}, kMain).kind, Kind::Refuse);
    const chromium::Answer sheet =
        document.Decide({"http://sheets.invalid/c1.tmp", "Stylesheet", "FRAME"}, kMain);
    ASSERT_EQ(sheet.kind, Kind::Serve);
    EXPECT_EQ(sheet.body, "@import url(http://sheets.invalid/c2.tmp);");
    Check(document,
          {{"sheet outside", "Stylesheet", "http://sheets.invalid/../../secret.txt", Kind::Refuse},
           {"sheet as a frame", "Document", "http://sheets.invalid/c1.tmp", Kind::Refuse},
           {"frame elsewhere", "Document", Url("secret.txt"), Kind::Refuse},
           {"image of this machine", "Image", Url("site/page.html"), Kind::Refuse},
           {"frame of the web", "Document", "http://site.example/", Kind::Continue}});
    EXPECT_EQ(document.Url(), "http://copy.invalid/");
    Write("t/qvd_1a_files/c3.tmp", "p{background:url(" + Url("site/page.html") + ")}");
    SourceDocument local = Make(item);
    EXPECT_EQ(local.Url(), Url("t/qvd_1a.html")) << "the copy of a local page";
    Check(local, {{"its image", "Image", Url("site/page.html"), Kind::Continue}});

    fs::remove(root_ / "t/qvd_1a.html");
    EXPECT_FALSE(SourceDocument::Make(item, TEXT("")));
}

TEST_F(SourceDocumentTest, ServesASelectionAtItsPagesAddress) {
    Item item = ItemOf("http://site.example/dir/page");
    item.selectionHtml = TEXT("<b>x</b><NoScript >no</NOSCRIPT>");
    SourceDocument document = Make(item);
    EXPECT_EQ(document.Url(), "http://site.example/dir/page");
    const chromium::Answer page =
        document.Decide({"http://site.example/dir/page", "Document", kMain}, kMain);
    ASSERT_EQ(page.kind, Kind::Serve);
    EXPECT_NE(page.body.find("<title>A &lt; B</title></head><body><b>x</b></body>"),
              std::string::npos)
        << page.body;
    item.selectionHtml.assign(chromium::kLargestBody + 1, WCHAR{'x'});
    EXPECT_FALSE(SourceDocument::Make(item, TEXT(""))) << "more than the browser can take";
    item.selectionHtml = TEXT("x");
    item.source = TEXT("about:blank");
    EXPECT_EQ(Make(item).Url(), "http://selection.invalid/");
    item.source.clear();
    EXPECT_EQ(Make(item).Url(), "http://selection.invalid/");
}

TEST_F(SourceDocumentTest, RemovesWhatIsTheConvertersOwnAndNothingElse) {
    Write("t/qvdstg_0f.bin", "");
    Write("t/qvdstg_0F.bin", "");
    Write("t/qvdstg_.bin", "");
    for (const char* name : {"qvdstg_0f.bin", "qvdstg_0F.bin", "qvdstg_.bin"}) {
        RemoveStorageFile((root_ / "t" / name).string());
    }
    EXPECT_FALSE(fs::exists(root_ / "t/qvdstg_0f.bin"));
    EXPECT_TRUE(fs::exists(root_ / "t/qvdstg_0F.bin"));
    EXPECT_TRUE(fs::exists(root_ / "t/qvdstg_.bin"));

    Write("t/qvd_1a.files/x", "");
    fs::create_directory_symlink(root_ / "site", root_ / "t/qvd_1a_files/link");
    fs::create_directory_symlink(root_ / "site", root_ / "t/qvd_2_files");
    Write("t/qvd_2.html", "");
    Write("t/qvd_3.html", "");
    Job job;
    const std::pair<const char*, bool> kItems[] = {{"t/qvd_1a.html", true},
                                                   {"t/qvd_2.html", true},
                                                   {"t/qvd_3.html", false},
                                                   {"site/page.html", true}};
    for (const auto& [name, isTemporary] : kItems) {
        job.items.push_back(ItemOf((root_ / name).string()));
        job.items.back().sourceIsTemporary = isTemporary;
    }
    RemoveCapturedPages(job);
    for (const char* gone : {"t/qvd_1a.html", "t/qvd_1a_files", "t/qvd_1a.files", "t/qvd_2.html"}) {
        EXPECT_FALSE(fs::exists(root_ / gone)) << gone;
    }
    for (const char* kept : {"t/qvd_3.html", "site/page.html", "site/sub/frame.html"}) {
        EXPECT_TRUE(fs::exists(root_ / kept)) << kept;
    }
}

TEST(DropNoscript, LeavesEverythingElse) {
    struct Case {
        const char* markup;
        const char* left;
    };
    constexpr Case kCases[] = {
        {"a<noscript>b</noscript>c", "ac"},
        {"<!-- <noscript> -->a<noscript>b</noscript>c", "<!-- <noscript> -->ac"},
        {"<script>'<noscript>'</script>a</noscript>", "<script>'<noscript>'</script>a</noscript>"},
        {"a<noscript>open", "a<noscript>open"},
        {"<noscripts>a</noscripts>", "<noscripts>a</noscripts>"},
        {"<noscript><noscript>x</noscript>y", "y"},
        {"<noscript", "<noscript"},
        {"<", "<"},
        {"<!--", "<!--"},
        {"<!--><noscript>x</noscript>a", "<!-->a"},
        {"<p title='<noscript>'>a</p></noscript>", "<p title='<noscript>'>a</p></noscript>"},
        {"<p a'><noscript>x</noscript>b", "<p a'>b"},
        {"<p title=\"<noscript>x</noscript>", "<p title=\"<noscript>x</noscript>"},
    };
    for (const Case& c : kCases) EXPECT_EQ(DropNoscript(c.markup), c.left);
    std::string hostile;  // Would take hours if each start searched the rest.
    for (int k = 0; k < 1'000'000; ++k) hostile += "<script <noscript ";
    EXPECT_EQ(DropNoscript("<p>" + hostile), "<p>" + hostile);
}

TEST(Paths, GoFromFileUrlsAndBack) {
    EXPECT_EQ(FileUrlOf("/a b/\xC3\xA4#?%.html"), "file:///a%20b/%C3%A4%23%3F%25.html");
    struct Case {
        const char* url;
        const char* path;  // null: none
    };
    constexpr Case kCases[] = {
        {"file:///a%20b/%C3%A4%23.html#x?y", "/a b/\xC3\xA4#.html"},
        {"FILE://localhost/a", "/a"},
        {"file:///Z:/tmp/a", "/tmp/a"},
        {"file:/a", "/a"},
        {"file://server/share/a", nullptr},
        {"file:////server/a", nullptr},
        {"file:a", nullptr},
        {"file:///a%00b", nullptr},
        {"http://a/", nullptr},
        {"/a", nullptr},
    };
    for (const Case& c : kCases) {
        const auto path = PathOfFileUrl(c.url);
        ASSERT_EQ(path.has_value(), c.path != nullptr) << c.url;
        if (c.path) {
            EXPECT_EQ(*path, c.path);
        }
    }
}

}  // namespace
}  // namespace converter
