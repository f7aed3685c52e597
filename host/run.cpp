#include "host/run.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <vector>

#include "host/addin_list.h"
#include "host/converter_wait.h"
#include "host/hand_off_lock.h"
#include "host/installation.h"
#include "host/interrupt.h"
#include "host/load_module.h"
#include "host/page_loading.h"
#include "host/progress.h"
#include "host/system.h"
#include "host/tab.h"
#include "host/tab_thread.h"
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

/// A tab on its thread. All but the thread is used on that only, or while it does nothing.
class OpenTab {
public:
    OpenTab(PageAddress address, std::filesystem::path output, std::string label)
        : address_(std::move(address)), output_(std::move(output)), label_(std::move(label)) {}
    ~OpenTab() {
        // On its thread, as it was made.
        thread_.Do([this] {
            tab_.reset();
            page_.reset();
        });
    }
    OpenTab(const OpenTab&) = delete;
    OpenTab& operator=(const OpenTab&) = delete;

    /// Begins to load the page and the add-ins.
    void StartLoading(const Options& options, const AddinList& addins, Progress& progress) {
        loaded_ = thread_.Start([this, &options, &addins, &progress] {
            LoadRequest request{address_, options.timeout, {}, {}};
            request.progress = [&](const std::string& what) { progress.Step(label_ + what); };
            request.warning = [&](const std::string& what) {
                progress.Say("warning: " + label_ + what);
            };
            if (!LoadPage(options, request, page_, error_)) {
                failure_ = Interrupted() ? ExitCode::Interrupted : ExitCode::NoPage;
                return;
            }
            auto made = std::make_unique<Tab>(addins);
            if (made->Open(page_, error_)) {
                tab_ = std::move(made);
            } else {
                failure_ = ExitCode::NoAddin;
            }
        });
    }
    /// Waits for that. \return Ok, or NoPage, NoAddin or Interrupted with an Error.
    [[nodiscard]] ExitCode FinishLoading() {
        loaded_.get();
        return failure_;
    }
    [[nodiscard]] const std::string& Error() const { return error_; }

    void BringToFront() {
        thread_.Do([this] { tab_->BringToFront(); });
    }
    void SendToBack() {
        thread_.Do([this] { tab_->SendToBack(); });
    }

    /// Presses the button, with the user's answers at hand. \return what the add-in said.
    std::vector<platform::WideString> Press(UINT command,
                                            const std::optional<platform::WideString>& saveAs) {
        std::vector<platform::WideString> said;
        thread_.Do([&] { said = tab_->Press(command, saveAs); });
        return said;
    }

    /// The page's browser need not run beside the converter's.
    void ClosePage() {
        thread_.Do([this] {
            tab_->ClosePage();
            page_.reset();
        });
    }

    /// Where the PDF goes; empty where the user is asked.
    [[nodiscard]] const std::filesystem::path& Output() const { return output_; }
    /// What messages about this tab begin with, where there are several.
    [[nodiscard]] const std::string& Label() const { return label_; }

private:
    const PageAddress address_;
    const std::filesystem::path output_;
    const std::string label_;
    ExitCode failure_ = ExitCode::Ok;
    std::string error_;
    std::shared_ptr<PageDocument> page_;
    std::unique_ptr<Tab> tab_;
    std::future<void> loaded_;
    TabThread thread_;  // last: it uses the others
};

/// One run of the program: a browser with a tab for each page.
class BrowserRun {
public:
    BrowserRun(const Options& options, Progress& progress)
        : options_(options), progress_(progress) {}

    ExitCode Run() {
        if (!MakeTabs()) return Fail(ExitCode::Usage);
        if (options_.profile && !UseProfile(PathFromUtf8(*options_.profile), error_)) {
            return Fail(ExitCode::Usage);
        }
        // Only a warning: the add-in then works with the defaults, and what is stored stays.
        std::string problem;
        if (!platform::CheckProfile(problem)) progress_.Say("warning: " + problem);
        if (options_.task != Task::Convert) return Install();
        if (!LoadModules()) return Fail(ExitCode::NoAddin);
        return ConvertAll();
    }

private:
    ExitCode Fail(ExitCode code) {
        progress_.Say(error_);
        return code;
    }

    ExitCode Install() {
        const Scope scope = options_.forUser ? Scope::User : Scope::Machine;
        const bool isDone = options_.task == Task::Register ? RegisterAddin(scope, error_)
                                                            : UnregisterAddin(scope, error_);
        return isDone ? ExitCode::Ok : Fail(ExitCode::NoAddin);
    }

    bool MakeTabs() {
        for (std::size_t i = 0; i < options_.pages.size(); ++i) {
            PageAddress address;
            std::filesystem::path output;
            if (!ParsePageAddress(options_.pages[i], address, error_)) return false;
            if (!options_.outputs.empty() && !PrepareOutput(options_.outputs[i], output)) {
                return false;
            }
            tabs_.push_back(std::make_unique<OpenTab>(
                std::move(address), std::move(output),
                options_.pages.size() > 1 ? options_.pages[i] + ": " : std::string()));
        }
        return true;
    }

