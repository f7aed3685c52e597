#include "platform/urls.h"

#include <gtest/gtest.h>

#include "platform/testing.h"
#include "platform/text.h"

namespace platform {
namespace {

using Convert = HRESULT(WINAPI*)(LPCWSTR, LPWSTR, LPDWORD, DWORD);

struct Conversion {
    const WCHAR* from;
    const WCHAR* to;
    const WCHAR* natively;  // null: the same
};

/// Converts each text, then into buffers one unit too small and just large enough.
void Expect(Convert convert, const Conversion& c) {
    SCOPED_TRACE(ToUtf8(c.from));
    const WideString expected = testing::kOwnsTheSystem && c.natively ? c.natively : c.to;
    WCHAR text[2084];
    for (const DWORD room : {DWORD{2084}, static_cast<DWORD>(expected.size()) + 1}) {
        DWORD size = room;
        EXPECT_EQ(convert(c.from, text, &size, 0), S_OK);
        EXPECT_EQ(ToUtf8(text), ToUtf8(expected));
        EXPECT_EQ(size, expected.size());
    }
    auto size = static_cast<DWORD>(expected.size());
    EXPECT_EQ(convert(c.from, text, &size, 0), E_POINTER);
    EXPECT_EQ(size, expected.size() + 1);
}

TEST(UrlCreateFromPathW, EscapesWhatAnAddressCannotHold) {
    const Conversion kCases[] = {
        {TEXT("C:\\a b#c%.txt"), TEXT("file:///C:/a%20b%23c%25.txt"), nullptr},
        {TEXT("C:/a&[b]{c}^`(d)'!$,;=+@~"), TEXT("file:///C:/a%26%5Bb%5D%7Bc%7D%5E%60(d)'!$,;=+@~"),
         nullptr},
        {TEXT("C:\\"), TEXT("file:///C:/"), nullptr},
        {TEXT("\\\\srv\\share\\x y"), TEXT("file://srv/share/x%20y"), nullptr},
        {TEXT("rel\\x"), TEXT("file:rel/x"), nullptr},
        {TEXT("\\x"), TEXT("file:///x"), nullptr},
        {TEXT("Z:\\tmp\\a"), TEXT("file:///Z:/tmp/a"), TEXT("file:///tmp/a")},
        {TEXT("C:\\\u00E9"), TEXT("file:///C:/%E9"), TEXT("file:///C:/%C3%A9")},
    };
    for (const Conversion& c : kCases) Expect(UrlCreateFromPathW, c);
    WCHAR url[2084];
    DWORD size = 2084;
    EXPECT_EQ(UrlCreateFromPathW(TEXT("http://h/x"), url, &size, 0), S_FALSE);
    EXPECT_EQ(WideView(url), TEXT("http://h/x"));
    if (!testing::kOwnsTheSystem) return;
    Expect(UrlCreateFromPathW, {TEXT("\\\\?\\C:\\\u4E2D"), TEXT("file:///C:/%E4%B8%AD"), nullptr});
    Expect(UrlCreateFromPathW, {TEXT("\\\\?\\UNC\\s\\h"), TEXT("file://s/h"), nullptr});
    Expect(UrlCreateFromPathW, {TEXT("Z:"), TEXT("file:///"), nullptr});
}

TEST(PathCreateFromUrlW, TakesTheManyFormsOfFileAddresses) {
    const Conversion kCases[] = {
        {TEXT("file:///C:/a%20b"), TEXT("C:\\a b"), nullptr},
        {TEXT("FILE:///C|/x"), TEXT("C:\\x"), nullptr},
        {TEXT("file:C:\\x"), TEXT("C:\\x"), nullptr},
        {TEXT("file:/C:/x"), TEXT("C:\\x"), nullptr},
        {TEXT("file://C:/x"), TEXT("C:\\x"), nullptr},
        {TEXT("file://localhost/C:/x"), TEXT("C:\\x"), nullptr},
        {TEXT("file://s/h/x"), TEXT("\\\\s\\h\\x"), nullptr},
        {TEXT("file:////s/h"), TEXT("\\\\s\\h"), nullptr},
        {TEXT("file:\\\\s\\h"), TEXT("\\\\s\\h"), nullptr},
        {TEXT("file:///C:/x?y#z"), TEXT("C:\\x?y#z"), nullptr},
        {TEXT("file:///C:/a%2/%zz"), TEXT("C:\\a%2\\%zz"), nullptr},
        {TEXT("file:///C:/a%2Fb"), TEXT("C:\\a/b"), nullptr},
        {TEXT("file:///C:/%E9"), TEXT("C:\\\u00E9"), nullptr},
        {TEXT("file:///C:/%C3%A9"), TEXT("C:\\\u00C3\u00A9"), TEXT("C:\\\u00E9")},
        {TEXT("file:///tmp/x"), TEXT("\\tmp\\x"), TEXT("Z:\\tmp\\x")},
    };
    for (const Conversion& c : kCases) Expect(PathCreateFromUrlW, c);
    WCHAR path[MAX_PATH];
    for (const WCHAR* other : {TEXT("http://h/x"), TEXT("C:\\x"), TEXT(""), TEXT("files:x")}) {
        DWORD size = MAX_PATH;
        EXPECT_EQ(PathCreateFromUrlW(other, path, &size, 0), E_INVALIDARG) << ToUtf8(other);
        EXPECT_FALSE(UrlIsW(other, URLIS_FILEURL));
    }
    DWORD size = MAX_PATH;
    if (!testing::kOwnsTheSystem) return;
    EXPECT_EQ(PathCreateFromUrlW(TEXT("file:///C:/a%00b"), path, &size, 0), E_INVALIDARG);
}

}  // namespace
}  // namespace platform
