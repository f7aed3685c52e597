#include "cab/base64.h"

#include "cab/base64_kernels.h"
#include "foundation/system_facts.h"
#include "platform/processor.h"

namespace AUX::CAB {
namespace {

std::uint32_t NumberOf(WCHAR unit) noexcept {
    return unit <= 0xFF ? kBase64Numbers.of[unit] : kNotInAlphabet;
}

WCHAR Letter(std::uint32_t bits) noexcept { return static_cast<WCHAR>(kBase64Alphabet[bits & 63]); }

/// Decodes one group. \return false if a unit is not in the alphabet.
bool DecodeGroup(const WCHAR* text, std::uint8_t* out) noexcept {
    const std::uint32_t numbers[] = {NumberOf(text[0]), NumberOf(text[1]), NumberOf(text[2]),
                                     NumberOf(text[3])};
    if ((numbers[0] | numbers[1] | numbers[2] | numbers[3]) == kNotInAlphabet) return false;
    const std::uint32_t group = numbers[0] << 18 | numbers[1] << 12 | numbers[2] << 6 | numbers[3];
    out[0] = static_cast<std::uint8_t>(group >> 16);
    out[1] = static_cast<std::uint8_t>(group >> 8);
    out[2] = static_cast<std::uint8_t>(group);
    return true;
}

// What the fastest form that this processor runs has taken.
std::size_t EncodeFront(const std::uint8_t* bytes, std::size_t size, WCHAR* out) noexcept {
    // Whoever has VBMI2 has VBMI.
    if (platform::HasAvx512Compress()) return EncodeBase64Avx512(bytes, size, out);
    return Facts().hasAvx2 ? EncodeBase64Avx2(bytes, size, out) : 0;
}

std::size_t DecodeFront(const WCHAR* text, std::size_t length, std::uint8_t* out) noexcept {
    std::size_t taken = 0;
    if (platform::HasAvx512Compress()) taken = DecodeBase64Avx512(text, length, out);
    if (!Facts().hasAvx2) return taken;
    return taken + DecodeBase64Avx2(text + taken, length - taken, out + taken / 4 * 3);
}

}  // namespace

void EncodeBase64(const void* data, std::size_t size, WCHAR* out) noexcept {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::size_t at = EncodeFront(bytes, size, out);
    out += at / 3 * 4;
    for (; size - at >= 3; at += 3, out += 4) {
        const auto group =
            static_cast<std::uint32_t>(bytes[at] << 16 | bytes[at + 1] << 8 | bytes[at + 2]);
        out[0] = Letter(group >> 18);
        out[1] = Letter(group >> 12);
        out[2] = Letter(group >> 6);
        out[3] = Letter(group);
    }
    if (at == size) return;
    const bool hasTwo = size - at == 2;
    const auto group =
        static_cast<std::uint32_t>(bytes[at] << 16 | (hasTwo ? bytes[at + 1] << 8 : 0));
    out[0] = Letter(group >> 18);
    out[1] = Letter(group >> 12);
    out[2] = hasTwo ? Letter(group >> 6) : WCHAR{'='};
    out[3] = '=';
}

std::size_t DecodeBase64(WStringView text, std::uint8_t* out) noexcept {
    if (text.empty() || text.size() % 4 != 0) return 0;
    std::uint8_t* const start = out;
    const WCHAR* const units = text.data();
    const std::size_t last = text.size() - 4;
    std::size_t at = DecodeFront(units, last, out);
    out += at / 4 * 3;
    for (; at < last; at += 4, out += 3) {
        if (!DecodeGroup(units + at, out)) return 0;
    }
    const std::size_t padding = units[at + 3] != '=' ? 0 : units[at + 2] != '=' ? 1 : 2;
    WCHAR group[4];
    for (std::size_t i = 0; i < 4; ++i) group[i] = i < 4 - padding ? units[at + i] : WCHAR{'A'};
    std::uint8_t bytes[3];
    if (!DecodeGroup(group, bytes)) return 0;
    for (std::size_t i = 0; i < 3 - padding; ++i) *out++ = bytes[i];
    return static_cast<std::size_t>(out - start);
}

bool Base64Encode(const void* bytes, std::size_t size, WString& text) noexcept {
    if (size > WString::kMaxLength / 4 * 3) return false;
    const std::size_t length = Base64Length(size);
    if (length > WString::kMaxLength) return false;
    WString made;
    if (!made.SetLength(static_cast<std::uint32_t>(length))) return false;
    if (length > 0) EncodeBase64(bytes, size, made.Data());
    text.Swap(made);
    return true;
}

bool Base64Decode(WStringView text, Base64Bytes& bytes) noexcept {
    Base64Bytes made;
    if (!text.empty() && text.size() % 4 == 0) {
        made.data_.reset(static_cast<std::uint8_t*>(Alloc(text.size() / 4 * 3)));
        if (!made.data_) return false;
        made.size_ = DecodeBase64(text, made.data_.get());
        if (made.size_ == 0) made.data_.reset();
    }
    bytes = std::move(made);
    return true;
}

}  // namespace AUX::CAB
