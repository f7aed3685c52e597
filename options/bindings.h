#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/user.h"
#include "settings/setting_field.h"

/// Which control of a dialog shows which field: rows of a page's tables, walked in both directions.
/// An id means a control of the page that walks the table; other pages use the same numbers.

/// A check box, or one of two radio buttons of which the other is told separately.
struct CheckBinding {
    int id;
    SettingField<bool> field;
};
/// A drop list whose row numbers are the field's numbers.
struct ListBinding {
    int id;
    SettingField<std::uint32_t> field;
};
/// An edit with a text.
struct TextBinding {
    int id;
    SettingField<AUX::WString> field;
};

/// Units of the texts that are stored, with the terminator; what is beyond is cut.
inline constexpr int kTextUnits = 1024;

void ShowFields(HWND dialog, std::span<const CheckBinding> rows,
                ConversionSettings& settings) noexcept;
/// A number beyond the list selects no row.
void ShowFields(HWND dialog, std::span<const ListBinding> rows,
                ConversionSettings& settings) noexcept;
void ShowFields(HWND dialog, std::span<const TextBinding> rows,
                ConversionSettings& settings) noexcept;

void StoreFields(HWND dialog, std::span<const CheckBinding> rows,
                 ConversionSettings& settings) noexcept;
/// A list in which no row is selected leaves its field: it could not show the number.
void StoreFields(HWND dialog, std::span<const ListBinding> rows,
                 ConversionSettings& settings) noexcept;
/// A text that memory does not suffice for leaves its field.
void StoreFields(HWND dialog, std::span<const TextBinding> rows,
                 ConversionSettings& settings) noexcept;

[[nodiscard]] bool IsChecked(HWND dialog, int id) noexcept;
void SetChecked(HWND dialog, int id, bool isChecked) noexcept;

/// Replaces `text` with an edit's first kTextUnits - 1 units, and wipes what it was.
/// \return false, with `text` as it was, when memory runs out.
[[nodiscard]] bool ReadText(HWND dialog, int id, AUX::WString& text) noexcept;

/// Lets no more be typed into the edits than is stored.
void LimitTexts(HWND dialog, std::span<const TextBinding> rows) noexcept;

/// Replaces the rows of a drop list; none is selected then.
void FillList(HWND dialog, int id, std::span<const WCHAR* const> names) noexcept;
/// The same with the names of a table's rows.
template <class Row, std::size_t kCount>
void FillListFrom(HWND dialog, int id, const Row (&table)[kCount]) noexcept {
    const WCHAR* names[kCount];
    for (std::size_t i = 0; i < kCount; ++i) names[i] = table[i].name;
    FillList(dialog, id, names);
}
/// A number that is no row's selects none.
void SelectRow(HWND dialog, int id, std::uint32_t row) noexcept;
/// \return the selected row, `otherwise` if there is none.
[[nodiscard]] std::uint32_t SelectedRow(HWND dialog, int id, std::uint32_t otherwise) noexcept;

void EnableControls(HWND dialog, std::span<const int> ids, bool isEnabled) noexcept;
