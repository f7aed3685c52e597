#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "chromium/request_filter.h"
#include "converter/job_block.h"

namespace converter {

/// The document behind one item and what it may load.
///
/// What comes from the web may not reach into this machine: a page at a web address loads nothing
/// local. A local page, also a captured one, loads images, style sheets and fonts from anywhere,
/// but frames only from its own folder tree (for a captured page: from the folder that was captured
/// with it), since a frame would show the text of any file. A captured page that names no local
/// file but its own sheets is a page of the web. Scripts, plug-ins and background requests are
/// refused to all.
class SourceDocument {
public:
    /// \return an error when the item has no source that can be loaded.
    static Result<SourceDocument> Make(const Item& item, const platform::WideString& title);

    /// The address to open.
    [[nodiscard]] const std::string& Url() const noexcept { return url_; }

    /// From here on the page can't be replaced by another.
    void Seal() noexcept { sealed_ = true; }

    /// \param mainFrame  The id of the page's own frame.
    chromium::Answer Decide(const chromium::Request& request, const std::string& mainFrame);

private:
    Outcome UseSelection(const Item& item, const platform::WideString& title);
    Outcome UseCapture(const Item& item);
    Outcome UseAddress(const std::string& source);
    [[nodiscard]] bool NamesLocalFiles() const;
    chromium::Answer DecideLocal(const chromium::Request& request) const;
    chromium::Answer ServeSheet(const chromium::Request& request) const;

    std::string url_;
    std::optional<std::string> body_;  // markup that stands for what lies at url_
    bool local_ = false;               // a page on this machine
    bool hasSheets_ = false;           // a captured page with a folder of style sheets
    std::string folder_;               // where frames of a local page may come from, links resolved
    bool served_ = false;              // the first answer has gone out
    bool sealed_ = false;
};

/// The markup without its noscript elements. It was taken when the page's scripts had run; what
/// stands in for them would now be shown beside what they did.
std::string DropNoscript(std::string_view markup);

/// The wrapper that makes a page of selected markup. `title` is plain text.
std::string WrapSelection(std::string_view markup, std::string_view title);

}  // namespace converter
