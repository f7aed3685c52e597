#pragma once

#include <memory>

#include "cab/create_item.h"
#include "cab/data_array.h"
#include "cab/data_dictionary.h"
#include "cab/item_path.h"

namespace bag_test {

using namespace AUX::CAB;
using AUX::WString;
using AUX::WStringView;

struct ReleaseBag {
    void operator()(DataRoot* bag) const { bag->Release(); }
};
using Bag = std::unique_ptr<DataRoot, ReleaseBag>;

/// Names a declaration that outlives it.
class StaticHandle final : public TemplateHandle {
public:
    explicit StaticHandle(const ItemSpec& spec) : spec_(spec) {}
    const ItemSpec* GetSpec() noexcept override { return &spec_; }

private:
    const ItemSpec& spec_;
};

inline Bag MakeBag(const ItemSpec* spec = nullptr) {
    std::unique_ptr<TemplateHandle> handle;
    if (spec) handle.reset(new (std::nothrow) StaticHandle(*spec));
    if (spec && !handle) return nullptr;
    return Bag(DataRoot::Create(std::move(handle)));
}

inline ItemSpec Leaf(const WCHAR* name, Kind kind, const ValueSpec* values = nullptr) {
    ItemSpec spec{};
    spec.name = name;
    spec.kind = kind;
    spec.values = values;
    return spec;
}

inline ItemSpec Branch(const WCHAR* name, Kind kind, const ItemSpec* entries, std::int64_t count,
                       std::uint32_t flags = 0) {
    ItemSpec spec{};
    spec.name = name;
    spec.kind = kind;
    spec.flags = flags;
    spec.count = count;
    spec.entries = entries;
    return spec;
}

inline bool SetInt(DataItem* item, std::int32_t value) { return item && item->SetInt(&value, 0); }

inline std::int32_t IntOf(DataItem* item) {
    std::int32_t value = -77;
    return item && item->GetInt(value) ? value : -77;
}

}  // namespace bag_test
