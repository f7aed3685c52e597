#include "objects/type_holders.h"

#include <atomic>
#include <new>

#include "resources/generated/addin.h"

namespace AUX {

namespace {

constinit TypeLibraryLoader loadLibrary = nullptr;
constinit std::atomic<ITypeLib*> heldLibrary = nullptr;

HRESULT Library(ITypeLib*& library) noexcept {
    library = heldLibrary.load(std::memory_order_acquire);
    if (library) return S_OK;
    if (!loadLibrary) return kNoTypes;
    platform::ComPtr<ITypeLib> loaded;
    const HRESULT result = loadLibrary(loaded.Put());
    if (FAILED(result)) return result;
    // Of two threads that load it at once one keeps it.
    if (heldLibrary.compare_exchange_strong(library, loaded.Get())) library = loaded.Detach();
    return S_OK;
}

template <class Interface>
HRESULT Find(ITypeInfo** info) noexcept {
    *info = nullptr;
    ITypeLib* library = nullptr;
    const HRESULT result = Library(library);
    if (FAILED(result)) return result;
    return library->GetTypeInfoOfGuid(platform::InterfaceId<Interface>(), info);
}

// A holder lives in the module's own memory, between the start and the end.
template <class Interface>
alignas(TypeInfoHolder) constinit unsigned char room[sizeof(TypeInfoHolder)] = {};

template <class... Interfaces>
struct Types {
    static void Start() noexcept {
        ((heldTypes<Interfaces> = new (room<Interfaces>) TypeInfoHolder(Find<Interfaces>)), ...);
    }
    static void End() noexcept { (EndOne<Interfaces>(), ...); }

private:
    template <class Interface>
    static void EndOne() noexcept {
        TypeInfoHolder* const types = heldTypes<Interface>;
        heldTypes<Interface> = nullptr;
        if (types) types->~TypeInfoHolder();
    }
};

// All dual interfaces of the family.
using FamilyTypes =
    Types<IRootObject, IIntArray, IDoubleArray, IStringArray, IValueArray, IObjectsArray,
          IObjectList, IBitSet, IText, IMemoryBlock, ISignal, IProgress, IProgressSlice,
          IHistoryStep, IOperationHistory, IMessageEvent, IColorValue, IPageRange, IKeywordTable,
          IHashedKeywordTable, IBag, IBagItem, ITemplateSet, IBagFactory>;

}  // namespace

void StartTypes(TypeLibraryLoader loader) noexcept {
    EndTypes();
    loadLibrary = loader;
    FamilyTypes::Start();
}

void EndTypes() noexcept {
    FamilyTypes::End();
    loadLibrary = nullptr;
    platform::ComPtr<ITypeLib> last;
    last.Attach(heldLibrary.exchange(nullptr));
}

}  // namespace AUX
