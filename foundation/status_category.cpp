#include "foundation/status_category.h"

#include <algorithm>
#include <cstring>

#include "foundation/array.h"
#include "foundation/status_tables.h"
#include "platform/messages.h"
#include "platform/sync.h"

namespace AUX {
namespace {

struct CategoryRecord {
    std::uint32_t number;
    const StatusMessage* table;
    std::uint32_t rowCount;
    const char* name;
};
static_assert(sizeof(CategoryRecord) == 32);

// Set when the registry is destroyed, for those static objects that end after it.
constinit bool hasEnded = false;

// The lock stands before any use, since the one instance is made by the first. Its operations are
// called with the lock held.
class CategoryRegistry {
public:
    CategoryRegistry() noexcept {
        (void)InitializeCriticalSectionAndSpinCount(&section_, kSpinCount);
    }
    ~CategoryRegistry() {
        hasEnded = true;
        DeleteCriticalSection(&section_);
    }
    CategoryRegistry(const CategoryRegistry&) = delete;
    CategoryRegistry& operator=(const CategoryRegistry&) = delete;

    void Lock() noexcept { EnterCriticalSection(&section_); }
    void Unlock() noexcept { LeaveCriticalSection(&section_); }

    [[nodiscard]] const CategoryRecord* Find(std::uint32_t number) const noexcept {
        const std::uint32_t place = PlaceOf(number);
        return IsAt(place, number) ? &records_[place] : nullptr;
    }

    [[nodiscard]] bool Enter(const CategoryRecord& record) noexcept {
        const std::uint32_t place = PlaceOf(record.number);
        return IsAt(place, record.number) || records_.InsertAt(place, record);
    }

    // Tries again at the next registration if memory ran out halfway.
    [[nodiscard]] bool EnterBuiltIn() noexcept {
        if (hasBuiltIn_) return true;
        for (const status_detail::BuiltInCategory& category : status_detail::BuiltInCategories()) {
            const auto rowCount = static_cast<std::uint32_t>(category.table.size());
            if (!Enter({category.number, category.table.data(), rowCount, category.name})) {
                return false;
            }
        }
        return hasBuiltIn_ = true;
    }

    void Remove(std::uint32_t number) noexcept {
        const std::uint32_t place = PlaceOf(number);
        if (IsAt(place, number)) records_.RemoveAt(place);
    }

private:
    static constexpr DWORD kSpinCount = 4000;

    // Where the number lies, or would have to lie.
    [[nodiscard]] std::uint32_t PlaceOf(std::uint32_t number) const noexcept {
        const CategoryRecord* const place = std::lower_bound(
            records_.begin(), records_.end(), number,
            [](const CategoryRecord& record, std::uint32_t n) { return record.number < n; });
        return static_cast<std::uint32_t>(place - records_.begin());
    }
    [[nodiscard]] bool IsAt(std::uint32_t place, std::uint32_t number) const noexcept {
        return place < records_.Count() && records_[place].number == number;
    }

    CRITICAL_SECTION section_;
    Array<CategoryRecord> records_;  // sorted by number
    bool hasBuiltIn_ = false;
};

// The registry with its lock held; null when it has ended.
class LockedRegistry {
public:
    LockedRegistry() noexcept : registry_(Instance()) {
        if (registry_) registry_->Lock();
    }
    ~LockedRegistry() {
        if (registry_) registry_->Unlock();
    }
    LockedRegistry(const LockedRegistry&) = delete;
    LockedRegistry& operator=(const LockedRegistry&) = delete;

    explicit operator bool() const noexcept { return registry_ != nullptr; }
    CategoryRegistry* operator->() const noexcept { return registry_; }

    [[nodiscard]] const CategoryRecord* Find(std::uint32_t number) const noexcept {
        return registry_ ? registry_->Find(number) : nullptr;
    }

private:
    static CategoryRegistry* Instance() noexcept {
        if (hasEnded) return nullptr;
        static CategoryRegistry instance;
        return &instance;
    }

    CategoryRegistry* const registry_;
};

const char* FindText(const StatusMessage* table, std::size_t rowCount,
                     std::uint32_t code) noexcept {
    const StatusMessage* const end = table + rowCount;
    const StatusMessage* const row = std::find_if(
        table, end, [code](const StatusMessage& message) { return message.code == code; });
    return row == end ? nullptr : row->text;
}

// Widens a text of the ANSI code page. \return false, with an empty output, for none.
bool Widen(const char* text, WString& output) noexcept {
    output.Clear();
    if (!text || !*text) return false;
    const INT bytes = static_cast<INT>(std::strlen(text));
    const INT units = MultiByteToWideChar(CP_ACP, 0, text, bytes, nullptr, 0);
    if (units > 0 && output.SetLength(static_cast<std::uint32_t>(units)) &&
        !MultiByteToWideChar(CP_ACP, 0, text, bytes, output.Data(), units)) {
        output.Clear();
    }
    return true;
}

}  // namespace

bool RegisterStatusCategory(std::uint32_t number, const StatusMessage* table,
                            std::uint32_t rowCount, const char* name) noexcept {
    const LockedRegistry registry;
    return registry && registry->EnterBuiltIn() &&
           registry->Enter({number, table, table ? rowCount : 0, name});
}

void UnregisterStatusCategory(std::uint32_t number) noexcept {
    const LockedRegistry registry;
    if (registry) registry->Remove(number);
}

namespace status_detail {

bool FindMessage(std::uint32_t category, std::uint32_t code, WString& message) noexcept {
    const LockedRegistry registry;
    const CategoryRecord* const record = registry.Find(category);
    const char* text = record ? FindText(record->table, record->rowCount, code) : nullptr;
    const std::span<const StatusMessage> common = CommonMessages();
    if (!text) text = FindText(common.data(), common.size(), code);
    return Widen(text, message);
}

bool FindCategoryName(std::uint32_t category, WString& name) noexcept {
    const LockedRegistry registry;
    const CategoryRecord* const record = registry.Find(category);
    return record && Widen(record->name, name);
}

}  // namespace status_detail
}  // namespace AUX
