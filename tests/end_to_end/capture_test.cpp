// The copy of a page gives the PDF that the page itself gives: bundled pages, served over loopback
// HTTP, printed by the main job from the copy and by the browser from the live page, and compared
// as pictures.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>

#include "chromium/page.h"
#include "tests/end_to_end/host_test.h"

namespace end_to_end {
namespace {

using chromium::Milliseconds;

struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    std::string pixels;  // three bytes each
};

class CaptureTest : public HostTest {
protected:
    void SetUp() override {
        const std::filesystem::path pages = folder_ / "pages";
        std::filesystem::copy(QUVADA_SOURCE "/tests/end_to_end/pages", pages,
                              std::filesystem::copy_options::recursive);
        const std::string font = Tool("fc-match", {"-f", "%{file}", "monospace"});
        std::filesystem::create_directory(pages / "css" / "fonts");
        std::filesystem::copy(font, pages / "css" / "fonts" / "carried.ttf");
        server_.emplace("python3",
                        std::vector<std::string>{"-u", "-m", "http.server", "0", "--bind",
                                                 "127.0.0.1", "--directory", pages});
        ASSERT_TRUE(
            Eventually([this] { return server_->Output().find("/) ...") != std::string::npos; }));
        const std::string& said = server_->Output();
        const std::size_t address = said.find("http://");
        site_ = said.substr(address, said.find(')', address) - address);
    }
    /// Nothing of the conversion is left but the PDF.
    void TearDown() override { EXPECT_TRUE(std::filesystem::is_empty(temp_)); }

    std::string Tool(const char* tool, const std::vector<std::string>& arguments) {
        const Finished run = RunProgram(tool, arguments);
        EXPECT_EQ(run.code, 0) << tool << ": " << run.output;
        return run.output;
    }
    void Convert(std::vector<std::string> options) {
        options.insert(options.end(), {"--wait", "--output", pdf_.string()});
        const Finished host = RunProgram(Host(Programs()), options);
        ASSERT_EQ(host.code, 0) << host.output;
    }
    /// The page by its address, scripts and all, on the same sheet.
    void PrintLive(const std::string& url, const std::filesystem::path& pdf) {
        const auto browser = chromium::Browser::Launch();
        ASSERT_TRUE(browser) << browser.GetError().text;
        const auto page = chromium::Page::Create(**browser);
        ASSERT_TRUE(page) << page.GetError().text;
        const auto loaded = (*page)->Open(url);
        ASSERT_TRUE(loaded) << loaded.GetError().text;
        chromium::PrintOptions sheet;
        sheet.scale = sheet.width * 96 / 72 / 1280;
        ASSERT_TRUE((*page)->OverridePageRules(sheet));
        const auto printed = (*page)->Print(sheet, Milliseconds(60'000));
        ASSERT_TRUE(printed) << printed.GetError().text;
        std::ofstream(pdf, std::ios::binary) << *printed;
    }
    Picture Render(const std::filesystem::path& pdf) {
        const std::string ppm = Tool("pdftoppm", {"-r", "72", "-singlefile", pdf.string()});
        Picture picture;
        int header = 0;
        if (std::sscanf(ppm.c_str(), "P6 %u %u 255%n", &picture.width, &picture.height, &header) ==
            2) {
            picture.pixels = ppm.substr(static_cast<std::size_t>(header) + 1);
        }
        EXPECT_GE(picture.pixels.size(), 3ull * picture.width * picture.height);
        return picture;
    }

    std::optional<Process> server_;
    std::string site_;
};

/// The share of pixels that differ visibly. The sheets may differ by less than a pixel.
double Difference(const Picture& a, const Picture& b) {
    const unsigned width = std::min(a.width, b.width);
    const unsigned height = std::min(a.height, b.height);
    if (width == 0 || height == 0 || a.width > width + 1 || b.width > width + 1) return 1;
    unsigned differing = 0;
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            int most = 0;
            for (unsigned part = 0; part < 3; ++part) {
                const int one =
                    static_cast<unsigned char>(a.pixels[(y * a.width + x) * 3ull + part]);
                const int two =
                    static_cast<unsigned char>(b.pixels[(y * b.width + x) * 3ull + part]);
                most = std::max(most, std::abs(one - two));
            }
            if (most > 24) ++differing;
        }
    }
    return double(differing) / (double(width) * height);
}

TEST_F(CaptureTest, GivesTheSamePicturesAsTheLivePage) {
    const std::filesystem::path live = folder_ / "live.pdf";
    for (const char* name : {"scripts", "cyrillic", "linked", "inline", "frames"}) {
        SCOPED_TRACE(name);
        const std::string url = site_ + name + ".html";
        Convert({url});
        PrintLive(url, live);
        if (HasFatalFailure()) return;
        EXPECT_LT(Difference(Render(pdf_), Render(live)), 0.005);
        if (const char* const kept = std::getenv("QUVADA_KEEP_PICTURES")) {
            Tool("pdftoppm", {"-r", "72", "-singlefile", "-png", pdf_.string(),
                              std::string(kept) + "/" + name + "-copy"});
            Tool("pdftoppm", {"-r", "72", "-singlefile", "-png", live.string(),
                              std::string(kept) + "/" + name + "-live"});
        }
    }
    Convert({site_ + "scripts.html"});
    EXPECT_GT(Difference(Render(pdf_), Render(live)), 0.02) << "other pages are told apart";
}

TEST_F(CaptureTest, ConvertsWhatIsSelectedInAnInnerFrame) {
    Convert({site_ + "frames.html", "--select", "#chosen", "--frame", "1/0"});
    const std::string text = Tool("pdftotext", {pdf_.string(), "-"});
    EXPECT_NE(text.find("The chosen part, with a link"), std::string::npos) << text;
    EXPECT_EQ(text.find("Before"), std::string::npos);
    EXPECT_EQ(text.find("outer"), std::string::npos);
    EXPECT_NE(Tool("pdfimages", {"-list", pdf_.string()}).find("120"), std::string::npos);
    const std::string plain =
        Tool("qpdf", {"--qdf", "--object-streams=disable", pdf_.string(), "-"});
    EXPECT_NE(plain.find(site_ + "linked.html"), std::string::npos) << "the link's address";
    if (const char* const kept = std::getenv("QUVADA_KEEP_PICTURES")) {
        Tool("pdftoppm",
             {"-r", "72", "-singlefile", "-png", pdf_.string(), std::string(kept) + "/selection"});
    }
}

}  // namespace
}  // namespace end_to_end
