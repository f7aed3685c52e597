#pragma once

#include <memory>
#include <string>
#include <vector>

#include "chromium/browser.h"
#include "chromium/page.h"
#include "host/page_document.h"

namespace host {

/// A browser with a page, kept by the documents and elements of that page.
struct LivePage {
    std::unique_ptr<chromium::Browser> browser;
    std::unique_ptr<chromium::Page> page;
    bool isSilent = false;  // it did not answer in time once, so it is not asked again
    // Changes that wait for the next question: made one by one, the browser would lay the page out
    // after each.
    std::string changes;
    chromium::Frame changedFrame;
};

/// A document in the browser, asked and changed as it stands there: each question runs a script
/// beside the page's own ones. Style sheets and frames of other sites are read as well, but what
/// belongs to another site may not be reached as a document.
class ChromiumDocument final : public PageDocument,
                               public std::enable_shared_from_this<ChromiumDocument> {
public:
    ChromiumDocument(std::shared_ptr<LivePage> live, chromium::Frame frame);

    [[nodiscard]] const platform::WideString& Url() const override { return url_; }
    bool Title(platform::WideString& title) override;
    bool Body(std::shared_ptr<PageElement>& body) override;
    bool Root(std::shared_ptr<PageElement>& root) override;
    bool Elements(const platform::WideString& tag,
                  std::vector<std::shared_ptr<PageElement>>& elements) override;
    bool StyleSheets(std::vector<PageStyleSheet>& sheets) override;
    /// In their order of creation, those of other sites last.
    bool Frames(std::vector<std::shared_ptr<PageDocument>>& frames) override;
    bool Selection(PageSelection& selection) override;
    bool Select(const std::string& selector, std::string& error) override;

    /// Runs a script and gives its value. \return false if it throws or the page does not answer.
    bool Ask(const std::string& script, chromium::Json& value);
    /// Runs a script that changes the page, at the latest before the next question of any document.
    /// What it throws is lost. \return false if the page does not answer any more.
    bool Change(const std::string& script);
    /// An element by a script's expression; null where the expression is.
    bool FindElement(const std::string& expression, std::shared_ptr<PageElement>& element);

private:
    void MakeChanges();
    [[nodiscard]] bool MayReach(const chromium::Frame& frame);

    std::shared_ptr<LivePage> live_;
    chromium::Frame frame_;
    platform::WideString url_;
};

}  // namespace host
