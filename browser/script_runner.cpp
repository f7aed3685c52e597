#include "browser/script_runner.h"

#include <algorithm>
#include <optional>

#include "browser/registry_tree.h"
#include "foundation/array.h"
#include "platform/automation.h"
#include "platform/locale.h"
#include "platform/registry.h"

namespace {

constexpr AUX::WStringView kOpen = TEXT("{");
constexpr AUX::WStringView kClose = TEXT("}");
constexpr AUX::WStringView kAssign = TEXT("=");
constexpr AUX::WStringView kValue = TEXT("Val");

// An entry under one of these is never removed by force.
constexpr AUX::WStringView kProtected[] = {
    TEXT("AppID"),    TEXT("CLSID"),     TEXT("Component Categories"),
    TEXT("FileType"), TEXT("Interface"), TEXT("Hardware"),
    TEXT("Mime"),     TEXT("SAM"),       TEXT("SECURITY"),
    TEXT("SYSTEM"),   TEXT("Software"),  TEXT("TypeLib"),
};

// The system's own limit on how deep keys may lie.
constexpr unsigned kMaxDepth = 512;

std::optional<HKEY> RootNamed(const ScriptWords& words) noexcept {
    const struct {
        AUX::WStringView shortName;
        AUX::WStringView longName;
        HKEY key;
    } kRoots[] = {
        {TEXT("HKCR"), TEXT("HKEY_CLASSES_ROOT"), HKEY_CLASSES_ROOT},
        {TEXT("HKCU"), TEXT("HKEY_CURRENT_USER"), HKEY_CURRENT_USER},
        {TEXT("HKLM"), TEXT("HKEY_LOCAL_MACHINE"), HKEY_LOCAL_MACHINE},
        {TEXT("HKU"), TEXT("HKEY_USERS"), HKEY_USERS},
        {TEXT("HKPD"), TEXT("HKEY_PERFORMANCE_DATA"), HKEY_PERFORMANCE_DATA},
        {TEXT("HKDD"), TEXT("HKEY_DYN_DATA"), HKEY_DYN_DATA},
        {TEXT("HKCC"), TEXT("HKEY_CURRENT_CONFIG"), HKEY_CURRENT_CONFIG},
    };
    for (const auto& root : kRoots) {
        if (words.Is(root.shortName) || words.Is(root.longName)) return root.key;
    }
    return std::nullopt;
}

constexpr unsigned DigitOf(WCHAR unit) noexcept {
    if (unit >= TEXT('0') && unit <= TEXT('9')) return unit - TEXT('0');
    if (unit >= TEXT('a') && unit <= TEXT('f')) return unit - TEXT('a') + 10u;
    if (unit >= TEXT('A') && unit <= TEXT('F')) return unit - TEXT('A') + 10u;
    return 0;
}

HRESULT Set(HKEY key, const WCHAR* name, DWORD type, const void* data, std::size_t bytes) noexcept {
    return ResultOf(RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data),
                                   static_cast<DWORD>(bytes)));
}

HRESULT SetText(HKEY key, const WCHAR* name, const ScriptWords& words) noexcept {
    return Set(key, name, REG_SZ, words.Text(), (words.Word().size() + 1) * sizeof(WCHAR));
}

// A backslash and a 0 stand between two texts; an empty one comes behind the last.
HRESULT SetTexts(HKEY key, const WCHAR* name, AUX::WStringView word) noexcept {
    AUX::WString texts;
    for (std::size_t at = 0; at < word.size(); ++at) {
        const bool isEnd = word.substr(at).starts_with(TEXT("\\0"));
        if (!texts.Append({isEnd ? TEXT("\0") : word.data() + at, 1})) return E_OUTOFMEMORY;
        at += isEnd;
    }
    if (!texts.Append({TEXT("\0"), 1})) return E_OUTOFMEMORY;
    // The string's own terminator is the last, empty text.
    return Set(key, name, REG_MULTI_SZ, texts.Text(),
               (std::size_t{texts.Length()} + 1) * sizeof(WCHAR));
}

HRESULT SetNumber(HKEY key, const WCHAR* name, const ScriptWords& words) noexcept {
    ULONG number = 0;
    // Its declarations on Windows differ in whether they promise what all keep: it only reads.
    WCHAR* const text = const_cast<WCHAR*>(words.Text());
    const HRESULT result = VarUI4FromStr(text, GetThreadLocale(), 0, &number);
    return FAILED(result) ? result : Set(key, name, REG_DWORD, &number, sizeof(DWORD));
}

