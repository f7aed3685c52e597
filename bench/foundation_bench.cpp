// The containers of the library beside those of the standard library.

#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include "foundation/array.h"
#include "foundation/wstring.h"

namespace {

constexpr int kPieces = 1000;

std::u16string PieceOf(const benchmark::State& state) {
    return std::u16string(static_cast<std::size_t>(state.range(0)), u'x');
}

void AppendToWString(benchmark::State& state) {
    const std::u16string piece = PieceOf(state);
    for (auto _ : state) {
        AUX::WString text;
        for (int i = 0; i < kPieces; ++i)
            benchmark::DoNotOptimize(text.Append(AUX::WStringView(piece)));
        benchmark::DoNotOptimize(text.Text());
    }
    state.SetItemsProcessed(state.iterations() * kPieces);
}
void AppendToStdString(benchmark::State& state) {
    const std::u16string piece = PieceOf(state);
    for (auto _ : state) {
        std::u16string text;
        for (int i = 0; i < kPieces; ++i) benchmark::DoNotOptimize(&text.append(piece));
        benchmark::DoNotOptimize(text.c_str());
    }
    state.SetItemsProcessed(state.iterations() * kPieces);
}
BENCHMARK(AppendToWString)->Arg(1)->Arg(8)->Arg(100);
BENCHMARK(AppendToStdString)->Arg(1)->Arg(8)->Arg(100);

void AddToArray(benchmark::State& state) {
    for (auto _ : state) {
        AUX::Array<int> array;
        for (int i = 0; i < static_cast<int>(state.range(0)); ++i)
            benchmark::DoNotOptimize(array.Add(i));
        benchmark::DoNotOptimize(array.Data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
void AddToVector(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<int> vector;
        for (int i = 0; i < static_cast<int>(state.range(0)); ++i) vector.push_back(i);
        benchmark::DoNotOptimize(vector.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(AddToArray)->Arg(10)->Arg(10000);
BENCHMARK(AddToVector)->Arg(10)->Arg(10000);

}  // namespace
