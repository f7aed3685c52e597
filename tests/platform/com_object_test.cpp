#include "platform/com_object.h"

#include <gtest/gtest.h>

#include "platform/unique_bstr.h"

namespace platform {
namespace {

class Probe : public ComObject<IUnknown> {
public:
    explicit Probe(int& ended) : ended_(ended) {}

private:
    ~Probe() override { ++ended_; }
    int& ended_;
};

TEST(ComObject, LivesAsLongAsItsReferences) {
    int ended = 0;
    ComPtr<Probe> first = MakeObject<Probe>(ended);
    ComPtr<IUnknown> second = first.As<IUnknown>();
    ASSERT_TRUE(second);
    EXPECT_FALSE(first.As<IDispatch>());
    void* refused = first.Get();
    EXPECT_EQ(first->QueryInterface(InterfaceId<IDispatch>(), &refused), E_NOINTERFACE);
    EXPECT_EQ(refused, nullptr);
    EXPECT_EQ(first->QueryInterface(InterfaceId<IDispatch>(), nullptr), E_POINTER);
    first.Reset();
    EXPECT_EQ(ended, 0);
    second = ComPtr<IUnknown>();
    EXPECT_EQ(ended, 1);
}

TEST(Bstr, CarriesItsLengthAndHoldsZeros) {
    const WCHAR text[] = {'a', 0, 'b'};
    const UniqueBstr counted(SysAllocStringLen(text, 3));
    ASSERT_TRUE(counted);
    EXPECT_EQ(SysStringLen(counted.Get()), 3u);
    EXPECT_EQ(counted.Get()[2], static_cast<WCHAR>('b'));
    EXPECT_EQ(counted.Get()[3], 0);
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    const UniqueBstr empty(SysAllocString(TEXT("")));
    ASSERT_TRUE(empty);
    EXPECT_EQ(SysStringLen(empty.Get()), 0u);
}

}  // namespace
}  // namespace platform
