#pragma once

#include "cab/data_item.h"
#include "objects/frame.h"

namespace AUX {

/// How the family reaches the bag of an object: what a host calls an operation answers this.
struct IBagOwner : IUnknown {
    /// The bag, which lives as long as the object.
    [[nodiscard]] virtual CAB::DataRoot& Bag() noexcept = 0;
};

/// The inputs and outputs of operations: the item of a key in the operation's bag, an array of
/// objects, or one object, which is a list of one at most. Items of other kinds, a null operation
/// or one without a bag are E_INVALIDARG. The bag is locked during a call.
class OperationList {
public:
    /// \param operation  Borrowed, may be null.
    OperationList(IUnknown* operation, const WCHAR* key) noexcept;
    ~OperationList();
    OperationList(const OperationList&) = delete;
    OperationList& operator=(const OperationList&) = delete;

    /// \return HRESULT_FROM_WIN32(ERROR_NOT_FOUND) if the bag lacks the key.
    HRESULT GetCount(ULONG* count) noexcept;
    /// \return E_FAIL if the bag lacks the key; E_INVALIDARG for an index past the end.
    HRESULT GetItem(ULONG index, IUnknown** object) noexcept;
    /// Appends, or replaces the one object.
    HRESULT Add(IUnknown* object) noexcept;
    HRESULT Clear() noexcept;

private:
    [[nodiscard]] bool IsOne() const noexcept;

    platform::ComPtr<IBagOwner> owner_;
    CAB::DataItem* item_ = nullptr;
};

}  // namespace AUX

QVD_INTERFACE_ID(AUX::IBagOwner, 0xB1E77C03, 0x5C1D, 0x4F0B,
                 {0x8E, 0x39, 0x60, 0x41, 0xD2, 0x7A, 0x95, 0x1E});
