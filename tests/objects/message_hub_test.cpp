#include "objects/message_hub.h"

#include <functional>
#include <thread>
#include <vector>

#include "platform/unique_bstr.h"
#include "tests/support/fail_each_allocation.h"

namespace {

using AUX::MessageHub;
using platform::ComPtr;
using platform::MakeObject;

constexpr HRESULT kAlreadyThere = static_cast<HRESULT>(0x800700B7);

class Sink final : public platform::ComObject<IMessageSink> {
public:
    explicit Sink(std::function<void(ULONG, IMessageEvent*)> act = {}) : act_(std::move(act)) {}

    HRESULT STDMETHODCALLTYPE OnMessage(ULONG level, IMessageEvent* event) noexcept override {
        levels.push_back(level);
        if (act_) act_(level, event);
        return E_FAIL;  // Nobody looks.
    }

    std::vector<ULONG> levels;

private:
    std::function<void(ULONG, IMessageEvent*)> act_;
};

using Levels = std::vector<ULONG>;

class MessageHubTest : public ::testing::Test {
protected:
    void FireLevels(ULONG last) {
        for (ULONG level = 1; level <= last; ++level) {
            EXPECT_EQ(hub_->FireSimple(level, TEXT("text"), 0, 0), S_OK);
        }
    }
    const ComPtr<MessageHub> hub_ = MakeObject<MessageHub>();
};

TEST_F(MessageHubTest, GivesASinkTheLevelsItAskedFor) {
    const auto two = MakeObject<Sink>(), all = MakeObject<Sink>(), none = MakeObject<Sink>();
    EXPECT_EQ(hub_->Fire(1, nullptr, 0, 0, 0, nullptr, 0, nullptr), S_OK);
    EXPECT_EQ(hub_->PoolCount(), 0u) << "a record for nobody";
    EXPECT_EQ(hub_->Subscribe(nullptr, 1), E_INVALIDARG);
    EXPECT_EQ(hub_->Subscribe(two.Get(), 2), S_OK);
    EXPECT_EQ(hub_->Subscribe(two.Get(), 3), kAlreadyThere);
    EXPECT_EQ(hub_->Subscribe(all.Get(), -1), S_OK);
    FireLevels(3);
    EXPECT_EQ(two->levels, (Levels{1, 2}));
    EXPECT_EQ(all->levels, (Levels{1, 2, 3}));
    EXPECT_EQ(hub_->ChangeLevel(two.Get(), 3), S_OK);
    EXPECT_EQ(hub_->ChangeLevel(none.Get(), 3), E_INVALIDARG);
    EXPECT_EQ(hub_->Unsubscribe(all.Get()), S_OK);
    EXPECT_EQ(hub_->Unsubscribe(all.Get()), S_FALSE);
    EXPECT_EQ(hub_->Unsubscribe(nullptr), E_INVALIDARG);
    FireLevels(4);
    EXPECT_EQ(two->levels, (Levels{1, 2, 1, 2, 3}));
    EXPECT_EQ(all->levels, (Levels{1, 2, 3}));
}

TEST_F(MessageHubTest, LetsSinksComeAndGoInsideADelivery) {
    const auto late = MakeObject<Sink>();
    ComPtr<Sink> leaver, after;
    const auto leaves = [&](ULONG, IMessageEvent*) {
        EXPECT_EQ(hub_->Unsubscribe(leaver.Get()), S_OK);
        EXPECT_EQ(hub_->Subscribe(late.Get(), 5), S_OK);
        EXPECT_EQ(hub_->Subscribe(late.Get(), 5), kAlreadyThere);
        EXPECT_EQ(hub_->ChangeLevel(late.Get(), 9), S_OK);
        EXPECT_EQ(hub_->FireSimple(1, nullptr, 0, 0), S_OK);
    };
    leaver = MakeObject<Sink>(leaves);
    after = MakeObject<Sink>();
    ASSERT_EQ(hub_->Subscribe(leaver.Get(), 1), S_OK);
    ASSERT_EQ(hub_->Subscribe(after.Get(), 1), S_OK);
    FireLevels(1);
    EXPECT_EQ(leaver->levels, (Levels{1}));
    EXPECT_EQ(after->levels, (Levels{1, 1}));
    EXPECT_TRUE(late->levels.empty()) << "came during the delivery";
    FireLevels(9);
    EXPECT_EQ(late->levels.size(), 9u);
    EXPECT_EQ(after->levels.size(), 3u);
}

TEST_F(MessageHubTest, TellsAllOfAMessageAndForgetsItsObjects) {
    const auto object = MakeObject<Sink>();
    bool isRead = false;
    const auto reads = [&](ULONG level, IMessageEvent* event) {
        isRead = true;
        ULONG value = 0;
        const struct {
            HRESULT (STDMETHODCALLTYPE IMessageEvent::*get)(ULONG*);
            ULONG expected;
        } kFields[] = {{&IMessageEvent::GetLevel, level},
                       {&IMessageEvent::GetSource, 20},
                       {&IMessageEvent::GetStatus, 30},
                       {&IMessageEvent::GetValue, 40},
                       {&IMessageEvent::GetValue2, 50}};
        for (const auto& field : kFields) {
            EXPECT_EQ((event->*field.get)(&value), S_OK);
            EXPECT_EQ(value, field.expected);
            EXPECT_EQ((event->*field.get)(nullptr), E_POINTER);
        }
        platform::UniqueBstr text;
        EXPECT_EQ(event->GetText(text.Put()), S_OK);
        EXPECT_EQ(AUX::WStringView(text.Get()), AUX::WStringView(TEXT("words")));
        ComPtr<IUnknown> first, second;
        EXPECT_EQ(event->GetObject(first.Put()), S_OK);
        EXPECT_EQ(event->GetObject2(second.Put()), S_OK);
        EXPECT_EQ(first.Get(), object.Get());
        EXPECT_FALSE(second);
    };
    const auto reader = MakeObject<Sink>(reads);
    ASSERT_EQ(hub_->Subscribe(reader.Get(), -1), S_OK);
    EXPECT_EQ(hub_->Fire(7, TEXT("words"), 20, 30, 40, object.Get(), 50, nullptr), S_OK);
    EXPECT_TRUE(isRead);
    object->AddRef();
    EXPECT_EQ(object->Release(), 1u);
}

TEST_F(MessageHubTest, FiresAStatusAtItsLevelWithItsText) {
    ULONG status = 0;
    const auto sink = MakeObject<Sink>([&](ULONG, IMessageEvent* event) {
        platform::UniqueBstr text;
        EXPECT_EQ(event->GetStatus(&status), S_OK);
        EXPECT_EQ(event->GetText(text.Put()), S_OK);
        EXPECT_GT(SysStringLen(text.Get()), 0u);
    });
    ASSERT_EQ(hub_->Subscribe(sink.Get(), -1), S_OK);
    for (const ULONG fired : {0x80070057u, 0x42020001u, 0u, 0xC2020001u}) {
        EXPECT_EQ(hub_->FireStatus(fired, 9), S_OK);
        EXPECT_EQ(status, fired);
    }
    EXPECT_EQ(sink->levels, (Levels{1, 2, 3, 1}));
}

TEST_F(MessageHubTest, StaysAsItWasWhenMemoryRunsOut) {
    test_support::FailEachAllocation([](const auto& hasFailed) {
        const auto hub = MakeObject<MessageHub>();
        if (!hub) return;
        const auto sink = MakeObject<Sink>();
        const HRESULT subscribed = hub->Subscribe(sink.Get(), -1);
        EXPECT_TRUE(subscribed == S_OK || (subscribed == E_OUTOFMEMORY && hasFailed()));
        const HRESULT fired = hub->FireSimple(1, TEXT("text"), 0, 0);
        EXPECT_TRUE(fired == S_OK || hasFailed());
        EXPECT_EQ(sink->levels.size(), SUCCEEDED(subscribed) && SUCCEEDED(fired) ? 1u : 0u);
        EXPECT_EQ(hub->Unsubscribe(sink.Get()), SUCCEEDED(subscribed) ? S_OK : S_FALSE);
    });
}

// Tickets are drawn before each Fire, so that a sink can tell what was fired after it had gone.
constexpr ULONG kThreads = 8, kFires = 4000, kLevels = 4;

class WatchingSink final : public platform::ComObject<IMessageSink> {
public:
    explicit WatchingSink(ULONG level) : level_(level) {}

