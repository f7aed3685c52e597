#pragma once

#include <memory>

#include "platform/typeinfo.h"
#include "platform/unique_bstr.h"

namespace AUX {

/// The names of an interface's members, for the callers that spell them as it does. Any thread may
/// search once they are read.
class MemberNames {
public:
    /// Reads them, once. What there is no memory for stays out.
    void Read(ITypeInfo& info) noexcept;

    /// \return false if it is not known here: the type information, to which case does not count,
    ///         may still know it.
    [[nodiscard]] bool Find(const WCHAR* name, DISPID& id) const noexcept;

private:
    struct Entry {
        platform::UniqueBstr text;
        UINT length = 0;
        DISPID id = DISPID_UNKNOWN;
    };

    std::unique_ptr<Entry[]> entries_;
    UINT count_ = 0;
};

}  // namespace AUX
