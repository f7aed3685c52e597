#include "cab/registry_save.h"

#include <array>

#include "cab/data_array.h"
#include "cab/data_dictionary.h"
#include "cab/registry_load.h"
#include "cab/registry_rebuild.h"
#include "cab/registry_value.h"
#include "platform/modules.h"

namespace AUX::CAB {

namespace {

using platform::RegistryKey;
using platform::TransactionHandle;
using Result = std::optional<bool>;

constexpr REGSAM kSaveAccess = 0x2001F;
constexpr std::uint32_t kIndexDigits = 6;
// ERROR_RM_NOT_ACTIVE and ERROR_TRANSACTIONS_UNSUPPORTED_REMOTE, which not all headers have.
constexpr LSTATUS kNoResourceManager = 6801;
constexpr LSTATUS kNoneOnThatMachine = 6805;

/// An index as the name of an element: at least six decimal digits, terminated.
class IndexName {
public:
    explicit IndexName(std::uint32_t index) noexcept {
        std::size_t at = units_.size() - 1;
        for (std::uint32_t digits = 0; index || digits < kIndexDigits; ++digits, index /= 10) {
            units_[--at] = static_cast<WCHAR>('0' + index % 10);
        }
        text_ = WStringView(units_.data() + at, units_.size() - 1 - at);
    }
    [[nodiscard]] WStringView Text() const noexcept { return text_; }

private:
    std::array<WCHAR, 12> units_{};
    WStringView text_;
};

/// A failure stays; otherwise one thing that was written makes the whole written.
void Combine(Result& whole, Result part) noexcept {
    if (part && whole != false) whole = part;
}

/// Settles what an incremental save can rely on in the key, and takes out what is out of step.
bool MeetKey(DataItem& item, RegKey& key, SaveMode mode) noexcept {
    bool isDue = (item.GetFlags() & ItemChildrenRemoved) != 0;
    if (mode & SaveTrustStamp && item.GetStamp() != 0) {
        key.changedOutside = false;
    } else if (key.newKey != true) {
        if (key.OpenExisting() == ERROR_SUCCESS) {
            key.NoteExisting();
            const std::uint64_t time = key.LastWrite();
            key.changedOutside = time == 0 || time != item.GetStamp();
            isDue |= *key.changedOutside;
        } else if (key.newKey == true) {
            isDue = false;
        }
    }
    return !isDue || RebuildKey(item, key);
}

Result SaveChildren(DataItem& item, RegKey& key, SaveMode mode) noexcept {
    Result result;
    DataContainer& container = *item.AsContainer();
    DataDictionary* const dictionary = item.AsDictionary();
    for (std::uint32_t i = 0; i < container.GetCount(); ++i) {
        DataItem* const child = container.ItemAt(i);
        if (!child) continue;  // Loading closes the gap.
        if (dictionary) {
            Combine(result, SaveChild(*child, key, dictionary->KeyAt(i), true, mode));
        } else {
            Combine(result, SaveChild(*child, key, IndexName(i).Text(), false, mode));
        }
    }
    return result;
}

bool WriteMarker(RegKey& key) noexcept {
    constexpr WCHAR kMarker[] = TEXT("A");
    if (key.OpenForWriting(RegKey::IfMissing::Create) != ERROR_SUCCESS) return false;
    return RegSetValueExW(key.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(kMarker),
                          sizeof kMarker) == ERROR_SUCCESS;
}

void Stamp(DataItem& item, RegKey& key, SaveMode mode) noexcept {
    if (mode & SaveTransacted) {
        item.SetStamp(0);
    } else if (const std::uint64_t time = key.LastWrite()) {
        item.SetStamp(time);
    }
}

bool WriteValue(DataItem& leaf, RegKey& key, WStringView name) noexcept {
    WString valueName;
    if (name.find(WCHAR{0}) != WStringView::npos ||
        !MakeValueName(leaf.GetType(), name, valueName) ||
        key.OpenForWriting(RegKey::IfMissing::Create) != ERROR_SUCCESS ||
        WriteLeaf(key.Get(), valueName.Text(), leaf) != ERROR_SUCCESS) {
        return false;
    }
    key.NoteChange();
    return true;
}

/// Deletes a leaf's value. \return nothing if there is none.
Result DeleteValue(DataItem& leaf, RegKey& key, WStringView name) noexcept {
    WString valueName;
    if (!MakeValueName(leaf.GetType(), name, valueName)) return false;
    LSTATUS status = key.OpenForWriting(RegKey::IfMissing::Fail);
    if (status == ERROR_SUCCESS) status = RegDeleteValueW(key.Get(), valueName.Text());
    if (status == ERROR_FILE_NOT_FOUND || status == ERROR_NOT_FOUND) return {};
    if (status != ERROR_SUCCESS) return false;
    key.NoteChange();
    return true;
}

Result SaveLeaf(DataItem& leaf, RegKey& key, WStringView name, bool omitDefaults) noexcept {
    const bool isDirty = (leaf.GetFlags() & ItemDirty) != 0;
    const bool isCurrent = key.changedOutside == false && !isDirty && key.newKey != true;
    if (omitDefaults && leaf.IsDefault()) {
        if (key.newKey == true || isCurrent) return {};
        return DeleteValue(leaf, key, name);
    }
    if (isCurrent) {
        if (!key.newKey) key.NoteExisting();
        return {};
    }
    return WriteValue(leaf, key, name);
}

/// What was saved of a tree was undone: it no longer knows of any key.
void ForgetStamps(DataItem& item) noexcept {
    DataContainer* const container = item.AsContainer();
    if (!container) return;
    item.SetStamp(0);
    for (std::uint32_t i = 0; i < container->GetCount(); ++i) {
        if (DataItem* const child = container->ItemAt(i)) ForgetStamps(*child);
    }
}

bool RunsUnderWine() noexcept {
    static const bool isWine = [] {
        const HMODULE system = GetModuleHandleW(TEXT("ntdll.dll"));
        return system && GetProcAddress(system, "wine_get_version");
    }();
    return isWine;
}

/// Whether a transacted call failed for want of transactions, and not for the key's sake.
bool LacksTransactions(LSTATUS status) noexcept {
    return status == ERROR_CALL_NOT_IMPLEMENTED || status == ERROR_NOT_SUPPORTED ||
           status == kNoResourceManager || status == kNoneOnThatMachine;
}

/// A key to save into, with the transaction around it if there is one.
struct SaveTarget {
    RegistryKey key;
    TransactionHandle transaction;
    DWORD disposition = 0;

