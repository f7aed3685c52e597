#include <string>

#include "cab/registry_load.h"
#include "cab/registry_save.h"
#include "fuzz/own_registry.h"
#include "fuzz/units.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "tests/cab/bag_support.h"

namespace {

using namespace bag_test;
using platform::RegistryKey;
using platform::WideString;

constexpr const WCHAR* kKey = TEXT("Software\\Bag");

/// Takes a hive apart: each value has a byte for its key and type, a byte for its name, one for its
/// size, then its bytes.
class HiveReader {
public:
    HiveReader(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

    void WriteAll() {
        constexpr int kMostValues = 12;  // Each takes its time.
        for (int i = 0; i < kMostValues && end_ - at_ >= 3; ++i) WriteOne();
    }

private:
    void WriteOne() {
        constexpr const WCHAR* kKeys[] = {
            TEXT(""),     TEXT("\\a"), TEXT("\\a\\000000"), TEXT("\\list"), TEXT("\\list\\000001"),
            TEXT("\\d.x")};
        constexpr const WCHAR* kNames[] = {TEXT(""),         TEXT("i.a"),      TEXT("b.a"),
                                           TEXT("t.text"),   TEXT("s.bytes"),  TEXT("d.number"),
                                           TEXT("l.long"),   TEXT("plain"),    TEXT("i.000000"),
                                           TEXT("i.000002"), TEXT("t.999999"), TEXT("x.strange")};
        constexpr DWORD kTypes[] = {REG_SZ,       REG_DWORD,     REG_QWORD, REG_BINARY,
                                    REG_MULTI_SZ, REG_EXPAND_SZ, REG_NONE,  77};
        const WideString path = WideString(kKey) + kKeys[at_[0] / 8 % std::size(kKeys)];
        const DWORD type = kTypes[at_[0] % 8];
        const WCHAR* const name = kNames[at_[1] % std::size(kNames)];
        const std::size_t size =
            std::min<std::size_t>(at_[2], static_cast<std::size_t>(end_ - at_) - 3);
        RegistryKey key;
        fuzz::Require(RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0,
                                      KEY_ALL_ACCESS, nullptr, key.Put(),
                                      nullptr) == ERROR_SUCCESS);
        (void)RegSetValueExW(key.Get(), name, 0, type, at_ + 3, static_cast<DWORD>(size));
        at_ += 3 + size;
    }

    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

}  // namespace

/// Any hive is taken into a bag as far as it fits, and can be saved whole over itself and loaded
/// once more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::OwnRegistry registry;
    (void)RegDeleteTreeW(HKEY_CURRENT_USER, kKey);  // There may be none yet.
    HiveReader(data, size).WriteAll();
    static const ItemSpec numbers[] = {Leaf(nullptr, Kind::Int), {}};
    static const ItemSpec set[] = {Leaf(TEXT("a"), Kind::Int),
                                   Leaf(TEXT("text"), Kind::String),
                                   Branch(TEXT("list"), Kind::Array, numbers, 1),
                                   {}};
    static const ItemSpec shape = Branch(nullptr, Kind::Dictionary, set, 3);
    const Bag shaped = MakeBag(&shape);
    (void)LoadFromRegistry(*shaped->GetRootItem(), HKEY_CURRENT_USER, kKey);
    const Bag bag = MakeBag();
    const Bag again = MakeBag();
    DataItem& root = *bag->GetRootItem();
    if (FAILED(LoadFromRegistry(root, HKEY_CURRENT_USER, kKey))) return 0;
    if (root.AsDictionary()->GetCount() == 0) return 0;
    fuzz::Require(SUCCEEDED(SaveToRegistry(root, HKEY_CURRENT_USER, kKey, false, false)));
    fuzz::Require(SUCCEEDED(LoadFromRegistry(*again->GetRootItem(), HKEY_CURRENT_USER, kKey)));
    return 0;
}
