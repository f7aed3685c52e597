#include "chromium/page.h"

#include <arpa/inet.h>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "chromium/request_filter.h"
#include "tests/chromium/browser_support.h"

namespace chromium {
namespace {

namespace fs = std::filesystem;

/// A socket that takes connections, so that a browser waits for an answer which never comes.
class SilentServer {
public:
    SilentServer() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        const auto generic = reinterpret_cast<sockaddr*>(&address);
        if (bind(socket_, generic, size) == 0 && listen(socket_, 8) == 0 &&
            getsockname(socket_, generic, &size) == 0) {
            url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
        }
    }
    ~SilentServer() { close(socket_); }

    const std::string& Url() const { return url_; }

private:
    int socket_;
    std::string url_;
};

class PageTest : public testing::Test {
protected:
    void SetUp() override {
        QVD_NEED_BROWSER();
        Start(Scripts::On);
    }

    void Start(Scripts scripts) {
        LaunchOptions options;
        options.scripts = scripts;
        auto launched = Browser::Launch(options);
        ASSERT_TRUE(launched) << launched.GetError().text;
        browser_ = std::move(*launched);
    }

    std::unique_ptr<Page> MakePage(const PageOptions& options = {}) {
        auto page = Page::Create(*browser_, options);
        EXPECT_TRUE(page) << page.GetError().text;
        return page ? std::move(*page) : nullptr;
    }

    static std::string Text(Page& page, const std::string& script) {
        const auto value = page.Evaluate(script);
        EXPECT_TRUE(value) << value.GetError().text;
        return value ? value->Text() : "";
    }

    std::unique_ptr<Browser> browser_;
};

TEST_F(PageTest, LoadsAndReportsWhatCannotBeLoaded) {
    const auto page = MakePage();
    struct Case {
        const char* url;
        const char* error;  // part of it; null when the page loads
    };
    const Case kCases[] = {
        {"about:blank", nullptr},
        {"file:///nowhere/at/all.html", "ERR_FILE_NOT_FOUND"},
        {"data:text/html,<title>one</title>", nullptr},
        {"http://127.0.0.1:1/", "can't be loaded"},
        {"no address", "can't be loaded"},
        {"data:text/html,<title>two</title>#part", nullptr},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.url);
        const auto loaded = page->Open(c.url);
        ASSERT_EQ(static_cast<bool>(loaded), c.error == nullptr) << loaded.GetError().text;
        if (c.error) {
            EXPECT_NE(loaded.GetError().text.find(c.error), std::string::npos)
                << loaded.GetError().text;
        }
    }
    EXPECT_EQ(Text(*page, "document.title"), "two");
}

