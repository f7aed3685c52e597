#include "driver/document_height.h"

#include <gtest/gtest.h>

#include "tests/driver/fake_browser.h"

namespace {

TEST(MeasureDocumentHeight, IsTheHigherOfRootAndBodyAndNeverNothing) {
    using Height = std::optional<LONG>;
    const struct {
        const char* why;
        Height root, body;
        bool hasStructure, canMeasure;
        std::uint32_t height;
    } kCases[] = {
        {"root higher", 2000, 1500, true, true, 2000},
        {"body higher", 1500, 2000, true, true, 2000},
        {"no root", {}, 3, true, true, 3},
        {"no body", 3, {}, true, true, 3},
        {"root out of reach", 5000, 700, false, true, 700},
        {"nothing there", {}, {}, true, true, 800},
        {"both nothing", 0, 0, true, true, 800},
        {"less than nothing", -5, -7, true, true, 800},
        {"largest", 0x7FFFFFFF, 1, true, true, 0x7FFFFFFF},
        {"elements without heights", 2000, 1500, true, false, 800},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.why);
        fake::Page page;
        page.rootHeight = c.root;
        page.bodyHeight = c.body;
        page.hasStructure = c.hasStructure;
        page.canMeasure = c.canMeasure;
        const auto document = platform::MakeObject<fake::Document>(page);
        EXPECT_EQ(MeasureDocumentHeight(document.Get()), c.height);
        document->AddRef();
        EXPECT_EQ(document->Release(), 1u) << "a reference was kept";
    }
    EXPECT_EQ(MeasureDocumentHeight(nullptr), 800u);
}

}  // namespace
