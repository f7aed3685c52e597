#include "converter/source_document.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "converter/clean_up.h"
#include "converter/paths.h"
#include "tests/support/case_table.h"
#include "tests/support/scratch_folder.h"

namespace converter {
namespace {

namespace fs = std::filesystem;
using Kind = chromium::Answer::Kind;

constexpr const char* kMain = "MAIN";

/// A folder with a page, a captured page with its sheets, and a file that is nobody's business.
class SourceDocumentTest : public testing::Test {
protected:
    SourceDocumentTest() {
        Write("secret.txt", "secret");
        Write("site/page.html", "<p>page");
        Write("site/sub/frame.html", "<p>frame");
        Write("site/pic.png", "png");
        Write("t/qvd_1a_files/c1.tmp",
              "@import url(file://" + (root_ / "t/qvd_1a_files/c2.tmp").string() + ");");
        Write("t/qvd_1a.html", "<link href=\"file://" + (root_ / "t/qvd_1a_files/c1.tmp").string() +
                                   "\" integrity=\"x\"><noscript>no</noscript>text");
    }

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

    /// Asks for all that the table has for this kind of document.
    void Check(SourceDocument& document, const std::string& kind) {
        for (const auto& row : test_support::ReadCases(CONVERTER_CASES "requests.tsv", 6)) {
            if (platform::ToUtf8(row[0]) != kind) continue;
            std::string url = platform::ToUtf8(row[4]);
            if (url.starts_with("root/")) url.replace(0, 5, Url(""));
            const Kind answer = row[5] == TEXT("serve")    ? Kind::Serve
                                : row[5] == TEXT("refuse") ? Kind::Refuse
                                                           : Kind::Continue;
            const chromium::Request request{url, platform::ToUtf8(row[2]),
                                            platform::ToUtf8(row[3])};
            EXPECT_EQ(document.Decide(request, kMain).kind, answer)
                << kind << ": " << platform::ToUtf8(row[1]) << ": " << url;
        }
    }

    test_support::ScratchFolder root_;
};

TEST_F(SourceDocumentTest, LetsAWebPageLoadNothingLocal) {
    SourceDocument document = Make(ItemOf("http://site.example/a"));
    Check(document, "web");
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
        Check(document, "local");
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
    const chromium::Answer sheet =
        document.Decide({"http://sheets.invalid/c1.tmp", "Stylesheet", "FRAME"}, kMain);
    ASSERT_EQ(sheet.kind, Kind::Serve);
    EXPECT_EQ(sheet.body, "@import url(http://sheets.invalid/c2.tmp);");
    SourceDocument fresh = Make(item);
    Check(fresh, "copy");
    Write("t/qvd_1a_files/c3.tmp", "p{background:url(" + Url("site/page.html") + ")}");
    SourceDocument local = Make(item);
    EXPECT_EQ(local.Url(), Url("t/qvd_1a.html")) << "the copy of a local page";
    Check(local, "local copy");

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
    for (const char* name : {"t/qvdstg_0f.bin", "t/qvdstg_0F.bin", "t/qvdstg_.bin"}) {
        Write(name, "");
        RemoveStorageFile((root_ / name).string());
    }
    for (const char* name : {"t/qvd_2.html", "t/qvd_3.html"}) Write(name, "");
    Write("t/qvd_1a.files/x", "");
    fs::create_directory_symlink(root_ / "site", root_ / "t/qvd_1a_files/link");
    fs::create_directory_symlink(root_ / "site", root_ / "t/qvd_2_files");
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
    for (const char* gone :
         {"t/qvdstg_0f.bin", "t/qvd_1a.html", "t/qvd_1a_files", "t/qvd_1a.files", "t/qvd_2.html"}) {
        EXPECT_FALSE(fs::exists(root_ / gone)) << gone;
    }
    for (const char* kept : {"t/qvdstg_0F.bin", "t/qvdstg_.bin", "t/qvd_3.html", "site/page.html",
                             "site/sub/frame.html"}) {
        EXPECT_TRUE(fs::exists(root_ / kept)) << kept;
    }
}

TEST(DropNoscript, LeavesEverythingElse) {
    for (const auto& row : test_support::ReadCases(CONVERTER_CASES "noscript.tsv", 2)) {
        EXPECT_EQ(DropNoscript(platform::ToUtf8(row[0])), platform::ToUtf8(row[1]));
    }
    std::string hostile;  // Would take hours if each start searched the rest.
    for (int k = 0; k < 1'000'000; ++k) hostile += "<script <noscript ";
    EXPECT_EQ(DropNoscript("<p>" + hostile), "<p>" + hostile);
}

TEST(Paths, GoFromFileUrlsAndBack) {
    EXPECT_EQ(FileUrlOf("/a b/\xC3\xA4#?%.html"), "file:///a%20b/%C3%A4%23%3F%25.html");
    for (const auto& row : test_support::ReadCases(CONVERTER_CASES "file_urls.tsv", 2)) {
        const auto path = PathOfFileUrl(platform::ToUtf8(row[0]));
        EXPECT_EQ(path.value_or(""), platform::ToUtf8(row[1]));
    }
}

}  // namespace
}  // namespace converter