    /// The dialog is answered with the path as the add-in writes paths, so a folder that is missing
    /// would only show when the converter fails.
    bool PrepareOutput(const std::string& text, std::filesystem::path& output) {
        std::error_code code;
        const std::filesystem::path path = std::filesystem::absolute(PathFromUtf8(text), code);
        if (!std::filesystem::is_directory(path.parent_path(), code)) {
            error_ = "there is no folder for " + PathToUtf8(path);
        } else if (!path.has_filename() || (std::filesystem::exists(path, code) &&
                                            !std::filesystem::is_regular_file(path, code))) {
            // A device would be replaced like a file.
            error_ = PathToUtf8(path) + " is no file";
        } else if (!HasPlatformPath(path)) {
            error_ = "the add-in cannot write this name: " + PathToUtf8(path);
        } else {
            output = path.lexically_normal();
        }
        return error_.empty();
    }

    bool LoadModules() {
        if (options_.isProtected && !LoadModule(ProgramFolder() / "modules" / "ieframe.dll",
                                                "the browser's module", ieframe_, error_)) {
            return false;
        }
        if (options_.addin) return addins_.TakeModule(PathFromUtf8(*options_.addin), error_);
        if (!addins_.Helpers().empty()) return true;
        error_ = "no add-in is installed; 'quvada-host register' installs it";
        return false;
    }

    /// The pages load beside each other; the buttons are pressed one after the other, for there is
    /// one user.
    ExitCode ConvertAll() {
        for (const auto& tab : tabs_) tab->StartLoading(options_, addins_, progress_);
        ExitCode first = ExitCode::Ok;
        OpenTab* front = nullptr;
        for (const auto& tab : tabs_) {
            ExitCode code = tab->FinishLoading();
            if (code == ExitCode::Ok) {
                if (front) front->SendToBack();
                front = tab.get();
                code = Convert(*front);
            } else {
                progress_.Say(tab->Label() + tab->Error());
            }
            if (first == ExitCode::Ok) first = code;
        }
        return first;
    }

    ExitCode Convert(OpenTab& tab) {
        tab.BringToFront();
        // A job in a file of its own gets in nobody's way.
        HandOffLock turn;
        const bool isOurTurn = options_.isProtected || turn.Take(options_.timeout, progress_);
        if (Interrupted()) {
            progress_.Say("interrupted; nothing was converted");
            return ExitCode::Interrupted;
        }
        if (!isOurTurn) {
            progress_.Say("another conversion of this profile has not ended in time");
            return ExitCode::CommandEnded;
        }
        progress_.Step(tab.Label() + "starting the converter");
        if (!Press(tab)) return ExitCode::CommandEnded;
        tab.ClosePage();
        // The job's memory lasts as long as the band.
        if (options_.wait) {
            progress_.Step(tab.Label() + "converting");
            return WaitForResult(options_.timeout, progress_);
        }
        // A job in a file lasts by itself.
        return WaitForFetch(options_.isProtected ? std::chrono::milliseconds(0) : kFetchLimit);
    }

    /// \return false if no converter was started, and has said why.
    bool Press(OpenTab& tab) {
        std::optional<platform::WideString> saveAs;
        if (!tab.Output().empty() && options_.isProtected) {
            // Here it is the converter that asks.
            platform::testing::SetEnvironment("QUVADA_SAVE_AS", PathToUtf8(tab.Output()).c_str());
        } else if (!tab.Output().empty()) {
            saveAs = PlatformPath(tab.Output());
        }
        const unsigned before = platform::testing::CountStartedPrograms();
        const auto said = tab.Press(options_.selection ? kConvertSelection : kConvertPage, saveAs);
        for (const platform::WideString& text : said) {
            progress_.Say(tab.Label() + "the add-in says: " + platform::ToUtf8(text));
        }
        if (platform::testing::CountStartedPrograms() != before) return true;
        progress_.Say(tab.Label() + (said.empty() ? "cancelled, or the job could not be stored"
                                                  : "the page was not converted"));
        return false;
    }

    const Options& options_;
    Progress& progress_;
    std::string error_;
    // In this order: what a module made ends before the module.
    platform::ModuleHandle ieframe_;
    AddinList addins_;
    std::vector<std::unique_ptr<OpenTab>> tabs_;
};

}  // namespace

ExitCode Run(const Options& options) {
    CatchInterrupts();
    Progress progress(ModeOf(options));
    try {
        return BrowserRun(options, progress).Run();
    } catch (const std::exception& failure) {
        progress.Say(failure.what());
        return ExitCode::CommandEnded;
    }
}

}  // namespace host
