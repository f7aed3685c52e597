#pragma once

#include <atomic>

#include "foundation/array.h"
#include "objects/message_event.h"
#include "platform/sync.h"

namespace AUX {

/// A channel of messages with levels, from many to many. Any thread may call any operation, also
/// from inside OnMessage; the lock is never held while foreign code runs. The lower the level, the
/// graver the message: a sink of level n gets the messages of the levels up to n, and one of a
/// negative level gets all.
///
/// A sink that comes during a delivery, on any thread, gets its first message in the first Fire
/// that starts when no delivery is under way any more. One that goes gets none after it is marked,
/// but may still be inside the call of another thread. A message fired in the moment when a sink
/// comes may pass it by.
class MessageHub final : public PlainObject<IMessageHub> {
public:
    MessageHub() noexcept;

    /// \return whether the hub has its lock; without it no other operation may be called.
    [[nodiscard]] bool HasLock() const noexcept { return hasLock_; }

    /// The records that it keeps for use again.
    [[nodiscard]] ULONG PoolCount() noexcept;
    /// Whether others than its one owner hold it, or one of its records.
    [[nodiscard]] bool IsHeld() noexcept;

    /// \return E_INVALIDARG for a null sink; HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS).
    HRESULT STDMETHODCALLTYPE Subscribe(IMessageSink* sink, LONG level) noexcept override;
    /// \return S_FALSE if it was not subscribed; E_INVALIDARG for null.
    HRESULT STDMETHODCALLTYPE Unsubscribe(IMessageSink* sink) noexcept override;
    /// \return E_INVALIDARG for a null or unknown sink.
    HRESULT STDMETHODCALLTYPE ChangeLevel(IMessageSink* sink, LONG level) noexcept override;

    /// Calls every sink of that level, in the order of subscription, on this thread. What the sinks
    /// answer is passed over. A text that finds no memory is left empty.
    HRESULT STDMETHODCALLTYPE Fire(ULONG level, LPCWSTR text, ULONG source, ULONG status,
                                   ULONG value, IUnknown* object, ULONG value2,
                                   IUnknown* object2) noexcept override;
    HRESULT STDMETHODCALLTYPE FireSimple(ULONG level, LPCWSTR text, ULONG source,
                                         ULONG status) noexcept override;
    /// Fires what StatusToText says of a status, at level 1 for an error, 2 for a warning, 3 else.
    /// \return S_FALSE, with nothing fired, for a status without a text.
    HRESULT STDMETHODCALLTYPE FireStatus(ULONG status, ULONG source) noexcept override;

private:
    /// The sink and its level; apart from the entry, since the level may change while it is read.
    struct Subscription;
    struct Entry;
    class LockScope;

    ~MessageHub() override;
    [[nodiscard]] static Entry* FindIn(const Array<Entry*>& list, IMessageSink* sink,
                                       std::uint32_t& index) noexcept;
    static void Drop(Entry* first) noexcept;
    void WorkOutMaxLevel() noexcept;
    void SetGate() noexcept;
    [[nodiscard]] bool IsWanted(ULONG level) const noexcept {
        return level < gate_.load(std::memory_order_relaxed);
    }
    [[nodiscard]] HRESULT FireWanted(ULONG level, LPCWSTR text, ULONG source, ULONG status,
                                     ULONG value, IUnknown* object, ULONG value2,
                                     IUnknown* object2) noexcept;
    [[nodiscard]] MessageEvent* TakeRecord() noexcept;
    void Deliver(ULONG level, MessageEvent& record) noexcept;
    [[nodiscard]] Entry* Merge() noexcept;

    CRITICAL_SECTION lock;
    bool hasLock_ = false;
    // What Fire tests first, without the lock: one above the highest level that anybody gets, 0
    // when nobody is there. It follows from the fields below.
    std::atomic<std::uint64_t> gate_ = 0;
    std::uint32_t maxLevel = 0xFFFFFFFF;
    std::uint32_t liveCount = 0;
    Array<MessageEvent*> pool;
    // Changes only while firingDepth is 0, so that a delivery walks it without the lock.
    Array<Entry*> active;
    Array<Entry*> pending;
    std::uint32_t firingDepth = 0;
    std::uint32_t needsPurge = 0;
};

}  // namespace AUX
