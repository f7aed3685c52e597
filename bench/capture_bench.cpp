// The rewriters beside a copy of the same text and beside scans of compiled patterns for the same
// tags, which find the places but change nothing. All write to memory that the system has given out
// before, as the copy does.

#define PCRE2_CODE_UNIT_WIDTH 16
#include <benchmark/benchmark.h>
#include <cstring>
#include <pcre2.h>
#include <random>
#include <string>
#include <vector>

#include "capture/markup_rewriter.h"

namespace {

constexpr AUX::WStringView kBase = u"https://www.example.org/news/2020/";

class Resolver final : public MarkupUrlResolver, public StyleUrlResolver {
public:
    bool ResolveImage(AUX::WStringView url, AUX::WString& output) noexcept override {
        return Join(url, output);
    }
    bool ResolveLink(AUX::WStringView href, AUX::WStringView,
                     AUX::WString& output) noexcept override {
        return Join(href, output);
    }
    bool ResolveAnchor(AUX::WStringView url, AUX::WString& output) noexcept override {
        return Join(url, output);
    }
    bool ResolveStyleUrl(AUX::WStringView, AUX::WStringView url,
                         AUX::WString& output) noexcept override {
        return Join(url, output);
    }

private:
    static bool Join(AUX::WStringView url, AUX::WString& output) noexcept {
        output.Clear();
        return output.Append(kBase) && output.Append(url);
    }
};

std::u16string Number(std::size_t value) {
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

std::u16string Words(std::mt19937& random, std::size_t units) {
    static const char16_t* const kWords[] = {u"the ",    u"style ",  u"of ",    u"early ",
                                             u"a ",      u"report ", u"which ", u"several ",
                                             u"people ", u"said "};
    std::u16string text;
    while (text.size() < units) text += kWords[random() % 10];
    return text;
}

// One teaser of a news page. Counted in characters of the whole page, it has what pages have: two
// fifths scripts, a twentieth embedded style, a start tag for each 200, a link for 1200, a comment
// for 2500, an image or a style attribute for 4000.
std::u16string Teaser(std::mt19937& random, std::size_t n) {
    const std::u16string number = Number(n);
    std::u16string text = u"<div class=\"teaser teaser--wide grid__item\" id=\"teaser-" + number +
                          u"\" data-track=\"{&quot;pos&quot;:" + Number(n % 40) + u"}\">\n";
    for (int part = 0; part < 2; ++part) {
        text += u"  <div class=\"teaser__part col-md-6\" role=\"presentation\">";
        text +=
            u"<span class=\"label label--small label--muted\">" + Words(random, 20) + u"</span>";
        text += u"<p class=\"teaser__text\">" + Words(random, 150 + random() % 200) + u"</p>";
        text += u"<ul class=\"meta\"><li class=\"meta__item\">" + Words(random, 40) + u"</li></ul>";
        text += u"<a class=\"teaser__link\" href=\"article-" + Number(random() % 100000) +
                u".html?ref=home&amp;pos=" + number + u"\">" + Words(random, 40) + u"</a></div>\n";
    }
    if (n % 2) {
        text += u"<img alt=\"\" width=\"320\" src=\"images/picture-" + number + u".jpg\">";
    } else {
        text += u"<div class=\"bar\" style=\"background:url(img/bar.png);width:40%\"></div>";
    }
    text += u"<!-- end of teaser -->\n</div>\n";
    if (n % 6) return text;
    text += u"<script>";
    while (text.size() < 8000) {
        text += u"window.dataLayer=window.dataLayer||[];if(a<b){push({\"event\":\"view\",\"x\":" +
                Number(random() % 1000) + u"});}\n";
    }
    text += u"</script>\n<style>";
    for (int rule = 0; rule < 10; ++rule) {
        text += u".teaser-" + number + u" .c" + Number(random() % 1000) +
                u"{margin:0 auto;padding:4px 8px;color:#333;font:bold 12px/1.2 sans-serif}\n";
    }
    return text + u".x{background:url(sprite.png)}</style>\n";
}

std::u16string Grow(std::size_t bytes, std::u16string (*piece)(std::mt19937&, std::size_t)) {
    std::mt19937 random(4);
    std::u16string text;
    for (std::size_t n = 0; text.size() * 2 < bytes; ++n) text += piece(random, n);
    text.resize(bytes / 2);
    return text;
}

// One entry of an index: a link for 130 characters.
std::u16string Link(std::mt19937& random, std::size_t n) {
    const std::u16string number = Number(random() % 100000);
    return u"<li class=\"index__entry\"><a href=\"articles/" + number +
           u".html\" title=\"Article " + number + u"\">Article " + number + u"</a> " +
           Words(random, 20 + n % 30) + u"</li>\n";
}

std::u16string Rules(std::mt19937& random, std::size_t n) {
    std::u16string text;
    for (int rule = 0; rule < 10; ++rule) {
        text += u".block-" + Number(n) + u" .item__" + Number(random() % 1000) +
                u" > a:hover {\n  margin: 0 auto;\n  padding: 4px 8px;\n  color: #333;\n}\n";
    }
    return text + u".icon-" + Number(n) + u" { background: url(../img/icon-" + Number(n) +
           u".svg) }\n";
}

enum Kind { kMixed, kLinks, kSheet };

const std::u16string& TextOf(const benchmark::State& state) {
    static std::vector<std::pair<std::pair<int64_t, int64_t>, std::u16string>> made;
    const std::pair<int64_t, int64_t> key(state.range(0), state.range(1));
    for (const auto& [k, text] : made) {
        if (k == key) return text;
    }
    const std::size_t bytes = static_cast<std::size_t>(key.second) << 20;
    return made
        .emplace_back(key, Grow(bytes, key.first == kMixed   ? Teaser
                                       : key.first == kLinks ? Link
                                                             : Rules))
        .second;
}

void CountText(benchmark::State& state, const std::u16string& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size() * 2));
}