    HRESULT STDMETHODCALLTYPE OnMessage(ULONG level, IMessageEvent* event) noexcept override {
        ULONG source = 0, number = 0, ticket = 0;
        event->GetSource(&source);
        event->GetValue(&number);
        event->GetValue2(&ticket);
        // A thread fires one by one, so its messages come in order, none twice.
        if (level > level_ || number <= last[source].exchange(number)) ++faults;
        if (ticket >= goneAt) ++faults;
        ++counts[source];
        return S_OK;
    }

    std::atomic<ULONG> faults = 0, goneAt = 0xFFFFFFFF;
    std::atomic<ULONG> last[kThreads] = {}, counts[kThreads] = {};

private:
    const ULONG level_;
};

TEST_F(MessageHubTest, GrantsExactlyWhatItsRulesSayUnderEightThreads) {
    std::vector<ComPtr<WatchingSink>> steady;
    for (ULONG level = 1; level <= kLevels; ++level) {
        steady.push_back(MakeObject<WatchingSink>(level));
        ASSERT_EQ(hub_->Subscribe(steady.back().Get(), static_cast<LONG>(level)), S_OK);
    }
    std::atomic<ULONG> tickets = 1;
    std::atomic<ULONG> faults = 0;
    std::atomic<int> firing = kThreads;
    const auto guestSink = MakeObject<WatchingSink>(kLevels);
    // Subscribes the guest from inside a delivery and takes it out from inside the next one.
    class HostSink final : public platform::ComObject<IMessageSink> {
    public:
        HostSink(MessageHub& hub, IMessageSink& guest) : hub_(hub), guest_(guest) {}
        HRESULT STDMETHODCALLTYPE OnMessage(ULONG, IMessageEvent*) noexcept override {
            if (calls_.fetch_add(1) % 2 == 0) {
                hub_.Subscribe(&guest_, -1);
            } else {
                hub_.Unsubscribe(&guest_);
            }
            return S_OK;
        }

    private:
        MessageHub& hub_;
        IMessageSink& guest_;
        std::atomic<ULONG> calls_ = 0;
    };
    const auto inviter = MakeObject<HostSink>(*hub_, *guestSink);
    ASSERT_EQ(hub_->Subscribe(inviter.Get(), 1), S_OK);

    std::vector<std::thread> threads;
    for (ULONG source = 0; source < kThreads; ++source) {
        threads.emplace_back([&, source] {
            for (ULONG number = 1; number <= kFires; ++number) {
                const ULONG level = number % kLevels + 1;
                if (hub_->Fire(level, TEXT("message"), source, 0, number, hub_.Get(),
                               tickets.fetch_add(1), nullptr) != S_OK) {
                    ++faults;
                }
            }
            --firing;
        });
    }
    threads.emplace_back([&] {
        do {
            const auto passing = MakeObject<WatchingSink>(kLevels);
            if (hub_->Subscribe(passing.Get(), 1) != S_OK) ++faults;
            if (hub_->ChangeLevel(passing.Get(), static_cast<LONG>(kLevels)) != S_OK) ++faults;
            std::this_thread::yield();
            if (hub_->Unsubscribe(passing.Get()) != S_OK) ++faults;
            passing->goneAt = tickets.load();
            std::this_thread::yield();
            faults += passing->faults;
        } while (firing > 0);
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(faults, 0u);
    for (ULONG level = 1; level <= kLevels; ++level) {
        EXPECT_EQ(steady[level - 1]->faults, 0u) << level;
        for (const auto& count : steady[level - 1]->counts) {
            EXPECT_EQ(count, kFires / kLevels * level) << level;
        }
    }
    guestSink->AddRef();
    hub_->Unsubscribe(guestSink.Get());
    EXPECT_EQ(guestSink->Release(), 1u) << "kept by a removed entry";
}

}  // namespace
