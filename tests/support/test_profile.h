#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/text.h"

namespace test_support {

/// A machine of a test's own while it lives: a fresh folder, below it the temporary folder, the
/// registry of the current user and, natively, `C:\`. All of it goes at the end. One at a time in a
/// process.
class TestProfile {
public:
    TestProfile();
    ~TestProfile();
    TestProfile(const TestProfile&) = delete;
    TestProfile& operator=(const TestProfile&) = delete;

    /// The fresh folder in Windows' form, with a `\` at its end.
    [[nodiscard]] const platform::WideString& Folder() const { return folder_; }
    /// What GetTempPathW gives, with a `\` at its end; empty at first.
    [[nodiscard]] platform::WideString TempFolder() const;
    /// A path in the fresh folder.
    [[nodiscard]] platform::WideString Path(platform::WideView name) const;

private:
    platform::WideString folder_;
};

/// A path of the profile as this machine writes it.
std::filesystem::path LocalPath(platform::WideString path);
/// Makes or replaces a file; false on failure.
bool WriteWholeFile(const platform::WideString& path, const std::string& content);
/// The content of a file; empty if it cannot be read.
std::string ReadWholeFile(const platform::WideString& path);
/// Whether a file or a folder has this name.
bool Exists(const platform::WideString& path);
/// The names in a folder (with a `\` at its end), sorted, without "." and "..".
std::vector<platform::WideString> ListFolder(const platform::WideString& folder);
/// Removes a folder with all below it, read-only files too; links are removed and not followed.
void RemoveTree(const platform::WideString& folder);

/// Whether the system is Wine, which differs from Windows here and there
/// (docs/platform-differences.md).
bool RunsUnderWine();

}  // namespace test_support
