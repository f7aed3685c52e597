#pragma once

#include "foundation/array.h"
#include "foundation/wstring_view.h"
#include "platform/com.h"

namespace AUX {

/// Cuts a text into words at white space: the units below 33, 160, and 0x2000 to 0x200F. A word may
/// be quoted, so that it can hold white space; see Next.
class WordSplitter {
public:
    /// \param text  Borrowed.
    explicit WordSplitter(WStringView text) noexcept : rest_(text) {}

    /// Gives the next word, a part of the text. A quotation begins a word and ends with the first
    /// run of quotes, if white space or the end follows that; its word is what lies between the
    /// first quote and the run's last, or all the quotes if there is nothing else. Otherwise quotes
    /// are like other units.
    /// \return false at the end.
    [[nodiscard]] bool Next(WStringView& word) noexcept;

private:
    WStringView rest_;
};

/// Cuts a text into words, as WordSplitter does.
/// \param text   Terminated; null counts as empty.
/// \param words  Gets the words, which the caller frees; stays empty unless the result is S_OK.
/// \return S_FALSE for an empty text; E_OUTOFMEMORY.
[[nodiscard]] HRESULT SplitWords(const WCHAR* text, Array<BSTR>& words) noexcept;

/// Frees the words, and empties the array.
void FreeWords(Array<BSTR>& words) noexcept;

}  // namespace AUX
