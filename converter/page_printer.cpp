#include "converter/page_printer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "chromium/page.h"

namespace converter {
namespace {

using chromium::Browser;
using chromium::Loaded;
using chromium::Milliseconds;
using chromium::Page;
using chromium::PrintOptions;

constexpr Milliseconds kLoadLimit{60'000};
constexpr Milliseconds kPrintLimit{300'000};
constexpr std::uint32_t kUsualHeight = 800;       // pixels, when the job gives none
constexpr std::uint32_t kLargestWindow = 16'384;  // pixels; a taller one only costs memory
constexpr double kPixelsPerPoint = 96.0 / 72.0;
constexpr double kLeastScale = 0.1;  // what the browser takes
constexpr double kLargestScale = 2;

PrintOptions OptionsOf(const CommandLine& line) {
    const Sheet sheet = SheetOf(line);
    PrintOptions options;
    options.width = sheet.width;
    options.height = sheet.height;
    options.marginTop = line.marginTop / 10.0;
    options.marginBottom = line.marginBottom / 10.0;
    options.marginLeft = line.marginLeft / 10.0;
    options.marginRight = line.marginRight / 10.0;
    options.background = line.background;
    return options;
}

/// The width in pixels at which nothing of the page is cut off.
Result<double> MeasureWidth(Page& page, double least) {
    const auto measured = page.Evaluate(
        "Math.max(document.documentElement ? document.documentElement.scrollWidth : 0,"
        " document.body ? document.body.scrollWidth : 0)");
    if (!measured) return measured.GetError();
    return std::max(least, measured->Number());
}

Outcome Load(Page& page, SourceDocument& document, const CommandLine& line,
             const Surroundings& around) {
    around.progress("Loading " + document.Url().substr(0, 200));
    const Result<Loaded> loaded = page.Open(document.Url(), kLoadLimit);
    if (!loaded) return loaded.GetError();
    if (*loaded == Loaded::Part) {
        around.note("Some parts of the page did not arrive in time; it is printed without them.");
    }
    const Result<bool> waited =
        page.GetBrowser().WaitUntil([] { return false; }, Milliseconds(line.loadDelayMs));
    document.Seal();
    if (!waited) return waited.GetError();
    return Done{};
}

}  // namespace

Sheet SheetOf(const CommandLine& line) {
    Sheet sheet{line.pageWidth / 10.0, line.pageHeight / 10.0};
    if (line.landscape) std::swap(sheet.width, sheet.height);
    return sheet;
}

Result<std::string> PrintPage(SourceDocument document, const CommandLine& line,
                              const Surroundings& around) {
    PrintOptions options = OptionsOf(line);
    const double inner = options.width - options.marginLeft - options.marginRight;
    if (inner < 1 || options.height - options.marginTop - options.marginBottom < 1) {
        return Error{"The margins leave no room on the sheet."};
    }
    around.progress("Starting the browser");
    chromium::LaunchOptions launch;
    launch.cancel = around.cancel;
    launch.scripts = chromium::Scripts::Off;
    // A copy takes the fonts of the site that it was taken from.
    launch.sites = chromium::Sites::AsOne;
    const auto browser = Browser::Launch(launch);
    if (!browser) return browser.GetError();
    std::string mainFrame;
    const auto filter = chromium::RequestFilter::Install(
        **browser,
        [&](const chromium::Request& request) { return document.Decide(request, mainFrame); });
    if (!filter) return filter.GetError();

    chromium::PageOptions window;
    window.width = static_cast<std::uint32_t>(line.width);
    window.height = line.height == 0
                        ? kUsualHeight
                        : std::min(static_cast<std::uint32_t>(line.height), kLargestWindow);
    const auto page = Page::Create(**browser, window);
    if (!page) return page.GetError();
    mainFrame = (*page)->MainFrame();
    if (const Outcome loaded = Load(**page, document, line, around); !loaded) {
        return loaded.GetError();
    }

    around.progress("Printing");
    const Result<double> width = MeasureWidth(**page, line.width);
    if (!width) return width.GetError();
    const double scale = inner * kPixelsPerPoint / *width;
    options.scale = std::clamp(scale, kLeastScale, kLargestScale);
    if (scale < kLeastScale) {
        around.note("The page is too wide for the sheet; its right edge is cut off.");
    }
    if (const Outcome set = (*page)->OverridePageRules(options); !set) return set.GetError();
    return (*page)->Print(options, kPrintLimit);
}

}  // namespace converter
