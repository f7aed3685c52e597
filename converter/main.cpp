// PageRenderApp: turns the add-in's jobs into PDF files.

#include <atomic>
#include <cstdio>
#include <exception>
#include <signal.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

#include "converter/clean_up.h"
#include "converter/conversion.h"
#include "converter/explain.h"
#include "converter/job_source.h"
#include "converter/paths.h"
#include "platform/shell.h"

namespace converter {
namespace {

using platform::WideString;

constexpr const char kHelp[] =
    R"(PageRenderApp.x86.exe: turns a job of the browser's add-in into a PDF.

usage: PageRenderApp.x86.exe ARGUMENTS
       PageRenderApp.x86.exe [--show-passwords] --explain ARGUMENTS
       PageRenderApp.x86.exe [--show-passwords] --explain-block FILE
       PageRenderApp.x86.exe --help

ARGUMENTS is one text of this form, as the add-in gives it:
  "" "" [\l] [\b] [\h] [\r] [\hi] \iw N \ih N \ld N \is N \ic N \pw N \ph N
  \mt N \mb N \ml N \mr N  \bp FILE | \sm NAME  [\ce TEXT]

  \l, \b, \h   landscape; background colours; links in the PDF
  \r           show the PDF afterwards         \hi  ask and show nothing
  \iw, \ih     width and height of the window, pixels
  \ld          wait after loading, milliseconds
  \is, \ic     PDF version, 65536 + minor version; compression 0 to 2
  \pw, \ph     width and height of the sheet, tenths of a point
  \mt \mb \ml \mr   margins, tenths of a point
  \bp, \sm     the job: a file, or the name of shared memory

--explain prints what the arguments and the job mean, --explain-block a job in a file alone.
Both change and delete nothing. Passwords show by their length unless --show-passwords is given.

Environment:
  QUVADA_CHROMIUM   the browser's program
  QUVADA_SAVE_AS    the PDF, where the job leaves its name to the user
  QUVADA_NO_OPEN=1  show no PDF afterwards

Exit codes: 0 done; 1 other failure; 2 bad arguments; 3 job missing or malformed; 4 no name for the
PDF; 5 no browser, or the page can't be loaded or printed; 6 the PDF can't be finished, protected or
written; 7 the PDF is done but can't be shown; 8 ended by a signal.
)";

std::atomic<bool> cancelled = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void OnSignal(int) { cancelled = true; }

/// A second signal of a kind ends the program at once. A reader of our messages who went away and
/// a file that may not grow are errors of the calls that meet them, and no reason to end in the
/// middle of the work.
void CatchSignals() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    struct sigaction action {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESETHAND;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}

void Tell(const std::string& text) { std::fprintf(stderr, "PageRenderApp: %s\n", text.c_str()); }

/// One line that is written over; empty clears it.
void ShowProgress(const std::string& text) {
    std::fprintf(stderr, "\r\033[K%s%s", text.c_str(), text.empty() ? "" : " ...");
}

bool ExistsAsFile(const WideString& path) { return IsRegularFile(HostPath(path)); }

/// Takes the block, which may be large, so that it goes when it is decoded.
Result<Job> ReadJob(Result<std::vector<std::uint8_t>> block) {
    if (!block) return block.GetError();
    return ReadJobBlock(*block);
}

ExitCode Convert(const WideString& arguments) {
    const Result<CommandLine> line = ParseCommandLine(arguments, ExistsAsFile);
    if (!line) {
        Tell(line.GetError().text + " See --help.");
        return ExitCode::BadCommandLine;
    }
    const Result<Job> job = ReadJob(FetchJobBlock(*line));
    if (!job) {
        Tell(job.GetError().text);
        return ExitCode::BadJob;
    }
    CatchSignals();  // From here on there are files to remove.
    if (!line->storageFile.empty()) RemoveStorageFile(HostPath(line->storageFile));
    const bool shows = isatty(STDERR_FILENO) == 1 && !line->hidden;
    Surroundings around;
    around.cancel = &cancelled;
    around.note = [&](const std::string& text) {
        if (shows) ShowProgress("");
        Tell(text);
    };
    around.progress = [&](const std::string& text) {
        if (shows) ShowProgress(text);
    };
    return RunJob(*job, *line, around);
}

ExitCode PrintJob(Result<std::vector<std::uint8_t>> block, ShowPasswords show) {
    const Result<Job> job = ReadJob(std::move(block));
    if (!job) {
        Tell(job.GetError().text);
        return ExitCode::BadJob;
    }
    std::fputs(Explain(*job, show).c_str(), stdout);
    return ExitCode::Done;
}

ExitCode ExplainAll(const WideString& arguments, ShowPasswords show) {
    const Result<CommandLine> line = ParseCommandLine(arguments, ExistsAsFile);
    if (!line) {
        Tell(line.GetError().text + " See --help.");
        return ExitCode::BadCommandLine;
    }
    std::fputs(Explain(*line).c_str(), stdout);
    return PrintJob(FetchJobBlock(*line), show);
}

/// Arguments from a shell, which may have split the text and taken its quotes.
WideString Join(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (word.empty() ? "\"\"" : word) + " ";
    return platform::FromUtf8(text);
}

ExitCode RunOptions(std::vector<std::string> words) {
    ShowPasswords show = ShowPasswords::No;
    if (words.front() == "--show-passwords") {
        show = ShowPasswords::Yes;
        words.erase(words.begin());
    }
    const std::string option = words.empty() ? std::string() : words.front();
    if (!words.empty()) words.erase(words.begin());
    if (option == "--help") {
        std::fputs(kHelp, stdout);
        return ExitCode::Done;
    }
    if (option == "--explain") return ExplainAll(Join(words), show);
    if (option == "--explain-block" && words.size() == 1) {
        return PrintJob(ReadStorageFile(platform::FromUtf8(words.front())), show);
    }
    Tell("The options are not understood. See --help.");
    return ExitCode::BadCommandLine;
}

ExitCode Run(int count, char** words) {
    if (count > 1 && std::string_view(words[1]).starts_with("--")) {
        return RunOptions(std::vector<std::string>(words + 1, words + count));
    }
    // Raw, as the add-in wrote it: quotes and blanks matter.
    return Convert(WideString(SkipProgramName(GetCommandLineW())));
}

}  // namespace
}  // namespace converter

int main(int count, char** words) {
    try {
        return static_cast<int>(converter::Run(count, words));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "PageRenderApp: %s\n", error.what());
        return static_cast<int>(converter::ExitCode::Failed);
    }
}
