#pragma once

#include <atomic>

#include "platform/base.h"

/// The inner loops of the UTF-8 encoder, in two forms: for every processor, and for those that
/// pack the bytes of a register closely by themselves. Internal to the encoder.
namespace AUX::utf8 {

/// Writes the bytes of whole characters while they surely fit between `out` and `limit`, and moves
/// `text` on behind the last of them; a form leaves some to its caller near either end. What a form
/// writes behind its end the text that is left overwrites.
/// \return the end of what was written.
using BlockWriter = char* (*)(const WCHAR*& text, const WCHAR* end, char* out,
                              const char* limit) noexcept;

char* WriteBlocks(const WCHAR*& text, const WCHAR* end, char* out, const char* limit) noexcept;
/// Only where platform::HasAvx512Compress().
char* CompressBlocks(const WCHAR*& text, const WCHAR* end, char* out, const char* limit) noexcept;

/// The form in use; null before the first text.
extern constinit std::atomic<BlockWriter> chosenWriter;

}  // namespace AUX::utf8
