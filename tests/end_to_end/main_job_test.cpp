// The main job whole: page in Chromium, add-in, job, converter, PDF on disk, looked at with foreign
// tools.

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

TEST_F(MainJobTest, TurnsTheBundledPageIntoAPdf) {
    const Finished host = Convert(QUVADA_SOURCE "/demo_page/index.html");
    ASSERT_EQ(host.code, 0) << host.output;
    EXPECT_EQ(host.output, "") << "no progress where there is no terminal";

    Tool("qpdf", {"--check", pdf_.string()});
    const std::string info = Tool("pdfinfo", {pdf_.string()});
    for (const char* entry :
         {"Title:           The Light at Gull Point: A Keeper's Year",
          "Page size:       595.3 x 841.9 pts", "Encrypted:       no", "PDF version:     1.4"}) {
        EXPECT_NE(info.find(entry), std::string::npos) << info;
    }
    const std::string text = PdfText();
    for (const char* part : {"Gull", "regatta", "Το φως του φάρου", "Свет маяка", "შუქურა",
                             "Computed, not photographed", "1012", "Outer Bar"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    EXPECT_LT(text.find('\f'), text.size() - 1) << "one page";
    const std::string plain = Tool("qpdf", {"--qdf", "--object-streams=disable",
                                            "--stream-data=preserve", pdf_.string(), "-"});
    EXPECT_NE(plain.find("mailto:keeper@gullpoint.example"), std::string::npos);
    EXPECT_NE(plain.find("https://gullpoint.example/hours?season=all&lang=en"), std::string::npos);

    // The first sheet holds the lighthouse's red on a dark header. Pixels are read from the end.
    const std::string sheet = Tool("pdftoppm", {"-r", "36", "-l", "1", pdf_.string()});
    int red = 0;
    int dark = 0;
    for (std::size_t at = sheet.size(); at >= 3; at -= 3) {
        const auto part = [&](std::size_t back) {
            return static_cast<unsigned char>(sheet[at - back]);
        };
        red += part(3) > 150 && part(2) < 90 && part(1) < 80 ? 1 : 0;
        dark += part(3) < 60 && part(2) < 80 && part(1) < 110 ? 1 : 0;
    }
    EXPECT_GT(red, 20);
    EXPECT_GT(dark, 3000);
}

TEST_F(MainJobTest, ProtectsThePdfAsTheSettingsSay) {
    const struct {
        std::uint32_t type;
        const char *revision, *method;
    } kCases[] = {{0, "R = 2", "P = "}, {2, "R = 4", "AESv2"}, {4, "R = 6", "AESv3"}};
    const std::string page = WritePage("one.html", kPage);
    for (const auto& c : kCases) {
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
        for (const char* part : {c.revision, c.method, "modify anything: not allowed"}) {
            EXPECT_NE(encryption.find(part), std::string::npos) << encryption;
        }
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
    using PageCase = std::pair<std::string, const char*>;
    for (const auto& [page, says] : {PageCase{Utf8(folder_ / "missing.html"), "missing.html"},
                                     PageCase{"http://127.0.0.1:9/", "ERR_"},
                                     PageCase{WritePage("one.html", kPage), "/nowhere/browser"}}) {
        SCOPED_TRACE(page);
        const bool noBrowser = *says == '/';
        SetEnvironment("QUVADA_CHROMIUM", noBrowser ? says : nullptr);
        const Finished host = Convert(page);
        ExpectEnd(host, 3, says);
    }
    SetEnvironment("QUVADA_CHROMIUM", nullptr);
    EXPECT_FALSE(std::filesystem::exists(pdf_));
}

TEST_F(MainJobTest, TakesAPageWhoseScriptNeverEndsAsItStands) {
    const std::string page =
        WritePage("one.html", std::string(kPage) + "<script>for (;;) {}</script>");
    const Finished host = Convert(page, {"--timeout", "2"});
    ExpectEnd(host, 0, "did not arrive in time");
    EXPECT_NE(PdfText().find("First text."), std::string::npos);
}

}  // namespace
}  // namespace end_to_end
