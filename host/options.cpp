#include "host/options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <ostream>

#include "host/backend_choice.h"

namespace host {
namespace {

constexpr char kAbout[] =
    "Stands in for the browser: loads pages, each in a tab of its own with the registered add-in,\n"
    "and presses the add-in's button. The add-in starts the converter, which writes the PDF.\n";

constexpr char kMore[] =
    "Without --wait the program keeps its tab, and with it the job in shared memory, until the\n"
    "converter has ended, at most 5 seconds; a job in a file (--protected) needs no waiting.\n"
    "\n"
    "Exit codes:\n"
    "  0    the converter was started; with --wait: and ended well\n"
    "  1    the command ended before: cancelled, nothing selected, converter missing or not\n"
    "       started, or the job could not be stored\n"
    "  2    wrong options\n"
    "  3    the page cannot be loaded (no such page, no browser, no time), or has nothing that\n"
    "       --select names\n"
    "  4    the add-in cannot be loaded\n"
    "  5    the converter failed or was killed (--wait)\n"
    "  6    the converter has not ended in time and goes on (--wait)\n"
    "  130  interrupted\n"
    "\n"
    "Environment:\n"
    "  QUVADA_HOME      the profile folder (registry.db, drive_c/) where --profile is not given\n"
    "  QUVADA_CHROMIUM  the browser's program, if it is not where Debian puts it\n";

std::string NameOf(BackendKind kind, const std::map<std::string, BackendKind>& kinds) {
    for (const auto& [name, known] : kinds) {
        if (known == kind) return name;
    }
    return {};
}

/// A task other than converting; the options of the program may stand behind it.
CLI::App* AddTask(CLI::App& app, const char* name, const char* about, bool& forUser) {
    CLI::App* const task = app.add_subcommand(name, about);
    task->fallthrough();
    task->add_flag("--user", forUser,
                   "The classes for the current user only; the list of add-ins is the machine's");
    return task;
}

}  // namespace

std::optional<ExitCode> ParseOptions(const std::vector<std::string>& arguments, Options& options,
                                     std::ostream& out, std::ostream& err) {
    options = {};
    std::int64_t seconds = options.timeout.count();
    CLI::App app(kAbout, "quvada-host");
    app.footer(kMore);
    app.set_version_flag("--version", QUVADA_VERSION);
    app.add_option("PAGE", options.pages,
                   "The page: a file, or a file: or http: address. Of several pages, loaded beside "
                   "each other, one is converted after the other");
    app.add_option("-o,--output", options.outputs,
                   "Where the PDF goes, instead of asking; an existing file is replaced. Once for "
                   "each page, in their order")
        ->allow_extra_args(false)
        ->type_name("FILE");
    app.add_option("--addin", options.addin, "Take the add-in from this file, registered or not")
        ->type_name("FILE");
    app.add_flag("--selection", options.selection,
                 "Convert the selected part of the page, whatever its scripts have selected");
    app.add_option("--select", options.select,
                   "Select the first element that matches, and convert the selection; the text "
                   "backend takes NAME, #ID and .CLASS")
        ->type_name("SELECTOR");
    app.add_option("--frame", options.frame,
                   "Select in a frame: its number from 0, behind those of the frames around it")
        ->delimiter('/')
        ->allow_extra_args(false)
        ->type_name("N[/N...]");
    app.add_flag("--protected", options.isProtected,
                 "Be a browser in Protected Mode: the add-in asks for no file, the converter does");
    app.add_option("--profile", options.profile,
                   "Folder of the settings to work with; made if it is missing (native build only)")
        ->type_name("DIR");
    const std::map<std::string, BackendKind> kinds = BackendNames();
    std::string backend;
    app.add_option("--backend", backend,
                   "What loads the page: 'chromium', a headless browser, or 'text', which runs no "
                   "script and lays out nothing (here by default " +
                       NameOf(DefaultBackend(), kinds) + ")")
        ->check(CLI::IsMember(kinds).description(""))
        ->type_name("NAME");
    app.add_option("--page-height", options.pageHeight,
                   "Height of the page in pixels for the text backend, instead of an estimate")
        ->check(CLI::Range(1, 1'000'000))
        ->type_name("PX");
    app.add_flag("-w,--wait", options.wait, "Wait for the converter and give its result");
    app.add_option("--timeout", seconds,
                   "Seconds for the page to load, and again for the converter (120)")
        ->check(CLI::Range(1, 86'400))
        ->type_name("S");
    app.add_flag("-v,--verbose", options.verbose, "Tell each step on the error output");
    CLI::App* const install = AddTask(
        app, "register", "Register the add-in that lies beside this program, as an installer does",
        options.forUser);
    app.require_subcommand(0, 1);
    CLI::App* const remove = AddTask(app, "unregister", "Take that back", options.forUser);
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(reversed);
        options.backend = backend.empty() ? DefaultBackend() : kinds.at(backend);
        if (*install || *remove) options.task = *install ? Task::Register : Task::Unregister;
        if (options.pages.empty() != (options.task != Task::Convert)) {
            throw CLI::ValidationError("PAGE", options.pages.empty()
                                                   ? "a page, or a task, is required"
                                                   : "not expected with a task");
        }
        if (!options.outputs.empty() && options.outputs.size() != options.pages.size()) {
            throw CLI::ValidationError("--output", "once for each page, or not at all");
        }
        if (options.pageHeight > 0 && options.backend != BackendKind::Text) {
            throw CLI::ValidationError("--page-height", "only for --backend text");
        }
        if (!options.frame.empty() && !options.select) {
            throw CLI::ValidationError("--frame", "only with --select");
        }
        options.selection = options.selection || options.select;
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err) == 0 ? ExitCode::Ok : ExitCode::Usage;
    }
    options.timeout = std::chrono::seconds(seconds);
    return std::nullopt;
}

}  // namespace host
