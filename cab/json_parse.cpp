#include <algorithm>
#include <atomic>
#include <new>

#include "cab/json_escapes.h"
#include "cab/json_fetch.h"
#include "cab/json_kernels.h"
#include "cab/json_quotes.h"
#include "cab/json_source.h"
#include "cab/json_text.h"

namespace AUX::CAB {

constinit std::atomic<bool> escapedQuoteSeen = false;

namespace {

/// The strip pass: drops white space, turns comments into `#`...`#`, hides the quotes of escapes,
/// and ends where something stands that no text may have there.
class StripPass {
public:
    /// `out` has room for one unit more than the text: a comment without an end gets one.
    StripPass(WStringView text, WCHAR* out) noexcept
        : state_{text.data(), text.data() + text.size(), out, false, false, false} {}

    void Run() noexcept {
        const auto strip = FastestJsonKernels().strip;
        while (state_.in != state_.end) {
            strip(state_);
            // What stopped it lies in the next block.
            const WCHAR* const stop = state_.in + std::min(state_.end - state_.in, kJsonBlock);
            while (state_.in < stop) {
                if (!Step()) return;
            }
        }
    }

    [[nodiscard]] WCHAR* End() const noexcept { return state_.out; }
    [[nodiscard]] bool SawEscapedQuote() const noexcept { return state_.sawEscapedQuote; }
    [[nodiscard]] bool HidesQuotes() const noexcept { return hidesQuotes_; }

private:
    /// Takes one unit, or a whole comment. \return false if the pass ends there.
    bool Step() noexcept {
        const WCHAR unit = *state_.in;
        if (state_.inString) {
            StepInString(unit);
            return true;
        }
        if (unit == '#') return TakeLineComment(1);
        if (unit == '/') {
            const WCHAR next = state_.end - state_.in > 1 ? state_.in[1] : WCHAR{0};
            if (next == '/') return TakeLineComment(2);
            return next == '*' && TakeBlockComment();
        }
        ++state_.in;
        if (unit == ' ' || unit == '\n' || unit == '\r' || unit == '\t') return true;
        if (unit < 0x20 || unit > 0x7E) return false;
        state_.inString = unit == '"';
        *state_.out++ = unit;
        return true;
    }

    void StepInString(WCHAR unit) noexcept {
        ++state_.in;
        if (state_.isEscaped && unit == '"') {
            unit = kHiddenQuote;
            state_.sawEscapedQuote = true;
        } else if (unit == '"') {
            state_.inString = false;
        }
        state_.isEscaped = !state_.isEscaped && unit == '\\';
        *state_.out++ = unit;
    }

    bool TakeLineComment(std::ptrdiff_t markUnits) noexcept {
        const WCHAR* const start = state_.in + markUnits;
        const WCHAR* const end = std::find(start, state_.end, WCHAR{'\n'});
        PutComment(start, end);
        state_.in = end == state_.end ? end : end + 1;
        return true;
    }

    bool TakeBlockComment() noexcept {
        constexpr WCHAR kClose[] = {'*', '/'};
        const WCHAR* const start = state_.in + 2;
        const WCHAR* const end = std::search(start, state_.end, kClose, kClose + 2);
        PutComment(start, end);
        state_.in = end == state_.end ? end : end + 2;
        return true;
    }

    void PutComment(const WCHAR* start, const WCHAR* end) noexcept {
        hidesQuotes_ |= std::find(start, end, WCHAR{'"'}) != end;
        *state_.out++ = '#';
        state_.out = std::copy(start, end, state_.out);
        *state_.out++ = '#';
    }

    JsonStrip state_;
    bool hidesQuotes_ = false;
};

/// The root, by its first and last unit.
JsonNode* MakeRoot(JsonSource& source) {
    WStringView text(source.Text(), source.Length());
    const JsonComment* const comment = TakeComments(source, text);
    const bool isArray = !text.empty() && text.front() == '[' && text.back() == ']';
    const bool isObject = !text.empty() && text.front() == '{' && text.back() == '}';
    if (!isArray && !isObject) {
        JsonNode* const root = NewParsedNode(source, JsonType::Null, {});
        BecomeNull(*root);
        return root;
    }
    JsonNode* const root =
        NewParsedNode(source, isArray ? JsonType::Array : JsonType::Object, text);
    root->comment = comment;
    source.SetRootStart(static_cast<std::uint32_t>(text.data() - source.Text()));
    return root;
}

}  // namespace

JsonHandle ParseJson(WStringView text) {
    if (text.size() >= WString::kMaxLength) throw std::bad_alloc();
    JsonSource* const source = JsonSource::Create(text.size() + 1);
    StripPass pass(text, source->Text());
    pass.Run();
    source->SetLength(static_cast<std::uint32_t>(pass.End() - source->Text()), pass.HidesQuotes());
    if (pass.SawEscapedQuote()) escapedQuoteSeen.store(true, std::memory_order_relaxed);
    try {
        return JsonHandle(MakeRoot(*source));  // The handle takes over the source's count.
    } catch (...) {
        source->Release();
        throw;
    }
}

}  // namespace AUX::CAB
