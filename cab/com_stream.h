#pragma once

#include <memory>

#include "foundation/stream.h"
#include "platform/com_ptr.h"
#include "platform/com_stream.h"

namespace AUX::CAB {

/// Makes a COM stream over a stream, which it owns and takes from where it stands. What fails gives
/// the stream's status; a move below 0 or behind the end is STG_E_INVALIDFUNCTION and changes
/// nothing. Regions are not locked, nothing is reverted, and a clone has a position of its own.
/// \return null when memory runs out, or for a null stream.
[[nodiscard]] platform::ComPtr<IStream> MakeComStream(std::unique_ptr<Stream> stream) noexcept;

}  // namespace AUX::CAB
