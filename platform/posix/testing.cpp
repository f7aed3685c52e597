#include "platform/testing.h"

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/posix/paths.h"
#include "platform/posix/profile.h"
#include "platform/posix/profile_folder.h"
#include "platform/posix/started_programs.h"

namespace platform::testing {
namespace {

constexpr const char* kProfileVariables[] = {"QUVADA_HOME", "TMPDIR"};

// What the variables were before EnterProfile.
std::optional<std::string> savedVariables[std::size(kProfileVariables)];

std::optional<std::string> VariableOf(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace

void SetEnvironment(const char* name, const char* value) {
    if (value) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

void EnterProfile(const WideString& folder) {
    std::string host;
    if (ToHostPath(folder.c_str(), host) != 0) return;
    while (host.back() == '/') host.pop_back();
    const std::string values[] = {host + "/profile", host + "/temp"};
    for (std::size_t i = 0; i < std::size(values); ++i) {
        (void)MakeFolders(values[i]);
        savedVariables[i] = VariableOf(kProfileVariables[i]);
        SetEnvironment(kProfileVariables[i], values[i].c_str());
    }
    ResetProfile();
}

void LeaveProfile() {
    for (std::size_t i = 0; i < std::size(kProfileVariables); ++i) {
        SetEnvironment(kProfileVariables[i],
                       savedVariables[i] ? savedVariables[i]->c_str() : nullptr);
    }
    ResetProfile();
}

void ResetProfile() { ResetProfileFolder(); }

Programs WaitForStartedPrograms(DWORD timeoutMs, DWORD* exitCode) {
    return WaitForWatchedPrograms(timeoutMs, exitCode) ? Programs::Ended : Programs::StillRunning;
}

unsigned CountStartedPrograms() { return CountWatchedPrograms(); }

}  // namespace platform::testing
