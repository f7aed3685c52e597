#include "converter/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "converter/paths.h"
#include "platform/dialogs.h"
#include "platform/scope_exit.h"

namespace converter {
namespace {

using platform::WideString;
using platform::WideView;

constexpr WideView kForbidden = TEXT("\\/:*?\"<>|");
constexpr std::size_t kLongestName = 80;  // units; leaves room in any folder
constexpr std::size_t kPathUnits = 4096;
constexpr mode_t kUsualMode = 0666;
constexpr int kMostNumbers = 10'000;

std::string Why(const std::string& path, const char* what) {
    return path + " can't be " + what + ": " + std::strerror(errno) + ".";
}

bool WriteAll(int file, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = write(file, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return fsync(file) == 0;
}

mode_t ModeFor(const std::string& path) {
    struct stat about {};
    if (stat(path.c_str(), &about) == 0) return about.st_mode & 0777;
    const mode_t mask = umask(0);
    umask(mask);
    return kUsualMode & ~mask;
}

/// The folder's permissions alone would allow a replacement. No user but root is refused by
/// `access` only, so that the bits count too.
bool IsProtected(const std::string& path) {
    struct stat about {};
    if (stat(path.c_str(), &about) != 0) return false;
    return (about.st_mode & 0222) == 0 || access(path.c_str(), W_OK) != 0;
}

/// The name itself is on the disk only when its folder is. Not every file system can; that is no
/// reason to call the work failed.
void SyncFolder(const std::string& folder) {
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    (void)fsync(handle);
    close(handle);
}

}  // namespace

WideString FileNameOf(const WideString& title) {
    WideString name;
    for (const WCHAR unit : title) {
        const bool bad = unit < 0x20 || unit == 0x7F || kForbidden.find(unit) != WideView::npos;
        name += bad ? TEXT(' ') : unit;
        if (name.size() == kLongestName) break;
    }
    const WideView edge = TEXT(" .");
    const std::size_t first = name.find_first_not_of(edge);
    if (first == WideString::npos) return TEXT("Web page");
    return name.substr(first, name.find_last_not_of(edge) - first + 1);
}

Result<std::string> AskOutputFile(const WideString& suggestedName) {
    static constexpr WCHAR kFilter[] = TEXT("PDF files (*.pdf)\0*.pdf\0");
    WideString path = FileNameOf(suggestedName) + TEXT(".pdf");
    path.resize(kPathUnits, WCHAR{0});
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.lpstrFilter = kFilter;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrDefExt = TEXT("pdf");
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_EXPLORER;
    if (!GetSaveFileNameW(&dialog)) return Error{"No file was named for the PDF."};
    const std::string host = HostPath(path.c_str());
    if (host.empty()) return Error{"The name that was given is no path."};
    return host;
}

std::string FreeOutputFile(const WideString& suggestedName) {
    const std::string stem = platform::ToUtf8(FileNameOf(suggestedName));
    std::string path = stem + ".pdf";
    struct stat about {};
    for (int k = 2; k < kMostNumbers && lstat(path.c_str(), &about) == 0; ++k) {
        path = stem + " (" + std::to_string(k) + ").pdf";
    }
    return path;
}

Outcome WriteOutputFile(const std::string& path, const std::string& bytes,
                        const std::atomic<bool>* cancel) {
    const std::string real = RealPath(path);
    const std::string target = real.empty() ? path : real;
    const std::string folder = FolderOf(target);
    struct stat about {};
    if (stat(target.c_str(), &about) == 0 && !S_ISREG(about.st_mode)) {
        return Error{path + " is no ordinary file and can't be replaced."};
    }
    if (IsProtected(target)) return Error{path + " is write-protected."};
    // Hidden and with a short name: a long one could have no room for the addition.
    std::string part = folder + "/.quvada-XXXXXX";
    const int file = mkostemp(part.data(), O_CLOEXEC);
    if (file < 0) return Error{Why(path, "written")};
    platform::ScopeExit remove([&] { (void)unlink(part.c_str()); });
    // Some file systems know no permissions; the PDF is worth more.
    (void)fchmod(file, ModeFor(target));
    const bool written = WriteAll(file, bytes);
    const int error = errno;
    if (close(file) != 0 || !written) {
        if (!written) errno = error;
        return Error{Why(path, "written")};
    }
    if (cancel && cancel->load()) return Error{"The work was cancelled."};
    if (std::rename(part.c_str(), target.c_str()) != 0) return Error{Why(path, "put in place")};
    remove.Release();
    SyncFolder(folder);
    return Done{};
}

}  // namespace converter
