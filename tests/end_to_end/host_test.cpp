#include "tests/end_to_end/host_test.h"

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/system.h"
#include "platform/testing.h"

namespace end_to_end {

using platform::testing::SetEnvironment;
using test_support::LocalPath;

namespace {

constexpr const char* kHost = platform::testing::kOwnsTheSystem ? "quvada-host" : "quvada-host.exe";

}  // namespace

HostTest::HostTest()
    : folder_(LocalPath(profile_.Folder())),
      temp_(LocalPath(profile_.TempFolder())),
      records_(folder_ / "records"),
      pdf_(folder_ / "out.pdf") {
    std::filesystem::create_directory(records_);
    for (const char* name : {"QUVADA_RECORD_WAIT", "QUVADA_RECORD_RESULT", "QUVADA_SAVE_AS"}) {
        SetEnvironment(name, nullptr);
    }
    SetEnvironment("QUVADA_RECORD_FOLDER", Utf8(records_).c_str());
    SetEnvironment("QUVADA_NO_OPEN", "1");
}

std::filesystem::path HostTest::Programs() { return host::ProgramFolder(); }

std::filesystem::path HostTest::RecordingPrograms() { return Programs() / "recording"; }

HostTest::~HostTest() {
    // Natively the registry ends with the profile; elsewhere it is the machine's.
    if (!platform::testing::kOwnsTheSystem && !registered_.empty()) {
        Install(registered_, {"unregister"});
    }
}

std::filesystem::path HostTest::Host(const std::filesystem::path& programs) const {
    if (registered_ != programs) Install(programs);
    return programs / kHost;
}

void HostTest::Install(const std::filesystem::path& programs,
                       const std::vector<std::string>& task) const {
    const Finished host = RunProgram(programs / kHost, task);
    EXPECT_EQ(host.code, 0) << host.output;
    registered_ = programs;
}

std::string HostTest::WritePage(const std::string& name, const std::string& markup) const {
    std::ofstream(folder_ / name, std::ios::binary) << markup;
    return Utf8(folder_ / name);
}

std::string HostTest::Recorded(const char* name) const { return ReadFile(records_ / name); }

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::string Utf8(const std::filesystem::path& path) { return host::PathToUtf8(path); }

void ExpectEnd(const Finished& run, int code, const std::string& says) {
    EXPECT_EQ(run.code, code) << run.output;
    EXPECT_NE(run.output.find(says), std::string::npos) << run.output;
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(5)); }

}  // namespace end_to_end
