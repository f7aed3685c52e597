// The converter as a process of its own: what comes in by its command line, what it leaves.

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <qpdf/QPDF.hh>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "converter/result.h"
#include "tests/chromium/browser_support.h"
#include "tests/converter/block_bytes.h"
#include "tests/support/scratch_folder.h"

namespace converter {
namespace {

namespace fs = std::filesystem;
using test_support::ReadHostFile;

constexpr const char* kNumbers =
    "\"\" \"\" \\b \\h \\r \\iw 1280 \\ih 800 \\ld 0 \\is 65540 \\ic 1 \\pw 5953 \\ph 8419 \\mt 0 "
    "\\mb 0 \\ml 0 \\mr 0 ";

class ProcessTest : public testing::Test {
protected:
    ProcessTest() {
        fs::create_directories(folder_ / "tmp");
        setenv("QUVADA_HOME", (folder_ / "home").c_str(), 1);
        setenv("QUVADA_NO_OPEN", "1", 1);
        setenv("TMPDIR", (folder_ / "tmp").c_str(), 1);
        unsetenv("QUVADA_SAVE_AS");
        unsetenv("QUVADA_CHROMIUM");
        std::ofstream(page_)
            << "<meta http-equiv=refresh content='0;url=file:///etc/passwd'><title>A page</title>x";
    }
    ~ProcessTest() override {
        unsetenv("TMPDIR");
        unsetenv("QUVADA_HOME");
    }