TEST_F(PageTest, WaitsForNoServerThatNeverAnswers) {
    const SilentServer server;
    const auto page = MakePage();
    const auto dead = page->Open(server.Url(), Milliseconds(700));
    ASSERT_FALSE(dead);
    EXPECT_NE(dead.GetError().text.find("within 0.7 s"), std::string::npos);

    const fs::path file =
        fs::temp_directory_path() / ("part-" + std::to_string(getpid()) + ".html");
    std::ofstream(file) << "<title>here</title><img src='" << server.Url() << "'>";
    const auto part = page->Open("file://" + file.string(), Milliseconds(1'500));
    fs::remove(file);
    ASSERT_TRUE(part) << part.GetError().text;
    EXPECT_EQ(*part, Loaded::Part);
    EXPECT_EQ(Text(*page, "document.title"), "here");
}

TEST_F(PageTest, GetsPastDialogsEndlessScriptsAndCrashes) {
    const auto page = MakePage();
    const auto asked =
        page->Open(DataUrl("<script>alert(1); document.title = confirm('?')</script>"));
    ASSERT_TRUE(asked) << asked.GetError().text;
    EXPECT_EQ(Text(*page, "document.title"), "true");

    const auto endless = page->Evaluate("for (;;) {}", nullptr, Milliseconds(500));
    EXPECT_FALSE(endless);
    EXPECT_EQ(Text(*page, "document.title"), "true");

    const auto thrown = page->Evaluate("throw new Error('own fault')");
    ASSERT_FALSE(thrown);
    EXPECT_NE(thrown.GetError().text.find("own fault"), std::string::npos);

    const Clock::time_point start = Clock::now();
    const auto crash = page->Call("Page.crash");
    EXPECT_FALSE(crash);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(page->HasCrashed());
    EXPECT_FALSE(page->Evaluate("1"));
    ASSERT_TRUE(page->Open(DataUrl("<title>again</title>")));
    EXPECT_EQ(Text(*page, "document.title"), "again");
}

TEST_F(PageTest, RunsNoScriptOfThePageWhenTheyAreOff) {
    ASSERT_NO_FATAL_FAILURE(Start(Scripts::Off));
    const auto page = MakePage();
    const std::string frame = DataUrl("<p id=p>inner</p><script>p.textContent='ran'</script>");
    ASSERT_TRUE(page->Open(
        DataUrl("<title>kept</title><script>document.title='ran'</script>"
                "<body onload=\"document.title='ran'\"><iframe src='" +
                frame +
                "'></iframe>"
                "<svg xmlns='http://www.w3.org/2000/svg' onload=\"document.title='ran'\"></svg>")));
    EXPECT_EQ(Text(*page, "document.title"), "kept");
    const auto frames = page->Frames();
    ASSERT_TRUE(frames);
    ASSERT_EQ(frames->size(), 2u);
    const auto inner = page->Evaluate("document.getElementById('p').textContent", &(*frames)[1]);
    ASSERT_TRUE(inner) << inner.GetError().text;
    EXPECT_EQ(inner->Text(), "inner");
}

TEST_F(PageTest, ServesAndRefusesRequestsOfEveryFrame) {
    std::vector<std::string> asked;
    auto filter = RequestFilter::Install(*browser_, [&](const Request& request) {
        asked.push_back(request.type + " " + request.url);
        Answer answer;
        if (request.url == "http://site.example/") {
            answer.kind = Answer::Kind::Serve;
            answer.headers = {{"Content-Type", "text/html; charset=utf-8"}};
            answer.body =
                "<link rel=stylesheet href=s.css><p id=p>\xC3\xBC</p>"
                "<iframe src='http://other.example/'></iframe><iframe src='file:///etc/passwd'>";
        } else if (request.url == "http://site.example/s.css") {
            answer.kind = Answer::Kind::Serve;
            answer.headers = {{"Content-Type", "text/css"}};
            answer.body = "/* note */ p { color: rgb(1, 2, 3) }";
        }
        return answer;
    });
    ASSERT_TRUE(filter) << filter.GetError().text;
    const auto page = MakePage();
    const auto loaded = page->Open("http://site.example/");
    ASSERT_TRUE(loaded) << loaded.GetError().text;
    EXPECT_EQ(Text(*page, "p.textContent"), "\xC3\xBC");
    EXPECT_EQ(Text(*page, "getComputedStyle(p).color"), "rgb(1, 2, 3)");
    EXPECT_NE(std::find(asked.begin(), asked.end(), "Document http://other.example/"), asked.end());
    EXPECT_EQ(std::find(asked.begin(), asked.end(), "Document file:///etc/passwd"), asked.end());
    const auto frames = page->Frames();
    ASSERT_TRUE(frames);
    const auto sheet = page->Resource(frames->front(), "http://site.example/s.css");
    ASSERT_TRUE(sheet) << sheet.GetError().text;
    EXPECT_EQ(*sheet, "/* note */ p { color: rgb(1, 2, 3) }");
}

TEST_F(PageTest, SetsUpFramesOfOtherSitesBeforeTheyRun) {
    const auto decide = [](const Request& request) {
        if (request.url.starts_with("file:")) return Answer::Continue();
        Answer answer;
        answer.kind = Answer::Kind::Serve;
        answer.headers = {{"Content-Type", "text/html"}};
        answer.body = "<p id=p>inner</p><script>p.textContent = 'ran'; alert(1)</script>";
        return answer;
    };
    const fs::path file =
        fs::temp_directory_path() / ("frame-" + std::to_string(getpid()) + ".html");
    std::ofstream(file) << "<iframe src='http://other.example/'></iframe>";
    for (const Scripts scripts : {Scripts::Off, Scripts::On}) {
        ASSERT_NO_FATAL_FAILURE(Start(scripts));
        const auto filter = RequestFilter::Install(*browser_, decide);
        ASSERT_TRUE(filter) << filter.GetError().text;
        const auto page = MakePage();
        const auto loaded = page->Open("file://" + file.string());
        ASSERT_TRUE(loaded) << loaded.GetError().text;
        EXPECT_EQ(*loaded, Loaded::Whole);
        const auto frames = page->Frames();
        ASSERT_TRUE(frames);
        ASSERT_EQ(frames->size(), 2u);
        EXPECT_EQ(frames->back().url, "http://other.example/");
        EXPECT_NE(frames->back().session, page->Session()) << "the case that is to be tested";
        const auto inner = page->Evaluate("p.textContent", &frames->back());
        ASSERT_TRUE(inner) << inner.GetError().text;
        EXPECT_EQ(inner->Text(), scripts == Scripts::On ? "ran" : "inner");
    }
    fs::remove(file);
}

TEST_F(PageTest, PrintsAtTheGivenWidthAndAgainstPageRules) {
    const auto page = MakePage();
    ASSERT_TRUE(page->Open(DataUrl("<style>@page{size:100mm 50mm;margin:30mm}</style><p>x")));
    PrintOptions options;
    options.width = 595;
    options.height = 842;
    ASSERT_TRUE(page->OverridePageRules(options));
    const auto pdf = page->Print(options, Milliseconds(20'000));
    ASSERT_TRUE(pdf) << pdf.GetError().text;
    EXPECT_TRUE(pdf->starts_with("%PDF-1.4"));
    EXPECT_NE(pdf->find("/MediaBox [0 0 594.95996 841.91998]"), std::string::npos);

    options.marginLeft = 600;
    EXPECT_FALSE(page->Print(options, Milliseconds(20'000)));
}

}  // namespace
}  // namespace chromium
