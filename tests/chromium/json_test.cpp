#include "chromium/json.h"

#include <gtest/gtest.h>

namespace chromium {
namespace {

TEST(Json, RepairsHalvesOfSurrogatePairsAndNothingElse) {
    struct Case {
        const char* why;
        const char* json;
        const char* utf8;
    };
    constexpr Case kCases[] = {
        {"whole pair", R"("\ud83d\ude00")", "\xF0\x9F\x98\x80"},
        {"high half alone", R"("a\ud83dz")", "a\xEF\xBF\xBDz"},
        {"low half alone", R"("\uDE00")", "\xEF\xBF\xBD"},
        {"two high halves", R"("\ud83d\ud83d\ude00")", "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {"high half before another escape", R"("\ud83d\n")", "\xEF\xBF\xBD\n"},
        {"escaped backslash before u", R"("\\ud83d")", "\\ud83d"},
        {"high half at the very end", R"("\ud83d")", "\xEF\xBF\xBD"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.why);
        const Result<Json> parsed = Json::Parse(c.json);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->Text(), c.utf8);
    }
    for (const char* bad : {"", "{", "\"\\ud8", "\"\\u", "\\", "[1,]", "\"\\uZZZZ\""}) {
        EXPECT_FALSE(Json::Parse(bad)) << bad;
    }
}

TEST(Json, FollowsAPathIntoNothingWithoutFailing) {
    const Result<Json> parsed = Json::Parse(R"({"a":[{"b":7},null],"t":"x","f":true})");
    ASSERT_TRUE(parsed);
    Json inner = (*parsed)["a"].At(0);
    EXPECT_EQ(inner["b"].Number(), 7);
    EXPECT_TRUE((*parsed)["no"]["way"].At(3)["b"].IsNull());
    EXPECT_TRUE((*parsed)["a"].At(2).IsNull());
    EXPECT_EQ((*parsed)["a"].Text(), "");
    EXPECT_EQ((*parsed)["t"].Number(-1), -1);
    EXPECT_TRUE((*parsed)["f"].Flag());
    EXPECT_EQ((*parsed)["a"].Size(), 2u);
}

TEST(Json, LivesAsLongAsAnyPartOfIt) {
    Json part;
    {
        Result<Json> whole = Json::Parse(R"({"deep":{"text":"kept"}})");
        ASSERT_TRUE(whole);
        part = (*whole)["deep"]["text"];
    }
    EXPECT_EQ(part.Text(), "kept");
}

TEST(Params, WritesWhatTheBrowserReads) {
    std::string out = "x";
    Params().WriteTo(out);
    EXPECT_EQ(out, "x{}");
    out.clear();
    Params()
        .Text("t", "a\"\\\n\xC3\xA9\xFF")
        .Number("n", 0.25)
        .Number("w", 1280)
        .Flag("f", false)
        .Base64("b", "foob")
        .Raw("r", "[1]")
        .WriteTo(out);
    EXPECT_EQ(out,
              "{\"t\":\"a\\\"\\\\\\n\xC3\xA9\xEF\xBF\xBD\",\"n\":0.25,\"w\":1280,\"f\":false,"
              "\"b\":\"Zm9vYg==\","
              "\"r\":[1]}");
}

TEST(Base64, GoesBothWaysAndRefusesDamage) {
    struct Case {
        std::string bytes;
        const char* text;
    };
    const Case kCases[] = {{"", ""},
                           {"f", "Zg=="},
                           {"fo", "Zm8="},
                           {"foo", "Zm9v"},
                           {"foob", "Zm9vYg=="},
                           {"fooba", "Zm9vYmE="},
                           {"foobar", "Zm9vYmFy"},
                           {{"\0\xFF\xFE", 3}, "AP/+"}};
    for (const Case& c : kCases) {
        EXPECT_EQ(EncodeBase64(c.bytes), c.text);
        const Result<std::string> back = DecodeBase64(c.text);
        ASSERT_TRUE(back) << c.text;
        EXPECT_EQ(*back, c.bytes);
    }
    for (const char* bad : {"Zm9v\n", "Z===", "Zm9vZ", "Zm-_"}) {
        EXPECT_FALSE(DecodeBase64(bad)) << bad;
    }
}

}  // namespace
}  // namespace chromium
