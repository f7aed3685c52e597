#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "host/exit_codes.h"
#include "platform/base.h"

namespace host {

enum class BackendKind { Text, Chromium };
enum class Task { Convert, Register, Unregister };

/// What the user asks of the program.
struct Options {
    Task task = Task::Convert;
    bool forUser = false;              // of the other tasks: for the current user only
    std::vector<std::string> pages;    // files' paths or addresses; a tab for each
    std::vector<std::string> outputs;  // none, or one for each page
    std::optional<std::string> addin;  // a module to take instead of what is registered
    std::optional<std::string> profile;
    BackendKind backend = BackendKind::Text;
    bool selection = false;
    std::optional<std::string> select;  // a CSS selector of what is selected first
    std::vector<std::size_t> frame;     // where it is selected: indexes of frames, outermost first
    bool isProtected = false;
    bool wait = false;
    bool verbose = false;
    std::chrono::seconds timeout{120};  // for the page, and again for the converter
    LONG pageHeight = 0;                // pixels, text backend; 0 leaves it to the page
};

/// Reads the arguments (UTF-8, without the program's name). \return nothing when the program is to
/// go on, else the code to end with: Ok after --help and --version, which go to `out`; Usage after
/// an error, which goes to `err`.
std::optional<ExitCode> ParseOptions(const std::vector<std::string>& arguments, Options& options,
                                     std::ostream& out, std::ostream& err);

}  // namespace host
