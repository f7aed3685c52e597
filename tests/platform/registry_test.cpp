#include "platform/registry.h"

#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "platform/text.h"
#include "tests/platform/error_names.h"
#include "tests/support/case_table.h"
#include "tests/support/test_profile.h"

namespace platform {
namespace {

constexpr const WCHAR* kRoot = TEXT("Software\\Quvada conformance");

using Bytes = std::vector<BYTE>;

ULONGLONG TimeOf(HKEY key) {
    FILETIME time{};
    EXPECT_EQ(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, &time),
              ERROR_SUCCESS);
    return ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override {
        root_ = Create(HKEY_CURRENT_USER, kRoot);
        ASSERT_TRUE(root_);
    }
    static RegistryKey Create(HKEY parent, const WCHAR* path, REGSAM access = KEY_ALL_ACCESS) {
        RegistryKey key;
        EXPECT_EQ(RegCreateKeyExW(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                  nullptr, key.Put(), nullptr),
                  ERROR_SUCCESS);
        return key;
    }
    LSTATUS Open(const WCHAR* path, REGSAM access = KEY_READ) {
        RegistryKey key;
        return RegOpenKeyExW(root_.Get(), path, 0, access, key.Put());
    }
    LSTATUS Write(const WCHAR* name, DWORD type, const Bytes& data) {
        // Windows looks behind a text for a terminator; here it must find none.
        Bytes guarded(data);
        guarded.insert(guarded.end(), sizeof(WCHAR), 0xCC);
        return RegSetValueExW(root_.Get(), name, 0, type, guarded.data(),
                              static_cast<DWORD>(data.size()));
    }
    bool Has(const WCHAR* name) {
        return RegQueryValueExW(root_.Get(), name, nullptr, nullptr, nullptr, nullptr) ==
               ERROR_SUCCESS;
    }

