#include "cab/json_quotes.h"
#include "cab/json_text.h"
#include "fuzz/units.h"
#include "tests/cab/json_reference.h"

namespace {

using namespace AUX::CAB;
using json_reference::Text;

Text Write(JsonNode& node, std::int32_t indent) {
    AUX::WString out;
    WriteJson(node, indent, JsonPlace::InArray, out);
    return Text(AUX::WStringView(out));
}

}  // namespace

/// Any text is read as the slow way reads it, and can be written in both forms, read or not. What
/// is written compactly and read once more is then written the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kMostUnits = 4000;  // The slow way goes down by recursion.
    const std::vector<WCHAR> units = fuzz::MakeUnits(data, size);
    if (units.size() > kMostUnits) return 0;
    const AUX::WStringView text = fuzz::View(units);
    (void)Write(*ParseJson(text), kJsonCompact);
    (void)Write(*ParseJson(text), 0);
    const JsonHandle root = ParseJson(text);
    fuzz::Require(json_reference::Show(*root) == json_reference::Expected(Text(text)));
    const JsonHandle copy = CloneNode(*root);
    const Text written = Write(*root, kJsonCompact);
    fuzz::Require(Write(*copy, kJsonCompact) == written);
    (void)Write(*root, 3);
    // Written unread, it may be a quote that was escaped.
    if (written.find(kHiddenQuote) != Text::npos) return 0;
    const Text stripped = Write(*ParseJson(AUX::WStringView(written)), kJsonCompact);
    // The end of a line that a stripped comment had is gone: read again it would go on.
    if (stripped.find(WCHAR{'#'}) != Text::npos) return 0;
    fuzz::Require(Write(*ParseJson(AUX::WStringView(stripped)), kJsonCompact) == stripped);
    return 0;
}
