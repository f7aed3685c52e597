#include <fstream>
#include <iterator>

#include "platform/handles.h"
#include "platform/text.h"
#include "tests/end_to_end/host_test.h"

namespace end_to_end {

Finished RunProgram(const std::filesystem::path& path, const std::vector<std::string>& arguments) {
    // A file of its own: what the program starts may hold the last one open for a while.
    WCHAR output[MAX_PATH];
    GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), TEXT("out"), 0, output);
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    platform::FileHandle file(CreateFileW(output, GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_DELETE, &inherited,
                                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    // In the form that a C run-time takes apart again; none ends in '\' or holds a quote.
    platform::WideString line = TEXT("\"") + path.native() + TEXT("\"");
    for (const std::string& argument : arguments) {
        line += TEXT(" \"") + platform::FromUtf8(argument) + TEXT("\"");
    }
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = file.Get();
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                        &started)) {
        return {-1, "cannot be started"};
    }
    CloseHandle(started.hThread);
    const platform::KernelHandle process(started.hProcess);
    DWORD code = static_cast<DWORD>(-1);
    if (WaitForSingleObject(process.Get(), 60'000) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process.Get(), &code);
    } else {
        TerminateProcess(process.Get(), code);
    }
    std::ifstream written(std::filesystem::path(output), std::ios::binary);
    return {static_cast<int>(code), {std::istreambuf_iterator<char>(written), {}}};
}

}  // namespace end_to_end