void Copy(benchmark::State& state) {
    const std::u16string& text = TextOf(state);
    std::u16string to(text.size(), u' ');
    for (auto _ : state) {
        std::memcpy(to.data(), text.data(), text.size() * 2);
        benchmark::ClobberMemory();
    }
    CountText(state, text);
}

void Scan(benchmark::State& state, const char16_t* pattern) {
    const std::u16string& text = TextOf(state);
    int error = 0;
    PCRE2_SIZE place = 0;
    pcre2_code* const code =
        pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern), PCRE2_ZERO_TERMINATED,
                      PCRE2_CASELESS | PCRE2_DOTALL, &error, &place, nullptr);
    if (!code || pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) != 0) {
        state.SkipWithError("no JIT");
        return;
    }
    pcre2_match_data* const match = pcre2_match_data_create_from_pattern(code, nullptr);
    const PCRE2_SPTR subject = reinterpret_cast<PCRE2_SPTR>(text.data());
    int64_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (PCRE2_SIZE at = 0;
             pcre2_jit_match(code, subject, text.size(), at, 0, match, nullptr) > 0; ++found) {
            at = pcre2_get_ovector_pointer(match)[1];
        }
    }
    pcre2_match_data_free(match);
    pcre2_code_free(code);
    state.counters["found"] = static_cast<double>(found);
    CountText(state, text);
}

// Finds where the work is: the beginnings of the tags, in a sheet those of the addresses.
void ScanNames(benchmark::State& state) {
    Scan(state,
         state.range(0) == kSheet ? u"url\\(" : u"<(?:!--|script|style|img |link |a |[^>]*style=)");
}

// Finds all that must be read: comments, scripts and tags whole, in a sheet the addresses whole.
void ScanPlaces(benchmark::State& state) {
    Scan(state, state.range(0) == kSheet
                    ? u"url\\(\\s*(?:\"[^\"]*\"|'[^']*'|[^)]*)\\s*\\)"
                    : u"<(?:!--.*?-->|script.*?</script>|style[^>]*>.*?</style>|"
                      u"(?:img|link|a) [^>]*>|[^>]*style=(?:\"[^\"]*\"|'[^']*'))");
}

void Rewrite(benchmark::State& state) {
    const std::u16string& text = TextOf(state);
    Resolver resolver;
    std::uint32_t length = 0;
    StyleRewriter style;
    MarkupRewriter markup;
    for (auto _ : state) {
        if (state.range(0) == kSheet) {
            StyleRewriter& rewriter = style;
            benchmark::DoNotOptimize(rewriter.Rewrite(kBase, std::u16string_view(text), resolver));
            length = rewriter.Splicer.Output.Length();
        } else {
            MarkupRewriter& rewriter = markup;
            benchmark::DoNotOptimize(
                rewriter.Rewrite(kBase, std::u16string_view(text), resolver, resolver));
            length = rewriter.Splicer.Output.Length();
        }
    }
    state.counters["length"] = length / static_cast<double>(text.size());
    CountText(state, text);
}

// Arguments: kind of text (0 mixed page, 1 page of links, 2 style sheet), megabytes of UTF-16.
#define CAPTURE_TEXTS Args({kMixed, 1})->Args({kMixed, 20})->Args({kLinks, 1})->Args({kSheet, 1})
BENCHMARK(Copy)->CAPTURE_TEXTS;
BENCHMARK(ScanNames)->CAPTURE_TEXTS;
BENCHMARK(ScanPlaces)->CAPTURE_TEXTS;
BENCHMARK(Rewrite)->CAPTURE_TEXTS;

}  // namespace
