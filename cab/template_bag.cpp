#include "cab/template_bag.h"

#include <new>
#include <stdexcept>

#include "cab/data_item.h"

namespace AUX::CAB {
namespace {

template <class Work>
HRESULT Guarded(Work work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::invalid_argument&) {
        return E_INVALIDARG;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace

HRESULT SelectRoot(TemplateSet& set, WStringView name) noexcept {
    return Guarded([&] { return set.SelectRoot(name); });
}

HRESULT MakeBag(TemplateSet& set, WStringView root, DataRoot*& bag) noexcept {
    bag = nullptr;
    std::unique_ptr<TemplateHandle> handle;
    const HRESULT result = root.empty() ? set.GetSelectedRoot(handle)
                                        : Guarded([&] { return set.GetRoot(root, handle); });
    if (FAILED(result)) return result;
    const ItemSpec* const spec = handle->GetSpec();
    if (!spec) return E_OUTOFMEMORY;  // It was there when the handle was made.
    if (spec->kind != Kind::Dictionary) return E_INVALIDARG;
    bag = DataRoot::Create(std::move(handle));
    return bag ? S_OK : E_OUTOFMEMORY;
}

HRESULT ShapeByTemplate(DataItem& item, TemplateSet& set, WStringView root) noexcept {
    std::unique_ptr<TemplateHandle> handle;
    const HRESULT result = Guarded([&] { return set.GetRoot(root, handle); });
    if (FAILED(result)) return result;
    const ItemSpec* const spec = handle->GetSpec();
    if (!spec) return E_OUTOFMEMORY;
    if (!item.Cast(spec->kind)) return E_INVALIDARG;
    DataRoot* const bag = item.GetRoot();
    if (bag && !bag->KeepTemplate(*handle)) return E_OUTOFMEMORY;
    return item.SetSpecHandle(std::move(handle)) ? S_OK : E_OUTOFMEMORY;
}

}  // namespace AUX::CAB
