#pragma once

#include <cstdint>

#include "capture/markup_rewriter.h"
#include "capture/style_rewriter.h"
#include "foundation/allocated.h"
#include "foundation/array.h"
#include "foundation/wstring.h"
#include "platform/html.h"

/// Makes a copy of a loaded page in the temporary folder, as the browser holds it now: the markup
/// with absolute addresses and without scripts, and beside it a file for each style sheet that the
/// markup links. Nothing is fetched: images stay at their addresses, frames as they stand. Lives
/// for one capture, on the thread of the browser's objects; the files stay.
class PageCapture final : public MarkupUrlResolver, public StyleUrlResolver {
public:
    PageCapture() noexcept = default;
    PageCapture(const PageCapture&) = delete;
    PageCapture& operator=(const PageCapture&) = delete;
    ~PageCapture();

    /// Copies the page.
    /// \param document    May be null: false.
    /// \param pageUrl     The page's address, the base of the relative ones in it.
    /// \param outputPath  Gets the path of the copy, also when the copy then fails.
    /// \return false, silently, when there is no copy. What was made before stays: nothing if the
    ///         names or the folder failed, the empty folder if the page gave no markup, also the
    ///         sheets in it if the rewriting or the page's own file failed.
    [[nodiscard]] bool Capture(IHTMLDocument2* document, AUX::WStringView pageUrl,
                               AUX::WString& outputPath) noexcept;

    /// Takes the texts of the linked style sheets. Those without an address, as well as those that
    /// cannot be had, are left out; one whose text may not be read has an empty one.
    void CollectStyleSheets(IHTMLDocument2* document) noexcept;

    [[nodiscard]] bool ResolveImage(AUX::WStringView url, AUX::WString& output) noexcept override;
    /// A style sheet of type text/css that the document has becomes a local file at its first link;
    /// if that fails, its absolute address stands for it.
    [[nodiscard]] bool ResolveLink(AUX::WStringView href, AUX::WStringView type,
                                   AUX::WString& output) noexcept override;
    [[nodiscard]] bool ResolveAnchor(AUX::WStringView url, AUX::WString& output) noexcept override;
    [[nodiscard]] bool ResolveStyleUrl(AUX::WStringView base, AUX::WStringView url,
                                       AUX::WString& output) noexcept override;

    /// Writes a text as UTF-8 into a file, which is made or replaced.
    /// \param length             Units of the text; negative if it runs to its terminator.
    /// \param dropByteOrderMark  The file begins with the text and not with the mark EF BB BF; of a
    ///                           text that begins with U+FEFF, that character goes instead.
    /// \return false, silently, if the file could not be made or written; it may then be empty or
    ///         cut off.
    [[nodiscard]] static bool WriteTextFile(const WCHAR* text, std::int64_t length,
                                            const WCHAR* path, bool dropByteOrderMark) noexcept;

private:
    struct StyleSheetEntry : AUX::Allocated {
        AUX::WString Url;       // absolute
        AUX::WString CssText;   // rewritten once it has been used
        AUX::WString LocalUrl;  // of the copy; empty until there is one
    };

    [[nodiscard]] bool CollectStyleSheet(IHTMLStyleSheet& sheet) noexcept;
    [[nodiscard]] StyleSheetEntry* FindStyleSheet(AUX::WStringView url) const noexcept;
    [[nodiscard]] bool MakeLocal(StyleSheetEntry& sheet) noexcept;
    [[nodiscard]] bool WriteMainFile(AUX::WStringView markup) noexcept;

    AUX::WString BaseUrl;
    AUX::Array<StyleSheetEntry*> StyleSheets;  // owned, in the document's order
    AUX::WString TempFolder;
    AUX::WString ResourceFolder;
    AUX::WString MainFile;
};
