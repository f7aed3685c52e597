#include <cstdlib>

#include "cab/data_root.h"
#include "cab/item_path.h"
#include "fuzz/exact_text.h"

/// What a path has made is found by it, and one that makes nothing leaves nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace AUX::CAB;
    const auto exact = fuzz::ExactText(data, size);
    const AUX::WStringView path(exact.get());
    DataRoot* const bag = DataRoot::Create();
    if (!bag) std::abort();
    {
        const BagLockScope lock(*bag);
        DataItem& root = *lock.Root();
        if (FindPath(root, path) && !path.empty()) std::abort();
        DataItem* const made = MakePath(root, path, Kind::Int);
        if (made && made->GetType() != Kind::Int) std::abort();
        // An index behind an array's end has added the next element.
        const bool hasIndex = path.find(TEXT('[')) != AUX::WStringView::npos;
        if (made && !hasIndex && FindPath(root, path) != made) std::abort();
        if (!made && !root.IsDefault()) std::abort();
    }
    bag->Release();
    return 0;
}
