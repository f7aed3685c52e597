#include "browser/explorer_test.h"

#include "browser/script_text.h"
#include "platform/system.h"

namespace {

constexpr AUX::WStringView kName = TEXT("explorer.exe");
constexpr AUX::WStringView kPathEnd = TEXT("\\explorer.exe");

}  // namespace

bool IsExplorerTitle(AUX::WStringView title) noexcept {
    if (title.size() < kPathEnd.size()) return IsSameWord(title, kName);
    return IsSameWord(title.substr(title.size() - kPathEnd.size()), kPathEnd);
}

bool IsExplorer() noexcept {
    STARTUPINFOW info = {};
    info.cb = sizeof info;
    GetStartupInfoW(&info);
    return info.lpTitle && IsExplorerTitle(info.lpTitle);
}
