#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>

#include "platform/controls.h"
#include "platform/resources.h"
#include "tests/support/case_table.h"

// The dialogs as the resource compiler made them, read without the dialog manager.

namespace {

using platform::WideString;

struct Item {
    DWORD exStyle, style;
    int x, y, width, height;
    DWORD id;
    std::string kind, text;

    [[nodiscard]] bool Is(const char* name) const { return kind == name; }
    [[nodiscard]] bool IsRadio() const {
        return Is("Button") && (style & 0xF) == BS_AUTORADIOBUTTON;
    }
    [[nodiscard]] bool IsGroupBox() const { return Is("Button") && (style & 0xF) == BS_GROUPBOX; }
    [[nodiscard]] bool IsPlaceHolder() const { return text == "SubPlaceHolder"; }
    [[nodiscard]] bool IsLabel() const { return Is("Static") && !IsPlaceHolder(); }
    [[nodiscard]] int Right() const { return x + width; }
    /// Of a list only what is seen while it is closed.
    [[nodiscard]] int Bottom() const { return y + (Is("ComboBox") ? 14 : height); }
    [[nodiscard]] bool IsInRowOf(const Item& other) const {
        return y < other.Bottom() && other.y < Bottom();
    }
};

struct Dialog {
    Item frame;
    std::string font;
    int points;
    std::vector<Item> items;
};

/// Reads an extended dialog template (DLGTEMPLATEEX) in the order of its bytes.
class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

    template <class T>
    T Read() {
        T value{};
        EXPECT_LE(at_ + sizeof value, bytes_.size());
        if (at_ + sizeof value <= bytes_.size()) std::memcpy(&value, &bytes_[at_], sizeof value);
        at_ += sizeof value;
        return value;
    }
    std::string Text() {
        WideString text;
        for (WCHAR unit = Read<WCHAR>(); unit && at_ < bytes_.size(); unit = Read<WCHAR>()) {
            text += unit;
        }
        return platform::ToUtf8(text);
    }
    /// A text, or the name of one of the system's classes.
    std::string TextOrNumber() {
        if (Read<WORD>() != 0xFFFF) {
            at_ -= sizeof(WORD);
            return Text();
        }
        static const std::map<WORD, std::string> kClasses = {
            {0x80, "Button"}, {0x81, "Edit"}, {0x82, "Static"}, {0x85, "ComboBox"}};
        const auto found = kClasses.find(Read<WORD>());
        return found != kClasses.end() ? found->second : "?";
    }
    Item Place() {
        Item item{};
        item.x = Read<short>();
        item.y = Read<short>();
        item.width = Read<short>();
        item.height = Read<short>();
        return item;
    }
    void Align() { at_ = (at_ + 3) / 4 * 4; }
    void Skip(std::size_t count) { at_ += count; }

private:
    std::span<const std::byte> bytes_;
    std::size_t at_ = 0;
};

Item ReadItem(Reader& in) {
    in.Align();
    in.Skip(sizeof(DWORD));  // the help id
    const auto exStyle = in.Read<DWORD>();
    const auto style = in.Read<DWORD>();
    Item item = in.Place();
    item.exStyle = exStyle;
    item.style = style;
    item.id = in.Read<DWORD>();
    if (item.id == 0xFFFFFFFF || item.id == 0xFFFF) item.id = 0;
    item.kind = in.TextOrNumber();
    const char* const kNames[] = {"SysTabControl32", "msctls_updown32"};
    for (const char* name : kNames) {
        if (std::ranges::equal(item.kind, std::string_view(name), [](char a, char b) {
                return std::tolower(static_cast<unsigned char>(a)) ==
                       std::tolower(static_cast<unsigned char>(b));
            })) {
            item.kind = name;
        }
    }
    item.text = in.TextOrNumber();
    in.Skip(in.Read<WORD>());
    return item;
}

Dialog ReadDialog(int number) {
    Reader in(platform::ResourceBytes(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(number),
                                      MAKEINTRESOURCEW(5)));
    EXPECT_EQ(in.Read<DWORD>(), 0xFFFF0001u) << number << ": the extended form";
    in.Skip(sizeof(DWORD));
    Dialog dialog{};
    const auto exStyle = in.Read<DWORD>();
    const auto style = in.Read<DWORD>();
    const auto count = in.Read<WORD>();
    dialog.frame = in.Place();
    dialog.frame.exStyle = exStyle;
    dialog.frame.style = style;
    (void)in.TextOrNumber();  // menu
    (void)in.TextOrNumber();  // class
    dialog.frame.kind = "dialog";
    dialog.frame.text = in.Text();
    dialog.points = in.Read<WORD>();
    in.Skip(4);  // weight, italic, character set
    dialog.font = in.Text();
    for (int i = 0; i < count; ++i) dialog.items.push_back(ReadItem(in));
    return dialog;
}

