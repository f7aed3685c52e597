#include "options/numeric_spin_edit.h"

#include "foundation/astring.h"
#include "platform/controls.h"

namespace {

constexpr UINT_PTR kSubclassId = 1;
// Bytes that a UTF-16 unit has at most in a narrow code page.
constexpr LRESULT kMostBytes = 4;
constexpr LRESULT kMostUnits = 0x10000000;

}  // namespace

NumericSpinEdit::~NumericSpinEdit() {
    if (Edit) RemoveWindowSubclass(Edit, Procedure, kSubclassId);
}

void NumericSpinEdit::Attach(HWND edit) noexcept {
    if (Edit) RemoveWindowSubclass(Edit, Procedure, kSubclassId);
    // Without the subclass the field still works, but for the up-down's clicks.
    (void)SetWindowSubclass(edit, Procedure, kSubclassId, reinterpret_cast<DWORD_PTR>(this));
    Edit = edit;
}

void NumericSpinEdit::SetUpDown(HWND upDown, UINT id) noexcept {
    UpDown = upDown;
    UpDownId = id;
}

void NumericSpinEdit::Configure(std::int32_t minimum, std::int32_t maximum, std::int32_t value,
                                std::int32_t numerator, std::int32_t denominator,
                                std::uint32_t decimals) noexcept {
    number_.Minimum = minimum;
    number_.Maximum = maximum;
    number_.Value = number_.Clamp(value);
    number_.Numerator = numerator;
    number_.Denominator = denominator;
    number_.Decimals = decimals;
    SendMessageW(UpDown, UDM_SETRANGE32, static_cast<WPARAM>(minimum), maximum);
    SetPosition();
    Show();
}

void NumericSpinEdit::SetValue(std::int32_t value) noexcept {
    number_.Value = number_.Clamp(value);
    SetPosition();
    Show();
}

void NumericSpinEdit::SetRatio(std::int32_t numerator, std::int32_t denominator,
                               std::uint32_t decimals) noexcept {
    TakeInText();
    number_.Numerator = numerator;
    number_.Denominator = denominator;
    number_.Decimals = decimals;
    Show();
}

void NumericSpinEdit::TakeInText() noexcept {
    if (!Edit) return;
    const LRESULT units = SendMessageW(Edit, WM_GETTEXTLENGTH, 0, 0);
    if (units <= 0) return number_.TakeIn({});
    AUX::AString text;
    if (units > kMostUnits || !text.SetLength(static_cast<std::uint32_t>(units * kMostBytes)))
        return;
    const LRESULT length = SendMessageA(Edit, WM_GETTEXT, text.Capacity() + WPARAM{1},
                                        reinterpret_cast<LPARAM>(text.Data()));
    number_.TakeIn({text.Text(), static_cast<std::size_t>(length)});
}

LRESULT CALLBACK NumericSpinEdit::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                            UINT_PTR, DWORD_PTR data) noexcept {
    auto* const self = reinterpret_cast<NumericSpinEdit*>(data);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, Procedure, kSubclassId);
        self->Edit = nullptr;
    } else if (message == WM_NOTIFY &&
               reinterpret_cast<const NMHDR*>(lParam)->code == UDN_DELTAPOS &&
               self->OnClick(lParam)) {
        return 0;
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

bool NumericSpinEdit::OnClick(LPARAM notification) noexcept {
    auto& click = *reinterpret_cast<NMUPDOWN*>(notification);
    if (click.hdr.idFrom != UpDownId) return false;
    TakeInText();
    number_.Step(click.iDelta);
    // The control is left nothing to change: its position holds too little for the value.
    click.iDelta = 0;
    click.iPos = number_.Value;
    Show();
    return true;
}

void NumericSpinEdit::Show() noexcept {
    number_.Show();
    if (Edit) SetWindowTextA(Edit, number_.LastText);
}

void NumericSpinEdit::SetPosition() const noexcept {
    SendMessageW(UpDown, UDM_SETPOS, 0, LOWORD(static_cast<DWORD_PTR>(number_.Value)));
}
