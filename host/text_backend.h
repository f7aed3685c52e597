#pragma once

#include "host/backend.h"

namespace host {

/// Pages from files, taken as text (see TextDocument): no script runs and nothing is laid out, so
/// the height is the page's own statement or an estimate (see html_text.h), the same for body and
/// root.
class TextBackend final : public Backend {
public:
    /// \param height  In pixels, for both elements of every page; 0 leaves it to the page.
    explicit TextBackend(LONG height = 0) : height_(height) {}

    [[nodiscard]] bool Load(const LoadRequest& request, std::shared_ptr<PageDocument>& page,
                            std::string& error) override;

private:
    LONG height_;
};

}  // namespace host
