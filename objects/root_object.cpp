#include "objects/root_object.h"

#include "automation/split_words.h"
#include "objects/array_objects.h"
#include "objects/color_value.h"
#include "objects/keyword_objects.h"
#include "objects/operation_history.h"
#include "objects/page_range_object.h"
#include "objects/progress_slice.h"
#include "objects/value_objects.h"

namespace AUX {

namespace {

// Lives in the module's own memory and is never destroyed: End gives back what it holds.
union RootPlace {
    constexpr RootPlace() noexcept : root() {}
    ~RootPlace() {}
    RootObject root;
};
constinit RootPlace place;

}  // namespace

RootObject& Root() noexcept { return place.root; }

bool StartObjects(TypeLibraryLoader loader) noexcept {
    StartTypes(loader);
    if (Root().Start()) return true;
    EndTypes();
    return false;
}

void EndObjects() noexcept {
    Root().End();
    EndTypes();
}

bool RootObject::Start() noexcept {
    constexpr DWORD kSpinCount = 4000;
    hub = platform::MakeObject<MessageHub>();
    isStarted = hub && hub->HasLock() && InitializeCriticalSectionAndSpinCount(&lock, kSpinCount);
    if (!isStarted) hub.Reset();
    keywordHash = HashKeyword;
    return isStarted;
}

void RootObject::End() noexcept {
    if (!isStarted) return;
    isStarted = false;
    DeleteCriticalSection(&lock);
    hub.Reset();
    math.Reset();
}

bool RootObject::AreObjectsInUse() noexcept {
    const LONG own = hub ? static_cast<LONG>(1 + hub->PoolCount()) : 0;
    return LiveObjects() > own || (hub && hub->IsHeld()) || (math && IsHeldBeside(*math.Get(), 1));
}

HRESULT RootObject::QueryInterface(REFIID id, void** object) noexcept {
    if (!object) return E_POINTER;
    if (IsEqualIID(id, platform::InterfaceId<IBagFactory>())) {
        *object = static_cast<IBagFactory*>(&bags);
        return S_OK;
    }
    const bool isKnown = IsEqualIID(id, platform::InterfaceId<IUnknown>()) ||
                         IsEqualIID(id, platform::InterfaceId<IDispatch>()) ||
                         IsEqualIID(id, platform::InterfaceId<IRootObject>());
    *object = isKnown ? static_cast<IRootObject*>(this) : nullptr;
    return isKnown ? S_OK : E_NOINTERFACE;
}

HRESULT RootObject::NewMemoryBlock(LONGLONG size, IMemoryBlock** block) noexcept {
    if (!block) return E_POINTER;
    *block = nullptr;
    if (size < 0) return E_INVALIDARG;
    const auto made = platform::MakeObject<MemoryBlock>();
    if (!made) return E_OUTOFMEMORY;
    if (size > 0) {
        const HRESULT result = made->SetSize(size, VARIANT_FALSE);
        if (FAILED(result)) return result;
    }
    *block = platform::ComPtr<MemoryBlock>(made).Detach();
    return S_OK;
}

HRESULT RootObject::NewBitSet(ULONG size, IBitSet** set) noexcept {
    constexpr ULONG kMostBits = 99'999'999;
    if (!set) return E_POINTER;
    *set = nullptr;
    if (size < 1 || size > kMostBits) return E_INVALIDARG;
    platform::ComPtr<BitSetObject> made = platform::MakeObject<BitSetObject>();
    if (!made || made->Create(size) != S_OK) return E_OUTOFMEMORY;
    *set = made.Detach();
    return S_OK;
}

HRESULT RootObject::NewText(BSTR text, IText** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    platform::ComPtr<TextObject> made = platform::MakeObject<TextObject>();
    if (!made || made->SetText(text) != S_OK) return E_OUTOFMEMORY;
    *result = made.Detach();
    return S_OK;
}

HRESULT RootObject::NewSignal(ISignal** signal) noexcept {
    if (!signal) return E_POINTER;
    *signal = nullptr;
    platform::ComPtr<SignalObject> made = platform::MakeObject<SignalObject>();
    if (!made) return E_OUTOFMEMORY;
    if (const HRESULT result = made->Start(); FAILED(result)) return result;
    *signal = made.Detach();
    return S_OK;
}

HRESULT RootObject::NewProgressSlice(IProgress* parent, double range, ULONG stateMask,
                                     ULONG blocking, IProgressSlice** slice) noexcept {
    if (!slice) return E_POINTER;
    *slice = nullptr;
    if (!parent || !(range >= 0)) return E_INVALIDARG;
    platform::ComPtr<ProgressSlice> made = platform::MakeObject<ProgressSlice>();
    if (!made) return E_OUTOFMEMORY;
    const HRESULT result = made->Start(parent, range, stateMask, blocking);
    if (FAILED(result)) return result;
    *slice = made.Detach();
    return S_OK;
}

HRESULT RootObject::NewProgressSliceAll(IProgress* parent, double range,
                                        IProgressSlice** slice) noexcept {
    return NewProgressSlice(parent, range, 0xFFFFFFFF, 0, slice);
}

HRESULT RootObject::NewObjectList(IObjectList** list) noexcept {
    return MakeInto<ObjectListObject>(list);
}
HRESULT RootObject::NewObjectArray(IObjectsArray** array) noexcept {
    return MakeInto<ObjectArrayObject>(array);
}
HRESULT RootObject::NewStringArray(IStringArray** array) noexcept {
    return MakeInto<StringArrayObject>(array);
}
HRESULT RootObject::NewValueArray(IValueArray** array) noexcept {
    return MakeInto<ValueArrayObject>(array);
}
HRESULT RootObject::NewIntArray(IIntArray** array) noexcept {
    return MakeInto<IntArrayObject>(array);
}
HRESULT RootObject::NewDoubleArray(IDoubleArray** array) noexcept {
    return MakeInto<DoubleArrayObject>(array);
}
HRESULT RootObject::NewOperationHistory(IOperationHistory** history) noexcept {
    return MakeInto<OperationHistory>(history);
}

HRESULT RootObject::NewColor(LONG kind, IColorValue** color) noexcept {
    if (!color) return E_POINTER;
    *color = nullptr;
    if (!Color::IsKind(kind)) return E_INVALIDARG;
    return MakeInto<ColorValue>(color, Color(static_cast<ColorKind>(kind)));
}

HRESULT RootObject::GetHub(IMessageHub** result) noexcept {
    if (!result) return E_POINTER;
    *result = platform::ComPtr<MessageHub>(hub).Detach();
    return *result ? S_OK : E_FAIL;
}

HRESULT RootObject::GetMath(IUnknown** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (!isStarted) return E_FAIL;
    EnterCriticalSection(&lock);
    if (!math) math = MakeGeometryMath();
    *result = platform::ComPtr<GeometryMath>(math).Detach();
    LeaveCriticalSection(&lock);
    return *result ? S_OK : E_OUTOFMEMORY;
}

HRESULT RootObject::NewPageRange(IPageRange** range) noexcept {
    return MakeInto<PageRangeObject>(range);
}

namespace {

WStringView ViewOf(BSTR text) noexcept { return {text, SysStringLen(text)}; }

}  // namespace

HRESULT RootObject::NewKeywordTable(BSTR spec, LONG minValue, LONG maxValue, LONG defaultValue,
                                    BSTR prefix, VARIANT_BOOL caseSensitive,
                                    IKeywordTable** table) noexcept {
    if (!table) return E_POINTER;
    *table = nullptr;
    const bool isCaseSensitive = caseSensitive != VARIANT_FALSE;
    auto made = platform::MakeObject<KeywordTableObject>(isCaseSensitive);
    if (!made) return E_OUTOFMEMORY;
    made->Table().Parse(ViewOf(spec), minValue, maxValue, defaultValue, ViewOf(prefix));
    *table = made.Detach();
    return S_OK;
}

HRESULT RootObject::NewHashedKeywordTable(BSTR spec, LONG minValue, LONG maxValue,
                                          LONG defaultValue, BSTR prefix,
                                          VARIANT_BOOL caseSensitive,
                                          IHashedKeywordTable** table) noexcept {
    if (!table) return E_POINTER;
    *table = nullptr;
    if (!keywordHash) return E_NOTIMPL;
    const bool isCaseSensitive = caseSensitive != VARIANT_FALSE;
    auto made = platform::MakeObject<HashedKeywordTableObject>(keywordHash, isCaseSensitive);
    if (!made) return E_OUTOFMEMORY;
    made->Table().Parse(ViewOf(spec), minValue, maxValue, defaultValue, ViewOf(prefix));
    *table = made.Detach();
    return S_OK;
}

HRESULT RootObject::SplitWords(BSTR text, IStringArray** words) noexcept {
    if (!words) return E_POINTER;
    *words = nullptr;
    Array<BSTR> found;
    HRESULT result = AUX::SplitWords(text, found);
    if (result != S_OK) return result;
    auto made = platform::MakeObject<StringArrayObject>();
    result = made ? made->TakeAll(found.Data(), found.Count()) : E_OUTOFMEMORY;
    FreeWords(found);
    if (SUCCEEDED(result)) *words = made.Detach();
    return result;
}

}  // namespace AUX
