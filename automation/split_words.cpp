#include "automation/split_words.h"

namespace AUX {
namespace {

constexpr bool IsWhite(WCHAR unit) noexcept {
    return unit < 33 || unit == 160 || (unit >= 0x2000 && unit <= 0x200F);
}

std::size_t EndOfWord(WStringView text) noexcept {
    std::size_t end = 0;
    while (end < text.size() && !IsWhite(text[end])) ++end;
    return end;
}

/// The units of a quotation that a text begins with, its quotes included; 0 if there is none.
std::size_t EndOfQuotation(WStringView text) noexcept {
    if (text.front() != '"') return 0;
    std::size_t end = text.find('"', 1);
    if (end == WStringView::npos) return 0;
    while (end < text.size() && text[end] == '"') ++end;
    return end == text.size() || IsWhite(text[end]) ? end : 0;
}

}  // namespace

bool WordSplitter::Next(WStringView& word) noexcept {
    while (!rest_.empty() && IsWhite(rest_.front())) rest_ = rest_.substr(1);
    if (rest_.empty()) return false;
    const std::size_t quoted = EndOfQuotation(rest_);
    const std::size_t end = quoted ? quoted : EndOfWord(rest_);
    word = rest_.substr(0, end);
    if (quoted && word.find_first_not_of('"') != WStringView::npos) word = word.substr(1, end - 2);
    rest_ = rest_.substr(end);
    return true;
}

HRESULT SplitWords(const WCHAR* text, Array<BSTR>& words) noexcept {
    FreeWords(words);
    if (!text || !*text) return S_FALSE;
    WordSplitter splitter{WStringView(text)};
    for (WStringView word; splitter.Next(word);) {
        BSTR const copy = SysAllocStringLen(word.data(), static_cast<UINT>(word.size()));
        if (copy && words.Add(copy)) continue;
        SysFreeString(copy);
        FreeWords(words);
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

void FreeWords(Array<BSTR>& words) noexcept {
    for (BSTR word : words) SysFreeString(word);
    words.Clear();
}

}  // namespace AUX
