/// Stands in for the converter: built as PageRenderApp.x86.exe, it records what it is started with
/// and what it finds there. Driven by the environment:
///   QUVADA_RECORD_FOLDER  gets "command_line" (UTF-8, as it came, without the program) and "block"
///                         (the job's bytes; missing if there was none to fetch)
///   QUVADA_RECORD_WAIT    a file: before it ends, the program waits until that file exists
///   QUVADA_RECORD_RESULT  what it ends with, 0 by default; "abort" ends it by force

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "platform/memory.h"
#include "platform/shell.h"
#include "tests/support/test_profile.h"

namespace {

using platform::WideString;
using platform::WideView;

constexpr auto kLongestWait = std::chrono::seconds(60);

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// What follows the quoted program and one blank.
WideView ArgumentsOf(WideView commandLine) {
    const std::size_t quote = commandLine.find(TEXT('"'), 1);
    return quote == WideView::npos ? WideView() : commandLine.substr(quote + 2);
}

/// The value behind a switch, to the blank at the line's end.
WideString ValueOf(WideView arguments, WideView name) {
    const std::size_t at = arguments.rfind(name);
    if (at == WideView::npos) return {};
    const WideView value = arguments.substr(at + name.size());
    return WideString(value.substr(0, value.size() - 1));
}

std::string ReadShared(const WideString& name) {
    const platform::MappingHandle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    if (!mapping) return {};
    const platform::MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, 0));
    if (!view) return {};
    DWORD size = 0;
    std::memcpy(&size, view.Get(), sizeof size);
    return {static_cast<const char*>(view.Get()), size};
}

/// Under another name first, so that whoever waits for the file finds it whole.
void Write(const std::filesystem::path& path, const std::string& bytes) {
    const std::filesystem::path unfinished = path.string() + ".part";
    std::ofstream(unfinished, std::ios::binary) << bytes;
    std::filesystem::rename(unfinished, path);
}

}  // namespace

int main() {
    const WideView arguments = ArgumentsOf(GetCommandLineW());
    const std::filesystem::path folder = Environment("QUVADA_RECORD_FOLDER");
    const WideString shared = ValueOf(arguments, TEXT("\\sm "));
    const WideString stored = ValueOf(arguments, TEXT("\\bp "));
    const std::string block =
        stored.empty() ? ReadShared(shared) : test_support::ReadWholeFile(stored);
    if (!block.empty()) Write(folder / "block", block);
    Write(folder / "command_line", platform::ToUtf8(arguments));

    const std::string wait = Environment("QUVADA_RECORD_WAIT");
    const auto until = std::chrono::steady_clock::now() + kLongestWait;
    while (!wait.empty() && !std::filesystem::exists(wait) &&
           std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const std::string result = Environment("QUVADA_RECORD_RESULT");
    if (result == "abort") std::abort();
    return result.empty() ? 0 : std::atoi(result.c_str());
}
