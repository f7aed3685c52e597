#include "tests/end_to_end/host_test.h"

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/system.h"
#include "platform/testing.h"

namespace end_to_end {
namespace {

/// A folder of the test's profile as this machine writes it.
std::filesystem::path LocalPath(platform::WideString path) {
    if constexpr (platform::testing::kOwnsTheSystem) {
        path.erase(0, 2);  // The drive; the profile lies on Z:.
        for (WCHAR& c : path) {
            if (c == '\\') c = '/';
        }
    }
    return host::PathFromUtf8(platform::ToUtf8(path));
}

}  // namespace

HostTest::HostTest() : folder_(LocalPath(profile_.Folder())), records_(folder_ / "records") {
    std::filesystem::create_directory(records_);
    platform::testing::SetEnvironment("QUVADA_RECORD_FOLDER", host::PathToUtf8(records_).c_str());
    platform::testing::SetEnvironment("QUVADA_NO_OPEN", "1");
    for (const char* name : {"QUVADA_RECORD_WAIT", "QUVADA_RECORD_RESULT", "QUVADA_SAVE_AS"}) {
        platform::testing::SetEnvironment(name, nullptr);
    }
}

std::filesystem::path HostTest::Programs() { return host::ProgramFolder(); }

std::filesystem::path HostTest::RecordingPrograms() { return Programs() / "recording"; }

std::filesystem::path HostTest::TempFolder() const { return LocalPath(profile_.TempFolder()); }

std::filesystem::path HostTest::WritePage(const std::string& name,
                                          const std::string& markup) const {
    const std::filesystem::path path = folder_ / host::PathFromUtf8(name);
    std::ofstream(path, std::ios::binary) << markup;
    return path;
}

std::unique_ptr<test_support::Program> HostTest::StartHost(const std::filesystem::path& programs,
                                                           const std::filesystem::path& page,
                                                           std::vector<std::string> options) const {
    std::filesystem::path program = programs / "quvada-host";
    if (!platform::testing::kOwnsTheSystem) program += ".exe";
    options.push_back(host::PathToUtf8(page));
    return test_support::Program::Start(program, options);
}

test_support::Finished HostTest::RunHost(const std::filesystem::path& programs,
                                         const std::filesystem::path& page,
                                         std::vector<std::string> options) const {
    const auto program = StartHost(programs, page, std::move(options));
    if (!program) return {-1, "the host cannot be started"};
    const int code = program->Wait();
    return {code, program->Output()};
}

std::string HostTest::Recorded(const char* name) const { return ReadFile(records_ / name); }

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

}  // namespace end_to_end
