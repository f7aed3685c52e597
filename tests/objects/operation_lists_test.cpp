#include "objects/operation_lists.h"

#include <gtest/gtest.h>

#include "objects/root_object.h"
#include "objects/value_objects.h"
#include "tests/objects/host_objects.h"

namespace {

using namespace AUX;
using objects_test::Operation;
using platform::ComPtr;
using platform::MakeObject;

// An array takes any number, one object is a list of one at most.
TEST(OperationLists, AreWhatTheItemOfTheirKeyIs) {
    RootObject& root = Root();
    const auto operation = MakeObject<Operation>();
    const auto one = MakeObject<TextObject>(), two = MakeObject<TextObject>();
    ULONG count = 7;
    ComPtr<IUnknown> got;
    EXPECT_EQ(root.GetInputCount(operation.Get(), &count), static_cast<HRESULT>(0x80070490));
    EXPECT_EQ(root.GetInput(operation.Get(), 0, got.Put()), E_FAIL);
    EXPECT_EQ(root.AddInput(operation.Get(), one.Get()), E_INVALIDARG);
    EXPECT_EQ(root.ClearInputs(nullptr), E_INVALIDARG);
    EXPECT_EQ(root.AddInput(one.Get(), one.Get()), E_INVALIDARG) << "it has no bag";
    operation->Put(TEXT("Input"), CAB::Kind::Array);
    operation->Put(TEXT("Output"), CAB::Kind::Object);
    for (TextObject* object : {one.Get(), two.Get()}) {
        EXPECT_EQ(root.AddInput(operation.Get(), object), S_OK);
        EXPECT_EQ(root.AddOutput(operation.Get(), object), S_OK);
    }
    EXPECT_EQ(root.GetInputCount(operation.Get(), &count), S_OK);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(root.GetInput(operation.Get(), 1, got.Put()), S_OK);
    EXPECT_EQ(got.Get(), two.Get());
    EXPECT_EQ(root.GetInput(operation.Get(), 2, got.Put()), E_INVALIDARG);
    EXPECT_EQ(root.GetOutputCount(operation.Get(), &count), S_OK);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(root.GetOutput(operation.Get(), 0, got.Put()), S_OK);
    EXPECT_EQ(got.Get(), two.Get());
    EXPECT_EQ(root.ClearInputs(operation.Get()), S_OK);
    EXPECT_EQ(root.ClearOutputs(operation.Get()), S_OK);
    EXPECT_EQ(root.GetInputCount(operation.Get(), &count), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(root.GetOutputCount(operation.Get(), &count), S_OK);
    EXPECT_EQ(count, 0u);
    const auto other = MakeObject<Operation>();
    other->Put(TEXT("Input"), CAB::Kind::Int);
    EXPECT_EQ(root.GetInputCount(other.Get(), &count), E_INVALIDARG);
}

}  // namespace
