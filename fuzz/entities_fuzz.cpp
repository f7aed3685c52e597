#include <algorithm>

#include "capture/entities.h"
#include "fuzz/rewriter_fuzz.h"

namespace {

using namespace rewriter_fuzz;

// The text without what has no encoded form.
std::vector<WCHAR> WithoutUnencodable(const std::vector<WCHAR>& text) {
    std::vector<WCHAR> kept;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::uint32_t unit = text[at];
        const bool isPair =
            unit - 0xD800u < 0x400 && at + 1 < text.size() && text[at + 1] - 0xDC00u < 0x400;
        if (isPair) {
            kept.insert(kept.end(), {text[at], text[at + 1]});
            ++at;
        } else if (unit >= 32 ? unit < 0xFFFE && unit - 0xD800u >= 0x800
                              : unit == 9 || unit == 10 || unit == 13) {
            kept.push_back(text[at]);
        }
    }
    return kept;
}

}  // namespace

/// Encoded text is printable ASCII that decodes to the text, but for what has no encoded form; a
/// text without references stays as it is when it is decoded, and none becomes longer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<WCHAR> text = MakeText(data, size);
    const std::int64_t length = static_cast<std::int64_t>(text.size());
    AUX::WString encoded;
    AUX::WString decoded;
    Require(EncodeEntities(text.data(), length, encoded));
    const AUX::WStringView code = encoded;
    Require(std::all_of(code.begin(), code.end(), [](WCHAR unit) {
        return unit >= 32 && unit < 128 && unit != '<' && unit != '>' && unit != '"' &&
               unit != '\'';
    }));
    Require(DecodeEntities(encoded.Text(), encoded.Length(), decoded));
    Require(decoded == View(WithoutUnencodable(text)));

    Require(DecodeEntities(text.data(), length, decoded));
    Require(decoded.Length() <= text.size());
    if (std::find(text.begin(), text.end(), WCHAR{'&'}) == text.end()) {
        Require(decoded == View(text));
    }
    return 0;
}
