#include "options/security_rules.h"

#include <gtest/gtest.h>
#include <string>

#include "platform/text.h"

namespace {

TEST(SecurityRules, SayWhatIsMissing) {
    constexpr const char* kNone = "";
    constexpr const char* kNoBox =
        "Either a Document Open Password or Permissions Password should be specified.";
    constexpr const char* kNoText =
        "Please either deselect 'Password Required' option or enter the password.";
    constexpr const char* kSame =
        "The passwords to document open and permissions cannot be the same. Please enter different "
        "password in one of passwords fields.";
    const struct {
        SecurityChoices choices;
        const char* says;
    } kCases[] = {
        {{false, false, false, TEXT("a"), TEXT("a")}, kNone},
        {{false, true, true, {}, {}}, kNone},
        {{true, false, false, TEXT("a"), TEXT("b")}, kNoBox},
        {{true, true, false, {}, TEXT("b")}, kNoText},
        {{true, false, true, TEXT("a"), {}}, kNoText},
        {{true, true, true, TEXT("a"), {}}, kNoText},
        {{true, true, true, {}, {}}, kNoText},
        {{true, true, true, TEXT("abc"), TEXT("abc")}, kSame},
        {{true, true, true, TEXT("abc"), TEXT("ABC")}, kNone},
        {{true, true, true, TEXT("abc"), TEXT("abcd")}, kNone},
        {{true, true, true, TEXT("abc "), TEXT("abc")}, kNone},
        {{true, true, false, TEXT("abc"), TEXT("abc")}, kNone},
        {{true, false, true, TEXT("abc"), TEXT("abc")}, kNone},
        {{true, true, false, TEXT("abc"), {}}, kNone},
    };
    for (const auto& c : kCases) {
        const WCHAR* fault = FindSecurityFault(c.choices);
        EXPECT_EQ(fault ? platform::ToUtf8(fault) : "", c.says) << &c - kCases;
    }
}

}  // namespace
