#include "platform/posix/profile.h"

#include <mutex>
#include <vector>

#include "platform/posix/last_error.h"
#include "platform/posix/profile_folder.h"

namespace platform {
namespace {

struct Profile {
    std::mutex mutex;
    std::string drive;
    std::vector<void (*)() noexcept> resets;
};

// Never destroyed: modules may ask while the process ends.
Profile& State() {
    static Profile& state = *new Profile;
    return state;
}

}  // namespace

std::string DriveFolder() {
    Profile& state = State();
    const std::lock_guard lock(state.mutex);
    if (state.drive.empty()) {
        const std::string drive = ProfileFolder() + "/drive_c";
        if (const int error = MakeFolders(drive)) {
            SetLastError(ErrorFromErrno(error));
            return {};
        }
        state.drive = drive;
    }
    return state.drive;
}

void OnProfileReset(void (*reset)() noexcept) noexcept {
    Profile& state = State();
    const std::lock_guard lock(state.mutex);
    state.resets.push_back(reset);
}

void ResetProfileFolder() noexcept {
    Profile& state = State();
    std::vector<void (*)() noexcept> resets;
    {
        const std::lock_guard lock(state.mutex);
        state.drive.clear();
        resets = state.resets;
    }
    for (const auto reset : resets) reset();
}

}  // namespace platform
