#include <fstream>
#include <iterator>

#include "platform/handles.h"
#include "platform/text.h"
#include "tests/support/program.h"

namespace test_support {

struct Program::State {
    platform::KernelHandle process;
    std::filesystem::path output;
};

namespace {

/// Adds an argument in the form that a C run-time takes apart again; none of ours ends in '\' or
/// holds a quote.
void AppendArgument(const std::string& argument, std::string& line) {
    if (!line.empty()) line += ' ';
    line += '"';
    line += argument;
    line += '"';
}

std::filesystem::path NewFile() {
    WCHAR path[MAX_PATH];
    GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), TEXT("out"), 0, path);
    return path;
}

}  // namespace

Program::Program(std::unique_ptr<State> state) : state_(std::move(state)) {}

Program::~Program() {
    Kill();
    (void)Wait();
    std::error_code code;
    std::filesystem::remove(state_->output, code);
}

std::unique_ptr<Program> Program::Start(const std::filesystem::path& path,
                                        const std::vector<std::string>& arguments) {
    auto state = std::make_unique<State>();
    state->output = NewFile();
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const platform::FileHandle file(CreateFileW(state->output.c_str(), GENERIC_WRITE,
                                                FILE_SHARE_READ | FILE_SHARE_DELETE, &inherited,
                                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string line;
    AppendArgument(platform::ToUtf8(path.native()), line);
    for (const std::string& argument : arguments) AppendArgument(argument, line);
    platform::WideString wide = platform::FromUtf8(line);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = file.Get();
    start.hStdError = file.Get();
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, wide.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                        &started)) {
        return nullptr;
    }
    CloseHandle(started.hThread);
    state->process.Reset(started.hProcess);
    return std::unique_ptr<Program>(new Program(std::move(state)));
}

int Program::Wait(std::chrono::milliseconds limit) {
    if (WaitForSingleObject(state_->process.Get(), static_cast<DWORD>(limit.count())) !=
        WAIT_OBJECT_0) {
        return -1;
    }
    DWORD code = 0;
    GetExitCodeProcess(state_->process.Get(), &code);
    return static_cast<int>(code);
}

void Program::Kill() { TerminateProcess(state_->process.Get(), 1); }

int Program::Id() const { return static_cast<int>(GetProcessId(state_->process.Get())); }

std::string Program::Output() {
    std::ifstream file(state_->output, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace test_support
