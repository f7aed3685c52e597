// The converter as a process of its own: what comes in by its command line, what it leaves.

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <qpdf/QPDF.hh>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "converter/result.h"
#include "platform/memory.h"
#include "tests/chromium/browser_support.h"
#include "tests/converter/block_bytes.h"

extern char** environ;

namespace converter {
namespace {

namespace fs = std::filesystem;
using platform::WideString;

constexpr const char* kNumbers =
    "\"\" \"\" \\b \\h \\r \\iw 1280 \\ih 800 \\ld 0 \\is 65540 \\ic 1 \\pw 5953 \\ph 8419 \\mt 0 "
    "\\mb 0 \\ml 0 \\mr 0 ";

std::string ReadText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// The layer looks its profile up once, so that all tests of a process share one.
const fs::path& ProfileOfAll() {
    static const fs::path& folder = *new fs::path([] {
        std::string name = fs::temp_directory_path() / "converter-profile-XXXXXX";
        return fs::path(mkdtemp(name.data()));
    }());
    static const bool kept = [] {
        setenv("QUVADA_HOME", folder.c_str(), 1);
        return std::atexit([] { fs::remove_all(folder); }) == 0;
    }();
    EXPECT_TRUE(kept);
    return folder;
}

class ProcessTest : public testing::Test {
protected:
    ProcessTest() {
        ProfileOfAll();
        std::string name = fs::temp_directory_path() / "process-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(name.data()));
        fs::create_directories(folder_ / "tmp");
        setenv("QUVADA_NO_OPEN", "1", 1);
        setenv("TMPDIR", (folder_ / "tmp").c_str(), 1);
        unsetenv("QUVADA_SAVE_AS");
        unsetenv("QUVADA_CHROMIUM");
        page_ = folder_ / "page.html";
        pdf_ = folder_ / "out.pdf";
        std::ofstream(page_) << "<!DOCTYPE html><title>A page</title><p>text";
    }
    ~ProcessTest() override {
        unsetenv("TMPDIR");
        fs::remove_all(folder_);
    }

    pid_t Start(const std::vector<std::string>& arguments) {
        std::vector<std::string> words{QVD_CONVERTER};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& word : words) pointers.push_back(word.data());
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
        const std::string log = folder_ / "output";
        posix_spawn_file_actions_addopen(&files, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0600);
        posix_spawn_file_actions_adddup2(&files, 1, 2);
        pid_t pid = -1;
        EXPECT_EQ(posix_spawn(&pid, QVD_CONVERTER, &files, nullptr, pointers.data(), environ), 0);
        posix_spawn_file_actions_destroy(&files);
        return pid;
    }