    pid_t Start(const std::string& argument, const char* option = nullptr) {
        const pid_t pid = fork();
        if (pid != 0) return pid;
        const int log = open((folder_ / "output").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(open("/dev/null", O_RDONLY), 0);
        dup2(log, 1);
        dup2(log, 2);
        const char* first = option ? option : argument.c_str();
        execl(QVD_CONVERTER, QVD_CONVERTER, first, option ? argument.c_str() : nullptr, nullptr);
        _exit(127);
    }

    static int Wait(pid_t pid) {
        int status = 0;
        waitpid(pid, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    /// \return the exit code; the output is in `Output()`.
    int Run(const std::string& argument, const char* option = nullptr) {
        return Wait(Start(argument, option));
    }

    std::string Output() const { return ReadHostFile(folder_ / "output"); }

    std::string WriteBlock(const Bytes& block, const char* name = "qvdstg_1.bin") {
        const fs::path path = folder_ / name;
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(block.data()),
                  static_cast<std::streamsize>(block.size()));
        return "Z:" + path.string();
    }

    Bytes Block() const {
        return PageBlock(platform::FromUtf8(page_.string()), platform::FromUtf8(pdf_.string()));
    }

    /// Besides what the test made itself.
    void ExpectNothingLeft() const { EXPECT_TRUE(fs::is_empty(folder_ / "tmp")); }

    const test_support::ScratchFolder folder_;
    const fs::path page_ = folder_ / "page.html";
    const fs::path pdf_ = folder_ / "out.pdf";
};

TEST_F(ProcessTest, ConvertsAJobFromAFileAndLetsItsPageLeadToNoOther) {
    QVD_NEED_BROWSER();
    const std::string line = kNumbers + ("\\bp " + WriteBlock(Block())) + " ";
    ASSERT_EQ(Run(line), 0) << Output();
    EXPECT_EQ(Output(), "");
    QPDF pdf;
    pdf.processFile(pdf_.c_str());
    ASSERT_EQ(pdf.getAllPages().size(), 1u);
    QPDFObjectHandle page = pdf.getAllPages().front();
    EXPECT_EQ(page.getKey("/MediaBox").unparse(), "[ 0 0 595.3 841.9 ]");
    EXPECT_EQ(pdf.getTrailer().getKey("/Info").getKey("/Title").getUTF8Value(), "A page");
    EXPECT_FALSE(fs::exists(folder_ / "qvdstg_1.bin")) << "the storage file is the converter's";
    EXPECT_TRUE(fs::exists(page_)) << "the page is not";
    ExpectNothingLeft();
}

TEST_F(ProcessTest, GoesOnAfterAFailedItemAndAsksNobodyWhenHidden) {
    QVD_NEED_BROWSER();
    BlockBytes block;
    block.Byte(12).Byte(0).Byte(0).Byte(0).Byte(1).Text(TEXT("Title")).Byte(0).Zeros(8).Byte(0);
    block.U32(3);
    for (const fs::path& source : {folder_ / "none.html", page_, page_}) {
        block.Text(platform::FromUtf8(source.string())).Zeros(12).U32(0).Zeros(3);
    }
    std::string line = kNumbers + ("\\hi \\bp " + WriteBlock(block.Done()));
    line.replace(line.find("65540"), 5, "15");
    const fs::path old = fs::current_path();
    fs::current_path(folder_.Path());
    EXPECT_EQ(Run(line), static_cast<int>(ExitCode::PageFailed)) << Output();
    fs::current_path(old);
    EXPECT_NE(Output().find("the file is PDF 1.7"), std::string::npos);
    EXPECT_TRUE(ReadHostFile(folder_ / "Title.pdf").starts_with("%PDF-1.7"));
    EXPECT_TRUE(fs::exists(folder_ / "Title (2).pdf"));
    ExpectNothingLeft();
}

TEST_F(ProcessTest, RefusesWhatIsMalformedAndWritesNothing) {
    const Bytes good = Block();
    const std::string cut = WriteBlock(Bytes(good.begin(), good.end() - 1), "qvdstg_c.bin");
    struct Case {
        std::string line;
        ExitCode code;
    };
    const Case kCases[] = {
        {"", ExitCode::BadCommandLine},
        {"\"\" \"\" \\q ", ExitCode::BadCommandLine},
        {"--nothing", ExitCode::BadCommandLine},
        {kNumbers + std::string("\\bp Z:\\none\\none.bin "), ExitCode::BadJob},
        {kNumbers + std::string("\\bp Z:\\tmp "), ExitCode::BadJob},
        {kNumbers + std::string("\\sm QVD:none "), ExitCode::BadJob},
        {kNumbers + ("\\bp " + cut), ExitCode::BadJob},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Run(c.line), static_cast<int>(c.code)) << Output();
        EXPECT_TRUE(Output().starts_with("PageRenderApp: ")) << Output();
        EXPECT_FALSE(fs::exists(pdf_));
    }
    EXPECT_TRUE(fs::exists(folder_ / "qvdstg_c.bin")) << "nobody has taken it over";
    ExpectNothingLeft();
}

TEST_F(ProcessTest, LeavesNoPdfAndNoFilesOfItsOwnWhenThePageFails) {
    fs::copy(page_, folder_ / "qvd_5a.html");
    fs::create_directories(folder_ / "qvd_5a_files");
    const std::string line =
        kNumbers +
        ("\\bp " + WriteBlock(PageBlock(platform::FromUtf8((folder_ / "qvd_5a.html").string()),
                                        platform::FromUtf8(pdf_.string()), true)));
    ASSERT_EQ(Run(line, "--explain"), 0) << Output();
    EXPECT_TRUE(fs::exists(folder_ / "qvdstg_1.bin")) << "explaining deletes nothing";
    EXPECT_TRUE(fs::exists(folder_ / "qvd_5a.html"));

    setenv("QUVADA_CHROMIUM", "/bin/false", 1);
    EXPECT_EQ(Run(line), static_cast<int>(ExitCode::PageFailed)) << Output();
    EXPECT_NE(Output().find("/bin/false could not be used"), std::string::npos) << Output();
    for (const char* gone : {"out.pdf", "qvdstg_1.bin", "qvd_5a.html", "qvd_5a_files"}) {
        EXPECT_FALSE(fs::exists(folder_ / gone)) << gone;
    }
    ExpectNothingLeft();
}

TEST_F(ProcessTest, EndsCleanlyOnASignal) {
    // A browser that says when it has started, and nothing else.
    const fs::path program = folder_ / "browser";
    const fs::path started = folder_ / "started";
    std::ofstream(program) << "#!/bin/sh\n: > '" << started.string() << "'\nexec sleep 60\n";
    fs::permissions(program, fs::perms::owner_all);
    setenv("QUVADA_CHROMIUM", program.c_str(), 1);
    const pid_t pid = Start(kNumbers + ("\\bp " + WriteBlock(Block())));
    while (!fs::exists(started)) std::this_thread::yield();
    kill(pid, SIGTERM);
    EXPECT_EQ(Wait(pid), static_cast<int>(ExitCode::Cancelled)) << Output();
    EXPECT_FALSE(fs::exists(pdf_));
    ExpectNothingLeft();
}

}  // namespace
}  // namespace converter
