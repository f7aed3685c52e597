#include <sys/statvfs.h>

#include "platform/posix/profile_folder.h"
#include "platform/posix/registry_database.h"
#include "platform/profile.h"

namespace platform {
namespace {

constexpr const char* kLeftAlone =
    " It was left as it is. Put back a copy of it, or move it away to start with new settings.";

std::string Explain(StoreProblem problem, LSTATUS error, const std::string& folder) {
    const std::string file = folder + "/registry.db";
    switch (problem) {
        case StoreProblem::None:
            return {};
        case StoreProblem::ReadOnly:
            return "The profile in " + folder +
                   " may only be read, so settings cannot be used or saved. Allow writing to the "
                   "folder and to registry.db in it, or choose another profile.";
        case StoreProblem::NotARegistry:
            return "The file " + file + " holds no settings." + kLeftAlone;
        case StoreProblem::NewerFormat:
            return "The settings in " + file +
                   " were written by a newer version of this program. Use that version, or choose "
                   "another profile.";
        case StoreProblem::Damaged:
            return "The settings in " + file + " are damaged." + kLeftAlone;
        case StoreProblem::Unfinished:
            return "A change of the settings in " + file +
                   " was cut off, and taking it back needs permission to write to " + folder + ".";
        case StoreProblem::CannotOpen:
            break;
    }
    std::string reason = "error " + std::to_string(error);
    if (error == ERROR_DISK_FULL) reason = "the disk is full";
    if (error == ERROR_ACCESS_DENIED) reason = "permission is denied";
    if (error == ERROR_PATH_NOT_FOUND) reason = "part of the path is no folder";
    if (error == ERROR_BUSY) reason = "another program keeps it locked";
    return "The settings in " + file + " cannot be opened: " + reason + ".";
}

bool IsDiskFull(const std::string& folder) {
    struct statvfs info;
    return statvfs(folder.c_str(), &info) == 0 && info.f_bavail == 0;
}

}  // namespace

bool CheckProfile(std::string& problem) {
    const std::string folder = ProfileFolder();
    // A connection of its own: one that the process holds open already might not notice.
    RegistryDatabase database;
    const LSTATUS error = database.Open(folder);
    StoreProblem found = database.Problem();
    if (error == ERROR_SUCCESS && !database.IsSound()) found = StoreProblem::Damaged;
    std::string text = Explain(found, error, folder);
    if (text.empty() && IsDiskFull(folder)) {
        text = "The disk with the profile in " + folder + " is full: settings cannot be saved.";
    }
    if (text.empty()) return true;
    problem = std::move(text);
    return false;
}

}  // namespace platform
