#include "converter/clean_up.h"

#include <cstdio>
#include <ftw.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "converter/paths.h"

namespace converter {
namespace {

constexpr int kOpenFolders = 16;

/// Whether the name is `before`, then at least one lower-case hexadecimal digit, then `behind`.
bool IsOurName(std::string_view name, std::string_view before, std::string_view behind) {
    if (name.size() <= before.size() + behind.size()) return false;
    if (!name.starts_with(before) || !name.ends_with(behind)) return false;
    name = name.substr(before.size(), name.size() - before.size() - behind.size());
    return name.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) {
    (void)std::remove(path);  // The rest still goes.
    return 0;
}

void RemoveTree(const std::string& path) {
    struct stat about {};
    if (lstat(path.c_str(), &about) != 0 || !S_ISDIR(about.st_mode)) return;
    (void)nftw(path.c_str(), RemoveEntry, kOpenFolders, FTW_DEPTH | FTW_PHYS);
}

}  // namespace

void RemoveStorageFile(const std::string& path) {
    if (IsOurName(NameOf(path), "qvdstg_", ".bin")) (void)unlink(path.c_str());
}

void RemoveCapturedPages(const Job& job) {
    for (const Item& item : job.items) {
        if (!item.sourceIsTemporary) continue;
        const std::string path = HostPath(item.source);
        if (!IsOurName(NameOf(path), "qvd_", ".html")) continue;
        (void)unlink(path.c_str());
        const std::string stem = path.substr(0, path.size() - std::string_view(".html").size());
        RemoveTree(stem + "_files");
        RemoveTree(stem + ".files");
    }
}

}  // namespace converter
