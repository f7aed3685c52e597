#pragma once

#include <utility>

#include "objects/element_row.h"

namespace AUX {

/// How an array of 64-bit values copies and frees them. A host that keeps more than numbers in them
/// derives from this; the base takes them as numbers.
class ValueKeeper {
public:
    /// \return false if memory runs out.
    [[nodiscard]] virtual bool CopyValue(ULONGLONG from, ULONGLONG& to) noexcept {
        to = from;
        return true;
    }
    virtual void FreeValue(ULONGLONG) noexcept {}

protected:
    ~ValueKeeper() = default;
};

/// Values behind a keeper, which outlives the array; without one they are plain numbers.
struct KeptElement {
    using Value = ULONGLONG;
    [[nodiscard]] bool Copy(ULONGLONG from, ULONGLONG& to) const noexcept {
        if (keeper) return keeper->CopyValue(from, to);
        to = from;
        return true;
    }
    void Free(ULONGLONG value) const noexcept {
        if (keeper) keeper->FreeValue(value);
    }

    ValueKeeper* keeper = nullptr;
};

/// The position of an enumerator over an array object, which it holds. An array that has become
/// shorter than the position has nothing left.
template <class EnumInterface, class ArrayInterface, class Value>
class EnumObject final : public PlainObject<EnumInterface> {
public:
    EnumObject(ArrayInterface* array, ULONG position) noexcept
        : array_(array), position_(position) {}

