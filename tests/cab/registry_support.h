#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "cab/registry_load.h"
#include "cab/registry_save.h"
#include "cab/registry_value.h"
#include "platform/testing.h"
#include "platform/text.h"
#include "tests/cab/bag_support.h"
#include "tests/support/test_profile.h"

namespace bag_test {

using platform::RegistryKey;
using platform::WideString;

constexpr const WCHAR* kBagKey = TEXT("Software\\Quvada bag");

/// What a key holds: "sub\" for each key, "sub\name" for each value with its type and bytes.
using Lines = std::map<WideString, std::string>;

inline std::string Line(DWORD type, const void* data, std::size_t size) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string line = std::to_string(type) + ":";
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<const unsigned char*>(data)[i];
        line += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return line;
}

/// What lies in the registry, read with its own calls.
inline void Dump(HKEY key, const WideString& prefix, Lines& lines) {
    for (DWORD i = 0;; ++i) {
        WideString name(20'000, 0);
        std::vector<BYTE> data(1000);
        auto units = static_cast<DWORD>(name.size());
        DWORD type = 0;
        auto size = static_cast<DWORD>(data.size());
        if (RegEnumValueW(key, i, name.data(), &units, nullptr, &type, data.data(), &size)) break;
        lines[prefix + TEXT("|") + name.c_str()] = Line(type, data.data(), size);
    }
    for (DWORD i = 0;; ++i) {
        WCHAR name[300];
        DWORD units = 300;
        if (RegEnumKeyExW(key, i, name, &units, nullptr, nullptr, nullptr, nullptr)) break;
        RegistryKey child;
        ASSERT_EQ(RegOpenKeyExW(key, name, 0, KEY_READ, child.Put()), ERROR_SUCCESS);
        lines[prefix + name + TEXT("\\")] = "key";
        Dump(child.Get(), prefix + name + TEXT("\\"), lines);
    }
}

inline Lines DumpBag(const WCHAR* path = kBagKey) {
    Lines lines;
    RegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, key.Put()) == ERROR_SUCCESS) {
        Dump(key.Get(), {}, lines);
    }
    return lines;
}

/// What becomes of the empty places of arrays.
enum class Gaps { Kept, Closed };

/// What a full save of an item has to leave. \return whether it leaves a key.
inline bool Layout(DataItem& item, const WideString& prefix, bool omitDefaults, Gaps gaps,
                   Lines& lines) {
    Lines below;
    std::uint32_t present = 0;
    for (std::uint32_t i = 0; i < item.AsContainer()->GetCount(); ++i) {
        if (!item.AsContainer()->ItemAt(i)) continue;
        DataItem& child = *item.AsContainer()->ItemAt(i);
        std::string digits = std::to_string(gaps == Gaps::Kept ? i : present++);
        digits.insert(0, 6 - digits.size(), '0');
        const WideString name =
            item.AsArray() ? platform::FromUtf8(digits) : WideString(item.AsDictionary()->KeyAt(i));
        const bool omits = !item.AsArray();
        const WideString path = prefix + name + TEXT("\\");
        const auto put = [&](const WCHAR* letter, DWORD type, const void* data, std::size_t size) {
            below[prefix + TEXT("|") + letter + name] = Line(type, data, size);
        };
        if (child.GetFlags() & ItemTransient ||
            (omits && child.IsDefault() && !child.AsContainer()))
            continue;
        if (child.AsContainer() && Layout(child, path, omits, gaps, below)) below[path] = "key";
        std::int32_t integer = 0;
        std::int64_t integer64 = 0;
        double number = 0;
        bool truth = false;
        if (child.IsType(Kind::Bool) && child.GetBool(truth)) {
            integer = truth;
            put(TEXT("b."), REG_DWORD, &integer, 4);
        }
        if (child.IsType(Kind::Int) && child.GetInt(integer)) {
            put(TEXT("i."), REG_DWORD, &integer, 4);
        }
        if (child.IsType(Kind::Int64) && child.GetInt64(integer64)) {
            put(TEXT("l."), REG_QWORD, &integer64, 8);
        }
        if (child.IsType(Kind::Double) && child.GetDouble(number)) {
            put(TEXT("d."), REG_QWORD, &number, 8);
        }
        if (const WString* const text = child.GetString()) {
            put(TEXT("t."), REG_SZ, text->Text(), (text->Length() + 1) * 2);
        }
        if (child.IsType(Kind::Stream)) {
            put(TEXT("s."), REG_BINARY, child.GetStream()->GetData(),
                static_cast<std::size_t>(child.GetStream()->GetSize()));
        }
    }
    const bool hasKey = !below.empty() || !omitDefaults;
    if (hasKey && item.AsArray()) below[prefix + TEXT("|")] = Line(REG_SZ, TEXT("A"), 4);
    lines.merge(below);
    return hasKey;
}