HRESULT SetBytes(HKEY key, const WCHAR* name, AUX::WStringView digits) noexcept {
    if (digits.size() % 2) return E_FAIL;
    AUX::Array<BYTE> bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        const unsigned byte = DigitOf(digits[at]) << 4 | DigitOf(digits[at + 1]);
        if (!bytes.Add(static_cast<BYTE>(byte))) return E_OUTOFMEMORY;
    }
    return Set(key, name, REG_BINARY, bytes.Data(), bytes.Count());
}

}  // namespace

HRESULT ScriptRunner::NextWord() noexcept {
    return words_.Next() == ScriptWords::Found::Word ? S_OK : DISP_E_EXCEPTION;
}

// Reads the next word if it is this one.
bool ScriptRunner::TakeWord(AUX::WStringView word) noexcept {
    const std::size_t place = words_.Place();
    if (words_.Next() == ScriptWords::Found::Word && words_.Is(word)) return true;
    words_.Return(place);
    return false;
}

bool ScriptRunner::IsKeyName() const noexcept {
    constexpr AUX::WStringView kOthers[] = {
        kOpen, kClose, kAssign, kValue, TEXT("NoRemove"), TEXT("ForceRemove"), TEXT("Delete")};
    return !words_.Word().empty() && words_.Word().find(TEXT('\\')) == AUX::WStringView::npos &&
           std::none_of(std::begin(kOthers), std::end(kOthers),
                        [this](AUX::WStringView word) { return words_.Is(word); });
}

HRESULT ScriptRunner::NextKeyName() noexcept {
    return SUCCEEDED(NextWord()) && IsKeyName() ? S_OK : DISP_E_EXCEPTION;
}

// The word is the first of an entry; behind a prefix the next one is read.
HRESULT ScriptRunner::ReadPrefix(Prefix& prefix) noexcept {
    prefix = words_.Is(TEXT("NoRemove"))      ? Prefix::NoRemove
             : words_.Is(TEXT("ForceRemove")) ? Prefix::ForceRemove
             : words_.Is(TEXT("Delete"))      ? Prefix::Delete
                                              : Prefix::None;
    if (prefix == Prefix::None) return S_OK;
    // A value may stay, but there is nothing of it to remove by force.
    return prefix == Prefix::NoRemove ? NextWord() : NextKeyName();
}

HRESULT ScriptRunner::Run(Mode mode) noexcept {
    HKEY root = nullptr;
    std::size_t block = 0;
    for (;;) {
        const ScriptWords::Found found = words_.Next();
        if (found == ScriptWords::Found::End) return S_OK;
        HRESULT result = DISP_E_EXCEPTION;
        // A brace too many belongs to the block before it: a name has swallowed the one it closes.
        const bool isSurplus = root && found == ScriptWords::Found::Word && words_.Is(kClose);
        if (!isSurplus) {
            const std::optional<HKEY> named = RootNamed(words_);
            if (!named || FAILED(NextWord()) || !words_.Is(kOpen)) return DISP_E_EXCEPTION;
            root = *named;
            block = words_.Place();
            result = mode == Mode::Register ? RegisterBody(root, 1) : RemoveBody(root, 1);
        }
        if (FAILED(result)) {
            if (mode == Mode::Register) {
                words_.Return(block);
                (void)RemoveBody(root, 1);  // As far as it goes: the first failure is the one told.
            }
            return result;
        }
    }
}

HRESULT ScriptRunner::RegisterBody(HKEY parent, unsigned depth) noexcept {
    if (depth > kMaxDepth) return DISP_E_EXCEPTION;
    for (;;) {
        HRESULT result = NextWord();
        if (FAILED(result)) return result;
        if (words_.Is(kClose)) return S_OK;
        Prefix prefix;
        result = ReadPrefix(prefix);
        if (FAILED(result)) return result;
        const bool isByForce = prefix == Prefix::ForceRemove || prefix == Prefix::Delete;
        const bool isProtected =
            std::any_of(std::begin(kProtected), std::end(kProtected),
                        [this](AUX::WStringView name) { return words_.Is(name); });
        // What cannot be removed is written over.
        if (isByForce && !isProtected) (void)DeleteRegistryTree(parent, words_.Text());
        if (prefix == Prefix::Delete) {
            result = PassAssignment();
            if (SUCCEEDED(result) && TakeWord(kOpen)) result = RemoveBody(nullptr, depth + 1);
        } else if (words_.Is(kValue)) {
            AUX::WString name;
            result = NextWord();
            if (SUCCEEDED(result) && !name.Assign(words_.Word())) result = E_OUTOFMEMORY;
            if (SUCCEEDED(result)) result = TakeWord(kAssign) ? S_OK : DISP_E_EXCEPTION;
            if (SUCCEEDED(result)) result = SetValue(parent, name.Text());
        } else {
            result = IsKeyName() ? RegisterKey(parent, depth) : DISP_E_EXCEPTION;
        }
        if (FAILED(result)) return result;
    }
}

