#include "converter/conversion.h"

#include "converter/clean_up.h"
#include "converter/output_file.h"
#include "converter/paths.h"
#include "converter/pdf_finish.h"
#include "converter/run_app.h"
#include "platform/scope_exit.h"

namespace converter {
namespace {

constexpr std::int32_t kVersionBase = 0x10000;
constexpr std::int32_t kLeastMinor = 3;
constexpr std::int32_t kLargestMinor = 7;

/// One item on its way to its PDF.
class ItemRun {
public:
    ItemRun(const Job& job, const Item& item, const CommandLine& line, const Surroundings& around)
        : job_(job), item_(item), line_(line), around_(around) {}

    ExitCode Run() {
        NoteWhatIsPassedOver();
        // What can't be had is known before anybody is asked for a name or waits for a page.
        Result<PdfWish> wish = MakeWish();
        if (!wish) return Fail(ExitCode::PdfFailed, wish.GetError());
        Result<std::string> output = ChooseOutput();
        if (!output) return Fail(ExitCode::NoOutputName, output.GetError());
        Result<SourceDocument> source = SourceDocument::Make(item_, job_.suggestedName);
        if (!source) return Fail(ExitCode::PageFailed, source.GetError());
        const Result<std::string> printed = PrintPage(std::move(*source), line_, around_);
        if (!printed) return Fail(ExitCode::PageFailed, printed.GetError());
        around_.progress("Writing " + *output);
        const Result<std::string> finished = FinishPdf(*printed, *wish, around_.note);
        if (!finished) return Fail(ExitCode::PdfFailed, finished.GetError());
        const Outcome written = WriteOutputFile(*output, *finished, around_.cancel);
        if (!written) return Fail(ExitCode::PdfFailed, written.GetError());
        around_.progress("");
        return Show(*output);
    }

private:
    ExitCode Fail(ExitCode code, const Error& error) const {
        around_.progress("");
        around_.note(error.text);
        return around_.cancel && around_.cancel->load() ? ExitCode::Cancelled : code;
    }

    void NoteWhatIsPassedOver() const {
        if (!item_.attachments.empty()) around_.note("The job's attachments are left out.");
        if (!item_.itemText.empty()) around_.note("The job's additional text is left out.");
    }

    Result<PdfWish> MakeWish() const {
        PdfWish wish;
        wish.sheet = SheetOf(line_);
        wish.links = line_.links;
        wish.minor = line_.pdfVersion - kVersionBase;
        if (line_.pdfVersion < kVersionBase + kLeastMinor ||
            line_.pdfVersion > kVersionBase + kLargestMinor) {
            // As the settings dialog shows such a number.
            wish.minor = kLargestMinor;
            around_.note("The PDF version asked for is unknown; the file is PDF 1.7.");
        }
        wish.compression = static_cast<Compression>(line_.compression);
        if (job_.security) {
            Result<Protection> protection = DecideProtection(*job_.security);
            if (!protection) return protection.GetError();
            wish.protection = std::move(*protection);
        }
        return wish;
    }

    Result<std::string> ChooseOutput() const {
        if (!job_.askOutputFile && !item_.outputFile.empty()) {
            const std::string path = HostPath(item_.outputFile);
            if (!path.empty()) return path;
            return Error{"The output file \"" + platform::ToUtf8(item_.outputFile) +
                         "\" is no path."};
        }
        if (line_.hidden) return FreeOutputFile(job_.suggestedName);
        return AskOutputFile(job_.suggestedName);
    }

    ExitCode Show(const std::string& output) const {
        if (!line_.runApp) return ExitCode::Done;
        const std::string real = RealPath(output);
        const Outcome started = StartApp(job_.runApp.value_or(RunApp{}), real);
        return started ? ExitCode::Done : Fail(ExitCode::AppFailed, started.GetError());
    }

    const Job& job_;
    const Item& item_;
    const CommandLine& line_;
    const Surroundings& around_;
};

}  // namespace

ExitCode RunJob(const Job& job, const CommandLine& line, const Surroundings& around) {
    const platform::ScopeExit remove([&] { RemoveCapturedPages(job); });
    if (job.items.empty()) {
        around.note("The job holds nothing to convert.");
        return ExitCode::BadJob;
    }
    ExitCode first = ExitCode::Done;
    for (const Item& item : job.items) {
        const ExitCode code = ItemRun(job, item, line, around).Run();
        if (first == ExitCode::Done) first = code;
        if (code == ExitCode::Cancelled) break;
    }
    return first;
}

}  // namespace converter
