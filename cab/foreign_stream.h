#pragma once

#include <memory>

#include "foundation/stream.h"
#include "platform/com_ptr.h"
#include "platform/com_stream.h"

namespace AUX::CAB {

/// Makes a stream over a client's COM stream, of which it holds a reference. It begins at byte 0
/// wherever the client's position stands, and moves that position; clones have positions of their
/// own. The size is what the client's stream tells now, and what is written here later.
///
/// Reading needs kAccessRead, writing and SetSize kAccessWrite (kStatusInvalidAccessMode). What the
/// client's stream refuses is given as its code.
/// \return null when memory runs out, for a null source, and for one that cannot tell its size.
[[nodiscard]] std::unique_ptr<Stream> MakeForeignStream(IStream* source,
                                                        std::uint32_t access) noexcept;

}  // namespace AUX::CAB
