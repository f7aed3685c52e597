#include "platform/posix/user/dialog_template.h"

#include <cstring>
#include <type_traits>

#include "platform/posix/user/dialog_calls.h"

namespace platform::user {
namespace {

constexpr WORD kOrdinal = 0xFFFF;  // a number follows instead of a text
constexpr WORD kExtendedVersion = 1;
constexpr std::size_t kAlignment = 4;
constexpr WORD kFirstClass = 0x80;
constexpr const WCHAR* kClasses[] = {TEXT("Button"),  TEXT("Edit"),      TEXT("Static"),
                                     TEXT("ListBox"), TEXT("ScrollBar"), TEXT("ComboBox")};

/// Walks through the bytes; once they end too early it gives zeros and is not good any more.
class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <class Number>
    Number Read() {
        static_assert(std::is_integral_v<Number>);
        Number value{};
        const std::span<const std::byte> part = Take(sizeof value);
        if (isGood_) std::memcpy(&value, part.data(), sizeof value);
        return value;
    }

    std::span<const std::byte> Take(std::size_t size) {
        if (!isGood_ || size > bytes_.size() - at_) {
            isGood_ = false;
            return {};
        }
        at_ += size;
        return bytes_.subspan(at_ - size, size);
    }

    WideString ReadText() {
        WideString text;
        for (WORD unit = Read<WORD>(); unit != 0; unit = Read<WORD>()) {
            text += static_cast<WCHAR>(unit);
        }
        return text;
    }

    /// A text or a number; the number is 0 for a text.
    WideString ReadName(WORD& number) {
        number = 0;
        const std::size_t start = at_;
        if (Read<WORD>() == kOrdinal) {
            number = Read<WORD>();
            return {};
        }
        if (isGood_) at_ = start;
        return ReadText();
    }

    void Align() {
        const std::size_t over = at_ % kAlignment;
        if (over != 0) (void)Take(kAlignment - over);
    }

    void Fail() { isGood_ = false; }
    [[nodiscard]] bool IsGood() const { return isGood_; }

private:
    std::span<const std::byte> bytes_;
    std::size_t at_ = 0;
    bool isGood_ = true;
};

void ReadPlace(Reader& reader, POINT& place, SIZE& size) {
    place.x = reader.Read<SHORT>();
    place.y = reader.Read<SHORT>();
    size.cx = reader.Read<SHORT>();
    size.cy = reader.Read<SHORT>();
}

WideString ReadClass(Reader& reader) {
    WORD number = 0;
    const WideString name = reader.ReadName(number);
    if (number == 0) return name;
    if (number < kFirstClass || number >= kFirstClass + std::size(kClasses)) {
        reader.Fail();
        return {};
    }
    return kClasses[number - kFirstClass];
}

DialogItem ReadItem(Reader& reader, bool isExtended) {
    DialogItem item;
    reader.Align();
    if (isExtended) {
        (void)reader.Read<DWORD>();  // of the help
        item.exStyle = reader.Read<DWORD>();
        item.style = reader.Read<DWORD>();
    } else {
        item.style = reader.Read<DWORD>();
        item.exStyle = reader.Read<DWORD>();
    }
    ReadPlace(reader, item.place, item.size);
    item.id = isExtended ? reader.Read<DWORD>() : reader.Read<WORD>();
    item.className = ReadClass(reader);
    WORD number = 0;
    item.text = reader.ReadName(number);
    const auto extra = reader.Read<WORD>();
    if (extra == 0) return item;
    // The older form counts the field itself.
    if (!isExtended && extra < sizeof extra) reader.Fail();
    item.extra = reader.Take(isExtended ? extra : extra - sizeof extra);
    return item;
}

bool IsExtended(std::span<const std::byte> bytes) {
    Reader reader(bytes);
    const auto version = reader.Read<WORD>();
    return reader.Read<WORD>() == kOrdinal && version == kExtendedVersion;
}

}  // namespace

std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::byte> bytes) {
    const bool isExtended = IsExtended(bytes);
    Reader reader(bytes);
    DialogTemplate dialog;
    if (isExtended) {
        (void)reader.Read<DWORD>();  // the version
        (void)reader.Read<DWORD>();  // of the help
        dialog.exStyle = reader.Read<DWORD>();
        dialog.style = reader.Read<DWORD>();
    } else {
        dialog.style = reader.Read<DWORD>();
        dialog.exStyle = reader.Read<DWORD>();
    }
    const auto count = reader.Read<WORD>();
    ReadPlace(reader, dialog.place, dialog.size);
    WORD menu = 0;
    (void)reader.ReadName(menu);
    WORD classNumber = 0;
    dialog.className = reader.ReadName(classNumber);
    dialog.title = reader.ReadText();
    if (dialog.style & DS_SETFONT) {
        dialog.fontPoints = reader.Read<WORD>();
        if (isExtended) (void)reader.Take(4);  // weight, italic, character set
        (void)reader.ReadText();
    }
    for (WORD i = 0; i < count && reader.IsGood(); ++i) {
        dialog.items.push_back(ReadItem(reader, isExtended));
    }
    if (!reader.IsGood()) return std::nullopt;
    return dialog;
}

}  // namespace platform::user