std::map<int, Dialog> AllDialogs() {
    std::map<int, Dialog> dialogs;
    for (const int number : {201, 202, 207, 103, 215, 217, 219}) {
        dialogs[number] = ReadDialog(number);
    }
    return dialogs;
}

TEST(Templates, AreAsTheyWereDrawn) {
    const auto made = AllDialogs();
    std::multiset<std::string> drawn;
    for (const auto& row : test_support::ReadCases(OPTIONS_CASES "dialogs.tsv", 8)) {
        std::string line;
        for (const WideString& field : row) line += platform::ToUtf8(field) + '|';
        drawn.insert(line);
    }
    std::multiset<std::string> found;
    for (const auto& [number, dialog] : made) {
        auto items = dialog.items;
        items.push_back(dialog.frame);
        for (const Item& item : items) {
            std::string line = std::to_string(number) + '|' + std::to_string(item.id) + '|' +
                               item.kind + '|' + item.text + '|';
            for (const int value : {item.x, item.y, item.width, item.height}) {
                line += std::to_string(value) + '|';
            }
            found.insert(line);
        }
        EXPECT_EQ(dialog.font, "MS Shell Dlg") << number;
        EXPECT_EQ(dialog.points, 8) << number;
    }
    std::vector<std::string> differing;
    std::ranges::set_symmetric_difference(drawn, found, std::back_inserter(differing));
    EXPECT_EQ(differing, std::vector<std::string>{});
}

TEST(Templates, CanBeUsedByKeyboardAndRead) {
    for (const auto& [number, dialog] : AllDialogs()) {
        SCOPED_TRACE(number);
        if (number != 201) {
            EXPECT_EQ(dialog.frame.style & (DS_CONTROL | WS_CHILD | WS_VISIBLE),
                      DS_CONTROL | WS_CHILD);
            EXPECT_NE(dialog.frame.exStyle & WS_EX_CONTROLPARENT, 0u) << "the keyboard goes inside";
        }
        std::set<DWORD> ids;
        const Item* lastStop = nullptr;
        for (std::size_t i = 0; i < dialog.items.size(); ++i) {
            const Item& item = dialog.items[i];
            const Item* const before = i > 0 ? &dialog.items[i - 1] : nullptr;
            const Item* const after = i + 1 < dialog.items.size() ? &dialog.items[i + 1] : nullptr;
            SCOPED_TRACE(item.kind + " " + std::to_string(item.id) + " " + item.text);
            EXPECT_TRUE(item.id == 0 || ids.insert(item.id).second) << "one control for an id";
            EXPECT_EQ(item.text.find('&'), std::string::npos);
            EXPECT_NE(item.style & WS_VISIBLE, 0u);
            if (item.IsLabel()) {
                ASSERT_TRUE(after) << "names nothing";
                EXPECT_FALSE(after->IsLabel() || after->IsGroupBox());
                EXPECT_TRUE(item.IsInRowOf(*after) && item.x < after->x) << after->id;
            }
            if (item.Is("msctls_updown32")) {
                ASSERT_TRUE(before);
                EXPECT_TRUE(before->Is("Edit"));
                EXPECT_EQ(item.style & 0xFF,
                          UDS_ALIGNRIGHT | UDS_AUTOBUDDY | UDS_ARROWKEYS | UDS_NOTHOUSANDS);
            }
            if (item.Is("Edit")) {
                EXPECT_EQ(item.style & (WS_BORDER | ES_AUTOHSCROLL), WS_BORDER | ES_AUTOHSCROLL);
                EXPECT_TRUE(item.id == 287 || item.id == 288 ? item.style & ES_PASSWORD
                                                             : !(item.style & ES_PASSWORD));
            }
            if (item.Is("ComboBox")) {
                EXPECT_EQ(item.style & 0x103, CBS_DROPDOWNLIST) << "in the order it is filled";
            }
            const bool startsGroup = (item.style & WS_GROUP) != 0;
            if (item.IsRadio()) {
                EXPECT_EQ(startsGroup, !before || !before->IsRadio());
            } else if (before && before->IsRadio()) {
                EXPECT_TRUE(startsGroup) << "ends the group of radio buttons";
            }
            const bool takesKeys =
                !item.Is("Static") && !item.IsGroupBox() && !item.Is("msctls_updown32");
            // Of radio buttons one stands for its group.
            EXPECT_EQ((item.style & WS_TABSTOP) != 0,
                      takesKeys && !(item.IsRadio() && before && before->IsRadio()));
            if (!takesKeys) continue;
            if (lastStop) {
                const bool goesUp = item.Bottom() <= lastStop->y && item.x < lastStop->Right();
                const bool goesBack = item.IsInRowOf(*lastStop) && item.Right() <= lastStop->x;
                EXPECT_FALSE(goesUp || goesBack) << "from " << lastStop->id;
            }
            lastStop = &item;
        }
    }
}

}  // namespace
