#pragma once

#include <gtest/gtest.h>
#include <vector>

#include "platform/com_ptr.h"

namespace test_support {

/// The rules that every object keeps: asked through any of its interfaces it gives the same
/// identity, and each of the others; a missing place is E_POINTER; what it does not have is null.
/// \param ids  All of its interfaces, without IUnknown.
inline void ExpectComRules(IUnknown* object, const std::vector<IID>& ids) {
    using platform::ComPtr;
    const auto ask = [](IUnknown* from, const IID& id) {
        void* found = &from;
        const HRESULT result = from->QueryInterface(id, &found);
        EXPECT_EQ(FAILED(result), found == nullptr);
        ComPtr<IUnknown> pointer;
        pointer.Attach(static_cast<IUnknown*>(found));
        return pointer;
    };
    constexpr IID kNone = {0x12345678, 0, 0, {1}};
    const ComPtr<IUnknown> identity = ask(object, platform::InterfaceId<IUnknown>());
    ASSERT_TRUE(identity);
    for (const IID& from : ids) {
        const ComPtr<IUnknown> first = ask(object, from);
        ASSERT_TRUE(first) << &from - ids.data();
        EXPECT_EQ(ask(first.Get(), platform::InterfaceId<IUnknown>()).Get(), identity.Get());
        EXPECT_EQ(first->QueryInterface(from, nullptr), E_POINTER);
        EXPECT_FALSE(ask(first.Get(), kNone));
        for (const IID& to : ids) {
            const ComPtr<IUnknown> second = ask(first.Get(), to);
            ASSERT_TRUE(second);
            EXPECT_EQ(ask(second.Get(), from).Get(), first.Get());
        }
    }
}

}  // namespace test_support