// The word is the key's name.
HRESULT ScriptRunner::RegisterKey(HKEY parent, unsigned depth) noexcept {
    platform::RegistryKey key;
    LSTATUS status = RegOpenKeyExW(parent, words_.Text(), 0, KEY_READ | KEY_WRITE, key.Put());
    if (status != ERROR_SUCCESS) {
        status = RegOpenKeyExW(parent, words_.Text(), 0, KEY_READ, key.Put());
    }
    if (status != ERROR_SUCCESS) {
        status = RegCreateKeyExW(parent, words_.Text(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                 KEY_READ | KEY_WRITE, nullptr, key.Put(), nullptr);
    }
    HRESULT result = ResultOf(status);
    if (SUCCEEDED(result) && TakeWord(kAssign)) result = SetValue(key.Get(), nullptr);
    if (SUCCEEDED(result) && TakeWord(kOpen)) result = RegisterBody(key.Get(), depth + 1);
    return result;
}

// Reads a type and a value, behind the `=`.
HRESULT ScriptRunner::SetValue(HKEY key, const WCHAR* name) noexcept {
    HRESULT result = NextWord();
    if (FAILED(result)) return result;
    const WCHAR type =
        words_.Word().size() == 1 ? static_cast<WCHAR>(words_.Word()[0] | 0x20) : WCHAR{0};
    if (type != TEXT('s') && type != TEXT('m') && type != TEXT('d') && type != TEXT('b')) {
        return DISP_E_EXCEPTION;
    }
    result = NextWord();
    if (FAILED(result)) return result;
    switch (type) {
        case TEXT('s'):
            return SetText(key, name, words_);
        case TEXT('m'):
            return SetTexts(key, name, words_.Word());
        case TEXT('d'):
            return SetNumber(key, name, words_);
        default:
            return SetBytes(key, name, words_.Word());
    }
}

// Reads over `=`, a type and a value, if they come next.
HRESULT ScriptRunner::PassAssignment() noexcept {
    if (!TakeWord(kAssign)) return S_OK;
    const HRESULT result = NextWord();
    return FAILED(result) ? result : NextWord();
}

// \param parent  Null where a key above could not be opened: the words are only read.
HRESULT ScriptRunner::RemoveBody(HKEY parent, unsigned depth) noexcept {
    if (depth > kMaxDepth) return DISP_E_EXCEPTION;
    for (;;) {
        HRESULT result = NextWord();
        if (FAILED(result)) return result;
        if (words_.Is(kClose)) return S_OK;
        Prefix prefix;
        result = ReadPrefix(prefix);
        if (FAILED(result)) return result;
        const bool stays = prefix == Prefix::NoRemove;
        if (words_.Is(kValue)) {
            result = RemoveValue(parent, stays);
        } else {
            result = IsKeyName() ? RemoveKey(parent, stays, depth) : DISP_E_EXCEPTION;
        }
        if (FAILED(result)) return result;
    }
}

HRESULT ScriptRunner::RemoveValue(HKEY parent, bool stays) noexcept {
    HRESULT result = NextWord();
    if (FAILED(result)) return result;
    AUX::WString name;
    if (!name.Assign(words_.Word())) return E_OUTOFMEMORY;
    if (!TakeWord(kAssign)) return DISP_E_EXCEPTION;
    result = NextWord();
    if (SUCCEEDED(result)) result = NextWord();
    if (FAILED(result) || !parent || stays) return result;
    platform::RegistryKey key;
    LSTATUS status = RegOpenKeyExW(parent, nullptr, 0, KEY_SET_VALUE, key.Put());
    if (status == ERROR_SUCCESS) status = RegDeleteValueW(key.Get(), name.Text());
    return status == ERROR_FILE_NOT_FOUND ? S_OK : ResultOf(status);
}

// The word is the key's name.
HRESULT ScriptRunner::RemoveKey(HKEY parent, bool stays, unsigned depth) noexcept {
    AUX::WString name;
    if (!name.Assign(words_.Word())) return E_OUTOFMEMORY;
    platform::RegistryKey key;
    if (parent) {
        const LSTATUS status = RegOpenKeyExW(parent, name.Text(), 0, KEY_READ, key.Put());
        if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) return ResultOf(status);
    }
    HRESULT result = PassAssignment();
    if (SUCCEEDED(result) && TakeWord(kOpen)) result = RemoveBody(key.Get(), depth + 1);
    if (FAILED(result) || !key) return result;
    DWORD subkeys = 0;
    result = CountSubkeys(key.Get(), subkeys);
    key.Reset();
    if (FAILED(result) || subkeys > 0 || stays) return result;
    return ResultOf(DeleteRegistryKey(parent, name.Text()));
}
