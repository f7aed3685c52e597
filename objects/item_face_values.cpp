#include <type_traits>

#include "cab/com_stream.h"
#include "cab/data_stream.h"
#include "cab/foreign_stream.h"
#include "cab/item_path.h"
#include "objects/item_face_work.h"
#include "objects/variant_value.h"

namespace AUX {

using CAB::DataItem;
using CAB::Kind;

namespace {

HRESULT GiveBool(DataItem& item, VARIANT_BOOL& value) noexcept {
    bool flag = false;
    if (!item.GetBool(flag)) return E_INVALIDARG;
    value = ToVariantBool(flag);
    return S_OK;
}

HRESULT GiveInt(DataItem& item, LONG& value) noexcept {
    std::int32_t number = 0;
    if (!item.GetInt(number)) return E_INVALIDARG;
    value = number;
    return S_OK;
}

HRESULT GiveInt64(DataItem& item, LONGLONG& value) noexcept {
    std::int64_t number = 0;
    if (!item.GetInt64(number)) return E_INVALIDARG;
    value = number;
    return S_OK;
}

HRESULT GiveDouble(DataItem& item, double& value) noexcept {
    double number = 0;
    if (!item.GetDouble(number)) return E_INVALIDARG;
    value = number;
    return S_OK;
}

HRESULT GiveString(DataItem& item, BSTR& value) noexcept {
    const WString* const text = item.GetString();
    if (!text) return E_INVALIDARG;
    return GiveText(&value, text->Text(), text->Length());
}

HRESULT GiveStream(DataItem& item, IStream*& value) noexcept {
    if (item.GetType() != Kind::Stream) return E_INVALIDARG;
    Stream* const own = item.GetStream();
    std::unique_ptr<Stream> clone = own ? own->Clone() : nullptr;
    value = CAB::MakeComStream(std::move(clone)).Detach();
    return value ? S_OK : E_OUTOFMEMORY;
}

HRESULT GiveObject(DataItem& item, IUnknown*& value) noexcept {
    if (item.GetType() != Kind::Object) return E_INVALIDARG;
    value = item.GetObject();
    if (value) value->AddRef();
    return S_OK;
}

WStringView ViewOf(BSTR text) noexcept {
    return WStringView(text ? text : TEXT(""), SysStringLen(text));
}

HRESULT PutFlag(DataItem& item, VARIANT_BOOL value) noexcept {
    const bool flag = value != VARIANT_FALSE;
    return Accepted(item.SetBool(&flag, 1));
}
HRESULT PutNumber(DataItem& item, LONG value) noexcept {
    const std::int32_t number = value;
    return Accepted(item.SetInt(&number, 0));
}
HRESULT PutNumber64(DataItem& item, LONGLONG value) noexcept {
    const std::int64_t number = value;
    return Accepted(item.SetInt64(&number, 0));
}
HRESULT PutReal(DataItem& item, double value) noexcept {
    return Accepted(item.SetDouble(&value, 0));
}
HRESULT PutText(DataItem& item, BSTR value) noexcept {
    return Accepted(item.SetText(ViewOf(value)));
}

HRESULT PutCounted(DataItem& item, IUnknown* value) noexcept {
    return Accepted(item.SetObject(value));
}

/// Reads the client's stream before the item is touched: the client's code runs meanwhile, and what
/// it can't give leaves the item as it was.
HRESULT TakeStream(IStream* source, std::unique_ptr<Stream>& copy) noexcept {
    if (!source) return E_INVALIDARG;
    const std::unique_ptr<Stream> foreign = CAB::MakeForeignStream(source, kAccessRead);
    if (!foreign) return E_OUTOFMEMORY;
    const Status status = CAB::CopyWhole(*foreign, copy);
    if (status == kStatusInsufficientMemory) return E_OUTOFMEMORY;
    return IsFailure(status) ? status : S_OK;
}

HRESULT AttachStream(DataItem& item, std::unique_ptr<Stream>& copy) noexcept {
    if (!item.SetStream(copy.get(), true)) return E_INVALIDARG;
    (void)copy.release();  // It is the item's now.
    return S_OK;
}

/// What stands for a missing value, as the caller gets it.
template <class Value>
HRESULT CopyValue(Value missing, Value& value) noexcept {
    if constexpr (std::is_same_v<Value, BSTR>) {
        return GiveText(&value, missing, SysStringLen(missing));
    } else {
        value = missing;
        if constexpr (std::is_pointer_v<Value>) {
            if (value) value->AddRef();
        }
        return S_OK;
    }
}

}  // namespace

// -- The item's own value

template <class Value>
HRESULT ItemFace::Get(Value* value, Give<Value> give) noexcept {
    if (!value) return E_POINTER;
    *value = {};
    return With([&](DataItem& item) { return give(item, *value); });
}

template <class Value>
HRESULT ItemFace::Put(Value value, Take<Value> take) noexcept {
    return With([&](DataItem& item) { return take(item, value); });
}

HRESULT ItemFace::GetBool(VARIANT_BOOL* value) noexcept { return Get(value, GiveBool); }
HRESULT ItemFace::PutBool(VARIANT_BOOL value) noexcept { return Put(value, PutFlag); }
HRESULT ItemFace::GetInt(LONG* value) noexcept { return Get(value, GiveInt); }
HRESULT ItemFace::PutInt(LONG value) noexcept { return Put(value, PutNumber); }
HRESULT ItemFace::GetInt64(LONGLONG* value) noexcept { return Get(value, GiveInt64); }
HRESULT ItemFace::PutInt64(LONGLONG value) noexcept { return Put(value, PutNumber64); }
HRESULT ItemFace::GetDouble(double* value) noexcept { return Get(value, GiveDouble); }
HRESULT ItemFace::PutDouble(double value) noexcept { return Put(value, PutReal); }
HRESULT ItemFace::GetString(BSTR* value) noexcept { return Get(value, GiveString); }
HRESULT ItemFace::PutString(BSTR value) noexcept { return Put(value, PutText); }
HRESULT ItemFace::GetStream(IStream** value) noexcept { return Get(value, GiveStream); }
HRESULT ItemFace::GetObject(IUnknown** value) noexcept { return Get(value, GiveObject); }
HRESULT ItemFace::PutObject(IUnknown* value) noexcept { return Put(value, PutCounted); }

HRESULT ItemFace::PutStream(IStream* value) noexcept {
    const platform::ComPtr<ItemFace> self(this);
    std::unique_ptr<Stream> copy;
    if (!Item()) return E_FAIL;
    const HRESULT result = TakeStream(value, copy);
    if (FAILED(result)) return result;
    return With([&](DataItem& item) { return AttachStream(item, copy); });
}

HRESULT ItemFace::GetStringPointer(LPCWSTR* text) noexcept {
    if (!text) return E_POINTER;
    *text = nullptr;
    return With([&](DataItem& item) {
        const WString* const own = item.GetString();
        if (own) *text = own->Text();
        return Accepted(own);
    });
}

HRESULT ItemFace::GetValue(VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    VariantInit(value);
    return With([&](DataItem& item) {
        if (!CAB::IsContainer(item.GetType())) return GiveVariant(item, *value);
        AddRef();
        value->pdispVal = this;
        value->vt = VT_DISPATCH;
        return S_OK;
    });
}

HRESULT ItemFace::PutValue(VARIANT value) noexcept { return PutValueByPointer(&value); }
HRESULT ItemFace::GetValueByPointer(VARIANT* value) noexcept { return GetValue(value); }

HRESULT ItemFace::PutValueByPointer(VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    return With([&](DataItem& item) { return Accepted(PutVariant(item, *value)); });
}

// -- Values at a path

template <class Value>
HRESULT ItemFace::GetAt(LPCWSTR path, Value missing, Value* value, Give<Value> give) noexcept {
    if (!value) return E_POINTER;
    *value = {};
    const HRESULT result = With([&](DataItem& item) {
        DataItem* const found = CAB::MakePath(item, TextAt(path), Kind::None);
        return found ? give(*found, *value) : E_INVALIDARG;
    });
    if (SUCCEEDED(result)) return S_OK;
    const HRESULT given = CopyValue(missing, *value);
    if (result == E_FAIL && !Item()) return E_FAIL;
    return given;
}

template <class Value>
HRESULT ItemFace::SetAt(LPCWSTR path, Kind kind, Value value, Take<Value> take) noexcept {
    return With([&](DataItem& item) {
        CAB::Growth growth;
        DataItem* const made =
            CAB::MakePath(item, TextAt(path), kind, CAB::KindMatch::AnyPresent, &growth);
        const HRESULT result = made ? take(*made, value) : E_INVALIDARG;
        if (FAILED(result)) growth.Undo();
        return result;
    });
}

HRESULT ItemFace::GetBoolAt(LPCWSTR path, VARIANT_BOOL missing, VARIANT_BOOL* value) noexcept {
    return GetAt(path, missing, value, GiveBool);
}
HRESULT ItemFace::GetIntAt(LPCWSTR path, LONG missing, LONG* value) noexcept {
    return GetAt(path, missing, value, GiveInt);
}
HRESULT ItemFace::GetInt64At(LPCWSTR path, LONGLONG missing, LONGLONG* value) noexcept {
    return GetAt(path, missing, value, GiveInt64);
}
HRESULT ItemFace::GetDoubleAt(LPCWSTR path, double missing, double* value) noexcept {
    return GetAt(path, missing, value, GiveDouble);
}
HRESULT ItemFace::GetStringAt(LPCWSTR path, BSTR missing, BSTR* value) noexcept {
    return GetAt(path, missing, value, GiveString);
}
HRESULT ItemFace::GetStreamAt(LPCWSTR path, IStream* missing, IStream** value) noexcept {
    return GetAt(path, missing, value, GiveStream);
}
HRESULT ItemFace::GetObjectAt(LPCWSTR path, IUnknown* missing, IUnknown** value) noexcept {
    return GetAt(path, missing, value, GiveObject);
}

HRESULT ItemFace::SetBoolAt(LPCWSTR path, VARIANT_BOOL value) noexcept {
    return SetAt(path, Kind::Bool, value, PutFlag);
}
HRESULT ItemFace::SetIntAt(LPCWSTR path, LONG value) noexcept {
    return SetAt(path, Kind::Int, value, PutNumber);
}
HRESULT ItemFace::SetInt64At(LPCWSTR path, LONGLONG value) noexcept {
    return SetAt(path, Kind::Int64, value, PutNumber64);
}
HRESULT ItemFace::SetDoubleAt(LPCWSTR path, double value) noexcept {
    return SetAt(path, Kind::Double, value, PutReal);
}
HRESULT ItemFace::SetStringAt(LPCWSTR path, BSTR value) noexcept {
    return SetAt(path, Kind::String, value, PutText);
}
HRESULT ItemFace::SetObjectAt(LPCWSTR path, IUnknown* value) noexcept {
    return SetAt(path, Kind::Object, value, PutCounted);
}

HRESULT ItemFace::SetStreamAt(LPCWSTR path, IStream* value) noexcept {
    const platform::ComPtr<ItemFace> self(this);
    std::unique_ptr<Stream> copy;
    if (!Item()) return E_FAIL;
    const HRESULT result = TakeStream(value, copy);
    if (FAILED(result)) return result;
    return With([&](DataItem& item) {
        DataItem* const made = CAB::MakePath(item, TextAt(path), Kind::Stream);
        return made ? AttachStream(*made, copy) : E_INVALIDARG;
    });
}

}  // namespace AUX
