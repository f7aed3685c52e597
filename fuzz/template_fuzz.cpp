#include <cstdlib>
#include <stdexcept>

#include "cab/data_root.h"
#include "cab/template_set.h"

/// Any bytes are a template or are refused, and what is compiled gives a bag.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    AUX::CAB::TemplateSet* const set = AUX::CAB::TemplateSet::Create();
    if (!set) std::abort();
    std::unique_ptr<AUX::CAB::TemplateHandle> handle;
    // An empty input has no address.
    const HRESULT loaded = set->LoadFromBuffer(size ? data : nullptr, size);
    try {
        const HRESULT result = set->GetRoot({}, handle);
        if (SUCCEEDED(result) && FAILED(loaded)) std::abort();
    } catch (const std::invalid_argument&) {
        if (FAILED(loaded)) std::abort();
    }
    set->Release();
    if (handle) {
        AUX::CAB::DataRoot* const bag = AUX::CAB::DataRoot::Create(std::move(handle));
        if (!bag) std::abort();
        bag->Release();
    }
    return 0;
}
