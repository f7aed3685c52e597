// The containers and the encoder of the library beside what the standard library and ICU offer.

#include <benchmark/benchmark.h>
#include <string>
#include <unicode/ustring.h>
#include <vector>

#include "foundation/array.h"
#include "foundation/utf8.h"
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

enum TextKind { kAscii, kLatin, kCjk };

std::u16string TextOf(TextKind kind) {
    constexpr std::size_t kUnits = 100000;
    std::u16string text;
    const std::u16string sentence = kind == kAscii ? u"The quick brown fox jumps over it. "
                                    : kind == kLatin ? u"Größere Äpfel überfüllen häufig Körbe. "
                                                     : u"東京都の天気は晴れです。";
    while (text.size() < kUnits) text += sentence;
    return text;
}

void EncodeOwn(benchmark::State& state) {
    const std::u16string text = TextOf(static_cast<TextKind>(state.range(0)));
    std::vector<char> buffer(text.size() * 3);
    const std::int64_t length = static_cast<std::int64_t>(text.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            AUX::EncodeUtf8(text.data(), length, buffer.data(), buffer.size(), false));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * length * 2);
}
void EncodeIcu(benchmark::State& state) {
    const std::u16string text = TextOf(static_cast<TextKind>(state.range(0)));
    std::vector<char> buffer(text.size() * 3);
    const std::int32_t length = static_cast<std::int32_t>(text.size());
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t written = 0;
        u_strToUTF8(buffer.data(), static_cast<std::int32_t>(buffer.size()), &written, text.data(),
                    length, &error);
        benchmark::DoNotOptimize(written);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * length * 2);
}
void CountOwn(benchmark::State& state) {
    const std::u16string text = TextOf(static_cast<TextKind>(state.range(0)));
    const std::int64_t length = static_cast<std::int64_t>(text.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(AUX::EncodeUtf8(text.data(), length, nullptr, 0, false));
    }
    state.SetBytesProcessed(state.iterations() * length * 2);
}
BENCHMARK(EncodeOwn)->ArgName("ascii0_latin1_cjk2")->Arg(kAscii)->Arg(kLatin)->Arg(kCjk);
BENCHMARK(EncodeIcu)->ArgName("ascii0_latin1_cjk2")->Arg(kAscii)->Arg(kLatin)->Arg(kCjk);
BENCHMARK(CountOwn)->ArgName("ascii0_latin1_cjk2")->Arg(kAscii)->Arg(kLatin)->Arg(kCjk);

}  // namespace