    [[nodiscard]] bool IsTransacted() const noexcept {
        return transaction.Get() != INVALID_HANDLE_VALUE;
    }
    [[nodiscard]] LSTATUS Open(HKEY base, const WCHAR* path, bool wantsTransaction) noexcept;
    /// Closes the key and ends the transaction. \return the save's result, or why it does not last.
    [[nodiscard]] HRESULT Finish(HRESULT result) noexcept;
};

LSTATUS SaveTarget::Open(HKEY base, const WCHAR* path, bool wantsTransaction) noexcept {
    if (wantsTransaction && !RunsUnderWine()) {
        *transaction.Put() = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    }
    if (IsTransacted()) {
        const LSTATUS status =
            RegCreateKeyTransactedW(base, path, 0, nullptr, REG_OPTION_NON_VOLATILE, kSaveAccess,
                                    nullptr, key.Put(), &disposition, transaction.Get(), nullptr);
        if (!LacksTransactions(status)) return status;
        transaction.Reset();
    }
    return RegCreateKeyExW(base, path, 0, nullptr, REG_OPTION_NON_VOLATILE, kSaveAccess, nullptr,
                           key.Put(), &disposition);
}

HRESULT SaveTarget::Finish(HRESULT result) noexcept {
    key.Reset();
    if (!IsTransacted()) return result;
    if (FAILED(result)) {
        // If this fails, closing the handle undoes it.
        (void)RollbackTransaction(transaction.Get());
    } else if (!CommitTransaction(transaction.Get())) {
        result = ResultOf(static_cast<LSTATUS>(GetLastError()));
        if (!FAILED(result)) result = E_FAIL;
    }
    transaction.Reset();
    return result;
}

HRESULT SaveIntoKey(DataItem& item, HKEY key, SaveMode mode) noexcept {
    if (!(mode & SaveIncremental)) {
        const LSTATUS status = RegDeleteTreeW(key, nullptr);
        if (status != ERROR_SUCCESS) return ResultOf(status);
        mode |= SaveTrustStamp;
    }
    RegKey root(key);
    const Result result = SaveContainer(item, root, !item.AsArray(), mode);
    if (!result) return S_FALSE;
    return *result ? S_OK : E_FAIL;
}

HRESULT SaveBelow(DataItem& item, HKEY key, const WCHAR* path, SaveMode mode) noexcept {
    SaveTarget target;
    const LSTATUS status = target.Open(key, path, !(mode & SaveIncremental));
    if (status != ERROR_SUCCESS) return ResultOf(status);
    if (target.IsTransacted()) mode |= SaveTransacted;
    if (target.disposition == REG_CREATED_NEW_KEY) {
        mode = (mode & ~SaveIncremental) | SaveTrustStamp;
    }
    const HRESULT saved = SaveIntoKey(item, target.key.Get(), mode);
    const bool isTransacted = target.IsTransacted();
    const HRESULT result = target.Finish(saved);
    if (isTransacted && FAILED(result)) ForgetStamps(item);
    return result;
}

bool IsRoot(HKEY key) noexcept {
    return key == HKEY_CLASSES_ROOT || key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE ||
           key == HKEY_USERS || key == HKEY_CURRENT_CONFIG;
}

}  // namespace

Result SaveContainer(DataItem& item, RegKey& key, bool omitDefaults, SaveMode mode) noexcept {
    key.written = false;
    if (!item.AsContainer() || key.Depth() > kMaxKeyDepth) return false;
    Result result;
    bool isMet = true;
    if (mode & SaveIncremental) {
        isMet = MeetKey(item, key, mode);
        if (!isMet) result = false;
    } else if (!key.newKey) {
        key.newKey = true;
    }
    Combine(result, SaveChildren(item, key, mode));
    if (!omitDefaults) {
        if (key.OpenForWriting(RegKey::IfMissing::Create) != ERROR_SUCCESS) {
            result = false;
        } else if (key.newKey == true) {
            key.written = true;
        }
    }
    if (key.written) Combine(result, !item.AsArray() || WriteMarker(key));
    // A key that others changed or that is empty, and that needed no change now, is in step as
    // well.
    const bool isInStep =
        result != false && (key.changedOutside == true || (key.newKey == true && key.Get()));
    if (key.written || isInStep || item.GetFlags() & ItemDirty) Stamp(item, key, mode);
    // A key that is still out of step is brought in step by the next save.
    if (isMet) item.SetFlags(0, ItemChildrenRemoved);
    return result;
}

Result SaveChild(DataItem& child, RegKey& key, WStringView name, bool omitDefaults,
                 SaveMode mode) noexcept {
    if (child.GetFlags() & ItemTransient || child.IsType(Kind::Object)) {
        child.SetFlags(0, ItemDirty);
        return {};
    }
    if (!child.AsContainer()) {
        const Result result = SaveLeaf(child, key, name, omitDefaults);
        // What could not be written is written by the next save.
        child.SetFlags(result == false ? ItemDirty : 0, ItemDirty);
        return result;
    }
    if (!IsKeyName(name)) return false;
    RegKey level(key, name.data());
    if (key.newKey == true) level.newKey = true;
    return SaveContainer(child, level, omitDefaults, mode);
}

HRESULT SaveToRegistry(DataItem& item, HKEY key, const WCHAR* path, bool incremental,
                       bool trustStamp) noexcept {
    DataItem* const real = item.Target(Kind::None);
    if (!real || !real->AsContainer()) return E_FAIL;
    WStringView rest(path);
    if (!key) key = SplitRoot(rest, rest);
    if (!key || (rest.empty() && IsRoot(key))) return E_INVALIDARG;
    std::optional<BagLockScope> lock;
    if (DataRoot* const bag = real->GetRoot()) lock.emplace(*bag);
    const SaveMode mode = (incremental ? SaveIncremental : 0) | (trustStamp ? SaveTrustStamp : 0);
    // The rest ends where the path does.
    return rest.empty() ? SaveIntoKey(*real, key, mode) : SaveBelow(*real, key, rest.data(), mode);
}

}  // namespace AUX::CAB
