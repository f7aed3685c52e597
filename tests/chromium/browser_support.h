#pragma once

/// What tests with a real browser share.

#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "chromium/browser.h"
#include "chromium/browser_process.h"

/// Ends the test as skipped on a machine without a browser.
#define QVD_NEED_BROWSER()                                             \
    if (const auto found = chromium::FindBrowser({}); !found) {        \
        GTEST_SKIP() << "SKIP: no browser. " << found.GetError().text; \
    }                                                                  \
    static_assert(true)

namespace chromium {

/// A `data:` address of a page.
inline std::string DataUrl(const std::string& markup) {
    return "data:text/html;base64," + EncodeBase64(markup);
}

}  // namespace chromium
