// What a message costs that nobody wants: on an empty hub, and above the level of its one sink.

#include <benchmark/benchmark.h>

#include "objects/message_hub.h"

namespace {

class Sink final : public platform::ComObject<IMessageSink> {
public:
    HRESULT STDMETHODCALLTYPE OnMessage(ULONG, IMessageEvent*) noexcept override { return S_OK; }
};

void FireTo(benchmark::State& state, LONG sinkLevel) {
    const auto hub = platform::MakeObject<AUX::MessageHub>();
    const auto sink = platform::MakeObject<Sink>();
    if (sinkLevel > 0) (void)hub->Subscribe(sink.Get(), sinkLevel);
    // The first Subscribe keeps the highest level that an empty hub has; this works it out.
    if (sinkLevel > 0) (void)hub->FireSimple(1, nullptr, 0, 0);
    IMessageHub* face = hub.Get();
    benchmark::DoNotOptimize(face);
    for (auto _ : state) {
        benchmark::DoNotOptimize(face->Fire(3, TEXT("text"), 0, 0, 0, nullptr, 0, nullptr));
    }
}

BENCHMARK_CAPTURE(FireTo, nobody, 0);
BENCHMARK_CAPTURE(FireTo, above_the_level, 2);
BENCHMARK_CAPTURE(FireTo, one_sink, 3);

}  // namespace
