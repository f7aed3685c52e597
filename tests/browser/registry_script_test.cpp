// The language of registration scripts: what each script makes of the registry.

#include <gtest/gtest.h>
#include <sstream>

#include "browser/script_runner.h"
#include "platform/automation.h"
#include "platform/registry.h"
#include "platform/testing.h"
#include "tests/support/case_table.h"
#include "tests/support/fail_each_allocation.h"
#include "tests/support/test_profile.h"

namespace {

using platform::RegistryKey;
using platform::ToUtf8;
using platform::WideString;
using Mode = ScriptRunner::Mode;

HRESULT RunText(const WideString& script, Mode mode) {
    return ScriptRunner(AUX::WStringView(script)).Run(mode);
}

HRESULT CodeNamed(const std::string& name) {
    const std::pair<const char*, HRESULT> kCodes[] = {{"ok", S_OK},
                                                      {"malformed", DISP_E_EXCEPTION},
                                                      {"fail", E_FAIL},
                                                      {"no number", DISP_E_TYPEMISMATCH},
                                                      {"overflow", DISP_E_OVERFLOW}};
    for (const auto& [known, code] : kCodes) {
        if (name == known) return code;
    }
    ADD_FAILURE() << name;
    return S_OK;
}

/// A key as "subkeys values", or "-" if there is none.
std::string KeyText(const WideString& path) {
    RegistryKey key;
    DWORD subkeys = 0;
    DWORD values = 0;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS) {
        return "-";
    }
    EXPECT_EQ(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                               &values, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    return std::to_string(subkeys) + ' ' + std::to_string(values);
}

/// A value as its type and bytes.
std::string ValueText(const WideString& path, const WideString& name) {
    RegistryKey key;
    BYTE bytes[64];
    DWORD type = 0;
    DWORD size = sizeof bytes;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.Put()) != ERROR_SUCCESS ||
        RegQueryValueExW(key.Get(), name.c_str(), nullptr, &type, bytes, &size) != ERROR_SUCCESS) {
        return "-";
    }
    std::string text = std::to_string(type) + ':';
    for (DWORD i = 0; i < size; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
        text += digits;
    }
    return text;
}

/// Compares the registry with "path = subkeys values; path@name = type:bytes; ...".
void ExpectTree(const WideString& expected) {
    std::istringstream parts(ToUtf8(expected));
    for (std::string part; std::getline(parts >> std::ws, part, ';');) {
        const std::size_t equal = part.find(" = ");
        ASSERT_NE(equal, part.npos) << part;
        const WideString place = platform::FromUtf8(part.substr(0, equal));
        const std::size_t at = place.find(TEXT('@'));
        EXPECT_EQ(at == place.npos ? KeyText(place)
                                   : ValueText(place.substr(0, at), place.substr(at + 1)),
                  part.substr(equal + 3))
            << part;
    }
}

class RegistryScriptTest : public testing::Test {
protected:
    const test_support::TestProfile profile_;
};

TEST_F(RegistryScriptTest, MakesWhatItSays) {
    for (const auto& row : test_support::ReadCases(BROWSER_CASES "scripts.tsv", 5)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        (void)RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("T"));
        if (!row[1].empty()) {
            EXPECT_EQ(RunText(row[1], Mode::Register), S_OK);
        }
        const bool removes = row[2].starts_with(TEXT('-'));
        EXPECT_EQ(RunText(row[2].substr(removes), removes ? Mode::Remove : Mode::Register),
                  CodeNamed(ToUtf8(row[3])));
        ExpectTree(row[4]);
    }
}

TEST_F(RegistryScriptTest, ReadsWordsUpToTheirLimit) {
    const WideString longest(4094, TEXT('v'));
    const auto script = [](const WideString& word) {
        return TEXT("HKCU { T { val v = s ") + word + TEXT(" } }");
    };
    EXPECT_EQ(RunText(script(longest), Mode::Register), S_OK);
    EXPECT_EQ(RunText(script(longest + TEXT("v")), Mode::Register), DISP_E_EXCEPTION);
    EXPECT_EQ(RunText(script(TEXT('\'') + longest + TEXT('\'')), Mode::Register), S_OK);
    EXPECT_EQ(RunText(script(TEXT('\'') + longest + TEXT("v'")), Mode::Register), DISP_E_EXCEPTION);
    // Deeper than keys can lie.
    WideString deep = TEXT("HKCU { ");
    for (int i = 0; i < 20000; ++i) deep += TEXT("T { ");
    EXPECT_EQ(RunText(deep, Mode::Remove), DISP_E_EXCEPTION);
}

