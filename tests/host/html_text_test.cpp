#include "host/html_text.h"

#include <gtest/gtest.h>

#include "host/text_backend.h"

namespace host {
namespace {

using platform::FromUtf8;
using platform::ToUtf8;

std::string TitleOf(std::string_view markup) {
    return ToUtf8(ReadHtmlFacts(FromUtf8(markup)).title);
}

TEST(HtmlTitle, IsWhatABrowserShows) {
    struct TitleCase {
        const char* why;
        const char* markup;
        const char* title;
    };
    constexpr TitleCase kCases[] = {
        {"upper case and attributes", "<TITLE lang='a>b'>One</TITLE >", "One"},
        {"blanks", "<title>\n  a \t b\r\n</title>", "a b"},
        {"references", "<title>&lt;a&gt; &amp;amp; &#65;&#x42; &eacute;&hellip;</title>",
         "<a> &amp; AB \xC3\xA9\xE2\x80\xA6"},
        {"tags in it are text", "<title>a <b>c</b></title>", "a <b>c</b>"},
        {"first of two", "<title>a</title><title>b</title>", "a"},
        {"in a comment", "<!-- <title>no</title> --><title>yes</title>", "yes"},
        {"in a script", "<script>'<title>no</title>'</script><title>yes</title>", "yes"},
        {"none", "<p>text", ""},
        {"never closed", "<title>rest <b", "rest <b"},
        {"cut off in the tag", "<p>a<title", ""},
        {"comment never closed", "<!-- <title>a</title>", ""},
        {"no tag before it", "1 < 2 \"<title>a</title>", "a"},
    };
    for (const TitleCase& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(TitleOf(c.markup), c.title);
        // A page may be cut off anywhere.
        const std::string_view markup = c.markup;
        for (std::size_t cut = 0; cut < markup.size(); ++cut) (void)TitleOf(markup.substr(0, cut));
    }
}

TEST(DecodeReferences, LeavesAloneWhatIsNoReference) {
    struct ReferenceCase {
        const char* text;
        const char* decoded;
    };
    constexpr ReferenceCase kCases[] = {
        {"&", "&"},
        {"&;", "&;"},
        {"&#;", "&#;"},
        {"&#x;", "&#x;"},
        {"&nosuch;", "&nosuch;"},
        {"?a=1&copy=2", "?a=1&copy=2"},
        {"&copy;", "\xC2\xA9"},
        {"&#65", "A"},
        {"&#0;", "\xEF\xBF\xBD"},
        {"&#xD800;", "\xEF\xBF\xBD"},
        {"&#x1F600;", "\xF0\x9F\x98\x80"},
        {"&#99999999999999999999;", "\xEF\xBF\xBD"},
        {"&nbsp;&yuml;", "\xC2\xA0\xC3\xBF"},
        {"&#150;", "\xE2\x80\x93"},  // of Windows-1252, as browsers take it
    };
    for (const ReferenceCase& c : kCases) {
        EXPECT_EQ(ToUtf8(DecodeReferences(FromUtf8(c.text))), c.decoded) << c.text;
    }
}

TEST(DecodeFileText, TakesAnyBytes) {
    struct TextCase {
        const char* why;
        std::string bytes;
        const char* text;
    };
    const TextCase cases[] = {
        {"UTF-8", "\xC3\xA9", "\xC3\xA9"},
        {"UTF-8 with mark", "\xEF\xBB\xBF\xC3\xA9", "\xC3\xA9"},
        {"marked, but broken", "\xEF\xBB\xBF\xE9z", "\xEF\xBF\xBDz"},
        {"UTF-16 little-endian",
         std::string("\xFF\xFE"
                     "a\0\xE9\0z",
                     7),
         "a\xC3\xA9"},
        {"UTF-16 big-endian", std::string("\xFE\xFF\0a\0\xE9", 6), "a\xC3\xA9"},
        {"no UTF-8", "\x80 caf\xE9", "\xE2\x82\xAC caf\xC3\xA9"},
        {"UTF-8 with a character of replacement", "\xEF\xBF\xBD", "\xEF\xBF\xBD"},
        {"zero bytes", std::string("a\0b", 3), nullptr},
        {"nothing", "", ""},
    };
    for (const TextCase& c : cases) {
        SCOPED_TRACE(c.why);
        const std::string expected = c.text ? std::string(c.text) : c.bytes;
        EXPECT_EQ(ToUtf8(DecodeFileText(c.bytes)), expected);
    }
}

TEST(HtmlHeight, FollowsThePagesStatementOrItsText) {
    const auto heightOf = [](const std::string& markup) {
        return ReadHtmlFacts(FromUtf8(markup)).height;
    };
    EXPECT_EQ(heightOf("<meta name=\"page-height\" content=\"2000\"><p>a</p>"), 2000);
    EXPECT_EQ(heightOf("<meta content='350' NAME=page-height>"), 350);
    EXPECT_EQ(heightOf("<meta name=page-height content=99999999999999>"), 1'000'000);
    EXPECT_EQ(heightOf("<meta name=page-height content=x>"), 0);
    EXPECT_EQ(heightOf("<title>a</title><style>p { color: red }</style> <p> </p>"), 0);
    const LONG line = heightOf("<p>a</p>");
    EXPECT_GT(line, 0);
    EXPECT_GT(heightOf("<p>a</p><p>b</p>"), line);
    EXPECT_GT(heightOf("<p>" + std::string(2000, 'x') + "</p>"), line);
}

TEST(TextBackend, SaysWhatIsNoPage) {
    const std::filesystem::path here = std::filesystem::current_path();
    const PageAddress cases[] = {
        {"file:///missing.html", here / "missing.html"}, {"file:///", here}, {"http://a/", {}}};
    for (const PageAddress& address : cases) {
        std::shared_ptr<PageDocument> page;
        std::string error;
        EXPECT_FALSE(TextBackend().Load({address, std::chrono::seconds(1), {}, {}}, page, error));
        EXPECT_FALSE(error.empty()) << address.url;
    }
}

}  // namespace
}  // namespace host