    /// \param fetched  May be null if one is asked for.
    /// \return S_FALSE if fewer were left.
    HRESULT STDMETHODCALLTYPE Next(ULONG count, Value* items, ULONG* fetched) noexcept override {
        if (fetched) *fetched = 0;
        if (!items || (!fetched && count != 1)) return E_POINTER;
        const ULONG number = std::min(count, Left());
        for (ULONG i = 0; i < number; ++i) {
            const HRESULT result = array_->GetItem(position_, items + i);
            if (FAILED(result)) return result;  // Those fetched before stand, and count.
            ++position_;
            if (fetched) ++*fetched;
        }
        return number < count ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override {
        const ULONG number = std::min(count, Left());
        position_ += number;
        return number < count ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Reset() noexcept override {
        position_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(EnumInterface** copy) noexcept override {
        return MakeInto<EnumObject>(copy, array_.Get(), position_);
    }

private:
    [[nodiscard]] ULONG Left() noexcept {
        ULONG count = 0;
        if (FAILED(array_->GetCount(&count))) return 0;
        return count > position_ ? count - position_ : 0;
    }

    const platform::ComPtr<ArrayInterface> array_;
    ULONG position_;
};

/// An array of values: numbers or texts. Its elements are told at ElementRow. An array refuses
/// itself as a source with E_INVALIDARG; so it does null.
template <class Interface, class EnumInterface, class Element>
class ValueArray final : public DualObject<Interface> {
public:
    using Value = typename Element::Value;

    explicit ValueArray(Element element = {}) noexcept : row_(element) {}

    /// Keeps the array as it is until as many calls of Unlock. For the library's own code.
    void Lock() noexcept { row_.Lock(); }
    void Unlock() noexcept { row_.Unlock(); }

    /// Takes over values that are the array's own then, at the end; each that it took is null.
    [[nodiscard]] HRESULT TakeAll(Value* values, ULONG count) noexcept {
        return row_.InsertEach(count, row_.Count(), [&](ULONG i, Value& value) {
            value = std::exchange(values[i], Value{});
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE GetEnumerator(EnumInterface** items) noexcept override {
        return MakeInto<EnumObject<EnumInterface, Interface, Value>>(items, this, 0u);
    }
    HRESULT STDMETHODCALLTYPE GetItem(ULONG index, Value* value) noexcept override {
        return row_.Get(index, value);
    }
    HRESULT STDMETHODCALLTYPE SetItem(ULONG index, Value value) noexcept override {
        return row_.Set(index, value);
    }
    HRESULT STDMETHODCALLTYPE GetCount(ULONG* count) noexcept override {
        return Give(count, row_.Count());
    }
    HRESULT STDMETHODCALLTYPE Clear() noexcept override { return row_.Clear(); }
    HRESULT STDMETHODCALLTYPE RemoveRange(ULONG first, ULONG count) noexcept override {
        return row_.RemoveRange(first, count);
    }
    HRESULT STDMETHODCALLTYPE Insert(Value value, ULONG at) noexcept override {
        return row_.InsertCopies(&value, 1, at);
    }
    /// \param values  Of the array's type. \return S_FALSE for a count of 0.
    HRESULT STDMETHODCALLTYPE InsertRange(const void* values, ULONG count,
                                          ULONG at) noexcept override {
        if (!values) return E_INVALIDARG;
        const HRESULT result = row_.InsertCopies(static_cast<const Value*>(values), count, at);
        return result == S_OK && count == 0 ? S_FALSE : result;
    }
    HRESULT STDMETHODCALLTYPE InsertFrom(Interface* other, ULONG first, ULONG count,
                                         ULONG at) noexcept override {
        if (!other || other == this) return E_INVALIDARG;
        return row_.InsertFrom(other, first, count, at);
    }
    HRESULT STDMETHODCALLTYPE Assign(Interface* other) noexcept override {
        if (!other || other == this) return E_INVALIDARG;
        return row_.Assign(other);
    }

private:
    ElementRow<Element> row_;
};

/// An array of objects, each with a reference; a null object is refused. What is searched for is
/// the pointer as it was given.
template <class Interface, class EnumInterface, class Item>
class ObjectRow : public DualObject<Interface> {
public:
    void Lock() noexcept { row_.Lock(); }
    void Unlock() noexcept { row_.Unlock(); }

    HRESULT STDMETHODCALLTYPE GetEnumerator(EnumInterface** items) noexcept override {
        return MakeInto<EnumObject<EnumInterface, Interface, Item*>>(items, this, 0u);
    }
    HRESULT STDMETHODCALLTYPE GetItem(ULONG index, Item** object) noexcept override {
        return row_.Get(index, object);
    }
    HRESULT STDMETHODCALLTYPE GetCount(ULONG* count) noexcept override {
        return Give(count, row_.Count());
    }
    HRESULT STDMETHODCALLTYPE Clear() noexcept override { return row_.Clear(); }
    HRESULT STDMETHODCALLTYPE RemoveRange(ULONG first, ULONG count) noexcept override {
        return row_.RemoveRange(first, count);
    }
    /// Removes its first place. \return S_FALSE if it isn't there.
    HRESULT STDMETHODCALLTYPE Remove(Item* object) noexcept override {
        if (!object) return E_INVALIDARG;
        const LONG index = IndexOf(object, 0);
        return index < 0 ? S_FALSE : row_.RemoveRange(static_cast<ULONG>(index), 1);
    }
    HRESULT STDMETHODCALLTYPE Insert(Item* object, ULONG at) noexcept override {
        return object ? row_.InsertCopies(&object, 1, at) : E_INVALIDARG;
    }
    /// \return S_FALSE, with -1, if it isn't there.
    HRESULT STDMETHODCALLTYPE Find(Item* object, LONG* index) noexcept override {
        return FindAt(object, 0, index);
    }
    HRESULT STDMETHODCALLTYPE InsertFrom(Interface* other, ULONG first, ULONG count,
                                         ULONG at) noexcept override {
        if (!other || other == this) return E_INVALIDARG;
        return row_.InsertFrom(other, first, count, at);
    }
    HRESULT STDMETHODCALLTYPE Assign(Interface* other) noexcept override {
        if (!other || other == this) return E_INVALIDARG;
        return row_.Assign(other);
    }

protected:
    [[nodiscard]] LONG IndexOf(Item* object, ULONG first) const noexcept {
        for (ULONG i = first; i < row_.Count(); ++i) {
            if (row_.At(i) == object) return static_cast<LONG>(i);
        }
        return -1;
    }
    [[nodiscard]] HRESULT FindAt(Item* object, ULONG first, LONG* index) const noexcept {
        if (!index) return E_POINTER;
        *index = -1;
        if (!object) return E_INVALIDARG;
        *index = IndexOf(object, first);
        return *index < 0 ? S_FALSE : S_OK;
    }

    ElementRow<ObjectElement<Item>> row_;
};

using IntArrayObject = ValueArray<IIntArray, IEnumInts, PlainElement<ULONG>>;
using DoubleArrayObject = ValueArray<IDoubleArray, IEnumDoubles, PlainElement<double>>;
using StringArrayObject = ValueArray<IStringArray, IEnumTexts, TextElement>;
using ValueArrayObject = ValueArray<IValueArray, IEnumValues, KeptElement>;
class ObjectArrayObject final : public ObjectRow<IObjectsArray, IEnumArrayObjects, IUnknown> {};

/// The same over objects that scripts can use, with a search and a removal over its elements.
class ObjectListObject final : public ObjectRow<IObjectList, IEnumListItems, IDispatch> {
public:
    /// Finds the first place of an object from `first` on, so that a host can walk all of them.
    /// \return as Find.
    HRESULT STDMETHODCALLTYPE FindFrom(IDispatch* object, ULONG first,
                                       LONG* index) noexcept override {
        return FindAt(object, first, index);
    }
    /// Removes every place of an object. \return S_FALSE, with 0, if it isn't there.
    HRESULT STDMETHODCALLTYPE RemoveAll(IDispatch* object, ULONG* removed) noexcept override {
        if (!removed) return E_POINTER;
        *removed = 0;
        if (!object) return E_INVALIDARG;
        LONG index = 0;
        while ((index = IndexOf(object, static_cast<ULONG>(index))) >= 0) {
            const HRESULT result = row_.RemoveRange(static_cast<ULONG>(index), 1);
            if (FAILED(result)) return result;
            ++*removed;
        }
        return *removed > 0 ? S_OK : S_FALSE;
    }
};

}  // namespace AUX
