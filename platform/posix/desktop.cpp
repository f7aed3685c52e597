#include "platform/posix/desktop.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

#include "platform/posix/program_start.h"
#include "platform/shell.h"

namespace platform {
namespace {

constexpr const char* kOpener = "/xdg-open";

std::string_view Variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

std::string DesktopOpener() {
    std::string_view folders = Variable("PATH");
    while (!folders.empty()) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        const std::string program = std::string(folders.substr(0, end)) + kOpener;
        if (program[0] == '/' && access(program.c_str(), X_OK) == 0) return program;
        folders.remove_prefix(std::min(end + 1, folders.size()));
    }
    return {};
}

DWORD OpenOnDesktop(const std::string& target) {
    if (Variable("QUVADA_NO_OPEN") == "1") return ERROR_SUCCESS;
    const bool hasDisplay = !Variable("DISPLAY").empty() || !Variable("WAYLAND_DISPLAY").empty();
    const std::string opener = DesktopOpener();
    // A target that looks like an option of the opener is none of its targets.
    if (!hasDisplay || opener.empty() || target.starts_with('-')) return SE_ERR_NOASSOC;
    return StartProgram(opener, target, {});
}

}  // namespace platform