    static int Wait(pid_t pid) {
        int status = 0;
        waitpid(pid, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    /// \return the exit code; the output is in `Output()`.
    int Run(const std::vector<std::string>& arguments) { return Wait(Start(arguments)); }

    std::string Output() const { return ReadText(folder_ / "output"); }

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

    fs::path folder_;
    fs::path page_;
    fs::path pdf_;
};

TEST_F(ProcessTest, ConvertsAJobFromAFile) {
    QVD_NEED_BROWSER();
    const std::string line = kNumbers + ("\\bp " + WriteBlock(Block())) + " ";
    ASSERT_EQ(Run({line}), 0) << Output();
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

TEST_F(ProcessTest, ConvertsAJobFromSharedMemory) {
    QVD_NEED_BROWSER();
    const Bytes block = Block();
    const WideString name = platform::FromUtf8("QVD:IEP:Test" + std::to_string(getpid()));
    const platform::MappingHandle mapping(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                           static_cast<DWORD>(block.size()), name.c_str()));
    ASSERT_TRUE(mapping);
    {
        const platform::MappedView view(
            MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, block.size()));
        ASSERT_TRUE(view);
        std::memcpy(view.Get(), block.data(), block.size());
    }
    const std::string line = kNumbers + ("\\sm " + platform::ToUtf8(name)) + " ";
    ASSERT_EQ(Run({"--explain", line}), 0) << Output();
    EXPECT_NE(Output().find("BlockSize                 " + std::to_string(block.size())),
              std::string::npos);
    ASSERT_EQ(Run({line}), 0) << Output();
    EXPECT_TRUE(fs::exists(pdf_));
}

TEST_F(ProcessTest, AsksForTheNameWhenTheJobSaysSo) {
    QVD_NEED_BROWSER();
    BlockBytes block;
    block.Byte(12).Byte(0).Byte(0).Byte(0).Byte(1).Text(TEXT("")).Byte(0).Zeros(8).Byte(0).U32(1);
    block.Text(platform::FromUtf8(page_.string())).Zeros(12).U32(0).Zeros(3);
    const std::string path = WriteBlock(block.Done(), "kept.bin");
    const std::string line = kNumbers + ("\\bp " + path) + " ";
    EXPECT_EQ(Run({line}), static_cast<int>(ExitCode::NoOutputName)) << Output();
    setenv("QUVADA_SAVE_AS", (folder_ / "asked").c_str(), 1);
    EXPECT_EQ(Run({line}), 0) << Output();
    EXPECT_TRUE(fs::exists(folder_ / "asked.pdf"));
    EXPECT_TRUE(fs::exists(folder_ / "kept.bin")) << "a name that the add-in does not give";
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
    fs::current_path(folder_);
    EXPECT_EQ(Run({line}), static_cast<int>(ExitCode::PageFailed)) << Output();
    fs::current_path(old);
    EXPECT_NE(Output().find("the file is PDF 1.7"), std::string::npos);
    EXPECT_TRUE(ReadText(folder_ / "Title.pdf").starts_with("%PDF-1.7"));
    EXPECT_TRUE(fs::exists(folder_ / "Title (2).pdf"));
    ExpectNothingLeft();
}

TEST_F(ProcessTest, LetsNoPageLeadToAnotherFile) {
    QVD_NEED_BROWSER();
    std::ofstream(folder_ / "t.html")
        << "<meta http-equiv=refresh content='0;url=file:///etc/passwd'><title>Kept</title>x";
    page_ = folder_ / "t.html";
    ASSERT_EQ(Run({kNumbers + ("\\bp " + WriteBlock(Block()))}), 0) << Output();
    QPDF pdf;
    pdf.processFile(pdf_.c_str());
    EXPECT_EQ(pdf.getTrailer().getKey("/Info").getKey("/Title").getUTF8Value(), "Kept");
}

TEST_F(ProcessTest, RefusesWhatIsMalformedAndWritesNothing) {
    const Bytes good = Block();
    Bytes cut(good.begin(), good.end() - 1);
    Bytes version = good;
    version[4] = 13;
    struct Case {
        const char* why;
        std::string line;
        ExitCode code;
    };
    const Case kCases[] = {
        {"no arguments", "", ExitCode::BadCommandLine},
        {"unknown switch", std::string("\"\" \"\" \\q "), ExitCode::BadCommandLine},
        {"missing file", std::string(kNumbers) + "\\bp Z:\\none\\none.bin ", ExitCode::BadJob},
        {"missing memory", std::string(kNumbers) + "\\sm QVD:none ", ExitCode::BadJob},
        {"cut off", kNumbers + ("\\bp " + WriteBlock(cut, "qvdstg_c.bin")), ExitCode::BadJob},
        {"other version", kNumbers + ("\\bp " + WriteBlock(version, "qvdstg_d.bin")),
         ExitCode::BadJob},
        {"a folder", std::string(kNumbers) + "\\bp Z:\\tmp ", ExitCode::BadJob},
        {"unknown option", "--nothing", ExitCode::BadCommandLine},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(Run({c.line}), static_cast<int>(c.code)) << Output();
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
    ASSERT_EQ(Run({"--explain", line}), 0) << Output();
    EXPECT_TRUE(fs::exists(folder_ / "qvdstg_1.bin")) << "explaining deletes nothing";
    EXPECT_TRUE(fs::exists(folder_ / "qvd_5a.html"));

    setenv("QUVADA_CHROMIUM", "/bin/false", 1);
    EXPECT_EQ(Run({line}), static_cast<int>(ExitCode::PageFailed)) << Output();
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
    const pid_t pid = Start({kNumbers + ("\\bp " + WriteBlock(Block()))});
    while (!fs::exists(started)) std::this_thread::yield();
    kill(pid, SIGTERM);
    EXPECT_EQ(Wait(pid), static_cast<int>(ExitCode::Cancelled)) << Output();
    EXPECT_FALSE(fs::exists(pdf_));
    ExpectNothingLeft();
}

}  // namespace
}  // namespace converter