    const test_support::TestProfile profile_;
    RegistryKey root_;
};

TEST_F(RegistryTest, CreatesWholePathsAndSaysWhatItDid) {
    RegistryKey key;
    DWORD disposition = 0;
    const auto create = [&](const WCHAR* path) {
        disposition = 0;
        return RegCreateKeyExW(root_.Get(), path, 0, nullptr, 0, KEY_READ, nullptr, key.Put(),
                               &disposition);
    };
    EXPECT_EQ(create(TEXT("a\\b\\c")), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    EXPECT_EQ(create(TEXT("A\\B")), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(create(TEXT("")), ERROR_SUCCESS);
    EXPECT_EQ(create(TEXT("a\\b\\d")), ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    DWORD subkeys = 0;
    DWORD values = 7;
    const RegistryKey b = Create(root_.Get(), TEXT("a\\b"));
    EXPECT_EQ(RegQueryInfoKeyW(b.Get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                               &values, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(subkeys, 2u);
    EXPECT_EQ(values, 0u);
}

TEST_F(RegistryTest, ResolvesPaths) {
    Create(root_.Get(), TEXT("one\\Zwölf"));
    for (const auto& row : test_support::ReadCases(PLATFORM_CASES "registry_paths.tsv", 2)) {
        SCOPED_TRACE(ToUtf8(row[0]));
        HKEY key = root_.Get();
        const auto error = static_cast<LSTATUS>(ErrorNamed(row[1]));
        EXPECT_EQ(RegOpenKeyExW(root_.Get(), row[0].c_str(), 0, KEY_READ, &key), error);
        EXPECT_EQ(key == nullptr, error != ERROR_SUCCESS);
        if (key) RegCloseKey(key);
    }
    EXPECT_EQ(Open(nullptr), ERROR_SUCCESS);
    Create(root_.Get(), WideString(255, u'n').c_str());
    EXPECT_EQ(Open(WideString(255, u'n').c_str()), ERROR_SUCCESS);
    RegistryKey key;
    EXPECT_EQ(RegCreateKeyExW(root_.Get(), WideString(300, u'n').c_str(), 0, nullptr, 0, KEY_READ,
                              nullptr, key.Put(), nullptr),
              ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryTest, ChecksHandles) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExW(nullptr, TEXT("x"), 0, KEY_READ, &key), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegOpenKeyExW(root_.Get(), nullptr, 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCloseKey(nullptr), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
    ASSERT_EQ(RegOpenKeyExW(root_.Get(), nullptr, 0, KEY_READ, &key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegQueryValueExW(key, TEXT("x"), nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, nullptr, 0, KEY_READ, &key), ERROR_SUCCESS);
    RegCloseKey(key);
}

TEST_F(RegistryTest, KeepsEveryByteUnderEveryType) {
    const std::pair<DWORD, Bytes> kCases[] = {
        {REG_DWORD, {1, 2, 3, 4}},
        {REG_DWORD, {1, 2, 3}},
        {REG_SZ, {'a', 0, 0, 0}},
        {REG_SZ, {'a', 0, 'b'}},
        {REG_EXPAND_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0}},
        {REG_SZ, {0x00, 0xD8, 0, 0}},
        {REG_MULTI_SZ, {'a', 0, 0, 0, 0, 0}},
        {REG_BINARY, {}},
        {REG_SZ, {}},
        {0xFEDCBA98, {9}},
        {REG_BINARY, Bytes(300'000, 0xA5)},
    };
    for (const auto& [kind, data] : kCases) {
        SCOPED_TRACE(::testing::Message() << kind << " of " << data.size());
        ASSERT_EQ(Write(TEXT("value"), kind, data), ERROR_SUCCESS);
        DWORD type = 77;
        DWORD size = 77;
        EXPECT_EQ(RegQueryValueExW(root_.Get(), TEXT("VALUE"), nullptr, &type, nullptr, &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, kind);
        ASSERT_EQ(size, data.size());
        Bytes read(size + 1, 0xCC);
        EXPECT_EQ(RegQueryValueExW(root_.Get(), TEXT("value"), nullptr, &type, read.data(), &size),
                  ERROR_SUCCESS);
        Bytes guarded = data;
        guarded.push_back(0xCC);
        EXPECT_EQ(read, guarded);
    }
}

TEST_F(RegistryTest, ReportsSizesAndKeepsOutParametersOnFailure) {
    ASSERT_EQ(Write(TEXT("v"), REG_BINARY, {1, 2, 3, 4}), ERROR_SUCCESS);
    Bytes data(8, 0xCC);
    DWORD type = 77;
    DWORD size = 3;
    const HKEY key = root_.Get();
    EXPECT_EQ(RegQueryValueExW(key, TEXT("v"), nullptr, &type, data.data(), &size),
              ERROR_MORE_DATA);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(type, REG_BINARY);
    EXPECT_EQ(data, Bytes(8, 0xCC));
    size = 8;
    type = 77;
    EXPECT_EQ(RegQueryValueExW(key, TEXT("none"), nullptr, &type, data.data(), &size),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(type, 77u);
    EXPECT_EQ(RegQueryValueExW(key, TEXT("v"), nullptr, nullptr, data.data(), nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(key, TEXT("v"), &size, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(key, TEXT("v"), nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key, TEXT("v"), 0, REG_BINARY, nullptr, 4), ERROR_NOACCESS);
    EXPECT_EQ(RegSetValueExW(key, TEXT("v"), 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
}

TEST_F(RegistryTest, TerminatesTextsOnlyWhereThereIsRoom) {
    const Bytes kStored = {'a', 0, 'b', 0};
    const struct {
        DWORD type;
        DWORD room;
        Bytes behind;
    } kCases[] = {{REG_SZ, 6, {0, 0, 0xCC, 0xCC}},
                  {REG_SZ, 5, {0xCC, 0xCC, 0xCC, 0xCC}},
                  {REG_BINARY, 8, {0xCC, 0xCC, 0xCC, 0xCC}}};
    for (const auto& c : kCases) {
        ASSERT_EQ(Write(TEXT("t"), c.type, kStored), ERROR_SUCCESS);
        Bytes read(8, 0xCC);
        DWORD size = c.room;
        EXPECT_EQ(RegQueryValueExW(root_.Get(), TEXT("t"), nullptr, nullptr, read.data(), &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(size, kStored.size());
        EXPECT_EQ(Bytes(read.begin(), read.begin() + 4), kStored);
        EXPECT_EQ(Bytes(read.begin() + 4, read.end()), c.behind) << c.type << ' ' << c.room;
    }
}

TEST_F(RegistryTest, ComparesNamesWithoutCase) {
    for (const auto& row : test_support::ReadCases(PLATFORM_CASES "value_names.tsv", 3)) {
        ASSERT_EQ(Write(row[0].c_str(), REG_DWORD, {1, 0, 0, 0}), ERROR_SUCCESS);
        EXPECT_EQ(Has(row[1].c_str()), row[2] == TEXT("yes")) << ToUtf8(row[0]);
        EXPECT_EQ(RegDeleteValueW(root_.Get(), row[0].c_str()), ERROR_SUCCESS);
    }
}

TEST_F(RegistryTest, NamesOfValuesHaveALimitAndMayBeEmpty) {
    const WideString longest(16383, u'v');
    const WideString tooLong(16384, u'v');
    EXPECT_EQ(Write(longest.c_str(), REG_SZ, {}), ERROR_SUCCESS);
    EXPECT_TRUE(Has(longest.c_str()));
    EXPECT_EQ(Write(tooLong.c_str(), REG_SZ, {}), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(Has(tooLong.c_str()));
    EXPECT_EQ(Write(nullptr, REG_DWORD, {5, 0, 0, 0}), ERROR_SUCCESS);
    EXPECT_TRUE(Has(TEXT("")));
    EXPECT_EQ(RegDeleteValueW(root_.Get(), TEXT("")), ERROR_SUCCESS);
    EXPECT_FALSE(Has(nullptr));
}

TEST_F(RegistryTest, HoldsKeysToTheirAccess) {
    ASSERT_EQ(Write(TEXT("v"), REG_DWORD, {1, 0, 0, 0}), ERROR_SUCCESS);
    const BYTE byte = 0;
    RegistryKey key;
    ASSERT_EQ(RegOpenKeyExW(root_.Get(), nullptr, 0, KEY_READ, key.Put()), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExW(key.Get(), TEXT("v"), 0, REG_BINARY, &byte, 1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueW(key.Get(), TEXT("v")), ERROR_ACCESS_DENIED);
    // Creating below is checked against the key, not against this handle.
    EXPECT_TRUE(Create(key.Get(), TEXT("below")));
    ASSERT_EQ(RegOpenKeyExW(root_.Get(), nullptr, 0, KEY_SET_VALUE, key.Put()), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(key.Get(), TEXT("v"), nullptr, nullptr, nullptr, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueW(key.Get(), TEXT("v")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(key.Get(), TEXT("v")), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryTest, AHandleOutlivesItsDeletedKey) {
    const RegistryKey key = Create(root_.Get(), TEXT("doomed"));
    const RegistryKey child = Create(key.Get(), TEXT("child\\grandchild"));
    const BYTE byte = 0;
    ASSERT_EQ(RegSetValueExW(key.Get(), TEXT("v"), 0, REG_BINARY, &byte, 1), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(root_.Get(), TEXT("doomed")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(root_.Get(), TEXT("doomed")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(TEXT("doomed")), ERROR_FILE_NOT_FOUND);
    // Not even a new key of the same name brings it back.
    const RegistryKey again = Create(root_.Get(), TEXT("doomed"));
    RegistryKey other;
    for (const HKEY dead : {key.Get(), child.Get()}) {
        EXPECT_EQ(RegQueryValueExW(dead, TEXT("v"), nullptr, nullptr, nullptr, nullptr),
                  ERROR_KEY_DELETED);
        EXPECT_EQ(RegSetValueExW(dead, TEXT("v"), 0, REG_BINARY, &byte, 1), ERROR_KEY_DELETED);
        EXPECT_EQ(RegDeleteValueW(dead, TEXT("v")), ERROR_KEY_DELETED);
        EXPECT_EQ(RegOpenKeyExW(dead, TEXT("x"), 0, KEY_READ, other.Put()), ERROR_KEY_DELETED);
        EXPECT_EQ(RegCreateKeyExW(dead, TEXT("x"), 0, nullptr, 0, KEY_READ, nullptr, other.Put(),
                                  nullptr),
                  ERROR_KEY_DELETED);
    }
}

TEST_F(RegistryTest, DeletesWhatIsBelowAndKeepsTheRest) {
    Create(root_.Get(), TEXT("a\\b\\c"));
    Create(root_.Get(), TEXT("ab"));
    ASSERT_EQ(Write(TEXT("v"), REG_SZ, {}), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteTreeW(root_.Get(), TEXT("a\\b")), ERROR_SUCCESS);
    EXPECT_EQ(Open(TEXT("a")), ERROR_SUCCESS);
    EXPECT_EQ(Open(TEXT("a\\b")), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(Has(TEXT("v")));
    EXPECT_EQ(RegDeleteTreeW(root_.Get(), nullptr), ERROR_SUCCESS);
    EXPECT_EQ(Open(TEXT("ab")), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(Has(TEXT("v")));
    EXPECT_EQ(Open(nullptr), ERROR_SUCCESS);
}

TEST_F(RegistryTest, DeletesAndNamesSubkeysOneByOne) {
    Create(root_.Get(), TEXT("b\\below"));
    Create(root_.Get(), TEXT("A"));
    WCHAR name[3] = {};
    const auto nameAt = [&](DWORD index, DWORD room) {
        return RegEnumKeyExW(root_.Get(), index, name, &room, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(nameAt(0, 2), ERROR_SUCCESS);
    EXPECT_EQ(WideString(name), TEXT("A"));
    EXPECT_EQ(nameAt(1, 1), ERROR_MORE_DATA);
    EXPECT_EQ(nameAt(2, 3), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegDeleteKeyW(root_.Get(), TEXT("b")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyW(root_.Get(), TEXT("b\\below")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(root_.Get(), TEXT("b")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(root_.Get(), TEXT("b")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(nameAt(1, 3), ERROR_NO_MORE_ITEMS);
}

// Values stand in an order of the system's own, which holds until one of them goes.
TEST_F(RegistryTest, NamesEachValueOnceAlsoWhileTheyChange) {
    constexpr DWORD kValues = 300;
    for (DWORD i = 0; i < kValues; ++i) {
        const WideString name = FromUtf8("value " + std::to_string(i));
        ASSERT_EQ(Write(name.c_str(), REG_BINARY, Bytes(i * 20, static_cast<BYTE>(i))),
                  ERROR_SUCCESS);
    }
    Bytes data(kValues * 20);
    DWORD size = 0;
    const auto nameAt = [&](DWORD index, DWORD room) {
        WCHAR name[20] = {};
        DWORD units = 20;
        size = room;
        const LSTATUS status =
            RegEnumValueW(root_.Get(), index, name, &units, nullptr, nullptr, data.data(), &size);
        if (status == ERROR_MORE_DATA) return std::string("more data");
        if (status == ERROR_NO_MORE_ITEMS) return std::string("no more");
        return status == ERROR_SUCCESS ? ToUtf8(name) : std::to_string(status);
    };
    DWORD values = 0, longestName = 0, longestData = 0;
    EXPECT_EQ(RegQueryInfoKeyW(root_.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               &values, &longestName, &longestData, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(values, kValues);
    EXPECT_EQ(longestName, std::size("value 299") - 1);
    EXPECT_EQ(longestData, (kValues - 1) * 20);
    std::vector<std::string> names;
    for (DWORD i = 0; i < kValues; ++i) {
        names.push_back(nameAt(i, kValues * 20));
        const DWORD number = static_cast<DWORD>(std::stoi(names[i].substr(6)));
        ASSERT_EQ(size, number * 20);
        ASSERT_TRUE(size == 0 || data[size - 1] == static_cast<BYTE>(number));
        if (size > 0) {
            ASSERT_EQ(nameAt(i, size - 1), "more data");
            ASSERT_EQ(size, number * 20) << "what it needs";
        }
    }
    EXPECT_EQ(nameAt(kValues, 0), "no more");
    EXPECT_EQ(nameAt(7, kValues * 20), names[7]) << "in no order";
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), kValues);
    // What is removed, or written, between two questions.
    EXPECT_EQ(nameAt(8, kValues * 20), names[8]);
    EXPECT_EQ(RegDeleteValueW(root_.Get(), FromUtf8(names[2]).c_str()), ERROR_SUCCESS);
    EXPECT_EQ(nameAt(8, kValues * 20), names[9]);
    EXPECT_EQ(Write(FromUtf8(names[10]).c_str(), REG_BINARY, Bytes(3, 9)), ERROR_SUCCESS);
    EXPECT_EQ(nameAt(9, kValues * 20), names[10]);
    EXPECT_EQ(size, 3u);
    for (DWORD i = 0; i < kValues - 1; ++i) {
        EXPECT_EQ(RegDeleteValueW(root_.Get(), FromUtf8(nameAt(0, kValues * 20)).c_str()),
                  ERROR_SUCCESS);
    }
    EXPECT_EQ(nameAt(0, 0), "no more");
}

TEST_F(RegistryTest, EveryChangeMovesTheKeysTimeForward) {
    const RegistryKey child = Create(root_.Get(), TEXT("child"));
    const BYTE byte = 0;
    ULONGLONG last = TimeOf(root_.Get());
    const auto expectChange = [&](const char* why) {
        const ULONGLONG time = TimeOf(root_.Get());
        EXPECT_GT(time, last) << why;
        last = time;
    };
    for (BYTE i = 0; i < 20; ++i) {
        ASSERT_EQ(Write(TEXT("v"), REG_BINARY, {i}), ERROR_SUCCESS);
        expectChange("written");
    }
    Create(root_.Get(), TEXT("other"));
    expectChange("a key made");
    EXPECT_EQ(RegDeleteTreeW(root_.Get(), TEXT("other")), ERROR_SUCCESS);
    expectChange("a key deleted");
    EXPECT_EQ(RegDeleteValueW(root_.Get(), TEXT("v")), ERROR_SUCCESS);
    expectChange("a value deleted");
    ASSERT_EQ(RegSetValueExW(child.Get(), TEXT("v"), 0, REG_BINARY, &byte, 1), ERROR_SUCCESS);
    EXPECT_EQ(TimeOf(root_.Get()), last) << "a change below is none here";
}

}  // namespace
}  // namespace platform
