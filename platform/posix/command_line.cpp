#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/modules.h"
#include "platform/shell.h"
#include "platform/text.h"

namespace platform {
namespace {

/// The arguments of this process, without the program's name.
std::vector<std::string> Arguments() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::vector<std::string> arguments;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\0', at);
        arguments.push_back(text.substr(at, end - at));
        if (end == std::string::npos) break;
        at = end + 1;
    }
    if (!arguments.empty()) arguments.erase(arguments.begin());
    return arguments;
}

/// An argument as the C run-time of Windows takes it apart again: quotes around, a backslash before
/// each quote in it, and the backslashes before a quote doubled.
std::string Quoted(const std::string& argument) {
    if (!argument.empty() && argument.find_first_of(" \t\"") == std::string::npos) return argument;
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char unit : argument) {
        if (unit == '"') text.append(backslashes + 1, '\\');
        backslashes = unit == '\\' ? backslashes + 1 : 0;
        text += unit;
    }
    return text.append(backslashes, '\\') + '"';
}

WideString MakeCommandLine() {
    std::vector<WCHAR> path(0x8000);
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    WideString line;
    line += '"';
    line.append(path.data(), length).append(TEXT("\" "));
    const std::vector<std::string> arguments = Arguments();
    if (arguments.size() == 1) return line + FromUtf8(arguments.front());
    std::string joined;
    for (const std::string& argument : arguments) {
        if (!joined.empty()) joined += ' ';
        joined += Quoted(argument);
    }
    return line + FromUtf8(joined);
}

}  // namespace
}  // namespace platform

LPWSTR GetCommandLineW() noexcept {
    static platform::WideString& line = *new platform::WideString(platform::MakeCommandLine());
    return line.data();
}
