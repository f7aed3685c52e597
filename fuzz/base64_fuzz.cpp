#include "cab/base64.h"
#include "fuzz/units.h"

/// Any text is bytes or nothing; the text of those bytes, and of the input's own, is read back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace AUX::CAB;
    const std::vector<WCHAR> units = fuzz::MakeUnits(data, size);
    Base64Bytes bytes;
    fuzz::Require(Base64Decode(fuzz::View(units), bytes));
    AUX::WString text;
    Base64Bytes again;
    const auto check = [&](const std::uint8_t* first, std::size_t count) {
        fuzz::Require(Base64Encode(first, count, text) && Base64Decode(text, again));
        fuzz::Require(again.Size() == count && std::equal(first, first + count, again.Data()));
    };
    check(bytes.Data(), bytes.Size());
    check(data, size);
    return 0;
}
