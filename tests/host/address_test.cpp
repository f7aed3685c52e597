#include "host/address.h"

#include <gtest/gtest.h>

#include "host/system.h"

namespace host {
namespace {

std::filesystem::path Rooted(const char* name) {
    return std::filesystem::current_path().root_path() / PathFromUtf8(name);
}

TEST(PageAddress, EveryFileNameComesBackFromItsAddress) {
    // Characters that an address cannot hold, that mean something in it, or that are not ASCII.
    for (const char* name : {"a.html", "a b#c%41.html", "q?x=1&y.html", "\xC3\xA4\xE2\x82\xAC.html",
                             "x;y=z,(1)'!.html", "50%.html"}) {
        const std::string url = FileUrl(Rooted(name));
        EXPECT_EQ(url.find_first_of(" #?\"<>\\"), std::string::npos) << url;
        PageAddress address;
        std::string error;
        ASSERT_TRUE(ParsePageAddress(url + "?q=1#part", address, error)) << error;
        EXPECT_EQ(address.file, Rooted(name));
        EXPECT_EQ(address.url, url + "?q=1#part") << "the fragment stays in the address";
    }
    PageAddress address;
    std::string error;
    ASSERT_TRUE(ParsePageAddress("sub/../a.html", address, error)) << error;
    EXPECT_EQ(address.file, std::filesystem::current_path() / "a.html");
    EXPECT_EQ(address.url, FileUrl(address.file));
}

TEST(PageAddress, TakesTheNetAndRefusesTheRest) {
    struct AddressCase {
        const char* text;
        bool accepted;
    };
    constexpr AddressCase kCases[] = {
        {"http://site.example/a?b#c", true},
        {"HTTPS://site.example", true},
        {"http:", false},
        {"http://", false},
        {"http://a b/", false},
        {"ftp://site.example/a", false},
        {"javascript:alert(1)", false},
        {"file://other.example/a.html", false},
        {"file:a.html", false},
        {"file:///a%4", false},
        {"file:///a%00b", false},
        {"file:///a%zz", false},
        {"file:", false},
        {"", false},
    };
    for (const AddressCase& c : kCases) {
        SCOPED_TRACE(c.text);
        PageAddress address;
        std::string error;
        EXPECT_EQ(ParsePageAddress(c.text, address, error), c.accepted);
        EXPECT_EQ(error.empty(), c.accepted);
        EXPECT_FALSE(address.IsFile());
        EXPECT_EQ(address.url, c.accepted ? c.text : "");
    }
}

}  // namespace
}  // namespace host
