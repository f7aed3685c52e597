#pragma once

/// The compiled form of dialogs: both kinds of template, as resource compilers write them.

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "platform/posix/user/window_types.h"
#include "platform/text.h"

namespace platform::user {

/// A control of a template; places and sizes in dialog units.
struct DialogItem {
    DWORD style = 0;
    DWORD exStyle = 0;
    POINT place = {};
    SIZE size = {};
    DWORD id = 0;
    WideString className;
    WideString text;                   // empty as well if it is the number of a resource
    std::span<const std::byte> extra;  // for the control's WM_CREATE; in the template's bytes
};

struct DialogTemplate {
    DWORD style = 0;
    DWORD exStyle = 0;
    POINT place = {};
    SIZE size = {};
    WideString className;  // empty: the dialog's own class
    WideString title;
    WORD fontPoints = 0;  // 0: the system's font
    std::vector<DialogItem> items;
};

/// Nothing for bytes that end too early or name a class by a number that none has.
std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::byte> bytes);

}  // namespace platform::user
