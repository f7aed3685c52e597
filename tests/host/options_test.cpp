#include "host/options.h"

#include <gtest/gtest.h>
#include <sstream>

namespace host {
namespace {

class HostOptionsTest : public testing::Test {
protected:
    std::optional<ExitCode> Parse(const std::vector<std::string>& arguments) {
        out_.str({});
        err_.str({});
        return ParseOptions(arguments, options_, out_, err_);
    }
    Options options_;
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(HostOptionsTest, TakeEverythingInAnyOrderAndForgetIt) {
    ASSERT_FALSE(
        Parse({"--wait", "a b.html", "-o", "out.pdf", "--selection", "--protected", "--backend",
               "text", "--page-height=2000", "--timeout", "5", "--verbose", "--profile", "p"}))
        << err_.str();
    EXPECT_EQ(options_.pages, std::vector<std::string>{"a b.html"});
    EXPECT_EQ(options_.outputs, std::vector<std::string>{"out.pdf"});
    EXPECT_EQ(options_.profile, "p");
    EXPECT_EQ(options_.backend, BackendKind::Text);
    EXPECT_EQ(options_.pageHeight, 2000);
    EXPECT_EQ(options_.timeout, std::chrono::seconds(5));
    EXPECT_TRUE(options_.wait && options_.selection && options_.isProtected && options_.verbose);
    ASSERT_FALSE(Parse({"--select", "#a b", "--frame", "1/0", "a.html"})) << err_.str();
    EXPECT_EQ(options_.select, "#a b");
    EXPECT_EQ(options_.frame, (std::vector<std::size_t>{1, 0}));
    EXPECT_TRUE(options_.selection);
    ASSERT_FALSE(Parse({"a.html"})) << err_.str();
    EXPECT_FALSE(options_.select || !options_.frame.empty());
    EXPECT_FALSE(!options_.outputs.empty() || options_.profile || options_.pageHeight);
    EXPECT_FALSE(options_.wait || options_.selection || options_.isProtected || options_.verbose);
    ASSERT_FALSE(Parse({"a.html", "b.html", "-o", "a.pdf", "-o", "b.pdf", "--addin", "c.dll"}));
    EXPECT_EQ(options_.pages, (std::vector<std::string>{"a.html", "b.html"}));
    EXPECT_EQ(options_.outputs, (std::vector<std::string>{"a.pdf", "b.pdf"}));
    EXPECT_EQ(options_.addin, "c.dll");
    ASSERT_FALSE(Parse({"register", "--profile", "p"}));
    EXPECT_TRUE(options_.task == Task::Register && !options_.forUser && options_.profile == "p");
    ASSERT_FALSE(Parse({"unregister", "--user"}));
    EXPECT_TRUE(options_.task == Task::Unregister && options_.forUser);
}

TEST_F(HostOptionsTest, RefuseWhatIsWrongAndSayIt) {
    const std::vector<std::string> cases[] = {
        {},
        {"a.html", "b.html", "-o", "a.pdf"},
        {"a.html", "--user"},
        {"register", "a.html"},
        {"register", "unregister"},
        {"--nosuch", "a.html"},
        {"a.html", "--output"},
        {"a.html", "-o", "a.pdf", "-o", "b.pdf"},
        {"a.html", "--timeout", "0"},
        {"a.html", "--timeout", "soon"},
        {"a.html", "--backend", "text", "--page-height", "-1"},
        {"a.html", "--backend", "chromium", "--page-height", "2000"},
        {"a.html", "--backend", "paper"},
        {"a.html", "--frame", "0"},
        {"a.html", "--select", "p", "--frame", "x"},
    };
    for (const std::vector<std::string>& arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        EXPECT_EQ(Parse(arguments), ExitCode::Usage);
        EXPECT_TRUE(out_.str().empty());
        EXPECT_FALSE(err_.str().empty());
    }
    for (const char* question : {"--help", "--version"}) {
        EXPECT_EQ(Parse({question}), ExitCode::Ok);
        EXPECT_FALSE(out_.str().empty());
        EXPECT_TRUE(err_.str().empty());
    }
}

}  // namespace
}  // namespace host
