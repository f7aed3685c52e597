#include "cab/reg_key.h"

namespace AUX::CAB {

namespace {

constexpr std::size_t kMaxKeyNameUnits = 255;
// One call makes no more than 32 levels.
constexpr std::uint32_t kMaxLevelsAtOnce = 16;

bool IsMissing(LSTATUS status) noexcept {
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_NOT_FOUND;
}

}  // namespace

bool IsKeyName(WStringView name) noexcept {
    return !name.empty() && name.size() <= kMaxKeyNameUnits &&
           name.find(WCHAR{'\\'}) == WStringView::npos && name.find(WCHAR{0}) == WStringView::npos;
}

std::uint64_t ReadKeyTime(HKEY key) noexcept {
    FILETIME time{};
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, &time) != ERROR_SUCCESS) {
        return 0;
    }
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

RegKey::RegKey(RegKey& above, const WCHAR* name) noexcept
    : pendingName(name), parent(&above), root(above.root), depth_(above.depth_ + 1) {
    above.child = this;
}

RegKey::~RegKey() {
    if (!parent) return;
    Close();
    if (!pendingName) (void)root->path.SetLength(static_cast<std::uint32_t>(pathMark));
    parent->child = nullptr;
}

void RegKey::Close() noexcept {
    if (handle) RegCloseKey(handle);
    handle = nullptr;
}

bool RegKey::ExtendPath() noexcept {
    WString& whole = root->path;
    for (RegKey* level = root->child; level; level = level->child) {
        if (level->pendingName) {
            const std::uint32_t mark = whole.Length();
            if ((mark && !whole.AppendRepeated('\\', 1)) || !whole.Append(level->pendingName)) {
                (void)whole.SetLength(mark);  // Shorter than it is.
                return false;
            }
            level->pathMark = static_cast<std::int32_t>(mark);
            level->pendingName = nullptr;
        }
        if (level == this) break;
    }
    return true;
}

LSTATUS RegKey::OpenExisting() noexcept {
    if (handle) return ERROR_SUCCESS;
    if (!ExtendPath()) return ERROR_NOT_ENOUGH_MEMORY;
    const LSTATUS status = RegOpenKeyExW(root->handle, root->path.Text(), 0, KEY_READ, &handle);
    if (status == ERROR_SUCCESS) {
        NoteExisting();
    } else {
        handle = nullptr;
        if (IsMissing(status)) newKey = true;
    }
    return status;
}

std::uint32_t RegKey::LevelsUnknownAbove() const noexcept {
    std::uint32_t count = 0;
    for (const RegKey* level = parent; level && !level->handle && level->newKey != false;
         level = level->parent) {
        ++count;
    }
    return count;
}

LSTATUS RegKey::OpenForWriting(IfMissing ifMissing) noexcept {
    if (!parent || (handle && isWritable_)) return ERROR_SUCCESS;
    if (!ExtendPath()) return ERROR_NOT_ENOUGH_MEMORY;
    HKEY opened = nullptr;
    DWORD disposition = REG_OPENED_EXISTING_KEY;
    LSTATUS status = ERROR_SUCCESS;
    if (ifMissing == IfMissing::Create) {
        if (LevelsUnknownAbove() >= kMaxLevelsAtOnce) status = parent->OpenForWriting(ifMissing);
        if (status == ERROR_SUCCESS) {
            status = RegCreateKeyExW(root->handle, root->path.Text(), 0, nullptr,
                                     REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &opened,
                                     &disposition);
        }
    } else {
        status = RegOpenKeyExW(root->handle, root->path.Text(), 0, KEY_ALL_ACCESS, &opened);
        if (IsMissing(status)) newKey = true;
    }
    if (status != ERROR_SUCCESS) return status;
    Close();
    handle = opened;
    isWritable_ = true;
    if (disposition == REG_CREATED_NEW_KEY) {
        NoteCreated();
    } else {
        NoteExisting();
    }
    return ERROR_SUCCESS;
}

void RegKey::NoteCreated() noexcept {
    if (!newKey) newKey = true;
    changedOutside = false;
    // The keys above got a subkey, up to the first that was there before.
    for (RegKey* above = parent; above; above = above->parent) {
        above->NoteChange();
        if (above->newKey == false) break;
    }
}

void RegKey::NoteExisting() noexcept {
    // A key that came into being with one below it is still new: nothing of its own is in it.
    if (newKey == true) return;
    newKey = false;
    for (RegKey* above = parent; above && !above->newKey; above = above->parent) {
        above->newKey = false;
    }
}

void RegKey::NoteChange() noexcept {
    written = true;
    lastWrite = 0;
}

std::uint64_t RegKey::LastWrite() noexcept {
    if (lastWrite == 0 && OpenExisting() == ERROR_SUCCESS) lastWrite = ReadKeyTime(handle);
    return lastWrite;
}

}  // namespace AUX::CAB