TEST_F(RegistryScriptTest, EachFailureLeavesNothingOfItsBlock) {
    if (!platform::testing::kOwnsTheSystem) GTEST_SKIP() << "nothing can be made to fail here";
    const WideString before = TEXT("HKCU { T { Old { Older } } }");
    const WideString script =
        TEXT("HKCU { NoRemove T { New { Deep { val v = d 2 } } ForceRemove Old } } ")
            TEXT("HKCU { NoRemove T { Second = b 0aff } }");
    for (const Mode mode : {Mode::Register, Mode::Remove}) {
        unsigned failures = 0;
        for (unsigned nth = 1;; ++nth) {
            SCOPED_TRACE(nth);
            (void)RegDeleteTreeW(HKEY_CURRENT_USER, TEXT("T"));
            ASSERT_EQ(RunText(before, Mode::Register), S_OK);
            if (mode == Mode::Remove) {
                ASSERT_EQ(RunText(script, Mode::Register), S_OK);
            }
            HRESULT result = S_OK;
            bool hasFired = false;
            {
                const platform::testing::InjectedFault fault("*", nth, ERROR_ACCESS_DENIED);
                result = RunText(script, mode);
                hasFired = fault.HasFired();
            }
            if (!hasFired) {
                EXPECT_EQ(result, S_OK);
                break;
            }
            if (FAILED(result)) ++failures;
            if (mode == Mode::Register && FAILED(result)) {
                // The failed block is gone; a first one that was whole has stayed.
                const bool firstStands = ValueText(TEXT("T\\New\\Deep"), TEXT("v")) != "-";
                EXPECT_EQ(KeyText(TEXT("T\\New")), firstStands ? "1 0" : "-");
                EXPECT_EQ(KeyText(TEXT("T\\Second")), "-");
            }
        }
        EXPECT_GT(failures, 4u);
    }
}

TEST_F(RegistryScriptTest, RunsOutOfMemoryAsAFailure) {
    const WideString script =
        TEXT("HKCU { T { val 'a name' = m 'a\\0b' val c = b 0102 K = s k } }");
    const ScriptVariable variables[] = {{TEXT("X"), TEXT("T")}};
    unsigned refusals = 0;
    const auto failures = test_support::FailEachAllocation([&](const auto& hasFailed) {
        AUX::WString expanded;
        HRESULT result =
            ExpandScript(AUX::WStringView(script), variables, ScriptScope::User, expanded);
        if (SUCCEEDED(result)) result = ScriptRunner(expanded).Run(Mode::Register);
        if (SUCCEEDED(result)) result = ScriptRunner(expanded).Run(Mode::Remove);
        // Where room was asked for ahead of need, less of it will do.
        EXPECT_TRUE(result == S_OK || (hasFailed() && result == E_OUTOFMEMORY)) << result;
        refusals += result == E_OUTOFMEMORY;
    });
    EXPECT_GT(refusals, 4u);
    EXPECT_GE(failures, refusals);
}

TEST(ExpandScript, PutsValuesInTheirPlacesAndClassesUnderTheUser) {
    const ScriptVariable variables[] = {{TEXT("APPID"), TEXT("{1}")},
                                        {TEXT("appid"), TEXT("never")},
                                        {TEXT("Module"), TEXT("C:\\it''s %APPID%.dll")}};
    for (const auto& row : test_support::ReadCases(BROWSER_CASES "expansions.tsv", 4)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        AUX::WString expanded;
        const ScriptScope scope = row[1] == TEXT("user") ? ScriptScope::User : ScriptScope::Machine;
        const HRESULT result = ExpandScript(AUX::WStringView(row[2]), variables, scope, expanded);
        if (row[3] == TEXT("malformed") || row[3] == TEXT("fail")) {
            EXPECT_EQ(result, CodeNamed(ToUtf8(row[3])));
            continue;
        }
        EXPECT_EQ(result, S_OK);
        EXPECT_EQ(WideString(AUX::WStringView(expanded)), row[3]);
    }
}

}  // namespace
