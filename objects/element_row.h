#pragma once

#include <algorithm>
#include <cstring>

#include "objects/frame.h"

namespace AUX {

/// How elements that are plain numbers are kept.
template <class T>
struct PlainElement {
    using Value = T;  ///< As it is kept and handed in; what goes out is a copy.
    [[nodiscard]] static bool Copy(T from, T& to) noexcept {
        to = from;
        return true;
    }
    static void Free(T) noexcept {}
};

/// Texts: each is a BSTR of the row's own; null comes out as an empty one.
struct TextElement {
    using Value = BSTR;
    [[nodiscard]] static bool Copy(BSTR from, BSTR& to) noexcept {
        to = SysAllocStringLen(from ? from : TEXT(""), SysStringLen(from));
        return to != nullptr;
    }
    static void Free(BSTR text) noexcept { SysFreeString(text); }
};

/// Objects, each with a reference; null is an element too.
template <class Interface>
struct ObjectElement {
    using Value = Interface*;
    [[nodiscard]] static bool Copy(Interface* from, Interface*& to) noexcept {
        to = platform::ComPtr<Interface>(from).Detach();
        return true;
    }
    static void Free(Interface* object) noexcept {
        platform::ComPtr<Interface> last;
        last.Attach(object);
    }
};

/// The elements of an array object: what all array classes do, under their lock count. While that
/// is above 0, what would change the row gives E_FAIL. Elements that go may run foreign code, which
/// finds the row without them and locked.
template <class Element>
class ElementRow : private Element {
public:
    using Value = typename Element::Value;

    explicit ElementRow(Element element = {}) noexcept : Element(element) {}
    ElementRow(const ElementRow&) = delete;
    ElementRow& operator=(const ElementRow&) = delete;
    ~ElementRow() {
        lockCount = 0;
        (void)Clear();
        Free(data);
    }

    [[nodiscard]] ULONG Count() const noexcept { return count; }
    [[nodiscard]] Value At(ULONG index) const noexcept { return data[index]; }
    void Lock() noexcept { ++lockCount; }
    void Unlock() noexcept { --lockCount; }

    [[nodiscard]] HRESULT Get(ULONG index, Value* value) const noexcept {
        if (!value) return E_POINTER;
        *value = {};
        if (index >= count) return E_INVALIDARG;
        return Element::Copy(data[index], *value) ? S_OK : E_OUTOFMEMORY;
    }

    [[nodiscard]] HRESULT Set(ULONG index, Value value) noexcept {
        if (index >= count) return E_INVALIDARG;
        if (lockCount > 0) return E_FAIL;
        Value copy{};
        if (!Element::Copy(value, copy)) return E_OUTOFMEMORY;
        std::swap(copy, data[index]);
        Drop(&copy, 1);
        return S_OK;
    }

    [[nodiscard]] HRESULT Clear() noexcept {
        if (lockCount > 0) return E_FAIL;
        TakeOut(0, count);
        return S_OK;
    }

    /// \return S_FALSE for a count of 0; a count past the end is cut.
    [[nodiscard]] HRESULT RemoveRange(ULONG first, ULONG number) noexcept {
        if (number == 0) return S_FALSE;
        if (first >= count) return E_INVALIDARG;
        if (lockCount > 0) return E_FAIL;
        TakeOut(first, std::min(number, count - first));
        return S_OK;
    }

    /// Inserts `number` elements that `fetch(i, value)` gives one by one, each the row's own then.
    /// A place past the end means the end. If one fails, its result is given and nothing changes.
    template <class Fetch>
    [[nodiscard]] HRESULT InsertEach(ULONG number, ULONG at, Fetch fetch) noexcept {
        if (lockCount > 0) return E_FAIL;
        // They gather behind the end, where nobody sees them before all are there; the lock keeps
        // foreign code that is asked for them from changing the row meanwhile.
        if (!Reserve(number)) return E_OUTOFMEMORY;
        HRESULT result = S_OK;
        ULONG done = 0;
        Lock();
        for (; done < number && SUCCEEDED(result); ++done) {
            Value value{};
            result = fetch(done, value);
            if (FAILED(result)) break;
            data[count + done] = value;
        }
        Unlock();
        if (FAILED(result)) {
            Drop(data + count, done);
            return result;
        }
        at = std::min(at, count);
        std::rotate(data + at, data + count, data + count + number);
        count += number;
        return S_OK;
    }

    /// Inserts copies. \param values  May lie in the row itself only if they are one.
    [[nodiscard]] HRESULT InsertCopies(const Value* values, ULONG number, ULONG at) noexcept {
        return InsertEach(number, at, [&](ULONG i, Value& value) {
            return Element::Copy(values[i], value) ? S_OK : E_OUTOFMEMORY;
        });
    }

    /// Makes `other`, any object with GetCount and GetItem, be copied in.
    template <class Other>
    [[nodiscard]] HRESULT InsertFrom(Other* other, ULONG first, ULONG number, ULONG at) noexcept {
        if (lockCount > 0) return E_FAIL;
        ULONG available = 0;
        if (const HRESULT result = other->GetCount(&available); FAILED(result)) return result;
        if (first >= available) return E_INVALIDARG;
        if (number == 0) return S_FALSE;
        return InsertEach(std::min(number, available - first), at,
                          [&](ULONG i, Value& value) { return other->GetItem(first + i, &value); });
    }

    /// Becomes a copy of `other`; after a failure the row is what it was.
    template <class Other>
    [[nodiscard]] HRESULT Assign(Other* other) noexcept {
        if (lockCount > 0) return E_FAIL;
        const ULONG old = count;
        ULONG available = 0;
        if (const HRESULT result = other->GetCount(&available); FAILED(result)) return result;
        const HRESULT result = available == 0 ? S_OK : InsertFrom(other, 0, available, old);
        if (SUCCEEDED(result)) TakeOut(0, old);
        return result;
    }

private:
    [[nodiscard]] bool Reserve(ULONG number) noexcept {
        if (number <= capacity - count) return true;
        const std::uint64_t wanted = std::uint64_t{count} + number;
        const std::uint64_t grown = std::max(wanted, std::uint64_t{capacity} + capacity / 2);
        const std::uint64_t most = std::min<std::uint64_t>(grown, 0x7FFFFFFF);  // an index is LONG
        if (wanted > most) return false;
        void* const block = Resize(data, static_cast<std::size_t>(most) * sizeof(Value));
        if (!block) return false;
        data = static_cast<Value*>(block);
        capacity = static_cast<ULONG>(most);
        return true;
    }

    // They go to the end, out of sight, before the first of them is freed.
    void TakeOut(ULONG first, ULONG number) noexcept {
        std::rotate(data + first, data + first + number, data + count);
        count -= number;
        Drop(data + count, number);
    }

    void Drop(Value* values, ULONG number) noexcept {
        Lock();
        for (ULONG i = 0; i < number; ++i) Element::Free(values[i]);
        Unlock();
    }

    static void Free(void* block) noexcept { AUX::Free(block); }

    Value* data = nullptr;
    ULONG count = 0;
    ULONG capacity = 0;
    LONG lockCount = 0;
};

}  // namespace AUX
