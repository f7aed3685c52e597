#include "host/run.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "host/addin.h"
#include "host/backend_choice.h"
#include "host/com_browser.h"
#include "host/converter_wait.h"
#include "host/hand_off_lock.h"
#include "host/interrupt.h"
#include "host/progress.h"
#include "host/system.h"
#include "platform/profile.h"
#include "platform/testing.h"

namespace host {
namespace {

// What the toolbar's menu sends.
constexpr UINT kConvertPage = 0x8011;
constexpr UINT kConvertSelection = 0x8015;

Progress::Mode ModeOf(const Options& options) {
    if (options.verbose) return Progress::Mode::Lines;
    return IsErrorTerminal() ? Progress::Mode::Terminal : Progress::Mode::Silent;
}

/// One run of the program: a browser with one tab.
class Tab {
public:
    Tab(const Options& options, Progress& progress) : options_(options), progress_(progress) {}

    ExitCode Run() {
        if (!ParsePageAddress(options_.page, address_, error_)) return Fail(ExitCode::Usage);
        if (!PrepareOutput()) return Fail(ExitCode::Usage);
        if (options_.profile && !UseProfile(PathFromUtf8(*options_.profile), error_)) {
            return Fail(ExitCode::Usage);
        }
        // Only a warning: the add-in then works with the defaults, and what is stored stays.
        std::string problem;
        if (!platform::CheckProfile(problem)) progress_.Say("warning: " + problem);
        if (!LoadModules()) return Fail(ExitCode::NoAddin);
        if (!LoadPage()) return Fail(Interrupted() ? ExitCode::Interrupted : ExitCode::NoPage);
        return Press();
    }

private:
    ExitCode Fail(ExitCode code) {
        progress_.Say(error_);
        return code;
    }

    /// The dialog is answered with the path as the add-in writes paths, so a folder that is missing
    /// would only show when the converter fails.
    bool PrepareOutput() {
        if (!options_.output) return true;
        std::error_code code;
        const std::filesystem::path path =
            std::filesystem::absolute(PathFromUtf8(*options_.output), code);
        if (!std::filesystem::is_directory(path.parent_path(), code)) {
            error_ = "there is no folder for " + PathToUtf8(path);
        } else if (!path.has_filename() || (std::filesystem::exists(path, code) &&
                                            !std::filesystem::is_regular_file(path, code))) {
            // A device would be replaced like a file.
            error_ = PathToUtf8(path) + " is no file";
        } else if (!HasPlatformPath(path)) {
            error_ = "the add-in cannot write this name: " + PathToUtf8(path);
        } else {
            output_ = path.lexically_normal();
        }
        return error_.empty();
    }

    bool LoadModules() {
        const std::filesystem::path folder = ProgramFolder();
        if (options_.isProtected && !LoadProtectedMode(folder / "modules", ieframe_, error_)) {
            return false;
        }
        return addin_.Load(folder, error_);
    }

    bool LoadPage() {
        const std::unique_ptr<Backend> backend = MakeBackend(options_);
        LoadRequest request{address_, options_.timeout, {}, {}};
        request.progress = [this](const std::string& what) { progress_.Step(what); };
        request.warning = [this](const std::string& what) { progress_.Say("warning: " + what); };
        try {
            if (!backend->Load(request, page_, error_)) return false;
            return Select();
        } catch (const std::exception& failure) {  // The page needs more memory than there is.
            error_ = std::string("the page cannot be loaded: ") + failure.what();
            return false;
        }
    }

    /// Does what a user would do with the mouse before pressing the button.
    bool Select() {
        if (!options_.select) return true;
        std::shared_ptr<PageDocument> document = page_;
        for (const std::size_t index : options_.frame) {
            std::vector<std::shared_ptr<PageDocument>> frames;
            if (!document->Frames(frames) || index >= frames.size() || !frames[index]) {
                error_ = "the page has no frame " + std::to_string(index) + " that it may reach";
                return false;
            }
            document = frames[index];
        }
        return document->Select(*options_.select, error_);
    }

    ExitCode Press() {
        const auto browser = platform::MakeObject<Browser>(page_);
        platform::ComPtr<IAddinBand> band;
        if (!browser || !addin_.MakeBand(browser.Get(), nullptr, band, error_)) {
            return Fail(ExitCode::NoAddin);
        }
        // A job in a file of its own gets in nobody's way.
        HandOffLock turn;
        const bool isOurTurn = options_.isProtected || turn.Take(options_.timeout, progress_);
        if (Interrupted()) {
            error_ = "interrupted; nothing was converted";
            return Fail(ExitCode::Interrupted);
        }
        if (!isOurTurn) {
            error_ = "another conversion of this profile has not ended in time";
            return Fail(ExitCode::CommandEnded);
        }
        progress_.Step("starting the converter");
        if (Command(*band.Get()) != 0) return Fail(ExitCode::CommandEnded);
        // The page's browser need not run beside the converter's.
        browser->ClosePage();
        page_.reset();
        // The job's memory lasts as long as the band.
        if (options_.wait) {
            progress_.Step("converting");
            return WaitForResult(options_.timeout, progress_);
        }
        // A job in a file lasts by itself; then only a start that failed is to be noticed.
        return WaitForFetch(options_.isProtected ? std::chrono::milliseconds(0) : kFetchLimit,
                            progress_);
    }

    /// Presses the button, with the user's answers at hand. On failure `error_` says why.
    LRESULT Command(IAddinBand& band) {
        const platform::testing::MessageBoxRecorder messages;
        std::optional<platform::testing::SaveDialogScript> saved;
        if (!output_.empty() && options_.isProtected) {
            // Here it is the converter that asks.
            platform::testing::SetEnvironment("QUVADA_SAVE_AS", PathToUtf8(output_).c_str());
        } else if (!output_.empty()) {
            saved.emplace(PlatformPath(output_));
        }
        const LRESULT result =
            band.OnCommand(options_.selection ? kConvertSelection : kConvertPage);
        for (const platform::testing::ShownMessage& message : messages.Shown()) {
            progress_.Say("the add-in says: " + platform::ToUtf8(message.text));
        }
        if (result != 0) {
            error_ = messages.Shown().empty() ? "cancelled, or the job could not be stored"
                                              : "the page was not converted";
        }
        return result;
    }

    const Options& options_;
    Progress& progress_;
    std::string error_;
    PageAddress address_;
    std::filesystem::path output_;
    // In this order: what a module made ends before the module.
    platform::ModuleHandle ieframe_;
    Addin addin_;
    std::shared_ptr<PageDocument> page_;
};

}  // namespace

ExitCode Run(const Options& options) {
    CatchInterrupts();
    Progress progress(ModeOf(options));
    try {
        return Tab(options, progress).Run();
    } catch (const std::exception& failure) {
        progress.Say(failure.what());
        return ExitCode::CommandEnded;
    }
}

}  // namespace host
