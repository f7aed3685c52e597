#include "objects/message_hub.h"

#include <algorithm>
#include <memory>

#include "foundation/status_text.h"

namespace AUX {

namespace {

constexpr DWORD kSpinCount = 4000;
constexpr std::uint32_t kAllLevels = 0xFFFFFFFF;
constexpr HRESULT kAlreadyThere = static_cast<HRESULT>(0x800700B7);

constexpr std::uint32_t LevelOf(LONG level) noexcept {
    return level < 0 ? kAllLevels : static_cast<std::uint32_t>(level);
}

}  // namespace

struct MessageHub::Subscription : Allocated {
    Subscription(IMessageSink* theSink, std::uint32_t theLevel) noexcept
        : sink(theSink), level(theLevel) {}

    const platform::ComPtr<IMessageSink> sink;
    std::atomic<std::uint32_t> level;
};

struct MessageHub::Entry : Allocated {
    explicit Entry(IMessageSink* sink, std::uint32_t level) noexcept : subscription(sink, level) {}

    Subscription subscription;
    std::atomic<std::uint32_t> refCount = 1;
    std::atomic<bool> removed = false;
    Entry* next = nullptr;  // of those that go, once they are in no list
};

class MessageHub::LockScope {
public:
    explicit LockScope(CRITICAL_SECTION& section) noexcept : section_(section) {
        EnterCriticalSection(&section_);
    }
    ~LockScope() { LeaveCriticalSection(&section_); }
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;

private:
    CRITICAL_SECTION& section_;
};

MessageHub::MessageHub() noexcept
    : hasLock_(InitializeCriticalSectionAndSpinCount(&lock, kSpinCount) != FALSE) {}

MessageHub::~MessageHub() {
    for (const Array<Entry*>* list : {&active, &pending}) {
        for (Entry* entry : *list) Drop(entry);
    }
    for (MessageEvent* record : pool) record->Release();
    if (hasLock_) DeleteCriticalSection(&lock);
}

ULONG MessageHub::PoolCount() noexcept {
    const LockScope scope(lock);
    return pool.Count();
}

bool MessageHub::IsHeld() noexcept {
    if (IsHeldBeside(*this, 1)) return true;
    const LockScope scope(lock);
    for (MessageEvent* record : pool) {
        if (IsHeldBeside(*record, 1)) return true;
    }
    return false;
}

// Releases a chain of entries; never under the lock, since sinks may end here.
void MessageHub::Drop(Entry* first) noexcept {
    while (first) {
        Entry* const next = first->next;
        if (first->refCount.fetch_sub(1) == 1) delete first;
        first = next;
    }
}

// From the last to the first, as a sink that came again stands behind its removed entry.
MessageHub::Entry* MessageHub::FindIn(const Array<Entry*>& list, IMessageSink* sink,
                                      std::uint32_t& index) noexcept {
    for (index = list.Count(); index-- > 0;) {
        Entry* const entry = list[index];
        if (!entry->removed && entry->subscription.sink.Get() == sink) return entry;
    }
    return nullptr;
}

void MessageHub::WorkOutMaxLevel() noexcept {
    std::uint32_t largest = 0;
    for (const Entry* entry : active) {
        const std::uint32_t level = entry->subscription.level;
        if (!entry->removed && level > largest) largest = level;
        if (largest == kAllLevels) break;
    }
    maxLevel = largest;
}

// Under the lock, at the end of each change.
void MessageHub::SetGate() noexcept {
    const bool isEmpty = liveCount == 0 && pending.IsEmpty();
    gate_.store(isEmpty ? 0 : std::uint64_t{maxLevel} + 1, std::memory_order_relaxed);
}

HRESULT MessageHub::Subscribe(IMessageSink* sink, LONG level) noexcept {
    if (!sink) return E_INVALIDARG;
    const std::uint32_t wanted = LevelOf(level);
    std::unique_ptr<Entry> entry(new (std::nothrow) Entry(sink, wanted));
    if (!entry) return E_OUTOFMEMORY;
    const LockScope scope(lock);
    std::uint32_t index = 0;
    if (FindIn(active, sink, index)) return kAlreadyThere;
    const bool isDelivering = firingDepth > 0;
    if (isDelivering && FindIn(pending, sink, index)) return kAlreadyThere;
    if (!(isDelivering ? pending : active).Add(entry.get())) return E_OUTOFMEMORY;
    (void)entry.release();  // The list owns it.
    if (!isDelivering) ++liveCount;
    maxLevel = std::max(maxLevel, wanted);
    SetGate();
    return S_OK;
}

HRESULT MessageHub::Unsubscribe(IMessageSink* sink) noexcept {
    if (!sink) return E_INVALIDARG;
    Entry* gone = nullptr;
    {
        const LockScope scope(lock);
        std::uint32_t index = 0;
        Entry* entry = FindIn(active, sink, index);
        if (entry) {
            --liveCount;
            if (firingDepth > 0) {
                needsPurge = 1;
            } else {
                active.RemoveAt(index);
                gone = entry;
            }
        } else {
            entry = FindIn(pending, sink, index);
            if (!entry) return S_FALSE;
            pending.RemoveAt(index);
            gone = entry;
        }
        entry->removed = true;
        WorkOutMaxLevel();
        SetGate();
    }
    Drop(gone);
    return S_OK;
}

HRESULT MessageHub::ChangeLevel(IMessageSink* sink, LONG level) noexcept {
    if (!sink) return E_INVALIDARG;
    const LockScope scope(lock);
    std::uint32_t index = 0;
    Entry* entry = FindIn(active, sink, index);
    if (!entry) entry = FindIn(pending, sink, index);
    if (!entry) return E_INVALIDARG;
    if (entry->subscription.level.exchange(LevelOf(level)) == LevelOf(level)) return S_OK;
    WorkOutMaxLevel();
    SetGate();
    return S_OK;
}

// Under the lock. The caller's reference comes with it.
MessageEvent* MessageHub::TakeRecord() noexcept {
    for (MessageEvent* record : pool) {
        if (record->busy) continue;
        record->busy = true;
        record->AddRef();
        return record;
    }
    platform::ComPtr<MessageEvent> record = platform::MakeObject<MessageEvent>();
    if (!record || !pool.Add(record.Get())) return nullptr;
    record->AddRef();  // the pool's
    record->busy = true;
    return record.Detach();
}

void MessageHub::Deliver(ULONG level, MessageEvent& record) noexcept {
    const std::uint32_t count = active.Count();
    for (std::uint32_t i = 0; i < count; ++i) {
        const Entry* const entry = active[i];
        if (entry->removed || entry->subscription.level < level) continue;
        (void)entry->subscription.sink->OnMessage(level, &record);  // Its result says nothing.
    }
}

// Under the lock, when the last delivery has ended. Gives the entries that go.
MessageHub::Entry* MessageHub::Merge() noexcept {
    Entry* gone = nullptr;
    const auto pass = [&gone](Entry* entry) {
        entry->next = gone;
        gone = entry;
    };
    if (needsPurge) {
        needsPurge = 0;
        for (std::uint32_t i = active.Count(); i-- > 0;) {
            if (!active[i]->removed) continue;
            pass(active[i]);
            active.RemoveAt(i);
        }
    }
    const bool hasRoom = active.Grow(pending.Count());
    for (Entry* entry : pending) {
        if (!hasRoom || !active.Add(entry)) pass(entry);
    }
    pending.Clear();
    liveCount = active.Count();
    return gone;
}

HRESULT MessageHub::Fire(ULONG level, LPCWSTR text, ULONG source, ULONG status, ULONG value,
                         IUnknown* object, ULONG value2, IUnknown* object2) noexcept {
    if (!IsWanted(level)) return S_OK;
    return FireWanted(level, text, source, status, value, object, value2, object2);
}

// Apart, so that a message that nobody wants saves no register.
HRESULT MessageHub::FireWanted(ULONG level, LPCWSTR text, ULONG source, ULONG status, ULONG value,
                               IUnknown* object, ULONG value2, IUnknown* object2) noexcept {
    platform::ComPtr<MessageEvent> record;
    {
        const LockScope scope(lock);
        record.Attach(TakeRecord());
        if (!record) return E_OUTOFMEMORY;
        ++firingDepth;
    }
    record->level = level;
    record->source = source;
    record->status = status;
    record->value = value;
    record->value2 = value2;
    record->text.Clear();
    (void)record->text.Append(text);  // The message goes out without it rather than not at all.
    record->object = platform::ComPtr<IUnknown>(object);
    record->object2 = platform::ComPtr<IUnknown>(object2);
    Deliver(level, *record);
    Entry* gone = nullptr;
    platform::ComPtr<IUnknown> first, second;
    {
        const LockScope scope(lock);
        if (--firingDepth == 0) {
            gone = Merge();
            WorkOutMaxLevel();
            SetGate();
        }
        record->busy = false;
        first = std::move(record->object);
        second = std::move(record->object2);
    }
    Drop(gone);
    return S_OK;
}

HRESULT MessageHub::FireSimple(ULONG level, LPCWSTR text, ULONG source, ULONG status) noexcept {
    if (!IsWanted(level)) return S_OK;
    return FireWanted(level, text, source, status, 0, nullptr, 0, nullptr);
}

HRESULT MessageHub::FireStatus(ULONG status, ULONG source) noexcept {
    WString text;
    StatusToText(static_cast<Status>(status), text, true);
    if (text.IsEmpty()) return S_FALSE;
    const ULONG level = static_cast<Status>(status) < 0 ? 1 : status >> 30 == 1 ? 2 : 3;
    return FireSimple(level, text.Text(), source, status);
}

}  // namespace AUX
