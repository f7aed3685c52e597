// Opening envelopes, as bytes and as texts. The first byte chooses the key and the room; what
// follows is tried as it is, and as the text of an envelope that must open again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "foundation/text_cipher.h"

using namespace AUX;

namespace {

constexpr char kKey[] = "the key that the kept envelopes have";

void Require(bool holds) {
    if (!holds) std::abort();
}

void OpenBytes(TextCipher& cipher, const std::uint8_t* data, std::uint32_t length,
               std::uint32_t room) {
    std::uint32_t size = 0;
    const Status measured = cipher.Decrypt(data, length, nullptr, size);
    std::vector<std::uint8_t> output(room);  // Of the exact size: a byte more shows.
    std::uint32_t written = room;
    const Status status = cipher.Decrypt(data, length, output.data(), written);
    if (status == kStatusOk) {
        Require(measured == kStatusOk && written == size && size <= room);
    } else {
        Require(status == E_INVALIDARG && written == room);
        Require(measured == E_INVALIDARG || size > room || room == 0);
    }
}

void OpenText(TextCipher& cipher, const std::uint8_t* data, std::size_t size, std::uint32_t room) {
    const std::size_t units = size / sizeof(WCHAR);
    const std::unique_ptr<WCHAR[]> text(new WCHAR[units]);
    std::copy_n(data, units * sizeof(WCHAR), reinterpret_cast<std::uint8_t*>(text.get()));
    const std::unique_ptr<WCHAR[]> output(new WCHAR[room]);
    std::uint32_t count = room;
    const Status status = DecryptText(&cipher, WStringView(text.get(), units), output.get(), count);
    Require(status == kStatusOk || status == kStatusDecryptFailure ||
            (status == kStatusInsufficientBuffer && count > room));
    Require(status != kStatusOk || count <= room);
}

void MakeAndOpen(TextCipher& cipher, const std::uint8_t* data, std::uint32_t length) {
    std::uint32_t size = 0;
    Require(cipher.Encrypt(data, length, nullptr, size) == kStatusOk);
    std::vector<std::uint8_t> envelope(size);
    Require(cipher.Encrypt(data, length, envelope.data(), size) == kStatusOk);
    std::vector<std::uint8_t> text(length);
    std::uint32_t opened = length;
    Require(cipher.Decrypt(envelope.data(), size, text.data(), opened) == kStatusOk);
    Require(opened == length && std::equal(text.begin(), text.end(), data));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::uint32_t choice = *data++;
    const auto length = static_cast<std::uint32_t>(--size);
    TextCipher cipher;
    cipher.SetKey(kKey, choice % 40);
    const std::uint32_t room = choice & 0x80 ? length : choice & 0x3F;
    OpenBytes(cipher, data, length, room);
    OpenText(cipher, data, size, room);
    MakeAndOpen(cipher, data, length);
    return 0;
}
