#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "chromium/browser.h"

namespace chromium {

struct PageOptions {
    std::uint32_t width = 1280;  // of the window, CSS pixels
    std::uint32_t height = 800;
};

/// How far a page came: `Part` when something it needs did not arrive in time.
enum class Loaded { Whole, Part };

/// One document of a page. A frame from another site may live in a session of its own.
struct Frame {
    std::string id;
    std::string parent;  // id of the frame around it; empty for the page itself
    std::string session;
    std::string url;
};

/// Lengths in points, 1/72 inch. The sheet is cut to 1/300 inch by the browser.
struct PrintOptions {
    double width = 595.3;
    double height = 841.9;
    double marginTop = 0;
    double marginBottom = 0;
    double marginLeft = 0;
    double marginRight = 0;
    double scale = 1;  // 0.1 to 2
    bool background = true;
    bool tagged = false;
};

/// One tab. Answers dialogs by itself, and sets up frames from other sites as they come. Borrows
/// the browser, which must outlive it; closes the tab at its end. Same thread as the browser.
class Page final : private EventListener {
public:
    static Result<std::unique_ptr<Page>> Create(Browser& browser, const PageOptions& options = {});
    ~Page();

    /// Loads an address. An address that cannot be loaded is an error, as is a server that never
    /// answers; a page some part of which never arrives is stopped and given as `Loaded::Part`.
    Result<Loaded> Open(const std::string& url, Milliseconds limit = kCallLimit);

    /// Runs our script in a world of its own, which sees the document and not the page's scripts,
    /// and gives its value; waits for a promise. A script that throws is an error.
    /// \param frame  Null for the page itself.
    Result<Json> Evaluate(std::string_view script, const Frame* frame = nullptr,
                          Milliseconds limit = kCallLimit);

    /// The page and its frames, each behind the frame around it where one session holds both.
    Result<std::vector<Frame>> Frames(Milliseconds limit = kCallLimit);

    /// The original bytes of something that the frame has loaded (a style sheet, an image).
    Result<std::string> Resource(const Frame& frame, std::string_view url,
                                 Milliseconds limit = kCallLimit);

    /// Prints and gives the bytes of the PDF. A page's own @page rules win over `options`; see
    /// `OverridePageRules`.
    Result<std::string> Print(const PrintOptions& options, Milliseconds limit);

    /// Makes the size and the margins of `options` win over @page rules of the page; the document
    /// stays as it is. Rules that the page marks as important still win.
    Outcome OverridePageRules(const PrintOptions& options);

    Outcome Resize(std::uint32_t width, std::uint32_t height);

    /// Any other method on the page's session. Fails at once after a crash, until the next `Open`.
    Result<Json> Call(std::string_view method, const Params& params = {},
                      Milliseconds limit = kCallLimit);

    [[nodiscard]] Browser& GetBrowser() noexcept { return browser_; }
    [[nodiscard]] const std::string& Session() const noexcept { return session_; }
    [[nodiscard]] const std::string& MainFrame() const noexcept { return mainFrame_; }
    [[nodiscard]] bool HasCrashed() const noexcept { return crashed_; }

private:
    Page(Browser& browser, const PageOptions& options);

    Outcome Attach();
    void OnEvent(const Event& event) override;
    void OnAttached(const Json& params);
    bool Owns(const std::string& session) const;

    Browser& browser_;
    PageOptions options_;
    std::string target_;
    std::string session_;
    std::string mainFrame_;
    std::vector<std::string> frameSessions_;  // of frames from other sites
    std::set<std::string> loaded_;            // loader ids whose load event has come
    bool crashed_ = false;
};

}  // namespace chromium
