#include <cstdint>
#include <cstdlib>

#include "settings/password_text.h"

/// Any bytes either decode to whole code units or leave an empty password; what decodes can be
/// encoded and decoded again without a change.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const AUX::AStringView text(reinterpret_cast<const char*>(data), size);
    AUX::WString password;
    if (AUX::IsFailure(DecodePasswordText(text, password))) {
        if (!password.IsEmpty()) std::abort();
        return 0;
    }
    if (std::uint64_t{password.Length()} * 2 > size) std::abort();
    AUX::AString encoded;
    AUX::WString again;
    if (!EncodePasswordText(password, encoded)) std::abort();
    if (encoded.Length() != EncodedPasswordSize(password.Length())) std::abort();
    if (AUX::IsFailure(DecodePasswordText(encoded, again)) || !(again == password)) std::abort();
    return 0;
}
