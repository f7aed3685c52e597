#include "host/text_backend.h"

#include <fstream>
#include <gtest/gtest.h>

namespace host {
namespace {

class TextBackendTest : public testing::Test {
protected:
    void SetUp() override {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        folder_ = std::filesystem::temp_directory_path() /
                  ("quvada_" + std::string(test->name()) + std::to_string(test->line()));
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    bool LoadFile(const std::filesystem::path& path, LONG height = 0) {
        TextBackend backend(height);
        return backend.Load({{FileUrl(path), path}, std::chrono::seconds(1), {}, {}}, document_,
                            error_);
    }

    std::filesystem::path Write(const std::string& bytes) {
        std::ofstream(folder_ / "page.html", std::ios::binary) << bytes;
        return folder_ / "page.html";
    }

    std::filesystem::path folder_;
    DocumentModel document_;
    std::string error_;
};

TEST_F(TextBackendTest, ReadsAPage) {
    const std::string markup = "<title>A &amp; B</title>\r\n<p>text";
    const std::filesystem::path path = Write(markup);
    ASSERT_TRUE(LoadFile(path)) << error_;
    EXPECT_EQ(document_.title, TEXT("A & B"));
    EXPECT_EQ(platform::ToUtf8(document_.url), FileUrl(path));
    EXPECT_EQ(platform::ToUtf8(document_.markup), markup) << "line ends stay";
    EXPECT_GT(document_.bodyHeight, 0);
    ASSERT_TRUE(LoadFile(path, 2000)) << error_;
    EXPECT_EQ(document_.rootHeight, 2000);
    EXPECT_EQ(document_.bodyHeight, 2000);
}

TEST_F(TextBackendTest, TakesAnyBytes) {
    std::string bytes = "<title>";
    for (int i = 0; i < 4096; ++i) bytes.push_back(static_cast<char>(i * 7919 >> 3));
    EXPECT_TRUE(LoadFile(Write(bytes))) << error_;
    EXPECT_TRUE(LoadFile(Write({}))) << error_;
    EXPECT_TRUE(document_.title.empty());
    EXPECT_EQ(document_.bodyHeight, 0);
}

TEST_F(TextBackendTest, SaysWhatIsWrong) {
    EXPECT_FALSE(LoadFile(folder_ / "missing.html"));
    EXPECT_NE(error_.find("missing.html"), std::string::npos);
    error_.clear();
    EXPECT_FALSE(LoadFile(folder_));
    EXPECT_FALSE(error_.empty());
    error_.clear();
    TextBackend backend;
    EXPECT_FALSE(backend.Load({{"http://site.example/", {}}, std::chrono::seconds(1), {}, {}},
                              document_, error_));
    EXPECT_FALSE(error_.empty());
}

}  // namespace
}  // namespace host
