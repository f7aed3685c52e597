#include "host/options.h"

#include <gtest/gtest.h>
#include <sstream>

namespace host {
namespace {

struct Outcome {
    std::optional<ExitCode> ended;
    Options options;
    std::string out;
    std::string err;
};

Outcome Parse(const std::vector<std::string>& arguments) {
    Outcome outcome;
    std::ostringstream out;
    std::ostringstream err;
    outcome.ended = ParseOptions(arguments, outcome.options, out, err);
    outcome.out = out.str();
    outcome.err = err.str();
    return outcome;
}

TEST(HostOptions, TakeEverythingInAnyOrder) {
    const Outcome outcome =
        Parse({"--wait", "a b.html", "-o", "out.pdf", "--selection", "--protected", "--backend",
               "text", "--page-height=2000", "--timeout", "5", "--verbose", "--profile", "p"});
    ASSERT_FALSE(outcome.ended) << outcome.err;
    EXPECT_EQ(outcome.options.page, "a b.html");
    EXPECT_EQ(outcome.options.output, "out.pdf");
    EXPECT_EQ(outcome.options.profile, "p");
    EXPECT_EQ(outcome.options.backend, BackendKind::Text);
    EXPECT_EQ(outcome.options.pageHeight, 2000);
    EXPECT_EQ(outcome.options.timeout, std::chrono::seconds(5));
    EXPECT_TRUE(outcome.options.wait && outcome.options.selection);
    EXPECT_TRUE(outcome.options.isProtected && outcome.options.verbose);
}

TEST(HostOptions, AreOffUnlessGiven) {
    const Outcome outcome = Parse({"a.html"});
    ASSERT_FALSE(outcome.ended) << outcome.err;
    EXPECT_FALSE(outcome.options.output || outcome.options.profile);
    EXPECT_FALSE(outcome.options.wait || outcome.options.selection);
    EXPECT_FALSE(outcome.options.isProtected || outcome.options.verbose);
    EXPECT_EQ(outcome.options.pageHeight, 0);
}

TEST(HostOptions, RefuseWhatIsWrongAndSayIt) {
    const std::vector<std::string> cases[] = {
        {},
        {"a.html", "b.html"},
        {"--nosuch", "a.html"},
        {"a.html", "--output"},
        {"a.html", "--timeout", "0"},
        {"a.html", "--timeout", "soon"},
        {"a.html", "--page-height", "-1"},
        {"a.html", "--backend", "paper"},
    };
    for (const std::vector<std::string>& arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = Parse(arguments);
        EXPECT_EQ(outcome.ended, ExitCode::Usage);
        EXPECT_TRUE(outcome.out.empty());
        EXPECT_FALSE(outcome.err.empty());
    }
}

TEST(HostOptions, HelpAndVersionAreNoErrors) {
    const Outcome help = Parse({"--help"});
    EXPECT_EQ(help.ended, ExitCode::Ok);
    for (const char* text : {"--output", "--selection", "--protected", "--profile", "--backend",
                             "--wait", "--timeout", "--verbose", "Exit codes", "130"}) {
        EXPECT_NE(help.out.find(text), std::string::npos) << text;
    }
    const Outcome version = Parse({"--version"});
    EXPECT_EQ(version.ended, ExitCode::Ok);
    EXPECT_FALSE(version.out.empty());
    EXPECT_TRUE(help.err.empty() && version.err.empty());
}

}  // namespace
}  // namespace host
