// The UTF-8 encoder beside simdutf and ICU. Debian has no package of simdutf, but the JavaScript
// engine's library contains it: scripts/fetch_simdutf.sh puts that beside this program. Without it
// ICU is the measure. The other two refuse lone surrogates, which ours writes; the texts have none.

#include <cstdint>
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <unicode/ustring.h>
#include <vector>

#include "bench/ratio_table.h"
#include "foundation/utf8.h"

namespace {

using bench::RatioTable;

using Convert = std::size_t (*)(const char16_t*, std::size_t, char*);
using Measure = std::size_t (*)(const char16_t*, std::size_t);

/// simdutf::convert_utf16_to_utf8 and simdutf::utf8_length_from_utf16.
Convert simdutfConvert = nullptr;
Measure simdutfMeasure = nullptr;

bool LoadSimdutf() {
    void* const module = dlopen("libnode.so.108", RTLD_LAZY | RTLD_LOCAL);
    if (!module) return false;
    simdutfConvert =
        reinterpret_cast<Convert>(dlsym(module, "_ZN7simdutf21convert_utf16_to_utf8EPKDsmPc"));
    simdutfMeasure =
        reinterpret_cast<Measure>(dlsym(module, "_ZN7simdutf22utf8_length_from_utf16EPKDsm"));
    return simdutfConvert && simdutfMeasure;
}

struct Library {
    static constexpr const char* kName = "library";
    static std::size_t Encode(const std::u16string& text, std::vector<char>& out) {
        return AUX::EncodeUtf8(text.data(), std::ssize(text), out.data(), out.size(), false);
    }
    static std::size_t Count(const std::u16string& text) {
        return AUX::EncodeUtf8(text.data(), std::ssize(text), nullptr, 0, false);
    }
};
struct Simdutf {
    static constexpr const char* kName = "simdutf";
    static std::size_t Encode(const std::u16string& text, std::vector<char>& out) {
        return simdutfConvert(text.data(), text.size(), out.data());
    }
    static std::size_t Count(const std::u16string& text) {
        return simdutfMeasure(text.data(), text.size());
    }
};
struct Icu {
    static constexpr const char* kName = "icu";
    static std::size_t Encode(const std::u16string& text, std::vector<char>& out) {
        return Convert(text, out.data(), out.size());
    }
    static std::size_t Count(const std::u16string& text) { return Convert(text, nullptr, 0); }

private:
    static std::size_t Convert(const std::u16string& text, char* out, std::size_t size) {
        UErrorCode error = U_ZERO_ERROR;
        std::int32_t written = 0;
        u_strToUTF8(out, static_cast<std::int32_t>(size), &written, text.data(),
                    static_cast<std::int32_t>(text.size()), &error);
        return static_cast<std::size_t>(written);
    }
};

struct Sort {
    const char* name;
    const char16_t* sentence;
};
constexpr Sort kSorts[] = {
    {"ascii", u"The quick brown fox jumps over it. "},
    {"latin", u"Größere Äpfel überfüllen häufig Körbe. "},
    {"cjk", u"東京都の天気は晴れです。"},
    {"markup", u"<p class=\"weather\">東京都の天気は晴れです。</p>\n"},
};
constexpr const char* kEncode = "encode_";
constexpr const char* kCount = "count_";
constexpr double kAim = 1 / 0.8;

template <class Contender>
void Add(const Sort& sort) {
    std::u16string text;
    while (text.size() < 100'000) text += sort.sentence;
    RatioTable::Add(kEncode + std::string(sort.name), Contender::kName, [text](auto& state) {
        std::vector<char> buffer(text.size() * 3);
        for (auto _ : state) {
            benchmark::DoNotOptimize(Contender::Encode(text, buffer));
            benchmark::ClobberMemory();
        }
    });
    RatioTable::Add(kCount + std::string(sort.name), Contender::kName, [text](auto& state) {
        for (auto _ : state) benchmark::DoNotOptimize(Contender::Count(text));
    });
}

}  // namespace

int main(int count, char** arguments) {
    std::vector<const char*> contenders = {Library::kName, Icu::kName};
    const char* measure = Icu::kName;
    if (LoadSimdutf()) {
        measure = Simdutf::kName;
        contenders.push_back(measure);
    } else {
        std::fputs("No simdutf; scripts/fetch_simdutf.sh fetches it. ICU is the measure.\n",
                   stderr);
    }
    for (const Sort& sort : kSorts) {
        Add<Library>(sort);
        Add<Icu>(sort);
        if (simdutfConvert) Add<Simdutf>(sort);
    }
    RatioTable table;
    if (!table.RunAll(count, arguments)) return 2;
    RatioTable::PrintHead((std::string("time by ") + measure).c_str(), contenders);
    for (const char* work : {kEncode, kCount}) {
        for (const Sort& sort : kSorts) {
            table.PrintRow((work + std::string(sort.name)).c_str(), contenders, measure,
                           work == kEncode ? kAim : 0);
        }
    }
}