inline Lines LayoutOf(DataItem& item, Gaps gaps = Gaps::Kept) {
    Lines lines;
    Layout(item, {}, !item.AsArray(), gaps, lines);
    return lines;
}

inline bool IsIndex(WStringView name) {
    return !name.empty() && name.find_first_not_of(TEXT("0123456789")) == WStringView::npos;
}

/// Whether a name, such as "sub\\000001\\|i.x", has a part that an array of the bag has no use for.
inline bool IsNoIndexOfAnArray(DataItem& root, const WideString& name) {
    DataItem* item = &root;
    std::size_t at = 0;
    for (; item && name[at] != '|'; at = name.find(u'\\', at) + 1) {
        const WideString part = name.substr(at, name.find(u'\\', at) - at);
        if (DataArray* const array = item->AsArray()) {
            if (!IsIndex(WStringView(part))) return true;
            const std::string digits = platform::ToUtf8(part);
            item = array->ItemAt(static_cast<std::uint32_t>(std::atoi(digits.c_str())));
        } else {
            item = item->AsDictionary() ? item->AsDictionary()->Find(WStringView(part)) : nullptr;
        }
    }
    return item && item->AsArray() &&
           !IsIndex(SplitValueName(WStringView(name.data() + at + 1, name.size() - at - 1)).name);
}

/// The values alone, without what an incremental save leaves where it finds it: markers, foreign
/// names in the keys of arrays, and values without a letter, which count as if they had one.
inline Lines Values(const Lines& lines, DataItem& root) {
    Lines values;
    for (const bool hasLetter : {true, false}) {
        for (const auto& [name, line] : lines) {
            const std::size_t bar = name.find(u'|');
            if (bar == WideString::npos || bar + 1 == name.size()) continue;
            const ValueName split = SplitValueName(WStringView(name).substr(bar + 1));
            if (split.hasLetter != hasLetter || IsNoIndexOfAnArray(root, name)) continue;
            const WideString lettered = name.substr(0, bar) + TEXT("|i.") + WideString(split.name);
            values.try_emplace(hasLetter ? name : lettered, line);
        }
    }
    return values;
}

inline HRESULT Save(DataItem& item, bool incremental, bool trustStamp = false) {
    return SaveToRegistry(item, HKEY_CURRENT_USER, kBagKey, incremental, trustStamp);
}
inline HRESULT Load(DataItem& item) { return LoadFromRegistry(item, HKEY_CURRENT_USER, kBagKey); }

inline RegistryKey OpenBagKey(const WideString& below = {}) {
    const WideString path = WideString(kBagKey) + (below.empty() ? TEXT("") : TEXT("\\")) + below;
    RegistryKey key;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, key.Put(), nullptr),
              ERROR_SUCCESS);
    return key;
}

/// Saves what is saved already: the save must say so, and where the layer can tell, call nothing
/// that writes.
inline void ExpectNothingToSave(DataItem& item, bool trustStamp = false) {
    using platform::testing::InjectedFault;
    const InjectedFault writes[] = {{"RegSetValueExW", 1, ERROR_ACCESS_DENIED, 9999},
                                    {"RegDeleteValueW", 1, ERROR_ACCESS_DENIED, 9999},
                                    {"RegDeleteTreeW", 1, ERROR_ACCESS_DENIED, 9999}};
    const Lines before = DumpBag();
    EXPECT_EQ(Save(item, true, trustStamp), S_FALSE);
    for (const InjectedFault& write : writes) EXPECT_FALSE(write.HasFired());
    EXPECT_EQ(DumpBag(), before);
}

}  // namespace bag_test
