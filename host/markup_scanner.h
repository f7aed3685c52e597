#pragma once

#include "platform/text.h"

namespace host {

constexpr bool IsBlank(WCHAR c) { return c == ' ' || (c >= 9 && c <= 13); }
constexpr bool IsLetter(WCHAR c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool IsDigit(WCHAR c) { return c >= '0' && c <= '9'; }
constexpr WCHAR LowerOf(WCHAR c) { return c >= 'A' && c <= 'Z' ? static_cast<WCHAR>(c + 32) : c; }
platform::WideString LowerOf(platform::WideView text);

/// Walks markup of any kind, cut off anywhere: texts and tags in turn, all of them parts of the
/// markup. Comments are passed over; a cut-off tag ends the walk. Borrows the markup.
class MarkupScanner {
public:
    explicit MarkupScanner(platform::WideView markup) : rest_(markup) {}

    /// Steps to the next tag. \return false at the end; `text` is what lay before either way.
    /// \param name  In small letters, with a '/' in front for an end tag; empty for a comment.
    bool Next(platform::WideView& text, platform::WideString& name, platform::WideView& tag);

    /// Takes all up to the end tag `name`, tags inside it too, as a browser does for a title.
    platform::WideView TakeRaw(platform::WideView name);

private:
    bool Stop();
    bool IsTagAt(std::size_t open) const;
    std::size_t EndOfTag(std::size_t i) const;

    platform::WideView rest_;
};

}  // namespace host
