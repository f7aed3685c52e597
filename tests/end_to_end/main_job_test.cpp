// The main job whole: page in Chromium, add-in, job, converter, PDF on disk, looked at with foreign
// tools.

#include <cstdio>
#include <fstream>

#include "platform/testing.h"
#include "settings/conversion_settings.h"
#include "tests/end_to_end/host_test.h"

namespace end_to_end {
namespace {

using platform::testing::SetEnvironment;

constexpr char kPage[] = "<title>One</title><p>First text.";

class MainJobTest : public HostTest {
protected:
    Finished Convert(const std::string& page, std::vector<std::string> options = {}) {
        options.insert(options.end(), {page, "--wait", "--output", Utf8(pdf_)});
        return RunProgram(Host(Programs()), options);
    }
    std::string Tool(const char* tool, std::vector<std::string> arguments) {
        const Finished run = RunProgram(tool, arguments);
        EXPECT_EQ(run.code, 0) << tool << ": " << run.output;
        return run.output;
    }
    std::string PdfText() { return Tool("pdftotext", {pdf_.string(), "-"}); }
    /// Nothing of the conversion is left but the PDF.
    void TearDown() override {
        EXPECT_TRUE(Eventually([this] { return ProcessesNaming(folder_.string()).empty(); }));
        EXPECT_TRUE(std::filesystem::is_empty(temp_));
    }
};

/// The value behind "Name:" in what pdfinfo prints.
std::string Entry(const std::string& info, const std::string& name) {
    const std::size_t at = info.find(name + ":");
    if (at == info.npos) return {};
    const std::size_t value = info.find_first_not_of(' ', at + name.size() + 1);
    return info.substr(value, info.find('\n', value) - value);
}

/// Pixels of a binary PPM for which `wanted` holds.
template <class Wanted>
std::size_t CountPixels(const std::string& picture, Wanted wanted) {
    unsigned width = 0;
    unsigned height = 0;
    int header = 0;
    if (std::sscanf(picture.c_str(), "P6 %u %u 255%n", &width, &height, &header) != 2) return 0;
    std::size_t count = 0;
    for (std::size_t i = static_cast<std::size_t>(header) + 1; i + 2 < picture.size(); i += 3) {
        const auto part = [&](std::size_t k) {
            return int{static_cast<unsigned char>(picture[i + k])};
        };
        count += wanted(part(0), part(1), part(2)) ? 1 : 0;
    }
    return count;
}

TEST_F(MainJobTest, TurnsTheBundledPageIntoAPdf) {
    const Finished host = Convert(QUVADA_SOURCE "/demo_page/index.html");
    ASSERT_EQ(host.code, 0) << host.output;
    EXPECT_EQ(host.output, "") << "no progress where there is no terminal";

    Tool("qpdf", {"--check", pdf_.string()});
    const std::string info = Tool("pdfinfo", {pdf_.string()});
    EXPECT_EQ(Entry(info, "Title"), "The Light at Gull Point: A Keeper's Year");
    EXPECT_TRUE(Entry(info, "Page size").starts_with("595.3 x 841.9 pts")) << info;
    EXPECT_EQ(Entry(info, "Encrypted"), "no");
    EXPECT_EQ(Entry(info, "PDF version"), "1.4");
    EXPECT_GT(std::stoi(Entry(info, "Pages")), 1) << info;

    const std::string text = PdfText();
    for (const char* part : {"Gull", "regatta", "Το φως του φάρου", "Свет маяка", "შუქურა",
                             "Computed, not photographed", "1012", "Outer Bar"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    const std::string plain = Tool("qpdf", {"--qdf", "--object-streams=disable",
                                            "--stream-data=preserve", pdf_.string(), "-"});
    EXPECT_NE(plain.find("mailto:keeper@gullpoint.example"), std::string::npos);
    EXPECT_NE(plain.find("https://gullpoint.example/hours?season=all&lang=en"), std::string::npos);

    // The first sheet holds the lighthouse's red and the evening sky, on a dark header.
    const std::string sheet = Tool("pdftoppm", {"-r", "36", "-l", "1", pdf_.string()});
    const auto isRed = [](int r, int g, int b) { return r > 150 && g < 90 && b < 80; };
    const auto isSky = [](int r, int g, int b) { return r > 190 && g > 90 && g < 190 && b < 130; };
    const auto isDark = [](int r, int g, int b) { return r < 60 && g < 80 && b < 110; };
    EXPECT_GT(CountPixels(sheet, isRed), 20u);
    EXPECT_GT(CountPixels(sheet, isSky), 300u);
    EXPECT_GT(CountPixels(sheet, isDark), 3000u);
}

TEST_F(MainJobTest, ProtectsThePdfAsTheSettingsSay) {
    struct LevelCase {
        std::uint32_t type;
        const char* revision;
        const char* method;
    };
    constexpr LevelCase kCases[] = {
        {0, "R = 2", "P = "}, {2, "R = 4", "AESv2"}, {4, "R = 6", "AESv3"}};
    const std::string page = WritePage("one.html", kPage);
    for (const LevelCase& c : kCases) {
        SCOPED_TRACE(c.revision);
        ConversionSettings settings(TEXT("Software\\Norvane Systems\\Quvada 6\\IE Addin"));
        ASSERT_EQ(settings.Load(), S_OK);
        settings.Security->Enabled = true;
        settings.Security->HasUserPassword = true;
        settings.Security->HasOwnerPassword = true;
        ASSERT_TRUE(settings.Security->UserPassword.Assign(TEXT("open sesame")));
        ASSERT_TRUE(settings.Security->OwnerPassword.Assign(TEXT("master")));
        settings.Security->Type = c.type;
        ASSERT_EQ(settings.Save(), S_OK);
        const Finished host = Convert(page);
        ASSERT_EQ(host.code, 0) << host.output;

        EXPECT_NE(RunProgram("pdftotext", {pdf_.string(), "-"}).code, 0) << "opens for anybody";
        EXPECT_NE(
            Tool("pdftotext", {"-upw", "open sesame", pdf_.string(), "-"}).find("First text."),
            std::string::npos);
        const std::string encryption =
            Tool("qpdf", {"--show-encryption", "--password=open sesame", pdf_.string()});
        EXPECT_NE(encryption.find(c.revision), std::string::npos) << encryption;
        EXPECT_NE(encryption.find("modify anything: not allowed"), std::string::npos) << encryption;
        EXPECT_NE(encryption.find(c.method), std::string::npos) << encryption;
    }
}

TEST_F(MainJobTest, AsksForTheFileInProtectedModeRemovesTheJobAndOpensThePdf) {
    // What a desktop opens files with.
    const std::filesystem::path opener = folder_ / "xdg-open";
    std::ofstream(opener) << "#!/bin/sh\nprintf %s \"$1\" > \"$0.got\"\n";
    std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH");
    const std::string withOpener = Utf8(folder_) + ":" + path;
    SetEnvironment("PATH", withOpener.c_str());
    SetEnvironment("DISPLAY", ":none");
    SetEnvironment("QUVADA_NO_OPEN", nullptr);
    const Finished host = Convert(WritePage("one.html", kPage), {"--protected"});
    SetEnvironment("PATH", path.c_str());
    SetEnvironment("DISPLAY", nullptr);
    ASSERT_EQ(host.code, 0) << host.output;
    EXPECT_NE(PdfText().find("First text."), std::string::npos);
    EXPECT_TRUE(Eventually([&] { return ReadFile(opener.string() + ".got") == Utf8(pdf_); }));
}

TEST_F(MainJobTest, TellsWhyThereIsNoPage) {
    struct PageCase {
        std::string page;
        const char* says;
    };
    const PageCase cases[] = {{Utf8(folder_ / "missing.html"), "missing.html"},
                              {"http://127.0.0.1:9/", "ERR_"},
                              {WritePage("one.html", kPage), "/nowhere/browser"}};
    for (const PageCase& c : cases) {
        SCOPED_TRACE(c.page);
        const bool noBrowser = *c.says == '/';
        SetEnvironment("QUVADA_CHROMIUM", noBrowser ? c.says : nullptr);
        const Finished host = Convert(c.page);
        EXPECT_EQ(host.code, 3);
        EXPECT_NE(host.output.find(c.says), std::string::npos) << host.output;
    }
    SetEnvironment("QUVADA_CHROMIUM", nullptr);
    EXPECT_FALSE(std::filesystem::exists(pdf_));
}

TEST_F(MainJobTest, TakesAPageWhoseScriptNeverEndsAsItStands) {
    const std::string page =
        WritePage("one.html", std::string(kPage) + "<script>for (;;) {}</script>");
    const Finished host = Convert(page, {"--timeout", "2"});
    EXPECT_EQ(host.code, 0) << host.output;
    EXPECT_NE(host.output.find("did not arrive in time"), std::string::npos) << host.output;
    EXPECT_NE(PdfText().find("First text."), std::string::npos);
}

}  // namespace
}  // namespace end_to_end
